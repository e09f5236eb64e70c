// The one place where the component gets the application's objects that it "creates": each call makes a new one, and
// the caller owns it. The factory is owned by the application and outlives every object of the component.
#pragma once

#include <memory>

namespace tallybook {

class CDataExchange;
class DataExportObject;
class EdtForm;
class FiscalCalendar;
class IniFile;
class PrintSequence;
class Printer;

class HostFactory {
 public:
  virtual ~HostFactory() = default;

  virtual std::unique_ptr<IniFile> NewIniFile() = 0;
  virtual std::unique_ptr<Printer> NewPrinter() = 0;
  virtual std::unique_ptr<EdtForm> NewEdtForm() = 0;
  virtual std::shared_ptr<DataExportObject> NewDataExportObject() = 0;
  // A calendar that is not attached to a database yet.
  virtual std::unique_ptr<FiscalCalendar> NewFiscalCalendar() = 0;
  virtual std::unique_ptr<PrintSequence> NewPrintSequence() = 0;

  // Told of each exchange object that takes its objects from here: when it is there, and before it goes. Conversations
  // make their own, which nobody else gets to see: so an application can ask what an import of theirs came to.
  virtual void ExchangeBegins(CDataExchange& /*exchange*/) {}
  virtual void ExchangeEnds(CDataExchange& /*exchange*/) noexcept {}
};

}  // namespace tallybook
