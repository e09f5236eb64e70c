// Makes the objects that the component asks its application for. The application makes one factory, tells it where
// reports go and where progress is shown, and brings what only a windowed application has. One thread.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "host/DataExportObject.h"
#include "host/EdtForm.h"
#include "host/FiscalCalendar.h"
#include "host/HostFactory.h"
#include "host/IniFile.h"
#include "host/Printer.h"
#include "host/Sequence.h"
#include "tallybook/engine/ProgressDisplay.h"
#include "tallybook/report/ReportPrinter.h"

namespace tallybook::application {

class ReferenceFactory : public HostFactory {
 public:
  ReferenceFactory();
  using ListWindowMaker = std::function<std::unique_ptr<EdtForm>()>;
  using SequenceMaker = std::function<std::unique_ptr<PrintSequence>()>;

  // Where the reports of printers made from now on go; at first the standard output, as text.
  // Fails with Failure 5 for a path whose extension names no form of report.
  void SetReportDestination(const report::Destination& destination);
  // What reports of printers made from now on end in, asked as each one ends; empty for nothing.
  using ClosingLines = std::function<std::vector<Text>()>;
  void SetReportClosing(ClosingLines lines) { closing_ = std::move(lines); }
  // From now on a report that ends is kept instead of written, for an application that has still to find out what
  // became of the work; it has no closing lines of its own.
  void HoldReports();
  // Writes the reports that were kept, each with these lines at its end; from now on reports are written as they end.
  // One that fails does not keep the others. Fails as ReportPrinter::BeginReport and EndReport.
  void WriteHeldReports(const std::vector<Text>& closing);

  // Shows the progress of printers made from now on; null for none. It must outlive them.
  void SetProgressDisplay(engine::ProgressDisplay* display) { progress_ = display; }

  // Writes the reports that have begun and not ended, or are kept, with a last line: for a process that is about to
  // stop. One that cannot be written is passed over.
  void EndReports(const Text& last_line);

  void SetListWindowMaker(ListWindowMaker maker) { list_window_maker_ = std::move(maker); }
  void SetSequenceMaker(SequenceMaker maker) { sequence_maker_ = std::move(maker); }

  std::unique_ptr<IniFile> NewIniFile() override;
  std::unique_ptr<Printer> NewPrinter() override;
  std::shared_ptr<DataExportObject> NewDataExportObject() override;
  // The engine's calendar, not attached yet.
  std::unique_ptr<FiscalCalendar> NewFiscalCalendar() override;
  // Both fail with Failure 73 (feature unavailable) until the application has set a maker.
  std::unique_ptr<EdtForm> NewEdtForm() override;
  std::unique_ptr<PrintSequence> NewPrintSequence() override;

 private:
  class KnownPrinter;
  struct UnderWay;

  report::Destination destination_;
  engine::ProgressDisplay* progress_ = nullptr;
  ClosingLines closing_;
  std::shared_ptr<UnderWay> under_way_;
  ListWindowMaker list_window_maker_;
  SequenceMaker sequence_maker_;
};

}  // namespace tallybook::application
