#include "tallybook/cli/PreviewPrinter.h"

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

// Before, after and the change between them.
Text JsonFigures(Double before, Double after) {
  return fmt::format(R"("figure_before": {}, "figure_after": {}, "change": {})", ShortestText(before),
                     ShortestText(after), ShortestText(after - before));
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
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    Line(fmt::format("{}  {}  {}  {}  {}", PadRight(Shown(CodeOf(change.account_position)), ' ', engine::kCodeWidth),
                     DateText(change.date), FieldText(change.field_number, change.field_position),
                     TableFigures(change.before, change.after), Shown(preview_.Files()[file].name)));
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
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    Line(fmt::format("{},{},{},{},{},{},{},{}", change.account_number, CsvField(CodeOf(change.account_position)),
                     DateText(change.date), change.field_number, ShortestText(change.before),
                     ShortestText(change.after), ShortestText(change.after - change.before),
                     CsvField(preview_.Files()[file].name)));
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
  preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
    AddRow(fmt::format(R"("account": {}, "code": {}, "date": "{}", "field": {}, {}, "file": {})", change.account_number,
                       Json(CodeOf(change.account_position)), DateText(change.date), change.field_number,
                       JsonFigures(change.before, change.after), Json(preview_.Files()[file].name)));
    return GoesOn();
  });
  EndList();
}

void PreviewPrinter::PrintJsonOfTotals() {
  const auto figures = [](const preview::ChangeTotal& total) {
    return fmt::format(R"("field": {}, "figures": {}, {})", total.field_number, total.figures,
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
