#include <fmt/format.h>
#include <iostream>
#include <optional>

#include "base/Failure.h"
#include "exchange/CDataExchange.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/JournalMark.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::cli {

namespace {

struct ImportQdxOptions {
  Text book;
  Long wait = 0;
  Integer definition = 0;
  bool all = false;
  Integer math = static_cast<Integer>(eMath::mAdd);
  Text report;
  bool expect_files = false;
  AskOptions asking;
};

void SendReportTo(Session& session, const Text& path) {
  if (path.empty()) return;
  report::Destination destination;
  destination.path = path;
  try {
    session.Factory().SetReportDestination(destination);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kInvalidArgument) throw;
    throw WrongUse("--report: " + failure.Description());
  }
}

// What the batch takes: "ALL", or the definition's place in the list.
Text ImportType(CDataExchange& exchange, engine::Book& book, const ImportQdxOptions& options) {
  if (options.all) return "ALL";
  return std::to_string(PositionOfDefinition(exchange, book, options.definition));
}

// The files that the import will read: none of them may be a device or the like, nor an output.
void LookAtExchangeFiles(Session& session, const std::vector<application::SeenDefinition>& definitions,
                         const ImportQdxOptions& options) {
  for (const application::SeenDefinition& definition : definitions) {
    if (!options.all && definition.number != options.definition) continue;
    application::NeedRegularExchangeFiles(definition.exchange_files);
    for (const Text& file : application::ExchangeFilesOf(definition.exchange_files)) session.AddInput(file);
  }
}

// The file of --report: whole when the report has ended, however the import did.
class ReportFile {
 public:
  ReportFile(application::WholeFiles& files, const Text& path) : path_(path) {
    if (!path.empty()) output_.emplace(files, path);
  }
  ~ReportFile() {
    try {
      if (output_) output_->Keep();
    } catch (...) {
      return;  // meant: the failure that led here is what is told
    }
  }
  ReportFile(const ReportFile&) = delete;
  ReportFile& operator=(const ReportFile&) = delete;

  // The status of a command that has imported with `status`: it fails where its report could not be written.
  [[nodiscard]] ExitStatus Finish(ExitStatus status) {
    if (!output_) return status;
    const bool kept = output_->Keep();
    output_.reset();
    if (kept || status != ExitStatus::kDone) return status;
    std::cerr << fmt::format("tallybook: the import is done, but its report {} was not written\n", path_);
    return ExitStatus::kFailed;
  }

 private:
  Text path_;
  std::optional<application::WholeOutput> output_;
};

// What the engine's record tells: what was applied and left out, and what stopped the run. A definition without a file
// is what --expect-files calls a failure. True where there is none.
bool TellRecord(Session& session, const QDXImportRecord& record, bool expect_files) {
  for (const application::ImportNote& note : application::NotesOf(record)) {
    if (note.no_file && expect_files) {
      session.TellStop({.words = note.text});
    } else {
      session.Note(note.text, note.warning);
    }
  }
  for (const StopReason& stop : application::StopsOf(record)) session.TellStop(stop);
  return !expect_files || !application::LacksFiles(record);
}

ExitStatus RunImportQdx(const ImportQdxOptions& options) {
  Session session(options.asking, {.book = options.book, .report = options.report, .more_inputs = true});
  SendReportTo(session, options.report);
  const auto book = session.OpenToChange(options.book, options.wait);
  const CancelKey key;
  CDataExchange exchange(session.Factory());
  LookAtExchangeFiles(session, OpenDefinitions(session.Files(), exchange, *book), options);
  session.AllInputsKnown();
  ReportFile report(session.Files(), options.report);
  const Text type = ImportType(exchange, *book, options);
  book->SetOperationName(options.all ? "import qdx all" : fmt::format("import qdx #{}", options.definition));
  exchange.SetMath(options.math);
  const Long no_window = 0;
  const JournalMark mark(*book);
  const bool done = exchange.ImportQDXFileEX(no_window, *book, type);
  const bool complete = TellRecord(session, exchange.LastQDXImport(), options.expect_files);
  if (!done) mark.TellWhatStays();
  book->Close();
  return report.Finish(session.StatusOf(done && complete));
}

CommandTable ImportQdxCommand() {
  static const Choices<Integer> modes = {{"add", static_cast<Integer>(eMath::mAdd)},
                                         {"subtract", static_cast<Integer>(eMath::mSubtract)},
                                         {"replace", static_cast<Integer>(eMath::mReplace)},
                                         {"zero", kZeroOnly}};
  const auto options = std::make_shared<ImportQdxOptions>();
  CommandTable command = MakeCommand("qdx", "Import exchange files by a definition, or by all of them",
                                     {"tallybook import qdx office --definition 1 --math replace --report import.html",
                                      "tallybook import qdx office --all"},
                                     options, RunImportQdx);
  AddBookToChange(command, options->book, options->wait);
  AddNumber(command, "--definition", options->definition, "N", "The definition of this number")
      .As(ArgumentKind::kDefinition);
  AddFlag(command, "--all", options->all, "Every definition, in the order of their titles; each replaces");
  NeedOneOf(command, {"--definition", "--all"});
  AddChoice(command, "--math", options->math, modes,
            "add (the default), subtract, replace (zero the range first), zero (zero it and read nothing)");
  Exclude(command, "--math", "--all");
  AddText(command, "--report", options->report, "FILE", "Write the report to FILE: .txt, .html or .pdf")
      .As(ArgumentKind::kFile);
  AddFlag(command, "--expect-files", options->expect_files, "A definition that no file matches is a failure: status 1");
  AddAsking(command, options->asking);
  return command;
}

}  // namespace

CommandTable ImportCommand() {
  return MakeGroup("import", "Bring figures into a book",
                   {ImportQdxCommand(), ImportCsvCommand(), ImportDelimitedCommand()});
}

}  // namespace tallybook::cli
