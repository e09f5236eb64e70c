#include "tallybook/application/ReferenceFactory.h"

#include "base/Failure.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/settings/SettingsFile.h"
#include "tallybook/tables/ExportLibrary.h"

namespace tallybook::application {

namespace {

[[noreturn]] void Unavailable(const char* what) {
  throw Failure(FailureNumber::kFeatureUnavailable, Text(what) + " needs the windowed application", "ReferenceFactory");
}

// A printer that is in the factory's set while it lives, and prints the closing lines.
class KnownPrinter : public report::ReportPrinter {
 public:
  using Set = std::shared_ptr<std::set<report::ReportPrinter*>>;

  KnownPrinter(const report::Destination& destination, engine::ProgressDisplay* progress, Set printers,
               ReferenceFactory::ClosingLines closing)
      : ReportPrinter(destination, progress), printers_(std::move(printers)), closing_(std::move(closing)) {
    printers_->insert(this);
  }
  ~KnownPrinter() override { printers_->erase(this); }
  KnownPrinter(const KnownPrinter&) = delete;
  KnownPrinter& operator=(const KnownPrinter&) = delete;

  void EndReport() override {
    if (IsOpen() && closing_) {
      for (const Text& line : closing_()) PrintLine(line);
    }
    ReportPrinter::EndReport();
  }

 private:
  Set printers_;
  ReferenceFactory::ClosingLines closing_;
};

}  // namespace

void ReferenceFactory::EndReports(const Text& last_line) {
  const std::set<report::ReportPrinter*> printers = *printers_;
  for (report::ReportPrinter* printer : printers) {
    try {
      printer->PrintLine(last_line);
      printer->EndReport();
    } catch (const Failure&) {
      // Meant: it has not begun, or its place takes no more; there is nobody left to tell.
    }
  }
}

void ReferenceFactory::SetReportDestination(const report::Destination& destination) {
  // A printer tells a path that no form fits; better here, before any work, than when the report begins.
  const report::ReportPrinter probe(destination);
  destination_ = destination;
}

std::unique_ptr<IniFile> ReferenceFactory::NewIniFile() {
  return std::make_unique<settings::SettingsFile>();
}

std::unique_ptr<Printer> ReferenceFactory::NewPrinter() {
  return std::make_unique<KnownPrinter>(destination_, progress_, printers_, closing_);
}

std::shared_ptr<DataExportObject> ReferenceFactory::NewDataExportObject() {
  return std::make_shared<tables::ExportLibrary>();
}

std::unique_ptr<FiscalCalendar> ReferenceFactory::NewFiscalCalendar() {
  return std::make_unique<engine::BookCalendar>();
}

std::unique_ptr<EdtForm> ReferenceFactory::NewEdtForm() {
  if (!list_window_maker_) Unavailable("The list window");
  return list_window_maker_();
}

std::unique_ptr<PrintSequence> ReferenceFactory::NewPrintSequence() {
  if (!sequence_maker_) Unavailable("The choice of a print sequence");
  return sequence_maker_();
}

}  // namespace tallybook::application
