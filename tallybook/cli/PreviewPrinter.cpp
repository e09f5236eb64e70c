#include "tallybook/cli/PreviewPrinter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>

#include "base/Dates.h"
#include "base/Texts.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Colours.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

using application::FigureText;
using application::Shown;
using application::WithCommas;

constexpr std::size_t kBufferSize = std::size_t{1} << 16;
constexpr Long kFieldNameWidth = 20;
constexpr std::size_t kLongestNumber = 32;  // the shortest text of a double takes 24 characters at most

Text Json(const Text& text) {
  return JsonLine(nlohmann::ordered_json(text));
}

const char* WordOf(preview::FileFate::Kind kind) {
  switch (kind) {
    case preview::FileFate::Kind::kDeleted:
      return "deleted";
    case preview::FileFate::Kind::kRenamed:
      return "renamed";
    case preview::FileFate::Kind::kKept:
      break;
  }
  return "kept";
}

// Before, after and the change between them, behind other members.
Text JsonFigures(Double before, Double after) {
  return JsonMember("figure_before", before) + JsonMember("figure_after", after) + JsonMember("change", after - before);
}

Text TableFigures(Double before, Double after) {
  return fmt::format("{:>16}  {:>16}  {:>16}", FigureText(before), FigureText(after), FigureText(after - before));
}

Text TableFigureHeads() {
  return fmt::format("{:>16}  {:>16}  {:>16}", "Before", "After", "Change");
}

}  // namespace

void PreviewPrinter::Print(PrintForm form) {
  if (form == PrintForm::kTable) PrintTable();
  if (form == PrintForm::kCsv) PrintCsv();
  if (form == PrintForm::kJson) PrintJson();
  WriteOut();
}

void PreviewPrinter::PrepareFigure(PrintForm form, const preview::FigureChange& change) {
  if (change.account_position != account_position_) {
    account_position_ = change.account_position;
    const Text& code = CodeOf(account_position_);
    const Long number = change.account_number;
    if (form == PrintForm::kTable) account_text_ = PadRight(Shown(code), ' ', engine::kCodeWidth) + "  ";
    if (form == PrintForm::kCsv) account_text_ = fmt::format("{},{},", number, CsvField(code));
    if (form == PrintForm::kJson) account_text_ = fmt::format(R"("account": {}, "code": {}, )", number, Json(code));
  }
  if (change.date == date_) return;
  date_ = change.date;
  date_text_ = DateText(date_);
  if (form == PrintForm::kTable) date_text_ += "  ";
  if (form == PrintForm::kCsv) date_text_ += ',';
  if (form == PrintForm::kJson) date_text_ = fmt::format(R"("date": "{}", )", date_text_);
}

// The texts of all fields and files.
void PreviewPrinter::PrepareFiles(PrintForm form) {
  for (const auto& field : book_.Description().fields) {
    const auto position = static_cast<Integer>(field_texts_.size() + 1);
    const Integer number = field.number;
    if (form == PrintForm::kTable) field_texts_.push_back(FieldText(number, position));
    if (form == PrintForm::kCsv) field_texts_.push_back(fmt::format("{},", number));
    if (form == PrintForm::kJson) field_texts_.push_back(fmt::format(R"("field": {}, )", number));
  }
  for (const preview::PreviewedFile& file : preview_.Files()) {
    if (form == PrintForm::kTable) file_texts_.push_back("  " + Shown(file.name) + "\n");
    if (form == PrintForm::kCsv) file_texts_.push_back(CsvField(file.name) + "\n");
    if (form == PrintForm::kJson) file_texts_.push_back(fmt::format(R"(, "file": {} }})", Json(file.name)));
  }
}

void PreviewPrinter::AppendValue(Double value) {
  std::array<char, kLongestNumber> text{};
  const auto result = std::to_chars(text.begin(), text.end(), value);
  buffer_.append(text.begin(), result.ptr);
}

// Of a table: two blanks, and 15 digits.
void PreviewPrinter::AppendPadded(Double value) {
  constexpr std::size_t kWidth = 18;
  constexpr int kDigits = 15;
  if (!std::isfinite(value)) {
    buffer_ += fmt::format("{:>{}}", FigureText(value), kWidth);
    return;
  }
  std::array<char, kLongestNumber> text{};
  const auto result = std::to_chars(text.begin(), text.end(), value, std::chars_format::general, kDigits);
  const auto width = static_cast<std::size_t>(result.ptr - text.begin());
  buffer_.append(std::max(kWidth, width + 2) - width, ' ');
  buffer_.append(text.begin(), result.ptr);
}

const Text& PreviewPrinter::CodeOf(Integer account_position) const {
  return book_.Description().accounts[static_cast<std::size_t>(account_position - 1)].code;
}

Text PreviewPrinter::FieldText(Integer number, Integer position) const {
  return fmt::format("{:>5} {}", number, PadRight(Shown(TrimRight(book_.FieldName(position))), ' ', kFieldNameWidth));
}

// --- The table -------------------------------------------------------------------------------------------------------

void PreviewPrinter::PrintTable() {
  PrintTableOfFigures();
  PrintTableOfTotals();
  PrintTableOfDays();
  PrintTableOfFiles();
  Line("");
  Line(application::PreviewSummary(preview_));
}

void PreviewPrinter::PrintTableOfFigures() {
  Heading(fmt::format("{:<10}  {:<10}  {:<26}  {}  File", "Account", "Date", "Field", TableFigureHeads()));
  PrepareFiles(PrintForm::kTable);
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    PrepareFigure(PrintForm::kTable, change);
    buffer_ += account_text_;
    buffer_ += date_text_;
    buffer_ += field_texts_[static_cast<std::size_t>(change.field_position - 1)];
    for (const Double figure : {change.before, change.after, change.after - change.before}) AppendPadded(figure);
    buffer_ += file_texts_[file];
    return GoesOn();
  });
}

Text PreviewPrinter::TotalCells(const preview::ChangeTotal& total) const {
  return fmt::format("{}  {:>10}  {}", FieldText(total.field_number, total.field_position), WithCommas(total.figures),
                     TableFigures(total.before, total.after));
}

void PreviewPrinter::PrintTableOfTotals() {
  Line("");
  Heading(fmt::format("{:<10}  {:<26}  {:>10}  {}", "Account", "Field", "Figures", TableFigureHeads()));
  preview_.VisitAccountTotals([&](const preview::ChangeTotal& total) {
    Line(PadRight(Shown(CodeOf(total.account_position)), ' ', engine::kCodeWidth) + "  " + TotalCells(total));
    return GoesOn();
  });
  for (const preview::ChangeTotal& total : preview_.FieldTotals()) {
    Line(fmt::format("{:<10}  {}", "all", TotalCells(total)));
  }
}

void PreviewPrinter::PrintTableOfDays() {
  const auto regrouped = preview_.Regrouped();
  if (regrouped.empty()) return;
  Line("");
  Heading("Record      Days  First       Last");
  for (const preview::RegroupedDays& days : regrouped) {
    Line(fmt::format("{}  {:>4}  {}  {}", DateText(days.record), days.days, DateText(days.first), DateText(days.last)));
  }
}

void PreviewPrinter::PrintTableOfFiles() {
  Line("");
  Heading(fmt::format("{:>10}  {:>10}  {:>10}  File", "Figures", "Records", "As before"));
  for (const application::PreviewedImport& import : outcome_.imports) {
    const Text reason = import.reason.empty() ? "" : " (" + Shown(import.reason) + ")";
    Line(fmt::format("{:>10}  {:>10}  {:>10}  {}: {}, {}{}", WithCommas(import.figures),
                     WithCommas(import.records.changed), WithCommas(import.records.same), Shown(import.file),
                     import.imported ? "imported" : "not imported", Shown(application::FateText(import.fate)), reason));
  }
}

// --- CSV -------------------------------------------------------------------------------------------------------------

void PreviewPrinter::PrintCsv() {
  Line("account_number,account_code,date,field,before,after,change,file");
  PrepareFiles(PrintForm::kCsv);
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    PrepareFigure(PrintForm::kCsv, change);
    buffer_ += account_text_;
    buffer_ += date_text_;
    buffer_ += field_texts_[static_cast<std::size_t>(change.field_position - 1)];
    for (const Double figure : {change.before, change.after, change.after - change.before}) {
      if (std::isfinite(figure)) AppendValue(figure);
      buffer_ += ',';
    }
    buffer_ += file_texts_[file];
    return GoesOn();
  });
}

// --- JSON ------------------------------------------------------------------------------------------------------------

void PreviewPrinter::PrintJson() {
  const preview::RecordCounts& records = preview_.Records();
  buffer_ += "{\n";
  Line(fmt::format(R"(  "done": {},)", outcome_.done));
  PrintJsonOfFigures();
  PrintJsonOfTotals();
  PrintJsonOfDays();
  PrintJsonOfFiles();
  Line(fmt::format(R"(  "records_changed": {}, "records_same": {},)", records.changed, records.same));
  Line(R"(  "report": )" + JsonLine(nlohmann::ordered_json(outcome_.report)));
  buffer_ += "}\n";
}

void PreviewPrinter::BeginList(const Text& name) {
  buffer_ += fmt::format(R"(  "{}": [)", name);
  first_row_ = true;
}

void PreviewPrinter::AddRow(const Text& row) {
  buffer_ += first_row_ ? "\n    { " : ",\n    { ";
  buffer_ += row;
  buffer_ += " }";
  first_row_ = false;
}

void PreviewPrinter::EndList() {
  buffer_ += first_row_ ? "],\n" : "\n  ],\n";
}

void PreviewPrinter::PrintJsonOfFigures() {
  BeginList("changes");
  PrepareFiles(PrintForm::kJson);
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    PrepareFigure(PrintForm::kJson, change);
    buffer_ += first_row_ ? "\n    { " : ",\n    { ";
    first_row_ = false;
    buffer_ += account_text_;
    buffer_ += date_text_;
    buffer_ += field_texts_[static_cast<std::size_t>(change.field_position - 1)];
    buffer_ += R"("figure_before": )";
    AppendValue(change.before);
    buffer_ += R"(, "figure_after": )";
    AppendValue(change.after);
    if (const Double difference = change.after - change.before; std::isfinite(difference)) {
      buffer_ += R"(, "change": )";
      AppendValue(difference);
    }
    buffer_ += file_texts_[file];
    return GoesOn();
  });
  EndList();
}

void PreviewPrinter::PrintJsonOfTotals() {
  const auto figures = [](const preview::ChangeTotal& total) {
    return fmt::format(R"("field": {}, "figures": {}{})", total.field_number, total.figures,
                       JsonFigures(total.before, total.after));
  };
  BeginList("account_totals");
  preview_.VisitAccountTotals([&](const preview::ChangeTotal& total) {
    AddRow(fmt::format(R"("account": {}, "code": {}, {})", total.account_number, Json(CodeOf(total.account_position)),
                       figures(total)));
    return GoesOn();
  });
  EndList();
  BeginList("field_totals");
  for (const preview::ChangeTotal& total : preview_.FieldTotals()) AddRow(figures(total));
  EndList();
}

void PreviewPrinter::PrintJsonOfDays() {
  BeginList("regrouped");
  for (const preview::RegroupedDays& days : preview_.Regrouped()) {
    AddRow(fmt::format(R"("date": "{}", "days": {}, "first": "{}", "last": "{}")", DateText(days.record), days.days,
                       DateText(days.first), DateText(days.last)));
  }
  EndList();
}

void PreviewPrinter::PrintJsonOfFiles() {
  BeginList("imports");
  for (const application::PreviewedImport& import : outcome_.imports) {
    Text row = fmt::format(
        R"("file": {}, "imported": {}, "figures": {}, "records_changed": {}, "records_same": {}, "then": "{}")",
        Json(import.file), import.imported, import.figures, import.records.changed, import.records.same,
        WordOf(import.fate.kind));
    if (!import.fate.new_path.empty()) row += R"(, "new_file": )" + Json(import.fate.new_path);
    if (!import.reason.empty()) row += R"(, "reason": )" + Json(import.reason);
    AddRow(row);
  }
  EndList();
}

// --- What goes out ---------------------------------------------------------------------------------------------------

void PreviewPrinter::Line(const Text& line) {
  buffer_ += line;
  buffer_ += '\n';
}

void PreviewPrinter::Heading(const Text& line) {
  Line(HeadingText(line));
}

// False once the user cancels or nobody reads on.
bool PreviewPrinter::GoesOn() {
  if (buffer_.size() >= kBufferSize) WriteOut();
  return !CancelKey::Pressed() && out_.good();
}

void PreviewPrinter::WriteOut() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

}  // namespace tallybook::cli
