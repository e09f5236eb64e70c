#include "tallybook/tables/XlsxModule.h"

#include "platform/Clock.h"
#include "tallybook/files/Modules.h"

namespace tallybook::tables {

// Failure 73, besides, where the module cannot be loaded; no file is made then.
std::unique_ptr<TableWriter> NewXlsxWriter(const Text& path, const Text& table_name) {
  static auto* const make = reinterpret_cast<MakeXlsxWriter*>(
      files::FunctionOfModule("tallybook_xlsx.so", kMakeXlsxWriter, "Workbooks cannot be written", "ExportLibrary"));
  MakeEmptyFile(path);
  return std::unique_ptr<TableWriter>(make(path, table_name, Now()));
}

}  // namespace tallybook::tables
