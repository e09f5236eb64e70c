#include "tallybook/desktop/host/DesktopFactory.h"

#include <exception>
#include <utility>

#include "host/Sequence.h"
#include "tallybook/desktop/forms/UserActs.h"

namespace tallybook::desktop {

namespace {

// Books of the reference host keep no sequences, so there is nothing to choose.
class NoSequence : public PrintSequence {
 public:
  void LoadSequences(SequenceReport& /*report*/) override {}
  [[nodiscard]] bool SequenceFixed() const override { return fixed_; }
  void SetSequenceFixed(bool fixed) override { fixed_ = fixed; }
  void RefreshSequences() override {}
  void ApplySequences() override {}

 private:
  bool fixed_ = false;
};

// A window's printer that says when its report begins, and when it goes.
class ListenedPrinter : public WindowPrinter {
 public:
  ListenedPrinter(Display display, engine::ProgressDisplay* progress, std::function<void()> begun,
                  std::function<void()> goes)
      : WindowPrinter(std::move(display), progress), begun_(std::move(begun)), goes_(std::move(goes)) {}
  ~ListenedPrinter() override {
    try {
      goes_();
    } catch (...) {
      KeepFailure(std::current_exception());
    }
  }
  ListenedPrinter(const ListenedPrinter&) = delete;
  ListenedPrinter& operator=(const ListenedPrinter&) = delete;

  bool BeginReport(Long owner, const Text& title) override {
    if (begun_) begun_();
    return WindowPrinter::BeginReport(owner, title);
  }

 private:
  std::function<void()> begun_;
  std::function<void()> goes_;
};

}  // namespace

DesktopFactory::DesktopFactory(WindowHandles& handles, engine::ProgressDisplay& progress)
    : handles_(handles), progress_(progress) {
  SetProgressDisplay(&progress_);
  SetSequenceMaker([] { return std::make_unique<NoSequence>(); });
  SetListWindowMaker([this] {
    auto window = std::make_unique<ListWindow>(handles_);
    if (list_listener_) list_listener_(*window);
    return window;
  });
}

// What listens has told what there is to tell; the object goes whatever becomes of that.
void DesktopFactory::ExchangeEnds(CDataExchange& exchange) noexcept {
  try {
    if (&exchange == Exchange() && before_exchange_goes_) before_exchange_goes_();
  } catch (...) {
    KeepFailure(std::current_exception());
  }
  std::erase(exchanges_, &exchange);
}

std::unique_ptr<Printer> DesktopFactory::NewPrinter() {
  const auto display = [this](report::Report report, report::Blocks head) {
    if (display_) display_(std::move(report), std::move(head));
  };
  const auto begun = [this] {
    if (report_listener_) report_listener_();
  };
  const auto goes = [this] {
    if (printer_goes_) printer_goes_();
  };
  return std::make_unique<ListenedPrinter>(display, &progress_, begun, goes);
}

std::shared_ptr<DataExportObject> DesktopFactory::NewDataExportObject() {
  auto library = ReferenceFactory::NewDataExportObject();
  return wrapper_ ? wrapper_(std::move(library)) : library;
}

}  // namespace tallybook::desktop
