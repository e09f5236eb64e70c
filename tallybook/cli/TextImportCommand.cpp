#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <set>
#include <string>

#include "exchange/CDataExchange.h"
#include "host/FiscalCalendar.h"
#include "host/HostLog.h"
#include "import/DelimitedImport.h"
#include "platform/Platform.h"
#include "support/HostMessages.h"
#include "support/Utility.h"
#include "tallybook/application/FiguresFirst.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/ImportSummary.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/application/LineEnds.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/StopText.h"
#include "tallybook/application/WholeFiles.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/AllOrNothing.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/FileQuestion.h"
#include "tallybook/cli/KnownFiles.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Preview.h"
#include "tallybook/cli/ReportFile.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/SpooledInput.h"
#include "tallybook/cli/SummaryFile.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/TextFileArguments.h"
#include "tallybook/cli/TextTable.h"
#include "tallybook/inspect/DateOrders.h"

namespace tallybook::cli {

namespace {

// Codes of the import's date_fields.
constexpr Integer kDateInThreeFields = 0;
constexpr Integer kDateInOneField = -1;

// What runs, as the journal tells it. The delimited import gives its file another name at the end.
constexpr const char* kDelimited = "import delimited";

// What both imports are told.
struct TextImportOptions {
  Text book;
  Long wait = 0;
  Text file;
  eMath math = eMath::mDefault;
  TextEncoding encoding = TextEncoding::kDetect;
  Text report;  // of a preview
  Text summary;
  PreviewOptions preview;
  AskOptions asking;
  bool again = false;
  bool atomic = false;
};

struct ImportCsvOptions : TextImportOptions {
  std::vector<Long> clear;  // datafield numbers
};

struct ImportDelimitedOptions : TextImportOptions {
  Integer date_order = kMonthDayYear;
  bool date_parts = false;
  bool system_fields = false;
  bool any_line_end = false;
};

// Flags by datafield number; position 0 is not looked at.
std::vector<Integer> ClearFlags(const engine::Book& book, const std::vector<Long>& fields) {
  std::vector<Integer> flags = {0};
  for (const Long field : fields) {
    if (field < 1) throw WrongUse(fmt::format("--clear: {} is no field number; they count from 1", field));
    NeedField(book, field);
    const auto position = static_cast<std::size_t>(field);
    flags.resize(std::max(flags.size(), position + 1));
    flags[position] = 1;
  }
  return flags;
}

void TellApplied(engine::Book& book, const Text& file, const TextImportTally& tally) {
  TellLine(application::AppliedText(file, tally, book));
}

void TellBalance(const std::vector<application::FileBalance>& balances) {
  for (const Text& line : application::BalanceLines(balances)) TellLine(line);
}

void TellBalanceOfFailed(const std::vector<application::FileBalance>& balances) {
  if (balances.front().read > 0) TellBalance(balances);
}

// Why the import ended, where the engine or the look at the file before says it, with what the audit's questions and
// answers came to.
StopReason ReasonFor(const StopReason& stop, const ConsoleMessageBoxes& boxes, const Text& file) {
  StopReason reason = stop;
  reason.file = file;
  if (boxes.WasAuditStopped()) {
    reason.words += "; the audit was stopped, --keep-auditing lists every error";
  } else if (reason.words == AuditFoundErrors().words) {
    reason.words = Counted(boxes.AuditErrors(), "error") + " found by the audit";
  }
  return reason;
}

// The import is done as soon as its figures are stored, whatever it answered: what failed came behind them.
void TellDone(engine::Book& book, const Text& file, const TextImportTally& tally,
              const std::vector<application::FileBalance>& balances) {
  DoAfterCommit([&] {
    TellApplied(book, file, tally);
    TellBalance(balances);
  });
  if (tally.stop) WarnAfterCommit(application::StopText(*tally.stop));
  if (tally.stays) WarnAfterCommit(application::StaysText(file, *tally.stays));
}

// The delimited import renames its file on nearly every way out, also where nothing was imported.
void TellNewName(Session& session, const Text& file, bool there_before) {
  const Text renamed = file + ".bak";
  if (there_before && !FileExists(file) && FileExists(renamed)) {
    session.Note(fmt::format("{} is called {} now", file, renamed), true);
  }
}

// The file that the user named, or names now, looked at; nothing where the import cannot begin, which has been told.
//   look  says what is wrong with the file before the import asks anything; nothing where it may be imported
template <typename Look>
std::optional<Text> FileToImport(Session& session, engine::Book& book, const TextImportOptions& options,
                                 const FileQuestion& question, const Text& kind, Look look) {
  auto file = FileOrAnswer(options.file, question);
  if (!file) return std::nullopt;
  if (options.file.empty()) session.AddInput(*file);
  if (kind == kDelimited) session.NeedReplaceable(*file + ".bak");
  session.AllInputsKnown();
  const std::optional<Text> trouble = look(book, *file);
  if (!trouble) return file;
  session.TellStop({.file = *file, .words = *trouble});
  return std::nullopt;
}

// Whether a file may be imported, for all that the book's history tells of it. Where it may not, that has been told.
bool MayImport(Session& session, engine::Book& book, const TextImportOptions& options, const Text& file,
               const application::EntryFacts& way) {
  const bool may_ask = true;
  return KnownFiles(session, book, options.again).MayImport(file, way, may_ask);
}

// The same as RunTextImport, on an overlay of the book.
template <typename Look, typename Import, typename WayOf>
ExitStatus PreviewTextImport(const TextImportOptions& options, const FileQuestion& question, const Text& kind,
                             Look look, Import import, WayOf way_of) {
  Session session(
      options.asking,
      {.book = options.book, .input = options.file, .report = options.report, .more_inputs = options.file.empty()});
  const SpooledInput spooled(session.Files(), options.file);
  ThePlatform().text_encoding = options.encoding;
  SendReportTo(session, options.report);
  session.KeepNoLog();
  const auto book = session.OpenToPreview(options.book);
  const auto file = FileToImport(session, *book, options, question, kind, look);
  if (!file || !MayImport(session, *book, options, *file, way_of())) return session.StatusOf(false);
  SessionPreview preview(session, *book);
  preview.Overlay().BeginFile(*file);
  CDataExchange exchange(session.Factory());
  exchange.SetOwner(&preview.Overlay().Book());
  session.FollowAudit(&exchange.LastTextImport());
  const bool imported = import(*book, exchange, *file);
  session.FollowAudit(nullptr);
  const TextImportTally& tally = exchange.LastTextImport();
  application::PreviewOutcome outcome;
  outcome.done = imported || tally.stored;
  preview.End(outcome);
  outcome.imports = {application::ImportOf(*file, tally, preview.Overlay())};
  const bool shown = preview.Print(options.preview, options.report, outcome);
  if (outcome.done) {
    session.Note("Nothing has been changed; the import would say:", false);
    TellApplied(*book, *file, tally);
    TellBalance({application::BalanceOf(*file, tally, *book)});
    if (tally.stop) Warn("it would be done, but " + application::StopText(*tally.stop));
    if (tally.stays) Warn("it would be done, but " + application::StaysText(*file, *tally.stays));
  } else {
    session.TellStop(ReasonFor(tally.stop.value_or(StopReason{}), session.Boxes(), *file));
  }
  return session.StatusOf(outcome.done && shown);
}

// Opens the book, lets `import` run on it with the file, and tells what came of it. `kind` names the import in the
// journal, with the file; `look` is that of FileToImport, and `way_of` tells behind it how the file is imported.
template <typename Look, typename Import, typename WayOf>
ExitStatus RunTextImport(const TextImportOptions& options, const FileQuestion& question, const Text& kind, Look look,
                         Import import, WayOf way_of) {
  NeedFileOrTerminal(options.file);
  NeedPreviewForForm(options.preview);
  if (!options.report.empty() && !options.preview.on)
    throw WrongUse("--report is that of a preview: --preview is missing");
  if (options.preview.on) return PreviewTextImport(options, question, kind, look, import, way_of);
  Session session(options.asking, {.book = options.book, .input = options.file, .more_inputs = options.file.empty()});
  const SpooledInput spooled(session.Files(), options.file);
  ThePlatform().text_encoding = options.encoding;
  const auto book = session.OpenToChange(options.book, options.wait);
  SummaryFile summary(session, options.summary);
  const auto file = FileToImport(session, *book, options, question, kind, look);
  if (!file) return session.StatusOf(false);
  const application::EntryFacts way = way_of();
  if (!MayImport(session, *book, options, *file, way)) return session.StatusOf(false);
  const application::JournalMark mark(*book);
  application::ImportRecorder recorder(*book);
  const application::FiguresFirst figures_first(session.Files(), *book);
  const bool there_before = FileExists(*file);
  CDataExchange exchange(session.Factory());
  exchange.SetOwner(book.get());
  book->SetOperationName(kind + " " + *file);
  recorder.BeginFile(*file, PlaceOf(session, *file), way);
  const auto atomic = BeginAtomic(session, *book, options.atomic);
  session.FollowAudit(&exchange.LastTextImport());
  const bool imported = import(*book, exchange, *file);
  session.FollowAudit(nullptr);
  const TextImportTally& tally = exchange.LastTextImport();
  for (application::ImportRecorder::Run* run : recorder.Runs()) application::AddOutcome(run->facts, tally, imported);
  std::vector<application::FileBalance> balances = {application::BalanceOf(*file, tally, *book)};
  bool done = imported || tally.stored;
  if (atomic) {
    const application::AtomicEnd end = application::EndAtomic(*atomic, *book, recorder, imported);
    done = end.kept;
    if (done) {
      TellDone(*book, *file, tally, balances);
      TellNotDisposed(end.outcomes);
    } else {
      application::KeepNone(balances);
      session.TellStop(end.lost ? *end.lost : ReasonFor(tally.stop.value_or(StopReason{}), session.Boxes(), *file));
      TellBalanceOfFailed(balances);
      TellNothingKept(session);
    }
  } else if (done) {
    CommitOrAbandon(*book);
    SaveRecord(recorder);
    TellDone(*book, *file, tally, balances);
  } else {
    const auto lost = CommitWhatStays(*book);
    if (!lost) SaveRecord(recorder);
    session.TellStop(ReasonFor(tally.stop.value_or(StopReason{}), session.Boxes(), *file));
    TellBalanceOfFailed(balances);
    TellNewName(session, *file, there_before);
    if (lost) {
      session.TellStop(*lost);
    } else {
      TellWhatStays(mark, *book);
    }
  }
  DoAfterCommit([&] { book->Close(); });
  summary.Write(balances, done);
  return session.StatusOf(done);
}

std::optional<Text> NothingToLookAt(engine::Book& /*book*/, const Text& /*file*/) {
  return std::nullopt;
}

ExitStatus RunImportCsv(const ImportCsvOptions& options) {
  FileQuestion question;
  question.title = "Import CSV Data File";
  question.filter = "CSV Files|*.csv";
  question.extension = "csv";
  const auto import = [&](engine::Book& book, CDataExchange& exchange, const Text& file) {
    const bool no_prompts = false;
    return exchange.ImportCSVFile(file, no_prompts, ClearFlags(book, options.clear), options.math);
  };
  const auto way_of = [&] { return application::WayOfCsv(options.math, options.clear); };
  return RunTextImport(options, question, "import csv", NothingToLookAt, import, way_of);
}

constexpr const char* kCancelledBefore = "cancelled before anything was imported";

// Looks through the dates and asks whether they are to be read in the one order that fits them. Gives why the import
// cannot begin; nothing where `order` is set.
std::optional<Text> ProposeDateOrder(engine::Book& book, const Text& file, const ImportDelimitedOptions& options,
                                     Integer& order) {
  const CancelKey key;
  const inspect::DateOrders orders = inspect::FindDateOrders(
      book, file,
      {.date_in_one_field = !options.date_parts, .any_line_end = options.any_line_end, .encoding = options.encoding});
  if (orders.cancelled) return kCancelledBefore;
  const Text told = inspect::Tell(orders);
  if (orders.fitting.empty()) return told;
  if (orders.fitting.size() > 1) {
    return told + fmt::format("; say --date-order {} or {}", orders.fitting[0].word, orders.fitting[1].word);
  }
  order = orders.fitting.front().order;
  if (orders.dates == 0 || Confirm(book.App(), file + ": " + told + ".\r\n\r\nImport them so?")) return std::nullopt;
  return kCancelledBefore;
}

ExitStatus RunImportDelimited(const ImportDelimitedOptions& options) {
  FileQuestion question;
  question.title = "Import Delimited File";
  question.filter = "Text Files|*.txt";
  Integer date_order = options.date_order;
  const auto import = [&](engine::Book& book, CDataExchange& exchange, const Text& file) {
    std::optional<application::AnyLineEnd> any_line_end;
    if (options.any_line_end) any_line_end.emplace();
    const Integer date_fields = options.date_parts ? kDateInThreeFields : kDateInOneField;
    const bool done = exchange.ImportDelimitedFile(file, options.math, date_order, date_fields, options.system_fields);
    // Told whatever the import answered: meant, a failed one may have written system fields, too.
    if (options.system_fields) {
      const Integer plain_name = 0;
      book.App().Log().AuditEntry(book.MasterFileTypeName(plain_name), "Import", "System Fields", {file});
    }
    return done;
  };
  const auto look = [&](engine::Book& book, const Text& file) -> std::optional<Text> {
    if (!options.any_line_end) {
      if (const auto trouble = application::BadLineEnds(file)) return *trouble + " (--line-ends any reads them)";
    }
    return date_order == kFindDateOrder ? ProposeDateOrder(book, file, options, date_order) : std::nullopt;
  };
  const auto way_of = [&] {
    return application::WayOfDelimited({.math = options.math,
                                        .date_order = date_order,
                                        .date_parts = options.date_parts,
                                        .system_fields = options.system_fields,
                                        .any_line_end = options.any_line_end});
  };
  return RunTextImport(options, question, kDelimited, look, import, way_of);
}

void AddBookAndFile(CommandTable& command, TextImportOptions& options) {
  AddBookToChange(command, options.book, options.wait);
  AddFile(command, options.file, "The text file; - for standard input");
}

void AddEncodingAndAsking(CommandTable& command, TextImportOptions& options) {
  AddEncoding(command, options.encoding);
  AddSummary(command, options.summary);
  AddPreview(command, options.preview);
  AddAtomic(command, options.atomic);
  Exclude(command, "--summary", "--preview");
  AddText(command, "--report", options.report, "FILE", "Write the preview to FILE: .txt, .html or .pdf")
      .As(ArgumentKind::kFile);
  AddAsking(command, options.asking);
  AddAgain(command, options.again);
  AddFlag(command, "--keep-auditing", options.asking.keep_auditing,
          "List every error of the file, one a line, instead of asking at each")
      .Heading(kQuestions);
}

}  // namespace

CommandTable ImportCsvCommand() {
  const auto options = std::make_shared<ImportCsvOptions>();
  CommandTable command = MakeCommand("csv", "Import a comma-separated text file with a header",
                                     {"tallybook import csv north january.csv",
                                      "tallybook import csv north january.csv --math replace --clear 5 --yes"},
                                     options, RunImportCsv);
  AddBookAndFile(command, *options);
  AddMath(command, options->math, "add, subtract or replace, whatever the file's header says");
  AddNumber(command, "--clear", options->clear, "FIELD", "Clear the field of this number first; may be given again")
      .As(ArgumentKind::kFieldNumber);
  AddEncodingAndAsking(command, *options);
  return command;
}

CommandTable ImportDelimitedCommand() {
  const auto options = std::make_shared<ImportDelimitedOptions>();
  CommandTable command = MakeCommand("delimited", "Import a text file of one line for a date and an account",
                                     {"tallybook import delimited north january.txt --math replace",
                                      "tallybook import delimited north january.txt --math add --date-order DMY --yes"},
                                     options, RunImportDelimited);
  AddBookAndFile(command, *options);
  AddMath(command, options->math, "add, subtract or replace").Required();
  AddDelimitedForm(command, {options->date_order, options->any_line_end, options->date_parts, options->system_fields});
  AddEncodingAndAsking(command, *options);
  return command;
}

}  // namespace tallybook::cli
