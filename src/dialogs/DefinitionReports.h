// What answers the printers that the list of definitions and its editor make: the columns of a report, set up when it
// begins, and the head of each page. One thread. The database outlives the object, and the object the report.
#pragma once

#include <initializer_list>

#include "base/Types.h"
#include "host/Printer.h"

namespace tallybook {

class Masterfile;

class DefinitionReports : public PrinterEvents {
 public:
  enum class Kind { kListing, kImport };

  DefinitionReports(Masterfile& masterfile, Kind kind) : masterfile_(masterfile), kind_(kind) {}

  // Prepares the printer in the application's way; an import gets its four columns besides, a listing brings its own.
  void PrintInit(Printer& printer) override;
  // The application's head for "QDX Import" or "QDX Import Layout".
  void PrintHeader(Printer& printer) override;

 private:
  Masterfile& masterfile_;
  Kind kind_;
};

// The columns of the set from here on: those of `widths`, in report units, and no other.
void SetReportColumns(Printer& printer, std::initializer_list<Single> widths);

}  // namespace tallybook
