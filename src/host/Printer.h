// The report printer: it takes lines and table rows and makes a report of them. Page breaks, page numbers, margins and
// the look of a page head are its own. Whoever asked the factory for a printer owns it.
#pragma once

#include "base/Types.h"
#include "host/ReportColumns.h"

namespace tallybook {

class Printer;

// Who listens to a printer. The printer raises PrintInit once when a report begins, within BeginReport, and
// PrintHeader for each page when its head is due.
class PrinterEvents {
 public:
  virtual ~PrinterEvents() = default;
  virtual void PrintInit(Printer& printer) = 0;
  virtual void PrintHeader(Printer& printer) = 0;
};

// Looks of a report, for SetRowStyle and SetHeadStyle; a printer takes a value that it does not know for the usual one.
inline constexpr Integer kUsualStyle = 0;
inline constexpr Integer kCloseRows = 4;  // rows stand close together, with nothing drawn between them
inline constexpr Integer kRuledHead = 1;  // a table's head has a rule above it as well as below

class Printer {
 public:
  virtual ~Printer() = default;

  // Who is told of this printer's events; null for nobody. The listener must outlive the report.
  virtual void SetEvents(PrinterEvents* listener) = 0;

  // The value of HostApp::UserOption, set before BeginReport.
  virtual void SetOutputOption(Integer option) = 0;

  // How the rows and the heads of tables look from now on; kUsualStyle at first. Set before BeginReport, and kept.
  virtual void SetRowStyle(Integer style) = 0;
  virtual void SetHeadStyle(Integer style) = 0;

  // Opens the report. `owner` is the handle of the window that it belongs to, 0 for none.
  // False: the user declined, and nothing is printed. EndReport is harmless then.
  [[nodiscard]] virtual bool BeginReport(Long owner, const Text& title) = 0;
  // Closes and finishes the report.
  virtual void EndReport() = 0;

  // Within PrintInit: mode 1 means that columns follow; they are added to Columns, and ApplyColumns ends the set-up.
  virtual void SetColumnMode(Integer mode) = 0;
  virtual ReportColumns& Columns() = 0;
  virtual void ApplyColumns() = 0;

  // One line of free text.
  virtual void PrintLine(const Text& line) = 0;
  // The text of the columns as one row, or as a heading row that closes a table's head.
  virtual void PrintRow() = 0;
  virtual void PrintHeadingRow() = 0;

  // Begins a new page, which ends a table; on a page that holds nothing yet it does nothing.
  virtual void NewPage() = 0;
  // Sees to it that what was printed last, a table's head as a rule, with up to three lines above it, stands on one
  // page with what is printed next. A form without pages has nothing to do.
  virtual void CheckPage() = 0;

  // The report's own progress display. BeginProgress opens or retitles it; the fraction runs from 0 to 1; EndProgress
  // must be harmless when none is open.
  virtual void BeginProgress(const Text& title) = 0;
  virtual void SetProgressFraction(Single fraction) = 0;
  // The user pressed cancel there. Polled, never signalled.
  [[nodiscard]] virtual bool ProgressCancelled() const = 0;
  virtual void EndProgress() = 0;
};

}  // namespace tallybook
