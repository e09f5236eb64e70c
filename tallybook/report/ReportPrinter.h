// The report printer of the reference host: it collects what is printed in a Report and writes it, when the report
// ends, as text, HTML or PDF. One thread. It owns its columns and the report; listener, stream and progress display
// belong to others and must outlive it.
#pragma once

#include <deque>
#include <iosfwd>
#include <memory>

#include "host/Printer.h"
#include "tallybook/engine/ProgressDisplay.h"
#include "tallybook/report/Report.h"

namespace tallybook {
class FileStream;
}

namespace tallybook::report {

// Where a report goes.
struct Destination {
  // A file; the extension names its form: .txt, .html or .htm, .pdf, in any case. Empty: as text to `stream`.
  Text path;
  // Where text goes that has no path; null for the standard output.
  std::ostream* stream = nullptr;
};

// The renderer of the form that the extension of a file names; text for an empty path.
// Fails with Failure 5 for a path whose extension names no form.
[[nodiscard]] std::unique_ptr<Renderer> RendererFor(const Text& path);

// Makes a document of a report and writes it. Fails as ReportPrinter::BeginReport and EndReport.
void WriteReport(const Report& report, const PageHeads& page_heads, const Destination& destination);

class ReportPrinter : public Printer {
 public:
  // `progress` may be null: then nothing is shown and nothing cancels.
  // Fails with Failure 5 for a path whose extension names no form.
  explicit ReportPrinter(Destination destination, engine::ProgressDisplay* progress = nullptr);
  // A report that has not ended is dropped, and a progress display that is open is closed.
  ~ReportPrinter() override;
  ReportPrinter(const ReportPrinter&) = delete;
  ReportPrinter& operator=(const ReportPrinter&) = delete;

  void SetEvents(PrinterEvents* listener) override { listener_ = listener; }
  // Kept and given back; a report looks the same under every option.
  void SetOutputOption(Integer option) override { output_option_ = option; }
  [[nodiscard]] Integer OutputOption() const { return output_option_; }
  void SetRowStyle(Integer style) override { row_style_ = style; }
  void SetHeadStyle(Integer style) override { head_style_ = style; }

  // Opens the destination, so that a place that cannot be written shows before any work is done, and raises PrintInit.
  // Always true: nobody is asked. A report that is still open is ended first.
  //   fails  with the path: Failure 70 not permitted, 75 or 76 a bad path or missing folder, 61, 57
  [[nodiscard]] bool BeginReport(Long owner, const Text& title) override;
  // Writes the document. The heads of the second and later pages are raised here, as their pages are made. Harmless
  // where no report is open.
  //   fails  Failure 61 disk full or 57 device error, with the path; the report is closed all the same
  void EndReport() override;

  void SetColumnMode(Integer mode) override;
  ReportColumns& Columns() override;
  // Ends the set-up: later rows are a table of these columns.
  void ApplyColumns() override;

  // What is printed while a PrintHeader event runs belongs to the page's head. All three fail with Failure 91 where no
  // report is open. A line break within a line begins another line. A row without columns is Failure 9.
  void PrintLine(const Text& line) override;
  void PrintRow() override;
  void PrintHeadingRow() override;
  // Both fail with Failure 91 where no report is open, and do nothing within a page's head.
  void NewPage() override;
  void CheckPage() override;

  // Nothing offers the cancel here: it is offered from the first look of the work at whether it was cancelled.
  void BeginProgress(const Text& title) override;
  void SetProgressFraction(Single fraction) override;
  [[nodiscard]] bool ProgressCancelled() const override;
  void EndProgress() override;

 protected:
  // What is done with the whole report when it ends: it is rendered and written. One who shows reports instead may take
  // it away. The heads of pages are there during the call alone.
  virtual void Finish(Report& report, const PageHeads& page_heads);
  // A report has begun and not ended.
  [[nodiscard]] bool IsOpen() const { return open_; }

 private:
  class Column : public ReportColumn {
   public:
    explicit Column(Single width) : width_(width) {}
    [[nodiscard]] tallybook::Text Text() const override { return text_; }
    void SetText(const tallybook::Text& text) override { text_ = text; }
    [[nodiscard]] Single Width() const { return width_; }

   private:
    Single width_;
    tallybook::Text text_;
  };

  class ColumnSet : public ReportColumns {
   public:
    ReportColumn& Add(Single width) override;
    ReportColumn& Item(Integer position) override;
    void Clear() override { columns_.clear(); }
    void ClearText() override;
    [[nodiscard]] Single Spacing() const override { return spacing_; }
    void SetSpacing(Single spacing) override { spacing_ = spacing; }
    [[nodiscard]] std::vector<Single> Widths() const;
    [[nodiscard]] Cells Texts() const;
    void SetTexts(const Cells& texts);

   private:
    std::deque<Column> columns_;  // a deque: columns that were handed out stay where they are
    Single spacing_ = 1;
  };

  void NeedReport(const char* what) const;
  void RaiseFirstHead();
  const Blocks& HeadOfPage(int page);
  Blocks& Target();
  Table& OpenTable();
  void Drop();

  Destination destination_;
  std::unique_ptr<Renderer> renderer_;
  engine::ProgressDisplay* progress_ = nullptr;
  PrinterEvents* listener_ = nullptr;
  Integer output_option_ = 0;
  Integer row_style_ = kUsualStyle;
  Integer head_style_ = kUsualStyle;

  ColumnSet columns_;
  std::unique_ptr<FileStream> file_;
  Report report_;
  Blocks head_;               // of the page whose head was raised last
  bool open_ = false;         // a report is under way
  bool in_head_ = false;      // a PrintHeader event runs
  bool head_raised_ = false;  // the head of page 1 stands in head_
  bool table_open_ = false;   // the last block of the target is a table that further rows join
  bool progress_open_ = false;
  mutable bool cancel_offered_ = false;  // since the progress began
};

}  // namespace tallybook::report
