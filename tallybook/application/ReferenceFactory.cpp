#include "tallybook/application/ReferenceFactory.h"

#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "base/Failure.h"
#include "tallybook/engine/Calendar.h"
#include "tallybook/settings/SettingsFile.h"
#include "tallybook/tables/ExportLibrary.h"

namespace tallybook::application {

namespace {

[[noreturn]] void Unavailable(const char* what) {
  throw Failure(FailureNumber::kFeatureUnavailable, Text(what) + " needs the windowed application", "ReferenceFactory");
}

// A report that has ended and is not written yet.
struct HeldReport {
  report::Destination destination;
  report::Report report;
  std::map<int, report::Blocks> heads;  // by page

  // The heads of pages are there while the report ends, and no longer: a first rendering asks for all of them.
  HeldReport(const report::Destination& to, report::Report& ended, const report::PageHeads& page_heads)
      : destination(to) {
    (void)report::RendererFor(to.path)->Render(
        ended, [&](int page) -> const report::Blocks& { return heads[page] = page_heads(page); });
    report = std::move(ended);
  }

  void Write(const std::vector<Text>& closing) {
    for (const Text& line : closing) report.blocks.emplace_back(report::Line{line});
    report::WriteReport(
        report, [&](int page) -> const report::Blocks& { return HeadOf(page); }, destination);
  }

  // The lines may have made another page, whose head is that of the one before.
  [[nodiscard]] const report::Blocks& HeadOf(int page) {
    const auto behind = heads.upper_bound(page);
    return behind == heads.begin() ? heads[page] : std::prev(behind)->second;
  }
};

}  // namespace

// What the factory and its printers know of each other; it outlives them all.
struct ReferenceFactory::UnderWay {
  std::set<report::ReportPrinter*> printers;
  bool is_holding = false;
  std::vector<HeldReport> held;
};

// A printer that is known to the factory while it lives.
class ReferenceFactory::KnownPrinter : public report::ReportPrinter {
 public:
  KnownPrinter(const report::Destination& destination, engine::ProgressDisplay* progress,
               std::shared_ptr<UnderWay> under_way, ClosingLines closing)
      : ReportPrinter(destination, progress),
        destination_(destination),
        under_way_(std::move(under_way)),
        closing_(std::move(closing)) {
    under_way_->printers.insert(this);
  }
  ~KnownPrinter() override { under_way_->printers.erase(this); }
  KnownPrinter(const KnownPrinter&) = delete;
  KnownPrinter& operator=(const KnownPrinter&) = delete;

  void EndReport() override {
    if (IsOpen() && closing_ && !under_way_->is_holding) {
      for (const Text& line : closing_()) PrintLine(line);
    }
    ReportPrinter::EndReport();
  }

 protected:
  void Finish(report::Report& report, const report::PageHeads& page_heads) override {
    if (!under_way_->is_holding) return ReportPrinter::Finish(report, page_heads);
    under_way_->held.emplace_back(destination_, report, page_heads);
  }

 private:
  report::Destination destination_;
  std::shared_ptr<UnderWay> under_way_;
  ClosingLines closing_;
};

ReferenceFactory::ReferenceFactory() : under_way_(std::make_shared<UnderWay>()) {}

void ReferenceFactory::HoldReports() {
  under_way_->is_holding = true;
}

void ReferenceFactory::WriteHeldReports(const std::vector<Text>& closing) {
  under_way_->is_holding = false;
  std::optional<Failure> first;
  for (HeldReport& held : std::exchange(under_way_->held, {})) {
    try {
      held.Write(closing);
    } catch (const Failure& failure) {
      if (!first) first = failure;
    }
  }
  if (first) throw Failure(*first);
}

void ReferenceFactory::EndReports(const Text& last_line) {
  try {
    WriteHeldReports({last_line});
  } catch (const Failure&) {
    // Meant: their place takes no more; there is nobody left to tell.
  }
  const std::set<report::ReportPrinter*> printers = under_way_->printers;
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
  return std::make_unique<KnownPrinter>(destination_, progress_, under_way_, closing_);
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
