// A report printer that keeps what was printed. What it kept outlives the printer: the factory's printers belong to the
// component and are gone when a test looks. One thread.
#pragma once

#include <memory>
#include <vector>

#include "base/Types.h"
#include "host/Printer.h"
#include "host/ReportColumns.h"
#include "tests/support/CallRecord.h"
#include "tests/support/MemoryMasterfile.h"

namespace tallybook::testing {

// What one printer printed.
struct PrintedReport {
  enum class Kind { kLine, kRow, kHeadingRow, kNewPage, kPageCheck };
  struct Entry {
    Kind kind = Kind::kLine;
    std::vector<Text> cells;  // of a line: the line itself; of the last two kinds: none
    bool operator==(const Entry&) const = default;
  };

  Text title;
  Long owner = 0;
  Integer output_option = 0;
  Integer row_style = kUsualStyle;
  Integer head_style = kUsualStyle;
  Single spacing = 1;  // of the columns, at BeginReport
  Integer column_mode = 0;
  bool columns_applied = false;
  bool open = false;   // between BeginReport and EndReport
  bool ended = false;  // EndReport was called
  bool declined = false;
  std::vector<Single> widths;                // of the columns
  std::vector<std::vector<Single>> layouts;  // the same, for each ApplyColumns
  std::vector<Entry> entries;
  ProgressDisplay progress;

  // The free lines alone, in order.
  [[nodiscard]] std::vector<Text> Lines() const;
  // Everything in order, a row as its cells with " | " between, a heading row with "# " in front, a new page as
  // "<new page>" and a check of the page as "<page check>".
  [[nodiscard]] std::vector<Text> Everything() const;
};

class MemoryColumn : public ReportColumn {
 public:
  explicit MemoryColumn(Single column_width) : width_(column_width) {}
  [[nodiscard]] tallybook::Text Text() const override { return text_; }
  void SetText(const tallybook::Text& text) override { text_ = text; }
  [[nodiscard]] Single Width() const { return width_; }

 private:
  Single width_;
  tallybook::Text text_;
};

class MemoryColumns : public ReportColumns {
 public:
  explicit MemoryColumns(CallRecord& record) : record_(record) {}
  ReportColumn& Add(Single width) override;
  ReportColumn& Item(Integer position) override;
  void Clear() override;
  void ClearText() override;
  [[nodiscard]] Single Spacing() const override { return spacing_; }
  void SetSpacing(Single spacing) override;

  [[nodiscard]] std::vector<Single> Widths() const;
  [[nodiscard]] std::vector<Text> Cells() const;

 private:
  CallRecord& record_;
  std::vector<std::unique_ptr<MemoryColumn>> columns_;
  Single spacing_ = 1;
};

// Its operations are "Printer.BeginReport", "Printer.PrintLine", "Printer.PrintRow" and so on; a row is recorded with
// its cells. GiveFalseOn("Printer.BeginReport", n) makes the user decline.
class MemoryPrinter : public Printer {
 public:
  explicit MemoryPrinter(CallRecord& record) : record_(record), columns_(record) {}

  // What was printed, shared with whoever wants to look later.
  [[nodiscard]] std::shared_ptr<PrintedReport> Printed() const { return printed_; }
  PrintedReport* operator->() const { return printed_.get(); }

  // A page that is full: raises PrintHeader to the listener.
  void BeginPage();

  void SetEvents(PrinterEvents* listener) override { listener_ = listener; }
  void SetOutputOption(Integer option) override;
  void SetRowStyle(Integer style) override;
  void SetHeadStyle(Integer style) override;
  // Raises PrintInit and then, for the first page, PrintHeader, both before it returns.
  [[nodiscard]] bool BeginReport(Long owner, const Text& title) override;
  void EndReport() override;
  void SetColumnMode(Integer mode) override;
  ReportColumns& Columns() override { return columns_; }
  void ApplyColumns() override;
  // Prints also outside a report, so that an operation that is handed a printer can be tried alone; after the user has
  // declined nothing is printed.
  void PrintLine(const Text& line) override;
  void PrintRow() override;
  void PrintHeadingRow() override;
  void NewPage() override;
  void CheckPage() override;
  void BeginProgress(const Text& title) override;
  void SetProgressFraction(Single fraction) override;
  [[nodiscard]] bool ProgressCancelled() const override;
  void EndProgress() override;

 private:
  void Print(PrintedReport::Kind kind, std::vector<Text> cells);

  CallRecord& record_;
  MemoryColumns columns_;
  PrinterEvents* listener_ = nullptr;
  std::shared_ptr<PrintedReport> printed_ = std::make_shared<PrintedReport>();
};

}  // namespace tallybook::testing
