// An application with nothing to offer yet: it meets the exchange object, asks it two things and is told the truth.
#include <iostream>
#include <memory>

#include "base/Failure.h"
#include "exchange/CDataExchange.h"
#include "host/DataExportObject.h"
#include "host/EdtForm.h"
#include "host/FiscalCalendar.h"
#include "host/HostFactory.h"
#include "host/IniFile.h"
#include "host/Printer.h"
#include "host/Sequence.h"
#include "platform/posix/PosixPlatform.h"

namespace {

class EmptyFactory : public tallybook::HostFactory {
 public:
  std::unique_ptr<tallybook::IniFile> NewIniFile() override { return nullptr; }
  std::unique_ptr<tallybook::Printer> NewPrinter() override { return nullptr; }
  std::unique_ptr<tallybook::EdtForm> NewEdtForm() override { return nullptr; }
  std::shared_ptr<tallybook::DataExportObject> NewDataExportObject() override { return nullptr; }
  std::unique_ptr<tallybook::FiscalCalendar> NewFiscalCalendar() override { return nullptr; }
  std::unique_ptr<tallybook::PrintSequence> NewPrintSequence() override { return nullptr; }
};

}  // namespace

int main() {
  tallybook::InstallPlatform(tallybook::PosixPlatform("Consumer"));
  EmptyFactory factory;
  tallybook::CDataExchange exchange(factory);
  std::cout << exchange.MaxRecords() << " definitions at most; without a database: ";
  try {
    const tallybook::Integer style = exchange.LineStyle();
    std::cout << "line style " << style << '\n';
  } catch (const tallybook::Failure& failure) {
    std::cout << "failure " << failure.Code() << '\n';
  }
}
