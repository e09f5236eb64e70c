#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DescriptionText.h"
#include "tallybook/cli/Growth.h"
#include "tallybook/cli/Session.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::cli {

namespace {

struct ApplyOptions {
  GrowthOptions growth;
  Text description;
};

ExitStatus RunApply(const ApplyOptions& options) {
  GrowthOptions growth = options.growth;
  growth.show_first = true;
  Session session({}, {.book = growth.book, .input = options.description});
  const DescriptionText text = ReadDescriptionText(options.description);
  growth.source = text.source;
  const auto book = growth.dry_run ? session.OpenToRead(growth.book) : session.OpenToChange(growth.book, growth.wait);
  const engine::BookDescription after = engine::ParseBookDescription(text.json, text.source, book->Description());
  GrowBook(session, *book, after, "apply " + text.source, growth);
  DoAfterCommit([&] { book->Close(); });
  return ExitStatus::kDone;
}

}  // namespace

CommandTable ApplyCommand() {
  const auto options = std::make_shared<ApplyOptions>();
  CommandTable command = MakeCommand(
      "apply", "Bring a book to what a description says",
      {"tallybook apply office office.json --dry-run", "tallybook apply office office.json --with-definitions"},
      options, RunApply);
  AddBookToGrow(command, options->growth);
  AddText(command, "FILE", options->description, "",
          "The description, in the form that `info --json` writes; - for standard input")
      .Required()
      .As(ArgumentKind::kFile);
  AddFlag(command, "--dry-run", options->growth.dry_run, "Show what differs, and change nothing");
  AddWithFigures(command, options->growth);
  AddWithDefinitions(command, options->growth);
  AddFormWithoutCsv(command, options->growth.form);
  command.notes = {
      "Accounts and fields that a list of the file does not name are removed. Values that it names are set, all others "
      "stay, "
      "and so does whatever the file leaves out altogether. `journal undo` takes all of it back."};
  return command;
}

}  // namespace tallybook::cli
