// Makes the objects that the component asks of the desktop: those of the reference host, list windows, and printers
// whose reports are shown. While a conversation runs it may have them made its own way. One thread.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "tallybook/application/ReferenceFactory.h"
#include "tallybook/desktop/host/ListWindow.h"
#include "tallybook/desktop/host/WindowPrinter.h"

namespace tallybook::desktop {

class DesktopFactory : public application::ReferenceFactory {
 public:
  // Both outlive the factory and what it makes.
  DesktopFactory(WindowHandles& handles, engine::ProgressDisplay& progress);

  // Who shows reports that have ended; a report that nobody shows is dropped.
  void SetReportDisplay(WindowPrinter::Display display) { display_ = std::move(display); }
  // Told of each list window that is made, before it is handed out, and of each printer whose report begins.
  void SetListListener(std::function<void(ListWindow&)> listener) { list_listener_ = std::move(listener); }
  void SetReportListener(std::function<void()> listener) { report_listener_ = std::move(listener); }
  // Told when a printer goes, however its report has ended.
  void SetPrinterListener(std::function<void()> when_it_goes) { printer_goes_ = std::move(when_it_goes); }
  // Makes another export library of the usual one: its tables go elsewhere. Empty for none.
  using TableWrapper = std::function<std::shared_ptr<DataExportObject>(std::shared_ptr<DataExportObject>)>;
  void SetTableWrapper(TableWrapper wrapper) { wrapper_ = std::move(wrapper); }

  // The exchange object that was made last and is there still; null where there is none.
  [[nodiscard]] CDataExchange* Exchange() const { return exchanges_.empty() ? nullptr : exchanges_.back(); }
  // Told before that one goes, while it can still be asked.
  void SetExchangeListener(std::function<void()> before_it_goes) { before_exchange_goes_ = std::move(before_it_goes); }
  void ExchangeBegins(CDataExchange& exchange) override { exchanges_.push_back(&exchange); }
  void ExchangeEnds(CDataExchange& exchange) noexcept override;

  std::unique_ptr<Printer> NewPrinter() override;
  std::shared_ptr<DataExportObject> NewDataExportObject() override;

 private:
  WindowHandles& handles_;
  engine::ProgressDisplay& progress_;
  WindowPrinter::Display display_;
  std::function<void(ListWindow&)> list_listener_;
  std::function<void()> report_listener_;
  std::function<void()> printer_goes_;
  TableWrapper wrapper_;
  std::function<void()> before_exchange_goes_;
  std::vector<CDataExchange*> exchanges_;
};

}  // namespace tallybook::desktop
