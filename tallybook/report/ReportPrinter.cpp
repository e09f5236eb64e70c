#include "tallybook/report/ReportPrinter.h"

#include <cerrno>
#include <iostream>
#include <span>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Texts.h"
#include "platform/Clock.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/posix/SystemError.h"
#include "support/FileStream.h"
#include "support/Utility.h"
#include "tallybook/report/HtmlRenderer.h"
#include "tallybook/report/PdfModule.h"
#include "tallybook/report/TextRenderer.h"

namespace tallybook::report {

namespace {

constexpr const char* kSource = "ReportPrinter";
// The most lines above a table's head that a check of the page keeps with it.
constexpr int kKeptLines = 3;

// Runs a step of writing the report file; a failure is told anew with the path in front.
template <typename Step>
void WithPath(const Text& path, Step&& step) {
  try {
    step();
  } catch (const Failure& failure) {
    throw Failure(failure.Number(), "The report file " + path + " cannot be written: " + failure.Description(),
                  kSource);
  }
}

// The lines of a text that may hold line breaks of either kind.
std::vector<Text> LinesOf(const Text& text) {
  std::vector<Text> lines;
  std::size_t start = 0;
  for (;;) {
    const auto end = text.find_first_of("\r\n", start);
    lines.push_back(text.substr(start, end - start));
    if (end == Text::npos) return lines;
    start = end + (text.compare(end, 2, "\r\n") == 0 ? 2 : 1);
  }
}

// Null for a destination that is a stream.
std::unique_ptr<FileStream> OpenFileOf(const Destination& destination) {
  std::unique_ptr<FileStream> file;
  if (destination.path.empty()) return file;
  WithPath(destination.path, [&] {
    file = std::make_unique<FileStream>(
        ThePlatform().files->Open(destination.path, Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace));
  });
  return file;
}

void WriteTo(const Destination& destination, FileStream* file, const std::string& document) {
  if (file != nullptr) {
    WithPath(destination.path, [&] {
      file->Write(std::as_bytes(std::span(document)));
      file->Close();
    });
    return;
  }
  std::ostream& stream = destination.stream != nullptr ? *destination.stream : std::cout;
  errno = 0;
  stream.write(document.data(), static_cast<std::streamsize>(document.size())).flush();
  if (!stream)
    throw Failure(FailureNumberOf(errno), "The report cannot be written to its stream: " + WordsOfError(errno),
                  kSource);
}

}  // namespace

std::unique_ptr<Renderer> RendererFor(const Text& path) {
  if (path.empty()) return std::make_unique<TextRenderer>();
  const Text extension = LowerCase(FileExtension(FileBaseName(path)));
  if (extension == "txt") return std::make_unique<TextRenderer>();
  if (extension == "html" || extension == "htm") return std::make_unique<HtmlRenderer>();
  if (extension == "pdf") return NewPdfRenderer();
  throw Failure(FailureNumber::kInvalidArgument,
                "The report file " + path + " must end in .txt, .html or .pdf: the extension names its form", kSource);
}

void WriteReport(const Report& report, const PageHeads& page_heads, const Destination& destination) {
  const auto file = OpenFileOf(destination);
  WriteTo(destination, file.get(), RendererFor(destination.path)->Render(report, page_heads));
}

// --- The columns -----------------------------------------------------------------------------------------------------

ReportColumn& ReportPrinter::ColumnSet::Add(Single width) {
  return columns_.emplace_back(width);
}

ReportColumn& ReportPrinter::ColumnSet::Item(Integer position) {
  if (position < 1 || static_cast<std::size_t>(position) > columns_.size())
    throw Failure(
        FailureNumber::kRange,
        "The report has " + std::to_string(columns_.size()) + " columns, and no column " + std::to_string(position),
        kSource);
  return columns_[static_cast<std::size_t>(position - 1)];
}

void ReportPrinter::ColumnSet::ClearText() {
  for (Column& column : columns_) column.SetText({});
}

void ReportPrinter::ColumnSet::SetTexts(const Cells& texts) {
  for (std::size_t i = 0; i < columns_.size() && i < texts.size(); ++i) columns_[i].SetText(texts[i]);
}

std::vector<Single> ReportPrinter::ColumnSet::Widths() const {
  std::vector<Single> widths;
  for (const Column& column : columns_) widths.push_back(column.Width());
  return widths;
}

Cells ReportPrinter::ColumnSet::Texts() const {
  Cells texts;
  for (const Column& column : columns_) texts.push_back(column.Text());
  return texts;
}

// --- The printer -----------------------------------------------------------------------------------------------------

ReportPrinter::ReportPrinter(Destination destination, engine::ProgressDisplay* progress)
    : destination_(std::move(destination)), renderer_(RendererFor(destination_.path)), progress_(progress) {}

ReportPrinter::~ReportPrinter() {
  if (progress_open_) progress_->End();
}

bool ReportPrinter::BeginReport(Long /*owner*/, const Text& title) {
  EndReport();
  file_ = OpenFileOf(destination_);
  report_ = {.title = title, .created = DateTimeText(Now()), .blocks = {}};
  head_.clear();
  columns_.Clear();
  head_raised_ = false;
  table_open_ = false;
  open_ = true;
  if (listener_ != nullptr) listener_->PrintInit(*this);
  return true;
}

void ReportPrinter::EndReport() {
  if (!open_) return;
  try {
    RaiseFirstHead();
    Finish(report_, [this](int page) -> const Blocks& { return HeadOfPage(page); });
  } catch (...) {
    // A report that cannot be written is not tried again by whoever cleans up.
    Drop();
    throw;
  }
  Drop();
}

void ReportPrinter::Finish(Report& report, const PageHeads& page_heads) {
  WriteTo(destination_, file_.get(), renderer_->Render(report, page_heads));
}

void ReportPrinter::Drop() {
  open_ = false;
  table_open_ = false;
  report_ = {};
  file_.reset();
}

// --- The page heads --------------------------------------------------------------------------------------------------

// What the listener prints while the event runs goes into head_. The table that is open and the texts of the row under
// way are put aside, for the head may come due between any two rows.
const Blocks& ReportPrinter::HeadOfPage(int page) {
  if ((page == 1 && head_raised_) || listener_ == nullptr) return head_;
  head_.clear();
  const bool table_was_open = std::exchange(table_open_, false);
  const Cells texts = columns_.Texts();
  in_head_ = true;
  const auto put_back = [&] {
    in_head_ = false;
    table_open_ = table_was_open;
    columns_.SetTexts(texts);
  };
  try {
    listener_->PrintHeader(*this);
  } catch (...) {
    put_back();
    throw;
  }
  put_back();
  return head_;
}

// The head of the first page is due before the first thing is printed.
void ReportPrinter::RaiseFirstHead() {
  if (head_raised_ || in_head_) return;
  HeadOfPage(1);
  head_raised_ = true;
}

// --- Lines and rows --------------------------------------------------------------------------------------------------

void ReportPrinter::NeedReport(const char* what) const {
  if (!open_)
    throw Failure(FailureNumber::kObjectNotSet, Text(what) + " needs a report that has begun and not ended", kSource);
}

Blocks& ReportPrinter::Target() {
  return in_head_ ? head_ : report_.blocks;
}

Table& ReportPrinter::OpenTable() {
  Blocks& target = Target();
  if (!table_open_) {
    const TableLook look{
        .spacing = columns_.Spacing(), .close_rows = row_style_ == kCloseRows, .ruled_head = head_style_ == kRuledHead};
    target.emplace_back(Table{.widths = columns_.Widths(), .head = {}, .body = {}, .look = look});
  }
  table_open_ = true;
  return std::get<Table>(target.back());
}

void ReportPrinter::SetColumnMode(Integer /*mode*/) {
  // Columns are the only mode there is; rows are told from lines by the operation that prints them.
}

ReportColumns& ReportPrinter::Columns() {
  return columns_;
}

void ReportPrinter::ApplyColumns() {
  table_open_ = false;
}

void ReportPrinter::PrintLine(const Text& line) {
  NeedReport("PrintLine");
  RaiseFirstHead();
  table_open_ = false;
  for (Text& text : LinesOf(line)) Target().emplace_back(Line{std::move(text)});
}

void ReportPrinter::PrintRow() {
  NeedReport("PrintRow");
  RaiseFirstHead();
  Cells cells = columns_.Texts();
  if (cells.empty())
    throw Failure(FailureNumber::kRange, "A row of the report needs columns, and it has none", kSource);
  OpenTable().body.push_back(std::move(cells));
}

void ReportPrinter::PrintHeadingRow() {
  NeedReport("PrintHeadingRow");
  RaiseFirstHead();
  Cells cells = columns_.Texts();
  if (cells.empty())
    throw Failure(FailureNumber::kRange, "A heading row of the report needs columns, and it has none", kSource);
  // A second heading row ends the table that is open: its rows are a body already and no part of the new head.
  if (table_open_ && !OpenTable().head.empty()) table_open_ = false;
  Table& table = OpenTable();
  table.head = std::exchange(table.body, {});
  table.head.push_back(std::move(cells));
}

void ReportPrinter::NewPage() {
  NeedReport("NewPage");
  RaiseFirstHead();
  Blocks& blocks = report_.blocks;
  if (in_head_ || blocks.empty() || std::holds_alternative<PageBreak>(blocks.back())) return;
  table_open_ = false;
  blocks.emplace_back(PageBreak{});
}

// A table keeps its head with its first row by itself.
void ReportPrinter::CheckPage() {
  NeedReport("CheckPage");
  if (in_head_) return;
  auto block = report_.blocks.rbegin();
  if (table_open_) ++block;
  for (int kept = 0; kept < kKeptLines && block != report_.blocks.rend(); ++kept, ++block) {
    Line* const line = std::get_if<Line>(&*block);
    if (line == nullptr) return;
    line->keeps_with_next = true;
  }
}

// --- The progress display --------------------------------------------------------------------------------------------

void ReportPrinter::BeginProgress(const Text& title) {
  if (progress_ == nullptr) return;
  progress_->Begin(title);
  progress_->CancelEnabled(false);
  progress_open_ = true;
  cancel_offered_ = false;
}

void ReportPrinter::SetProgressFraction(Single fraction) {
  if (progress_open_) progress_->Fraction(fraction);
}

// Work that never looks would let a cancel that is offered go by unheard.
bool ReportPrinter::ProgressCancelled() const {
  if (!progress_open_) return false;
  if (!std::exchange(cancel_offered_, true)) progress_->CancelEnabled(true);
  return progress_->Cancelled();
}

void ReportPrinter::EndProgress() {
  if (progress_open_) progress_->End();
  progress_open_ = false;
}

}  // namespace tallybook::report
