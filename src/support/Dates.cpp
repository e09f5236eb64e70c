#include "support/Dates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string>

#include "support/Failure.h"
#include "support/Narrow.h"
#include "support/Platform.h"

namespace tallybook {

namespace {

constexpr long long kSecondsPerDay = 86400;
constexpr long long kDaysPerEra = 146097;  // 400 years of the Gregorian calendar
constexpr long long kYearsPerEra = 400;
// From 0000-03-01, where the count below begins, to 1899-12-30.
constexpr long long kEpoch = 693899;

// Beyond this a date's year no longer fits its 16 bits anyway; it keeps the arithmetic on seconds from overflowing.
constexpr Double kFarthestDate = 13'000'000;

constexpr long long FloorDivide(long long value, long long by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

// Days from 0000-03-01. Years begin in March here, so that the day that leap years add is a year's last.
constexpr long long DaysFromMarch(long long year, int month, long long day) {
  if (month <= 2) --year;
  const long long era = FloorDivide(year, kYearsPerEra);
  const long long year_of_era = year - era * kYearsPerEra;
  const long long month_from_march = (month + 9) % 12;
  const long long day_of_year = (153 * month_from_march + 2) / 5 + day - 1;
  return era * kDaysPerEra + year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
}
static_assert(DaysFromMarch(1899, 12, 30) == kEpoch);

struct Moment {
  long long day;     // since 1899-12-30
  long long second;  // of that day
};

Moment NearestSecond(Date date) {
  if (!(std::fabs(date) <= kFarthestDate))
    throw Failure(FailureNumber::kOverflow, std::to_string(date) + " is no date: its year does not fit 16 bits");
  // Most dates are whole days.
  if (const auto day = static_cast<long long>(date); static_cast<Date>(day) == date) return {day, 0};
  const long long seconds = std::llround(date * static_cast<Double>(kSecondsPerDay));
  const long long day = FloorDivide(seconds, kSecondsPerDay);
  return {day, seconds - day * kSecondsPerDay};
}

bool ReadDigits(const Text& text, std::size_t offset, std::size_t count, int& value) {
  value = 0;
  for (std::size_t i = offset; i < offset + count; ++i) {
    if (text[i] < '0' || text[i] > '9') return false;
    value = value * 10 + (text[i] - '0');
  }
  return true;
}

// A number of at least so many digits.
Text Digits(int value, std::size_t count) {
  const Text digits = std::to_string(std::abs(value));
  const Text zeros(count - std::min(count, digits.size()), '0');
  return (value < 0 ? "-" : "") + zeros + digits;
}

}  // namespace

Date DateFromParts(int year, int month, int day) {
  const long long months = static_cast<long long>(year) * 12 + month - 1;
  const long long whole_year = FloorDivide(months, 12);
  const int month_of_year = static_cast<int>(months - whole_year * 12) + 1;
  return static_cast<Date>(DaysFromMarch(whole_year, month_of_year, day) - kEpoch);
}

Date TimeFromParts(int hour, int minute, int second) {
  const long long seconds = hour * 3600LL + minute * 60LL + second;
  return static_cast<Date>(seconds) / static_cast<Double>(kSecondsPerDay);
}

DateParts PartsOf(Date date) {
  const long long days = NearestSecond(date).day + kEpoch;
  const long long era = FloorDivide(days, kDaysPerEra);
  // Within an era all is small, and 32 bits divide faster.
  const auto day_of_era = static_cast<unsigned>(days - era * kDaysPerEra);
  const unsigned year_of_era = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const unsigned day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
  const unsigned month_from_march = (5 * day_of_year + 2) / 153;
  const unsigned month = month_from_march < 10 ? month_from_march + 3 : month_from_march - 9;
  const unsigned day = day_of_year - (153 * month_from_march + 2) / 5 + 1;
  const long long year = era * kYearsPerEra + year_of_era + (month <= 2 ? 1 : 0);
  return {ToInteger(year), static_cast<Integer>(month), static_cast<Integer>(day)};
}

TimeParts TimeOf(Date date) {
  const long long second = NearestSecond(date).second;
  return {ToInteger(second / 3600), ToInteger(second / 60 % 60), ToInteger(second % 60)};
}

Integer DayOfWeek(Date date) {
  // 1899-12-30 was a Saturday.
  const long long days_from_sunday = NearestSecond(date).day + 6;
  return ToInteger(days_from_sunday - FloorDivide(days_from_sunday, 7) * 7 + 1);
}

Text DateText(Date date) {
  const DateParts parts = PartsOf(date);
  return Digits(parts.year, 4) + "-" + Digits(parts.month, 2) + "-" + Digits(parts.day, 2);
}

Text DateTimeText(Date date) {
  const TimeParts time = TimeOf(date);
  return DateText(date) + " " + Digits(time.hour, 2) + ":" + Digits(time.minute, 2) + ":" + Digits(time.second, 2);
}

Text LongDateText(Date date) {
  static constexpr std::array kDayNames{"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
  static constexpr std::array kMonthNames{"January", "February", "March",     "April",   "May",      "June",
                                          "July",    "August",   "September", "October", "November", "December"};
  const DateParts parts = PartsOf(date);
  return Text(kDayNames[static_cast<std::size_t>(DayOfWeek(date) - 1)]) + ", " +
         kMonthNames[static_cast<std::size_t>(parts.month - 1)] + " " + std::to_string(parts.day) + ", " +
         std::to_string(parts.year);
}

bool ReadDateText(const Text& text, Date& date) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return false;
  int year = 0;
  int month = 0;
  int day = 0;
  if (!ReadDigits(text, 0, 4, year) || !ReadDigits(text, 5, 2, month) || !ReadDigits(text, 8, 2, day)) return false;
  const Date read = DateFromParts(year, month, day);
  // A day that does not exist has run over into another.
  if (PartsOf(read) != DateParts{ToInteger(year), ToInteger(month), ToInteger(day)}) return false;
  date = read;
  return true;
}

Date Now() {
  return ThePlatform().clock->Now();
}

}  // namespace tallybook
