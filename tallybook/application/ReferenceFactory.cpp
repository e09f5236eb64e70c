#include "tallybook/application/ReferenceFactory.h"

#include "support/Failure.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/settings/SettingsFile.h"
#include "tallybook/tables/ExportLibrary.h"

namespace tallybook::application {

namespace {

[[noreturn]] void Unavailable(const char* what) {
  throw Failure(FailureNumber::kFeatureUnavailable, Text(what) + " needs the windowed application", "ReferenceFactory");
}

}  // namespace

void ReferenceFactory::SetReportDestination(const report::Destination& destination) {
  // A printer tells a path that no form fits; better here, before any work, than when the report begins.
  const report::ReportPrinter probe(destination);
  destination_ = destination;
}

std::unique_ptr<IniFile> ReferenceFactory::NewIniFile() {
  return std::make_unique<settings::SettingsFile>();
}

std::unique_ptr<Printer> ReferenceFactory::NewPrinter() {
  return std::make_unique<report::ReportPrinter>(destination_, progress_);
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
