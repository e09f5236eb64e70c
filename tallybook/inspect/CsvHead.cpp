#include "tallybook/inspect/CsvHead.h"

#include <fmt/format.h>

#include "base/Dates.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/FiscalCalendar.h"
#include "host/Masterfile.h"
#include "import/TextImport.h"

namespace tallybook::inspect {

namespace {

constexpr std::size_t kHeadFields = 5;

class CsvHeadLook {
 public:
  CsvHeadLook(Masterfile& masterfile, CsvFile& file, CsvFindings& findings, eMath math)
      : masterfile_(masterfile), file_(file), findings_(findings), math_(math) {}

  CsvHead Run() {
    CsvFields fields;
    file_.TakeInto(fields, kHeadFields);
    findings_.LookAtQuotes(fields);
    head_.is_sound = LookAtFields(fields);
    head_.ends_its_line = !fields.empty() && fields.front().line == fields.back().line && fields.back().EndsLine();
    findings_.Pass(Piece::kHead, fields, head_.ends_its_line);
    return head_;
  }

 private:
  bool LookAtFields(const CsvFields& fields) {
    if (fields.size() < kHeadFields) {
      findings_.Found(file_.Line(), 0, "", "",
                      {Effect::kStop, "the file ends within its header", "write month, day, year, math and 0 or 1"});
      return false;
    }
    const auto month = findings_.Whole<Integer>(fields[0], 1, "month");
    const auto day = findings_.Whole<Integer>(fields[1], 2, "day");
    const auto year = findings_.Whole<Integer>(fields[2], 3, "year");
    const auto math = findings_.Whole<Integer>(fields[3], 4, "math");
    const auto by_code = findings_.Whole<Integer>(fields[4], 5, "by_code");
    if (!month || !day || !year || !math || !by_code) return false;
    head_.by_code = *by_code != 0;
    head_.math = math_ == eMath::mDefault ? *math : static_cast<Integer>(math_);
    if (!WordOfMath(head_.math)) {
      findings_.Found(fields[3], 4, "math",
                      {Effect::kStop, "is none of 1 (add), 2 (subtract) and 3 (replace)",
                       "write one of them, or say it for the import"});
    }
    LookAtDate(fields, {*month, *day, *year});
    return true;
  }

  void LookAtDate(const CsvFields& fields, CsvDate date) {
    if (date.month == kCsvPeriodMark) {
      if (!LookAtPeriod(fields, date)) return;
      date = {date.day, 1, date.year};
    }
    auto trouble = DateTrouble(masterfile_, FixYear(date.year), date.month, date.day);
    // The import does not ask about this one.
    if (trouble && trouble->effect == Effect::kAudit) trouble->effect = Effect::kStop;
    if (findings_.Look(fields[2], 3, "year", trouble) && trouble->effect == Effect::kStop) return;
    head_.date = LevelOf(masterfile_, date);
  }

  // False where it is none of the book.
  bool LookAtPeriod(const CsvFields& fields, const CsvDate& date) {
    if (masterfile_.DataLevel() != kPeriodLevel) {
      findings_.Found(fields[0], 1, "month",
                      {Effect::kStop, "says that the file is of periods, and the book is not", ""});
      return false;
    }
    if (date.day >= 1 && date.day <= masterfile_.NumPeriods()) return true;
    findings_.Found(fields[1], 2, "day",
                    {Effect::kStop, fmt::format("is none of the {} periods of a year", masterfile_.NumPeriods()), ""});
    return false;
  }

  Masterfile& masterfile_;
  CsvFile& file_;
  CsvFindings& findings_;
  const eMath math_;
  CsvHead head_;
};

}  // namespace

Date LevelOf(Masterfile& masterfile, const CsvDate& date) {
  const Date day = DateFromParts(FixYear(date.year), date.month, date.day);
  return masterfile.FiscalCalendar().LevelDate(day, masterfile.DataLevel());
}

CsvHead LookAtCsvHead(Masterfile& masterfile, CsvFile& file, CsvFindings& findings, eMath math) {
  return CsvHeadLook(masterfile, file, findings, math).Run();
}

}  // namespace tallybook::inspect
