#include "tallybook/application/PreviewReport.h"

#include <array>
#include <charconv>
#include <cmath>
#include <initializer_list>

#include "base/Dates.h"
#include "base/Texts.h"
#include "host/AccountRecord.h"
#include "tallybook/application/Counts.h"

namespace tallybook::application {

namespace {

class PreviewReport : public PrinterEvents {
 public:
  PreviewReport(Printer& printer, Masterfile& book, preview::ImportPreview& preview, const PreviewOutcome& outcome)
      : printer_(printer), book_(book), preview_(preview), outcome_(outcome), account_(book.NewAccountRecord()) {}

  void Print() {
    printer_.SetEvents(this);
    const Long no_window = 0;
    if (!printer_.BeginReport(no_window, "Import Preview")) return;
    printer_.PrintLine(PreviewSummary(preview_));
    if (!outcome_.done) printer_.PrintLine("The import would not be done.");
    PrintFiles();
    PrintRegrouped();
    PrintTotals();
    PrintFigures();
    PrintOwnReport();
    printer_.EndReport();
    printer_.SetEvents(nullptr);
  }

  void PrintInit(Printer& printer) override { book_.InitReportPrinter(printer); }
  void PrintHeader(Printer& printer) override { book_.PrintReportHeader(printer, "Import Preview"); }

 private:
  void Table(const Text& title, std::initializer_list<std::pair<Single, const char*>> columns) {
    printer_.PrintLine("");
    printer_.PrintLine(title);
    printer_.SetColumnMode(1);
    printer_.Columns().Clear();
    for (const auto& [width, heading] : columns) printer_.Columns().Add(width).SetText(heading);
    printer_.ApplyColumns();
    printer_.PrintHeadingRow();
  }
  void Row(std::initializer_list<Text> cells) {
    Integer position = 0;
    for (const Text& cell : cells) printer_.Columns().Item(++position).SetText(cell);
    printer_.PrintRow();
  }

  [[nodiscard]] Text CodeOf(Long account_number) {
    account_->SetSelect(account_number);
    return TrimRight(account_->Code());
  }
  [[nodiscard]] Text FieldOf(Integer number, Integer position) const {
    return TrimRight(std::to_string(number) + " " + book_.FieldName(position));
  }

  void PrintFiles() {
    Table("Files", {{5, "File"}, {2, "Figures"}, {2, "Records"}, {2, "As before"}, {5, "Then"}});
    for (const PreviewedImport& import : outcome_.imports) {
      const Text fate = FateText(import.fate) + (import.reason.empty() ? "" : ": " + import.reason);
      Row({import.file, WithCommas(import.figures), WithCommas(import.records.changed), WithCommas(import.records.same),
           import.imported ? fate : "not imported; " + fate});
    }
  }

  void PrintRegrouped() {
    const auto regrouped = preview_.Regrouped();
    if (regrouped.empty()) return;
    Table("Days that go into one record", {{1, "Record"}, {1, "Days"}, {1, "First"}, {1, "Last"}});
    for (const preview::RegroupedDays& days : regrouped) {
      Row({DateText(days.record), WithCommas(days.days), DateText(days.first), DateText(days.last)});
    }
  }

  void PrintTotals() {
    Table("Totals of the fields", {{4, "Field"}, {2, "Figures"}, {3, "Before"}, {3, "After"}, {3, "Change"}});
    for (const preview::ChangeTotal& total : preview_.FieldTotals()) {
      Row({FieldOf(total.field_number, total.field_position), WithCommas(total.figures), FigureText(total.before),
           FigureText(total.after), FigureText(total.after - total.before)});
    }
    Table("Totals of the accounts",
          {{3, "Account"}, {4, "Field"}, {2, "Figures"}, {3, "Before"}, {3, "After"}, {3, "Change"}});
    std::size_t rows = 0;
    preview_.VisitAccountTotals([&](const preview::ChangeTotal& total) {
      if (!TakesOne(rows)) return true;
      Row({CodeOf(total.account_number), FieldOf(total.field_number, total.field_position), WithCommas(total.figures),
           FigureText(total.before), FigureText(total.after), FigureText(total.after - total.before)});
      return true;
    });
    PrintRest(rows);
  }

  void PrintFigures() {
    Table("Figures",
          {{3, "Account"}, {4.5F, "Date"}, {4, "Field"}, {4, "Before"}, {4, "After"}, {4, "Change"}, {4, "File"}});
    std::size_t rows = 0;
    preview_.VisitChanges([&](std::size_t file, const preview::FigureChange& change) {
      Row({CodeOf(change.account_number), DateText(change.date), FieldOf(change.field_number, change.field_position),
           FigureText(change.before), FigureText(change.after), FigureText(change.after - change.before),
           preview_.Files()[file].name});
      return ++rows < kMostFiguresOfAReport;
    });
    PrintRest(AllFigures());
  }

  // As many lines as the table would have.
  [[nodiscard]] std::size_t AllFigures() const {
    long long figures = 0;
    for (const preview::PreviewedFile& file : preview_.Files()) figures += file.figures;
    return static_cast<std::size_t>(figures);
  }

  void PrintOwnReport() {
    printer_.PrintLine("");
    printer_.PrintLine("The report of the import");
    for (const Text& line : outcome_.report) printer_.PrintLine(line);
  }

  // Whether the table has room for one row more than `count`, which is counted.
  static bool TakesOne(std::size_t& count) { return ++count <= kMostFiguresOfAReport; }
  void PrintRest(std::size_t count) {
    if (count <= kMostFiguresOfAReport) return;
    const auto more = static_cast<long long>(count - kMostFiguresOfAReport);
    printer_.PrintLine("... and " + Counted(more, "line") + " that this report has no room for");
  }

  Printer& printer_;
  Masterfile& book_;
  preview::ImportPreview& preview_;
  const PreviewOutcome& outcome_;
  std::unique_ptr<AccountRecord> account_;
};

}  // namespace

void PrintPreviewReport(Printer& printer, Masterfile& book, preview::ImportPreview& preview,
                        const PreviewOutcome& outcome) {
  PreviewReport(printer, book, preview, outcome).Print();
}

Text PreviewSummary(const preview::ImportPreview& preview) {
  long long figures = 0;
  for (const preview::ChangeTotal& total : preview.FieldTotals()) figures += total.figures;
  const preview::RecordCounts& records = preview.Records();
  return Counted(figures, "figure") + " in " + Counted(records.changed, "record") + " would change; " +
         Counted(records.same, "record") + (records.same == 1 ? " would end as it is." : " would end as they are.");
}

Text FigureText(Double figure) {
  if (!std::isfinite(figure)) return "too large";
  constexpr int kDigits = 15;
  std::array<char, 32> text{};
  const auto result = std::to_chars(text.begin(), text.end(), figure, std::chars_format::general, kDigits);
  return {text.begin(), result.ptr};
}

}  // namespace tallybook::application
