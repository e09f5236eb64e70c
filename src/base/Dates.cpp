#include "base/Dates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook {

namespace {

constexpr long long kSecondsPerDay = 86400;
constexpr long long kDaysPerEra = 146097;  // 400 years of the Gregorian calendar
constexpr long long kYearsPerEra = 400;
// From 0000-03-01, where the count below begins, to 1899-12-30.
constexpr long long kEpoch = 693899;

// Beyond this a date's year no longer fits its 16 bits anyway; it keeps the arithmetic on seconds from overflowing.
constexpr Double kFarthestDate = 13'000'000;
// So many eras before the year 0 no such date's count of days is negative.
constexpr long long kErasBefore = 100;
static_assert(kErasBefore * kDaysPerEra + kEpoch > static_cast<long long>(kFarthestDate));

constexpr long long FloorDivide(long long value, long long by) {
  return value / by - (value % by < 0 ? 1 : 0);
}

// Days from 0000-03-01. Years begin in March here, so that the day that leap years add is a year's last. Within an era
// all is small, and 32 bits divide faster.
constexpr long long DaysFromMarch(long long year, unsigned month, long long day) {
  if (month <= 2) {
    --year;
    month += 12;
  }
  const long long era = FloorDivide(year, kYearsPerEra);
  const auto year_of_era = static_cast<unsigned>(year - era * kYearsPerEra);
  const unsigned day_of_year = (153 * (month - 3) + 2) / 5;
  return era * kDaysPerEra + year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year + day - 1;
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
  long long whole_year = year;
  auto month_of_year = static_cast<unsigned>(month);
  if (month < 1 || month > 12) {
    const long long months = whole_year * 12 + month - 1;
    whole_year = FloorDivide(months, 12);
    month_of_year = static_cast<unsigned>(months - whole_year * 12) + 1;
  }
  return static_cast<Date>(DaysFromMarch(whole_year, month_of_year, day) - kEpoch);
}

Date TimeFromParts(int hour, int minute, int second) {
  const long long seconds = hour * 3600LL + minute * 60LL + second;
  return static_cast<Date>(seconds) / static_cast<Double>(kSecondsPerDay);
}

// Divides as the paper of Neri and Schneider on calendar algorithms (2022) shows: what is left of one division comes
// from the low half of a product, without a second one.
DateParts PartsOf(Date date) {
  const auto days = static_cast<std::uint32_t>(NearestSecond(date).day + kEpoch + kErasBefore * kDaysPerEra);
  const std::uint32_t quarters = 4 * days + 3;
  const std::uint32_t century = quarters / 146097;
  const std::uint32_t quarters_of_century = quarters % 146097 | 3;
  // A year is 1461 quarters of a day; 2939745 is 2 to the 32 by that, rounded up.
  const std::uint64_t years = std::uint64_t{2939745} * quarters_of_century;
  const auto year_of_century = static_cast<std::uint32_t>(years >> 32);
  const std::uint32_t day_of_year = static_cast<std::uint32_t>(years) / 2939745 / 4;
  // Months from March on are 30.6 days long, 65536 / 2141 rounded as the calendar has them.
  const std::uint32_t months = 2141 * day_of_year + 197913;
  const std::uint32_t month_from_march = months >> 16;  // 3 March to 14 February
  const std::uint32_t day = (months & 0xFFFF) / 2141 + 1;
  const bool next_year = month_from_march > 12;
  const auto month = static_cast<Integer>(next_year ? month_from_march - 12 : month_from_march);
  const Integer year = ToInteger(100LL * century + year_of_century - kErasBefore * kYearsPerEra + (next_year ? 1 : 0));
  return {year, month, static_cast<Integer>(day)};
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

}  // namespace tallybook
