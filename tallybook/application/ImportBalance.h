// Whether all that an import read is accounted for: figures read are those applied, not mapped and refused together,
// field by field with their totals in the file and in the book; and where a file's range does not fill a week or period
// of the book, or reaches into a 53rd week. For the closing block of a report and the summary of an unattended run.
#pragma once

#include <set>
#include <vector>

#include "base/Types.h"
#include "import/FieldTally.h"
#include "import/QDXImportRecord.h"
#include "import/TextImport.h"
#include "tallybook/engine/Book.h"

namespace tallybook {
class CDataExchange;
}

namespace tallybook::application {

class ReferenceFactory;

// A week or period of the book that a file's range begins or ends within.
struct PartialUnit {
  Date first = 0;  // of the unit
  Date last = 0;
  bool at_start = false;  // the file begins behind its first day; otherwise it ends before its last
  Date edge = 0;          // the file's first or last day
};

struct LongYearWeek {
  Text year;  // its name
  Date first = 0;
  Date last = 0;
};

// The week or period that a range of dates begins within, and that it ends within; nothing for a book of days.
[[nodiscard]] std::vector<PartialUnit> PartialUnitsOf(Masterfile& masterfile, Date first, Date last);
// The 53rd weeks that some of the dates are of.
[[nodiscard]] std::vector<LongYearWeek> Weeks53Of(Masterfile& masterfile, const std::set<Date>& dates);

struct FileBalance {
  Text file;
  bool imported = false;
  long long read = 0;
  long long applied = 0;
  long long not_mapped = 0;
  long long refused = 0;
  FieldTallies fields;  // one for each pair of a field in the file and one in the book, by these numbers
  std::vector<PartialUnit> partial_units;
  std::vector<LongYearWeek> weeks_53;  // that figures came into
  [[nodiscard]] bool Holds() const { return read == applied + not_mapped + refused; }
};

// The files that a run has begun to apply, in their order.
[[nodiscard]] std::vector<FileBalance> BalancesOf(const QDXImportRecord& record, engine::Book& book);
// The figures that a text import has read: those that its audit has counted, or more where the file has grown before
// they were applied.
[[nodiscard]] long long FiguresRead(const TextImportTally& tally);
// That it has, as a warning; empty where it has not.
[[nodiscard]] Text GrownText(const TextImportTally& tally);
// The one file of a text import, which tells no range: its dates are those of records.
[[nodiscard]] FileBalance BalanceOf(const Text& file, const TextImportTally& tally, engine::Book& book);

// Of a run of which no figure is kept: what was applied is refused.
void KeepNone(std::vector<FileBalance>& balances);

// All of them as one; the name of the file stays where there is but one.
[[nodiscard]] FileBalance SumOf(const std::vector<FileBalance>& balances);

// The closing block, line by line; nothing where there is no file.
[[nodiscard]] std::vector<Text> BalanceLines(const std::vector<FileBalance>& balances);
// What a report ends in: the same, behind the line that nothing is kept where the run was to be whole and is not.
[[nodiscard]] std::vector<Text> ClosingLines(const std::vector<FileBalance>& balances, bool kept);

// While it lives, reports of a factory's printers end in the balance of what an exchange object imports, as far as the
// import has come. All of it outlives this.
class BalancedReports {
 public:
  BalancedReports(ReferenceFactory& factory, const CDataExchange& exchange, engine::Book& book);
  ~BalancedReports();
  BalancedReports(const BalancedReports&) = delete;
  BalancedReports& operator=(const BalancedReports&) = delete;

 private:
  ReferenceFactory& factory_;
};

// JSON for other programs, docs/command-line.md tells its members. `done`: the import was done.
[[nodiscard]] Text BalanceJson(const std::vector<FileBalance>& balances, bool done);

}  // namespace tallybook::application
