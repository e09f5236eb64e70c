#include "tallybook/engine/JournalTrim.h"

#include <fmt/format.h>

#include "base/Dates.h"
#include "tallybook/application/CareWords.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/BookCompact.h"

namespace tallybook::cli {

namespace {

struct JournalTrimOptions {
  Text book;
  Long wait = 0;
  Date before = kNoDate;
};

// What can no longer be told, and done.
void TellTrimmed(const std::vector<engine::JournalEntry>& trimmed, Date before) {
  const engine::JournalEntry& last = trimmed.back();
  PrintLine(fmt::format("Trimmed: {} from before {}; {} cannot be taken back any more.",
                        application::CountedEntries(static_cast<long long>(trimmed.size())), DateText(before),
                        trimmed.size() == 1 ? "it" : "they"));
  PrintLine(fmt::format("Of figures that they changed nothing is known from before entry {} ({}).", last.id,
                        DateTimeText(last.time)));
}

ExitStatus RunTrim(const JournalTrimOptions& options) {
  Session session;
  const auto book = session.OpenToChange(options.book, options.wait);
  const auto trimmed = engine::JournalTrim(*book).Before(options.before);
  book->Close();
  if (trimmed.empty()) {
    PrintLine(fmt::format("No entry from before {} keeps figures.", DateText(options.before)));
    return ExitStatus::kDone;
  }
  DoAfterCommit([&] { TellTrimmed(trimmed, options.before); });
  DoAfterCommit([&] {
    const Text path = BookPath(options.book);
    PrintLine(application::CompactWords(path, engine::CompactBook(path, options.wait)));
  });
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalTrimCommand() {
  const auto options = std::make_shared<JournalTrimOptions>();
  CommandTable command = MakeCommand("trim", "Give back the room that old entries take, and with it their way back",
                                     {"tallybook journal trim office --before 2024-01-01"}, options, RunTrim);
  AddBookToChange(command, options->book, options->wait);
  AddDate(command, "--before", options->before, "Entries from before this day").Required();
  return command;
}

}  // namespace tallybook::cli
