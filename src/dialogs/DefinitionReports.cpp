#include "dialogs/DefinitionReports.h"

#include "host/Masterfile.h"
#include "host/ReportColumns.h"

namespace tallybook {

namespace {

constexpr Integer kColumnsFollow = 1;

}  // namespace

void DefinitionReports::PrintInit(Printer& printer) {
  masterfile_.InitReportPrinter(printer);
  printer.SetColumnMode(kColumnsFollow);
  if (kind_ == Kind::kImport) SetReportColumns(printer, {1, 3, 1, 3});
}

void DefinitionReports::PrintHeader(Printer& printer) {
  masterfile_.PrintReportHeader(printer, kind_ == Kind::kImport ? "QDX Import" : "QDX Import Layout");
}

void SetReportColumns(Printer& printer, std::initializer_list<Single> widths) {
  ReportColumns& columns = printer.Columns();
  columns.Clear();
  for (const Single width : widths) columns.Add(width);
  printer.ApplyColumns();
}

}  // namespace tallybook
