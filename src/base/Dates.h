// Dates: built from parts, taken apart, and named. A date is a count of days from 1899-12-30 in the proleptic Gregorian
// calendar; the fraction is the time of day.
#pragma once

#include "base/Types.h"

namespace tallybook {

struct DateParts {
  Integer year = 0;
  Integer month = 0;  // 1 to 12
  Integer day = 0;    // 1 to 31
  bool operator==(const DateParts&) const = default;
};

struct TimeParts {
  Integer hour = 0;  // 0 to 23
  Integer minute = 0;
  Integer second = 0;
  bool operator==(const TimeParts&) const = default;
};

// The date of a year, month and day. Months and days run over in both directions: month 0 is December of the year
// before, month 13 January of the year after, day 0 the last day of the month before.
[[nodiscard]] Date DateFromParts(int year, int month, int day);
[[nodiscard]] Date TimeFromParts(int hour, int minute, int second);  // a fraction of a day

// The parts of a date, rounded to the nearest second before it is taken apart.
[[nodiscard]] DateParts PartsOf(Date date);
[[nodiscard]] TimeParts TimeOf(Date date);
// 1 Sunday to 7 Saturday.
[[nodiscard]] Integer DayOfWeek(Date date);

// Texts: "2004-02-03"; "2004-02-03 14:05:09"; "Tuesday, February 3, 2004".
[[nodiscard]] Text DateText(Date date);
[[nodiscard]] Text DateTimeText(Date date);
[[nodiscard]] Text LongDateText(Date date);

// Reads the text that DateText writes. False, with `date` untouched, for any other text and for a day that does not
// exist.
[[nodiscard]] bool ReadDateText(const Text& text, Date& date);

}  // namespace tallybook
