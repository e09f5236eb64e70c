#include <fmt/format.h>
#include <iostream>
#include <sstream>

#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/TieOut.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/KnownFiles.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TieOutPrinter.h"

namespace tallybook::cli {

namespace {

struct VerifyOptions {
  Text book;
  Integer definition = 0;
  Text file;
  Integer math = static_cast<Integer>(eMath::mReplace);
  PrintForm form = PrintForm::kTable;
  AskOptions asking;
};

// The files that are read: none of them may be a device or the like.
void LookAtFiles(Session& session, const Text& pattern) {
  application::NeedRegularExchangeFiles(pattern);
  for (const Text& file : application::ExchangeFilesOf(pattern)) session.AddInput(file);
  session.AllInputsKnown();
}

// Why nothing was held against the book.
void TellNotHeld(Session& session, const QDXImportRecord& record) {
  for (const application::ImportNote& note : application::NotesOf(record)) {
    if (note.no_file) session.TellStop({.words = note.text});
  }
  for (const StopReason& stop : application::StopsOf(record)) session.TellStop(stop);
}

ExitStatus RunVerify(const VerifyOptions& options) {
  Session session(options.asking, {.book = options.book, .more_inputs = true});
  const auto book = session.OpenToPreview(options.book);
  session.KeepNoLog();
  const CancelKey key;
  const application::SeenDefinition definition =
      application::NeedDefinition(session.Files(), *book, options.definition);
  const Text& pattern = options.file.empty() ? definition.exchange_files : options.file;
  LookAtFiles(session, pattern);
  std::ostringstream unread;
  report::Destination destination;
  destination.stream = &unread;
  session.Factory().SetReportDestination(destination);
  const auto report = session.Factory().NewPrinter();
  application::TieOut tie_out({.book = *book,
                               .factory = session.Factory(),
                               .app = book->App(),
                               .report = *report,
                               .place_of = [&](const Text& file) { return PlaceOf(session, file); },
                               .cancelled = CancelKey::Pressed});
  if (!tie_out.Hold({.definition = definition, .pattern = pattern, .unknown_math = options.math})) {
    TellNotHeld(session, tie_out.Record());
    return session.StatusOf(false);
  }
  TieOutPrinter(*book, tie_out, std::cout).Print(options.form);
  const bool is_warning = false;
  for (const application::TieOutFile& file : tie_out.Files()) session.Note(application::HeldWords(file), is_warning);
  const Text words = application::TieOutWords(tie_out);
  if (tie_out.Agrees()) {
    session.Note(words, is_warning);
  } else {
    session.TellStop({.words = words});
  }
  return session.StatusOf(tie_out.Agrees());
}

}  // namespace

CommandTable VerifyCommand() {
  static const Choices<Integer> modes = {{"replace", static_cast<Integer>(eMath::mReplace)},
                                         {"add", static_cast<Integer>(eMath::mAdd)},
                                         {"subtract", static_cast<Integer>(eMath::mSubtract)}};
  const auto options = std::make_shared<VerifyOptions>();
  CommandTable command = MakeCommand("verify", "Hold the figures of exchange files against those of a book",
                                     {"tallybook verify office --definition 1",
                                      "tallybook verify office --definition 1 in/north-2003.XDQ --format csv"},
                                     options, RunVerify);
  AddBook(command, options->book);
  AddNumber(command, "--definition", options->definition, "N", "The definition of this number")
      .Required()
      .As(ArgumentKind::kDefinition);
  AddText(command, "FILE", options->file, "", "This file, and not those that the definition names")
      .As(ArgumentKind::kFile);
  AddChoice(
      command, "--math", options->math, modes,
      "How files were imported that the journal knows no import of: replace (the default); add, subtract: to zeros");
  AddForm(command, options->form);
  AddAsking(command, options->asking);
  return command;
}

}  // namespace tallybook::cli
