#include "tests/support/MemoryPrinter.h"

#include <utility>

#include "base/Failure.h"

namespace tallybook::testing {

namespace {

Text JoinedCells(const std::vector<Text>& cells) {
  Text joined;
  for (std::size_t index = 0; index < cells.size(); ++index) joined += (index == 0 ? "" : " | ") + cells[index];
  return joined;
}

}  // namespace

// --- PrintedReport ---------------------------------------------------------------------------------------------------

std::vector<Text> PrintedReport::Lines() const {
  std::vector<Text> lines;
  for (const Entry& entry : entries)
    if (entry.kind == Kind::kLine) lines.push_back(entry.cells.front());
  return lines;
}

std::vector<Text> PrintedReport::Everything() const {
  std::vector<Text> texts;
  for (const Entry& entry : entries) {
    if (entry.kind == Kind::kNewPage) {
      texts.emplace_back("<new page>");
    } else if (entry.kind == Kind::kPageCheck) {
      texts.emplace_back("<page check>");
    } else {
      texts.push_back((entry.kind == Kind::kHeadingRow ? "# " : "") + JoinedCells(entry.cells));
    }
  }
  return texts;
}

// --- MemoryColumns ---------------------------------------------------------------------------------------------------

ReportColumn& MemoryColumns::Add(Single width) {
  record_.TellBulk("Columns.Add", width);
  columns_.push_back(std::make_unique<MemoryColumn>(width));
  return *columns_.back();
}

ReportColumn& MemoryColumns::Item(Integer position) {
  record_.TellBulk("Columns.Item", position);
  if (position < 1 || static_cast<std::size_t>(position) > columns_.size())
    throw Failure(FailureNumber::kRange, "The report has no column " + std::to_string(position), "MemoryColumns");
  return *columns_[static_cast<std::size_t>(position) - 1];
}

void MemoryColumns::Clear() {
  record_.TellBulk("Columns.Clear");
  columns_.clear();
}

void MemoryColumns::ClearText() {
  record_.TellBulk("Columns.ClearText");
  for (const auto& column : columns_) column->SetText("");
}

void MemoryColumns::SetSpacing(Single spacing) {
  record_.Tell("Columns.Spacing", spacing);
  spacing_ = spacing;
}

std::vector<Single> MemoryColumns::Widths() const {
  std::vector<Single> widths;
  for (const auto& column : columns_) widths.push_back(column->Width());
  return widths;
}

std::vector<Text> MemoryColumns::Cells() const {
  std::vector<Text> cells;
  for (const auto& column : columns_) cells.push_back(column->Text());
  return cells;
}

// --- MemoryPrinter ---------------------------------------------------------------------------------------------------

void MemoryPrinter::SetOutputOption(Integer option) {
  record_.Tell("Printer.OutputOption", option);
  printed_->output_option = option;
}

void MemoryPrinter::SetRowStyle(Integer style) {
  record_.Tell("Printer.RowStyle", style);
  printed_->row_style = style;
}

void MemoryPrinter::SetHeadStyle(Integer style) {
  record_.Tell("Printer.HeadStyle", style);
  printed_->head_style = style;
}

bool MemoryPrinter::BeginReport(Long owner, const Text& title) {
  const bool accepted = record_.Ask("Printer.BeginReport", owner, title);
  printed_->owner = owner;
  printed_->title = title;
  printed_->spacing = columns_.Spacing();
  printed_->declined = !accepted;
  if (!accepted) return false;
  printed_->open = true;
  if (listener_ != nullptr) listener_->PrintInit(*this);
  BeginPage();
  return true;
}

void MemoryPrinter::BeginPage() {
  if (listener_ != nullptr) listener_->PrintHeader(*this);
}

void MemoryPrinter::EndReport() {
  record_.Tell("Printer.EndReport");
  printed_->open = false;
  printed_->ended = true;
}

void MemoryPrinter::SetColumnMode(Integer mode) {
  record_.Tell("Printer.ColumnMode", mode);
  printed_->column_mode = mode;
}

void MemoryPrinter::ApplyColumns() {
  record_.Tell("Printer.ApplyColumns");
  printed_->columns_applied = true;
  printed_->widths = columns_.Widths();
  printed_->layouts.push_back(printed_->widths);
}

void MemoryPrinter::PrintLine(const Text& line) {
  record_.Tell("Printer.PrintLine", line);
  Print(PrintedReport::Kind::kLine, {line});
}

void MemoryPrinter::PrintRow() {
  record_.Tell("Printer.PrintRow", JoinedCells(columns_.Cells()));
  Print(PrintedReport::Kind::kRow, columns_.Cells());
}

void MemoryPrinter::PrintHeadingRow() {
  record_.Tell("Printer.PrintHeadingRow", JoinedCells(columns_.Cells()));
  Print(PrintedReport::Kind::kHeadingRow, columns_.Cells());
}

void MemoryPrinter::NewPage() {
  record_.Tell("Printer.NewPage");
  Print(PrintedReport::Kind::kNewPage, {});
  if (printed_->open) BeginPage();
}

void MemoryPrinter::CheckPage() {
  record_.Tell("Printer.CheckPage");
  Print(PrintedReport::Kind::kPageCheck, {});
}

void MemoryPrinter::Print(PrintedReport::Kind kind, std::vector<Text> cells) {
  if (!printed_->declined) printed_->entries.push_back({kind, std::move(cells)});
}

void MemoryPrinter::BeginProgress(const Text& title) {
  record_.Tell("Printer.BeginProgress", title);
  printed_->progress.Begin(title);
}

void MemoryPrinter::SetProgressFraction(Single fraction) {
  record_.Tell("Printer.ProgressFraction", fraction);
  printed_->progress.fractions.push_back(fraction);
}

bool MemoryPrinter::ProgressCancelled() const {
  record_.TellBulk("Printer.ProgressCancelled");
  return printed_->progress.Poll();
}

void MemoryPrinter::EndProgress() {
  record_.Tell("Printer.EndProgress");
  printed_->progress.End();
}

}  // namespace tallybook::testing
