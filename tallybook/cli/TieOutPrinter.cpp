#include "tallybook/cli/TieOutPrinter.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <utility>

#include "base/Dates.h"
#include "base/Texts.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/PreviewReport.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Colours.h"
#include "tallybook/cli/FigurePrinter.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

using application::FigureText;
using application::TieOutFigure;
using application::TieOutTotal;

constexpr std::size_t kTieOutBufferSize = std::size_t{1} << 16;
constexpr Long kTieOutFieldWidth = 20;

Text JsonOfText(const Text& text) {
  return JsonLine(nlohmann::ordered_json(text));
}

Text Cells(Double expected, Double stands) {
  return fmt::format("{:>16}  {:>16}  {:>16}", FigureText(expected), FigureText(stands), FigureText(stands - expected));
}

Text CellsOf(const TieOutFigure& figure) {
  if (figure.expected) return Cells(*figure.expected, figure.stands);
  return fmt::format("{:>16}  {:>16}  {:>16}", "?", FigureText(figure.stands), "?");
}

}  // namespace

void TieOutPrinter::Print(PrintForm form) {
  if (form == PrintForm::kTable) PrintTable();
  if (form == PrintForm::kCsv) PrintCsv();
  if (form == PrintForm::kJson) PrintJson();
  WriteOut();
}

void TieOutPrinter::PrintFigures(const std::function<Text(const TieOutFigure& figure)>& line_of) {
  tie_out_.VisitDifferences([&](const TieOutFigure& figure) {
    buffer_ += line_of(figure);
    return GoesOn();
  });
}

void TieOutPrinter::PrintTable() {
  if (tie_out_.Agrees()) return;
  const Text cells = fmt::format("{:>16}  {:>16}  {:>16}", "Expected", "Stands", "Difference");
  Line(HeadingText(fmt::format("{:<10}  {:<10}  {:<26}  {}  Source", "Account", "Date", "Field", cells)));
  PrintFigures([&](const TieOutFigure& figure) {
    return fmt::format("{}  {}  {}  {}  {}\n",
                       PadRight(application::Shown(CodeOf(figure.account_position)), ' ', engine::kCodeWidth),
                       DateText(figure.date), FieldText(figure.field_number, figure.field_position), CellsOf(figure),
                       application::Shown(FileOf(figure)));
  });
  Line("");
  PrintTableOfTotals();
}

void TieOutPrinter::PrintTableOfTotals() {
  const auto row = [&](const Text& account, const TieOutTotal& total) {
    Line(fmt::format("{}  {}  {:>10}  {:>8}  {:>8}  {}", PadRight(account, ' ', engine::kCodeWidth),
                     FieldText(total.field_number, total.field_position), application::WithCommas(total.figures),
                     application::WithCommas(total.differ), application::WithCommas(total.untold),
                     Cells(total.expected, total.stands)));
  };
  Line(HeadingText(fmt::format("{:<10}  {:<26}  {:>10}  {:>8}  {:>8}  {:>16}  {:>16}  {:>16}", "Account", "Field",
                               "Figures", "Differ", "Untold", "Expected", "Stands", "Difference")));
  for (const TieOutTotal& total : tie_out_.AccountTotals()) {
    row(application::Shown(CodeOf(total.account_position)), total);
    if (!GoesOn()) return;
  }
  for (const TieOutTotal& total : tie_out_.FieldTotals()) row("all", total);
}

void TieOutPrinter::PrintCsv() {
  Line("account_number,account_code,date,field,expected,stands,difference,source");
  PrintFigures([&](const TieOutFigure& figure) {
    return fmt::format("{},{},{},{},{},{},{},{}\n", figure.account_number, CsvField(CodeOf(figure.account_position)),
                       DateText(figure.date), figure.field_number,
                       figure.expected ? ShortestText(*figure.expected) : "", ShortestText(figure.stands),
                       figure.expected ? CsvNumber(figure.stands - *figure.expected) : "", CsvField(FileOf(figure)));
  });
}

void TieOutPrinter::PrintJson() {
  buffer_ += fmt::format("{{\n  \"agrees\": {},\n  \"differing\": [", tie_out_.Agrees());
  bool first = true;
  PrintFigures([&](const TieOutFigure& figure) {
    const Text expected = figure.expected ? JsonMember("expected", *figure.expected) : Text();
    const Text difference = figure.expected ? JsonMember("difference", figure.stands - *figure.expected) : Text();
    return fmt::format(
        R"({}
    {{ "account": {}, "code": {}, "date": "{}", "field": {}{}{}{}, "file": {} }})",
        std::exchange(first, false) ? "" : ",", figure.account_number, JsonOfText(CodeOf(figure.account_position)),
        DateText(figure.date), figure.field_number, expected, JsonMember("stands", figure.stands), difference,
        JsonOfText(FileOf(figure)));
  });
  buffer_ += first ? "],\n" : "\n  ],\n";
  PrintJsonTotals("held_accounts", tie_out_.AccountTotals());
  PrintJsonTotals("held_fields", tie_out_.FieldTotals());
  PrintJsonFiles();
  const TieOutTotal& figures = tie_out_.Figures();
  Line(fmt::format(R"(  "figures": {}, "differ": {}, "untold": {})", figures.figures, figures.differ, figures.untold));
  Line("}");
}

void TieOutPrinter::PrintJsonTotals(const Text& name, const std::vector<TieOutTotal>& totals) {
  buffer_ += fmt::format(R"(  "{}": [)", name);
  for (const TieOutTotal& total : totals) {
    const Text account = total.account_position == 0
                             ? Text()
                             : fmt::format(R"("account": {}, "code": {}, )", total.account_number,
                                           JsonOfText(CodeOf(total.account_position)));
    buffer_ += fmt::format(
        R"({}
    {{ {}"field": {}, "figures": {}, "differ": {}, "untold": {}{}{}{} }})",
        &total == totals.data() ? "" : ",", account, total.field_number, total.figures, total.differ, total.untold,
        JsonMember("expected", total.expected), JsonMember("stands", total.stands),
        JsonMember("difference", total.stands - total.expected));
    if (!GoesOn()) break;
  }
  buffer_ += totals.empty() ? "],\n" : "\n  ],\n";
}

void TieOutPrinter::PrintJsonFiles() {
  buffer_ += R"(  "held_files": [)";
  for (const application::TieOutFile& file : tie_out_.Files()) {
    const Text entry = file.entry == 0 ? Text() : fmt::format(R"("entry": {}, )", file.entry);
    buffer_ += fmt::format(R"({}
    {{ "file": {}, "math": "{}", {}"applied": {}, "not_mapped": {} }})",
                           &file == tie_out_.Files().data() ? "" : ",", JsonOfText(file.file),
                           application::MathWord(file.math), entry, file.applied, file.not_mapped);
  }
  buffer_ += "\n  ],\n";
}

const Text& TieOutPrinter::CodeOf(Integer account_position) const {
  return book_.Description().accounts[static_cast<std::size_t>(account_position - 1)].code;
}

Text TieOutPrinter::FieldText(Integer number, Integer position) const {
  return fmt::format("{:>5} {}", number,
                     PadRight(application::Shown(TrimRight(book_.FieldName(position))), ' ', kTieOutFieldWidth));
}

const Text& TieOutPrinter::FileOf(const TieOutFigure& figure) const {
  return tie_out_.Files()[figure.file].file;
}

void TieOutPrinter::Line(const Text& line) {
  buffer_ += line;
  buffer_ += '\n';
}

// False once the user cancels or nobody reads on.
bool TieOutPrinter::GoesOn() {
  if (buffer_.size() >= kTieOutBufferSize) WriteOut();
  return !CancelKey::Pressed() && out_.good();
}

void TieOutPrinter::WriteOut() {
  out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

}  // namespace tallybook::cli
