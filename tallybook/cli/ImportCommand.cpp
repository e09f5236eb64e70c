#include <algorithm>
#include <fmt/format.h>
#include <optional>

#include "base/Failure.h"
#include "exchange/CDataExchange.h"
#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/FiguresFirst.h"
#include "tallybook/application/FilesLeftAlone.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/StopText.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/AllOrNothing.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/DefinitionList.h"
#include "tallybook/cli/KnownFiles.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Preview.h"
#include "tallybook/cli/ReportFile.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/SummaryFile.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

struct ImportQdxOptions {
  Text book;
  Long wait = 0;
  Integer definition = 0;
  bool all = false;
  Integer math = static_cast<Integer>(eMath::mAdd);
  Text report;
  Text summary;
  bool expect_files = false;
  bool again = false;
  bool atomic = false;
  PreviewOptions preview;
  AskOptions asking;
};

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

using Definitions = std::vector<application::SeenDefinition>;

// How a definition's files are imported. Several definitions replace, one after another.
application::EntryFacts WayOf(const application::SeenDefinition& definition, const ImportQdxOptions& options) {
  const Integer math = options.all ? static_cast<Integer>(eMath::mReplace) : options.math;
  return application::WayOfDefinition(definition.number, definition.title, math);
}

// Files that are not to be imported by a definition, which has been told.
struct LeftAlone {
  std::vector<application::FilesLeftAlone::OfDefinition> files;
  bool all = false;  // of the one definition that runs there is no other file
};

LeftAlone FindKnownFiles(Session& session, engine::Book& book, const Definitions& definitions,
                         const ImportQdxOptions& options) {
  KnownFiles known(session, book, options.again);
  LeftAlone left;
  std::size_t count = 0;
  for (const application::SeenDefinition& definition : definitions) {
    if (!options.all && definition.number != options.definition) continue;
    for (const Text& file : application::ExchangeFilesOf(definition.exchange_files)) {
      ++count;
      const bool may_ask = !options.all;
      if (!known.MayImport(file, WayOf(definition, options), may_ask)) left.files.push_back({definition.number, file});
    }
  }
  left.all = !options.all && !left.files.empty() && left.files.size() == count;
  return left;
}

// Hides them from the definitions that are not to import them; nothing where there are none.
std::unique_ptr<application::FilesLeftAlone> Hide(const LeftAlone& left, const CDataExchange& exchange) {
  if (left.files.empty()) return nullptr;
  return std::make_unique<application::FilesLeftAlone>(left.files, [&exchange] { return exchange.FileNum(); });
}

// How the definition at work imports its files.
application::EntryFacts WayAtWork(const CDataExchange& exchange, const Definitions& definitions,
                                  const ImportQdxOptions& options) {
  const auto at_work = std::ranges::find(definitions, exchange.FileNum(), &application::SeenDefinition::number);
  return WayOf(at_work == definitions.end() ? application::SeenDefinition() : *at_work, options);
}

// Without the definitions of which every file was left alone: they have one, whatever the run says.
QDXImportRecord WithoutLeftAlone(QDXImportRecord record, const LeftAlone& left, const Definitions& definitions) {
  std::erase_if(record.definitions, [&](const QDXDefinitionImport& ran) {
    if (!ran.files.empty() || ran.stop) return false;
    return std::ranges::any_of(definitions, [&](const application::SeenDefinition& definition) {
      return definition.title == ran.title && definition.exchange_files == ran.pattern &&
             std::ranges::count(left.files, definition.number,
                                &application::FilesLeftAlone::OfDefinition::definition) != 0;
    });
  });
  return record;
}

// The import's report ends in its balance.
bool ImportBalanced(Session& session, CDataExchange& exchange, engine::Book& book, Masterfile& target,
                    const Text& type) {
  const application::BalancedReports reports(session.Factory(), exchange, book);
  const Long no_window = 0;
  return exchange.ImportQDXFileEX(no_window, target, type);
}

// What the engine's record tells: what was applied and left out. A definition without a file is what --expect-files
// calls a failure. True where there is none.
bool TellRecord(Session& session, const QDXImportRecord& record, bool expect_files) {
  for (const application::ImportNote& note : application::NotesOf(record)) {
    if (note.no_file && expect_files) {
      session.TellStop({.words = note.text});
    } else {
      session.Note(note.text, note.warning);
    }
  }
  return !expect_files || !application::LacksFiles(record);
}

// What stopped a run of which every figure is stored came behind its last one.
bool TellDone(Session& session, const QDXImportRecord& record, engine::Book& book,
              application::ImportRecorder& recorder, bool expect_files) {
  CommitOrAbandon(book);
  SaveRecord(recorder);
  bool complete = true;
  DoAfterCommit([&] { complete = TellRecord(session, record, expect_files); });
  for (const StopReason& stop : application::StopsOf(record)) WarnAfterCommit(application::StopText(stop));
  return complete;
}

bool TellNotDone(Session& session, const QDXImportRecord& record, engine::Book& book,
                 const application::JournalMark& mark, application::ImportRecorder& recorder) {
  const auto lost = CommitWhatStays(book);
  if (!lost) SaveRecord(recorder);
  const bool expect_files = false;  // there is another reason for the status
  (void)TellRecord(session, record, expect_files);
  for (const StopReason& stop : application::StopsOf(record)) session.TellStop(stop);
  if (lost) {
    session.TellStop(*lost);
  } else {
    TellWhatStays(mark, book);
  }
  return false;
}

bool TellKept(Session& session, const QDXImportRecord& record, const application::AtomicEnd& end) {
  const bool expect_files = false;  // a definition without a file ends an import that is to be whole
  DoAfterCommit([&] { (void)TellRecord(session, record, expect_files); });
  TellNotDisposed(end.outcomes);
  return true;
}

// What was applied is told of no file, since nothing of it stays.
bool TellDropped(Session& session, const QDXImportRecord& record, const application::AtomicEnd& end,
                 bool expect_files) {
  for (const application::ImportNote& note : application::NotesOf(record)) {
    if (note.no_file && expect_files) session.TellStop({.words = note.text});
  }
  for (const StopReason& stop : application::StopsOf(record)) session.TellStop(stop);
  if (end.lost) session.TellStop(*end.lost);
  TellNothingKept(session);
  return false;
}

// What the import would tell is told as its own words, behind this line.
bool TellPreviewed(Session& session, const QDXImportRecord& record, bool done, bool expect_files) {
  session.Note("Nothing has been changed; the import would say:", false);
  const bool complete = TellRecord(session, record, done && expect_files);
  for (const StopReason& stop : application::StopsOf(record)) {
    done ? Warn("it would be done, but " + application::StopText(stop)) : session.TellStop(stop);
  }
  return done && complete;
}

ExitStatus PreviewImportQdx(const ImportQdxOptions& options) {
  Session session(options.asking, {.book = options.book, .report = options.report, .more_inputs = true});
  SendReportTo(session, options.report);
  const auto book = session.OpenToPreview(options.book);
  const CancelKey key;
  SessionPreview preview(session, *book);
  CDataExchange exchange(session.Factory());
  const auto definitions = OpenDefinitions(session.Files(), exchange, preview.Overlay().Book());
  LookAtExchangeFiles(session, definitions, options);
  session.AllInputsKnown();
  const Text type = ImportType(exchange, *book, options);
  const LeftAlone left = FindKnownFiles(session, *book, definitions, options);
  if (left.all) return session.StatusOf(false);
  exchange.SetMath(options.math);
  session.FollowImports([&] { preview.Overlay().BeginFile(exchange.TrueFilename()); });
  auto hidden = Hide(left, exchange);
  const bool imported = ImportBalanced(session, exchange, *book, preview.Overlay().Book(), type);
  hidden.reset();
  const QDXImportRecord record = WithoutLeftAlone(exchange.LastQDXImport(), left, definitions);
  application::PreviewOutcome outcome;
  outcome.done = imported || application::IsStored(exchange.LastQDXImport(), options.all ? definitions.size() : 1);
  preview.End(outcome);
  outcome.imports = application::ImportsOf(record, preview.Overlay());
  const bool shown = preview.Print(options.preview, options.report, outcome);
  const bool complete = TellPreviewed(session, record, outcome.done, options.expect_files);
  session.FollowImports({});
  return session.StatusOf(complete && shown && left.files.empty());
}

ExitStatus RunImportQdx(const ImportQdxOptions& options) {
  NeedPreviewForForm(options.preview);
  if (options.preview.on) return PreviewImportQdx(options);
  Session session(options.asking, {.book = options.book, .report = options.report, .more_inputs = true});
  SendReportTo(session, options.report);
  const auto book = session.OpenToChange(options.book, options.wait);
  const CancelKey key;
  CDataExchange exchange(session.Factory());
  const auto definitions = OpenDefinitions(session.Files(), exchange, *book);
  LookAtExchangeFiles(session, definitions, options);
  session.AllInputsKnown();
  ReportFile report(session.Files(), options.report);
  SummaryFile summary(session, options.summary);
  const Text type = ImportType(exchange, *book, options);
  const LeftAlone left = FindKnownFiles(session, *book, definitions, options);
  if (left.all) return session.StatusOf(false);
  book->SetOperationName(options.all ? "import qdx all" : fmt::format("import qdx #{}", options.definition));
  exchange.SetMath(options.math);
  const application::JournalMark mark(*book);
  application::ImportRecorder recorder(*book);
  const application::FiguresFirst figures_first(session.Files(), *book);
  const auto atomic = BeginAtomic(session, *book, options.atomic);
  std::optional<WaitingReports> reports;
  if (atomic) reports.emplace(session);
  session.FollowImports([&] {
    const Text& file = exchange.TrueFilename();
    recorder.BeginFile(file, PlaceOf(session, atomic.get(), file), WayAtWork(exchange, definitions, options));
  });
  auto hidden = Hide(left, exchange);
  const bool imported = ImportBalanced(session, exchange, *book, *book, type);
  hidden.reset();
  session.FollowImports({});
  application::AddOutcomes(recorder, exchange.LastQDXImport());
  const QDXImportRecord record = WithoutLeftAlone(exchange.LastQDXImport(), left, definitions);
  auto balances = application::BalancesOf(record, *book);
  bool done = imported;
  bool complete = false;
  if (atomic) {
    const bool whole = imported && !(options.expect_files && application::LacksFiles(record));
    const application::AtomicEnd end = application::EndAtomic(*atomic, *book, recorder, whole);
    done = end.kept;
    if (!done) application::KeepNone(balances);
    reports->End(balances, done);
    complete = done ? TellKept(session, record, end) : TellDropped(session, record, end, options.expect_files);
  } else {
    done = imported || application::IsStored(exchange.LastQDXImport(), options.all ? definitions.size() : 1);
    complete = done ? TellDone(session, record, *book, recorder, options.expect_files)
                    : TellNotDone(session, record, *book, mark, recorder);
  }
  DoAfterCommit([&] { book->Close(); });
  report.Finish(done);
  summary.Write(balances, done);
  return session.StatusOf(complete && left.files.empty());
}

CommandTable ImportQdxCommand() {
  static const Choices<Integer> modes = {{"add", static_cast<Integer>(eMath::mAdd)},
                                         {"subtract", static_cast<Integer>(eMath::mSubtract)},
                                         {"replace", static_cast<Integer>(eMath::mReplace)},
                                         {"zero", kZeroOnly}};
  const auto options = std::make_shared<ImportQdxOptions>();
  CommandTable command =
      MakeCommand("qdx", "Import exchange files by a definition, or by all of them",
                  {"tallybook import qdx office --definition 1 --math replace --report import.html",
                   "tallybook import qdx office --definition 1 --preview", "tallybook import qdx office --all"},
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
  AddSummary(command, options->summary);
  AddPreview(command, options->preview);
  AddAtomic(command, options->atomic);
  Exclude(command, "--summary", "--preview");
  AddFlag(command, "--expect-files", options->expect_files, "A definition that no file matches is a failure: status 1");
  AddAsking(command, options->asking);
  AddAgain(command, options->again);
  return command;
}

}  // namespace

CommandTable ImportCommand() {
  return MakeGroup("import", "Bring figures into a book",
                   {ImportQdxCommand(), ImportCsvCommand(), ImportDelimitedCommand()});
}

}  // namespace tallybook::cli
