#include <fmt/format.h>
#include <optional>

#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

namespace {

struct JournalUndoOptions {
  Text book;
  Long wait = 0;
  std::optional<Long> id;
  bool with_definitions = false;
};

Text UndoneLine(const engine::JournalEntry& entry) {
  const Text what = entry.what_ran.empty() ? Text() : ", " + entry.what_ran;
  return fmt::format("Undone: journal entry {}{}.", entry.id, what);
}

ExitStatus RunUndo(const JournalUndoOptions& options) {
  if (options.id && *options.id < 1)
    throw WrongUse(fmt::format("ID: {} is no journal entry; they count from 1", *options.id));
  Session session;
  const auto book = session.OpenToChange(options.book, options.wait);
  book->SetOperation(engine::JournalKind::kUndo, "journal undo");
  engine::Journal journal(*book);
  const auto difference = engine::FindDifference(book->Description(), journal.DescriptionAfterUndo(options.id));
  std::optional<NamedDefinitions> definitions;
  if (!difference.IsEmpty()) definitions.emplace(session, *book, difference, options.with_definitions);
  const auto undone = options.id ? journal.Undo(*options.id) : journal.UndoNewest();
  DoAfterCommit([&] {
    for (const engine::JournalEntry& entry : undone) PrintLine(UndoneLine(entry));
  });
  if (definitions) {
    definitions->Keep();
    const bool is_done = true;
    DoAfterCommit([&] { definitions->Tell(is_done); });
  }
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalUndoCommand() {
  const auto options = std::make_shared<JournalUndoOptions>();
  CommandTable command =
      MakeCommand("undo", "Put the figures back to what they were before the newest command",
                  {"tallybook journal undo office", "tallybook journal undo office 3"}, options, RunUndo);
  AddBookToChange(command, options->book, options->wait);
  AddNumber(command, "ID", options->id, "", "This entry alone; nothing later may stand on it")
      .As(ArgumentKind::kJournalEntry);
  AddFlag(command, "--with-definitions", options->with_definitions,
          "Of a change of accounts: write their codes from before into the exchange definitions as well");
  return command;
}

}  // namespace tallybook::cli
