#include <fmt/format.h>

#include "base/Failure.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/EntryPrinter.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

namespace {

struct JournalShowOptions {
  Text book;
  Long id = 0;
  PrintForm form = PrintForm::kTable;
};

ExitStatus RunShow(const JournalShowOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  const auto found = engine::JournalNotes(*book).Find(options.id);
  if (!found) {
    throw Failure(FailureNumber::kInvalidArgument,
                  fmt::format("{}: the journal has no entry {}", book->Path(), options.id));
  }
  PrintEntry(*found, options.form);
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalShowCommand() {
  const auto options = std::make_shared<JournalShowOptions>();
  CommandTable command =
      MakeCommand("show", "Show all that is kept of one entry",
                  {"tallybook journal show office 3", "tallybook journal show office 3 --json"}, options, RunShow);
  AddBook(command, options->book);
  AddNumber(command, "ID", options->id, "", "The entry, as the list numbers them")
      .Required()
      .As(ArgumentKind::kJournalEntry);
  AddForm(command, options->form);
  return command;
}

}  // namespace tallybook::cli
