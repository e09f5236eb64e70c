#include <charconv>
#include <fmt/format.h>
#include <optional>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Texts.h"
#include "exchange/CDataExchange.h"
#include "qdx/HeaderItems.h"
#include "support/Utility.h"
#include "tallybook/application/ListEdits.h"
#include "tallybook/application/StandardStreams.h"
#include "tallybook/application/WholeTables.h"
#include "tallybook/cli/BookLookUp.h"
#include "tallybook/cli/Commands.h"
#include "tallybook/cli/ExportOutput.h"
#include "tallybook/cli/FileQuestion.h"
#include "tallybook/cli/Lines.h"
#include "tallybook/cli/Session.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/cli/Wording.h"
#include "tallybook/tables/ExportLibrary.h"

namespace tallybook::cli {

namespace {

struct ExportOptions {
  Text book;
  Text file;
  Date from = kNoDate;
  Date to = kNoDate;
  Integer report_length = 0;
  Text format;
  std::optional<Text> decimals;
  bool nonzero = false;
  AskOptions asking;
};

// The file to write, under the book's name where the user has no other wish. Nothing where he cancels.
std::optional<Text> FileToWrite(Session& session, const ExportOptions& options, const engine::Book& book,
                                const Text& filter, const Text& extension) {
  const Text book_file = FileBaseName(book.Path());
  const Text stem = book_file.substr(0, book_file.rfind('.'));
  auto file = FileOrAnswer(options.file, {.save = true,
                                          .title = "Export from " + book_file,
                                          .filter = filter,
                                          .extension = extension,
                                          .proposed_name = stem + "." + extension});
  if (options.file.empty() && file) session.AddOutput(*file);
  return file;
}

// The operation stops the program at a date that the book has no record for, so the range is looked at before.
std::unique_ptr<engine::Book> OpenForExport(Session& session, const ExportOptions& options) {
  auto book = session.OpenToRead(options.book);
  NeedDate(*book, options.from);
  NeedDate(*book, options.to);
  return book;
}

// A writer enforces no limit of the exchange file, and no reader takes a file that goes beyond one.
void NeedRoomInExchangeFile(const engine::Book& book) {
  Text troubles;
  for (const Text& trouble : application::BeyondExchangeFiles(book.Description())) {
    troubles += (troubles.empty() ? "the book has " : ", and ") + trouble;
  }
  if (!troubles.empty()) throw Failure(FailureNumber::kInvalidArgument, book.Path() + ": " + troubles);
}

void TellExport(const Text& file, const ExportOptions& options, ExitStatus status) {
  if (status != ExitStatus::kDone) return;
  const Text range = DateText(options.from) + " to " + DateText(options.to);
  // What goes to standard output stands there alone.
  const bool to_stream = options.file == application::kStandardStream;
  to_stream ? TellLine("Wrote standard output: " + range + ".") : PrintLine(fmt::format("Wrote {}: {}.", file, range));
}

ExitStatus RunExportQdx(const ExportOptions& options) {
  NeedOrder(options.from, options.to);
  NeedFileOrTerminal(options.file);
  Session session(options.asking, {.book = options.book, .output = options.file});
  const auto book = OpenForExport(session, options);
  NeedRoomInExchangeFile(*book);
  const auto file = FileToWrite(session, options, *book, "Exchange Files|*.QDX", "QDX");
  if (!file) return session.StatusOf(false);
  const CancelKey key;
  CDataExchange exchange(session.Factory());
  exchange.SetOwner(book.get());
  exchange.SetReportLength(options.report_length);
  ExportOutput output(session.Files(), *file, options.file == application::kStandardStream);
  const bool as_table = false;
  const bool done = exchange.WriteQDXFile(*file, options.from, options.to, as_table, kReadableVersion);
  const ExitStatus status = output.Finish(done, session.StatusOf(done));
  TellExport(*file, options, status);
  return status;
}

std::vector<FormatDescription> Formats() {
  const tables::ExportLibrary library;
  std::vector<FormatDescription> formats;
  for (int position = 1; position <= library.NumFormats(); ++position) {
    FormatDescription format;
    if (library.FormatInfo(static_cast<Integer>(position), format)) formats.push_back(format);
  }
  return formats;
}

std::vector<Text> FormatCodes() {
  std::vector<Text> codes;
  for (const FormatDescription& format : Formats()) codes.push_back(format.code);
  return codes;
}

// The description of a format by its code, in any case. WrongUse that names all codes where there is none.
FormatDescription FormatOf(const Text& code) {
  for (const FormatDescription& format : Formats()) {
    if (UpperCase(format.code) == UpperCase(code)) return format;
  }
  throw WrongUse(fmt::format("--type: '{}' is no table format; there are {}", code, Listed(FormatCodes())));
}

// The wish for decimals. WrongUse for a text that is none, and for one that the format cannot keep.
std::optional<int> DecimalsOf(const std::optional<Text>& text, const Text& format_code) {
  if (!text) return std::nullopt;
  if (LowerCase(*text) == "full") {
    if (tables::ExportLibrary::HoldsEveryDecimal(format_code)) return tables::kEveryDecimal;
    throw WrongUse(fmt::format(
        "--decimals full: {} has columns of fixed width, which cannot hold every decimal of a figure", format_code));
  }
  int decimals = 0;
  const char* const end = text->data() + text->size();
  const auto [stop, error] = std::from_chars(text->data(), end, decimals);
  if (error == std::errc() && stop == end && decimals >= 0 && decimals <= tables::kMostDecimals) return decimals;
  throw WrongUse(
      fmt::format("--decimals: '{}' is neither a number from 0 to {} nor full", *text, tables::kMostDecimals));
}

// The export itself names a file that has no extension after its format.
Text WithExtension(const Text& file, const FormatDescription& format) {
  return file.empty() || !FileExtension(file).empty() ? file : file + "." + format.extension;
}

ExitStatus RunExportTable(const ExportOptions& options) {
  NeedOrder(options.from, options.to);
  NeedFileOrTerminal(options.file);
  const FormatDescription format = FormatOf(options.format);
  const auto library = std::make_shared<tables::ExportLibrary>(
      tables::FigureStyle{.decimals = DecimalsOf(options.decimals, format.code), .leaves_out_zeros = options.nonzero});
  const bool to_stream = options.file == application::kStandardStream;
  const Text named = to_stream ? options.file : WithExtension(options.file, format);
  Session session(options.asking, {.book = options.book, .output = named});
  const auto book = OpenForExport(session, options);
  const Text extension = LowerCase(format.extension);
  const auto answer = FileToWrite(session, options, *book, format.name + "|*." + extension, extension);
  if (!answer) return session.StatusOf(false);
  const Text file = WithExtension(*answer, format);
  const CancelKey key;
  CDataExchange exchange(session.Factory());
  exchange.SetOwner(book.get());
  exchange.SetTransZeros(!options.nonzero);
  exchange.SetDataExportObject(std::make_shared<application::WholeTables>(library, session.Files()));
  ExportOutput output(session.Files(), file, to_stream);
  const bool as_table = true;
  const bool done = exchange.WriteQDXFile(file, options.from, options.to, as_table, kReadableVersion, format.code);
  if (!done && !library->LastError().empty()) Warn(session.Files().WithUsersNames(library->LastError()));
  const ExitStatus status = output.Finish(done, session.StatusOf(done));
  TellExport(file, options, status);
  return status;
}

void AddShared(CommandTable& command, ExportOptions& options) {
  AddBook(command, options.book);
  AddFile(command, options.file, "The file to write; an old one of that name is replaced; - for standard output");
  AddDate(command, "--from", options.from, "The first date of the range").Required();
  AddDate(command, "--to", options.to, "The last date; a week or period that ends behind it is left out").Required();
  AddAsking(command, options.asking);
}

CommandTable ExportQdxCommand() {
  const auto options = std::make_shared<ExportOptions>();
  CommandTable command =
      MakeCommand("qdx", "Write an exchange file",
                  {"tallybook export qdx north year.QDX --from 2003-01-01 --to 2003-12-31"}, options, RunExportQdx);
  AddShared(command, *options);
  AddNumber(command, "--report-length", options->report_length, "N",
            "Carried in the file: 1 day, 2 week, 3 period, 4 quarter, 5 half year, 6 year, 7 custom, 8 all");
  return command;
}

CommandTable ExportTableCommand() {
  const auto options = std::make_shared<ExportOptions>();
  CommandTable command =
      MakeCommand("table", "Write a table: CSV, XLSX, DBF, TXT (fixed width) or SQLT (SQLite)",
                  {"tallybook export table north year.xlsx --type XLSX --from 2003-01-01 --to 2003-12-31 --nonzero"},
                  options, RunExportTable);
  AddShared(command, *options);
  AddText(command, "--type", options->format, "CODE", "The table's format").Required().words = FormatCodes();
  AddText(
      command, "--decimals", options->decimals, "N",
      "Decimals of the figures, 0 to 15 (3 without this); full: the shortest text that reads back to the same number");
  AddFlag(command, "--nonzero", options->nonzero, "Leave out what would be written as zero");
  return command;
}

}  // namespace

CommandTable ExportCommand() {
  return MakeGroup("export", "Write figures to an exchange file or a table",
                   {ExportQdxCommand(), ExportTableCommand()});
}

}  // namespace tallybook::cli
