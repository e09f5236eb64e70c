// A report as the print dialog sees it: what it answers before the dialog opens and what it is told when the user has
// finished. Implemented by whatever prints or exports; the dialog keeps a plain reference from SetFields until it is
// unloaded. Any operation may fail with a Failure.
//
// Four members are touched only where ReportType is below kExportReport: PrintNoData and NewPagePerAccount, to read and
// to write. A report of a higher type may refuse them.
#pragma once

#include "base/Types.h"
#include "host/Sequence.h"

namespace tallybook {

class Masterfile;

// The types of reports that the dialog tells apart. Any other type begins with its dates, as an export does.
inline constexpr Integer kStyledReport = 1;    // chooses style, print sequence and dates
inline constexpr Integer kSequenceReport = 2;  // chooses print sequence and dates
inline constexpr Integer kExportReport = 9;    // chooses dates alone; from here up nothing but dates is touched

class ReportObject : public SequenceReport {
 public:
  // The database that the report is about. Failure 91 (object not set) where it has none.
  [[nodiscard]] virtual Masterfile& Owner() const = 0;

  // Which pages the dialog shows, and what its title says of the report.
  [[nodiscard]] virtual Integer ReportType() const = 0;
  [[nodiscard]] virtual Text ReportClass() const = 0;
  [[nodiscard]] virtual Integer FileNum() const = 0;
  // 0 offers transposition to a styled report.
  [[nodiscard]] virtual Integer PrintMode() const = 0;

  // Whether the report sets a second year beside the first; whether it runs as part of a job of several reports; what
  // its columns are divided into (0 nothing; 1 to 5 keep to one year and limit the length).
  [[nodiscard]] virtual bool UsesLastYear() const = 0;
  [[nodiscard]] virtual bool inPrintJob() const = 0;
  [[nodiscard]] virtual Integer SubColumnType() const = 0;
  // Above 1 the report is sorted by a column, and its style is one line per account.
  [[nodiscard]] virtual Integer SortColumn() const = 0;

  // The report runs without a user: the dialog answers itself and is never shown.
  [[nodiscard]] virtual bool CommandLinePrinting() const = 0;

  // Columns instead of rows for the dates. Written only where ReportType is below kExportReport.
  [[nodiscard]] virtual bool Transpose() const = 0;
  virtual void SetTranspose(bool transposed) = 0;
  // The chosen style, 1 to 4; 0 for a report that has no style.
  virtual void SetLineStyle(Integer style) = 0;

  [[nodiscard]] virtual bool PrintNoData() const = 0;
  virtual void SetPrintNoData(bool printed) = 0;
  [[nodiscard]] virtual bool NewPagePerAccount() const = 0;
  virtual void SetNewPagePerAccount(bool separate) = 0;
};

}  // namespace tallybook
