// The stretches of time that a report can cover, and the longer ones that it can be compared with. The numbers are the
// indexes of the dialog's options and the levels of FiscalCalendar::LevelDate, and stand in exchange files as the
// report length: never renumber them.
#pragma once

#include "base/Types.h"

namespace tallybook {

inline constexpr Integer kDayLength = 1;
inline constexpr Integer kWeekLength = 2;
inline constexpr Integer kPeriodLength = 3;
inline constexpr Integer kQuarterLength = 4;
inline constexpr Integer kHalfYearLength = 5;
inline constexpr Integer kYearLength = 6;
inline constexpr Integer kCustomLength = 7;  // two dates picked by the user
inline constexpr Integer kAllLength = 8;     // everything that the system holds

// The range that a report is compared with; apart from CompNone a report length.
enum class eCompRange : Integer {
  CompNone = 0,
  CompWeek = 2,
  CompMonth = 3,
  CompQuarter = 4,
  CompHalfYear = 5,
  CompYear = 6,
};

// How far the compare range goes: up to the report's first date, through its last one, or to its own end.
enum class eCompType : Integer { CompUpTo = 1, CompInclude = 2, CompWhole = 3 };

}  // namespace tallybook
