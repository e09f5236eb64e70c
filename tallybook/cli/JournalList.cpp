#include "tallybook/cli/Commands.h"
#include "tallybook/cli/EntryPrinter.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

namespace {

struct JournalListOptions {
  Text book;
  PrintForm form = PrintForm::kTable;
};

ExitStatus RunList(const JournalListOptions& options) {
  Session session;
  const auto book = session.OpenToRead(options.book);
  PrintEntries(engine::JournalNotes(*book).Entries(), options.form);
  return ExitStatus::kDone;
}

}  // namespace

CommandTable JournalListCommand() {
  const auto options = std::make_shared<JournalListOptions>();
  CommandTable command =
      MakeCommand("list", "List what changed figures, oldest first",
                  {"tallybook journal list office", "tallybook journal list office --json"}, options, RunList);
  AddBook(command, options->book);
  AddForm(command, options->form);
  return command;
}

}  // namespace tallybook::cli
