// The image of an exchange file's header in memory, with its tables.
//
// One instance is shared by the whole process: the last header read stays in it, and the definition store, the matching
// and the import all read it. A second exchange object overwrites the first one's header. A read that breaks off leaves
// the rows read so far, and what a shorter file does not tell stays as the read before left it. Both are meant.
#pragma once

#include "base/FixedTable.h"
#include "base/Types.h"

namespace tallybook {

// The most rows that a reader's tables hold. A writer enforces none of these.
inline constexpr Long kMaxHeaderPeriods = 26;
inline constexpr Long kMaxHeaderYears = 9;
inline constexpr Long kMaxHeaderAccounts = 9999;
inline constexpr Long kMaxHeaderFields = 9999;

struct HeaderRecord {
  Text Magic;
  Single Version = 0;
  Text CreateDate;  // "02-03-2004": month, day, year
  Text CreateTime;  // "14:05:09"
  Integer ReportLength = 0;
  Integer StartMonth = 0;
  Integer StartDay = 0;
  Integer StartYear = 0;
  Integer LastMonth = 0;
  Integer LastDay = 0;
  Integer LastYear = 0;
  Text SystemName;
  Single DatabaseVersion = 0;
  Integer DataLevel = 0;  // 1 day, 2 week, 3 period
  Integer CalendarType = 0;
  Integer YearField = 0;
  Integer FieldSlots = 0;
  Integer AccountSlots = 0;
  Integer NumPeriods = 0;
  FixedTable<Text> PeriodNames{kMaxHeaderPeriods};
  FixedTable<Integer> PeriodLengths{kMaxHeaderPeriods};
  Integer NumFields = 0;
  Integer NumYears = 0;
  Integer NumAccounts = 0;
  Integer FirstYear = 0;
  Integer FirstDateMonth = 0;
  Integer FirstDateDay = 0;
  Integer FirstDateYear = 0;
  FixedTable<Integer> YearCodes{kMaxHeaderYears};
  FixedTable<Text> AccountCodes{kMaxHeaderAccounts};
  FixedTable<Text> AccountDescs{kMaxHeaderAccounts};
  FixedTable<Integer> FieldNumbers{kMaxHeaderFields};
  FixedTable<Text> FieldDescs{kMaxHeaderFields};

  // The first and the last date of the exported range.
  [[nodiscard]] Date StartDate() const;
  [[nodiscard]] Date LastDate() const;
};

// The record that all exchange objects share; made at the first call. ResetSharedHeader blanks it, for tests.
[[nodiscard]] HeaderRecord& SharedHeader();
void ResetSharedHeader();

}  // namespace tallybook
