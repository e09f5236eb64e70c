#include "tallybook/engine/Calendar.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "base/FixedTable.h"
#include "host/Masterfile.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Calendar";
constexpr Date kFarthestDay = 3'000'000;  // some 8,200 years either way
constexpr int kDaysOfWeek = 7;
constexpr DateSpan kUnsetSpan = {1, 0};

constexpr const char* kMonthNames[] = {"January", "February", "March",     "April",   "May",      "June",
                                       "July",    "August",   "September", "October", "November", "December"};
constexpr int kMonths = 12;

Date DayOf(Date date) {
  if (!(std::abs(date) <= kFarthestDay)) {
    throw Failure(FailureNumber::kInvalidArgument, "No calendar holds the date " + std::to_string(date), kSource);
  }
  return std::floor(date);
}

// How many weeks each period has; empty for the kinds that do not count in weeks.
std::vector<int> WeeksOfPeriods(CalendarKind kind) {
  switch (kind) {
    case CalendarKind::k445:
      return {4, 4, 5, 4, 4, 5, 4, 4, 5, 4, 4, 5};
    case CalendarKind::kWeeks:
    case CalendarKind::k13x4:
      return std::vector<int>(13, 4);
    case CalendarKind::kMonths:
    case CalendarKind::kCustom:
      break;
  }
  return {};
}

std::vector<int> PeriodOffsets(const CalendarDescription& description) {
  std::vector<int> offsets = {0};
  for (const int weeks : WeeksOfPeriods(description.kind)) offsets.push_back(offsets.back() + weeks * kDaysOfWeek);
  if (description.kind == CalendarKind::kCustom) {
    for (const PeriodDescription& period : description.periods) offsets.push_back(offsets.back() + period.length);
  }
  return offsets;
}

std::vector<Text> PeriodNames(const CalendarDescription& description, std::size_t offset_count) {
  std::vector<Text> names;
  if (!description.periods.empty()) {
    for (const PeriodDescription& period : description.periods) names.push_back(period.name);
  } else if (description.kind == CalendarKind::kMonths) {
    const int first_month = PartsOf(description.first_date).month - 1;
    for (int month = 0; month < kMonths; ++month) names.emplace_back(kMonthNames[(first_month + month) % kMonths]);
  } else {
    for (std::size_t period = 1; period < offset_count; ++period) names.push_back("Period " + std::to_string(period));
  }
  return names;
}

// The days from `day` to the next day of the week `weekday`, 0 to 6.
int DaysUntil(Integer weekday, Date day) {
  return (weekday - DayOfWeek(day) + kDaysOfWeek) % kDaysOfWeek;
}

}  // namespace

Calendar::Calendar(CalendarDescription description, Integer data_level)
    : description_(std::move(description)), data_level_(data_level), period_offsets_(PeriodOffsets(description_)) {
  names_ = PeriodNames(description_, period_offsets_.size());
  first_date_ = YearStart(description_.first_year);
  last_date_ = YearStart(description_.first_year + description_.years) - 1;
}

const Text& Calendar::PeriodName(Integer period) const {
  if (period < 1 || period > NumPeriods()) FailOutsideTable(period, NumPeriods());
  return names_[static_cast<std::size_t>(period - 1)];
}

Integer Calendar::PeriodLength(Integer period) const {
  if (period < 1 || period > NumPeriods()) FailOutsideTable(period, NumPeriods());
  const auto index = static_cast<std::size_t>(period - 1);
  if (!description_.periods.empty() && description_.periods[index].length != 0) {
    return description_.periods[index].length;
  }
  if (description_.kind == CalendarKind::kMonths) {
    const int year = description_.first_year;
    return static_cast<Integer>(PeriodStart(year, period) - PeriodStart(year, period - 1));
  }
  return static_cast<Integer>(period_offsets_[index + 1] - period_offsets_[index]);
}

Date Calendar::YearStart(int year) const {
  const int years_on = year - description_.first_year;
  if (description_.kind == CalendarKind::kCustom) return description_.first_date + years_on * period_offsets_.back();
  const DateParts first = PartsOf(description_.first_date);
  if (description_.kind == CalendarKind::kMonths) return DateFromParts(first.year + years_on, first.month, 1);
  const Date eve = DateFromParts(first.year + years_on, first.month, first.day) - 1;
  const int ahead = DaysUntil(description_.week_ends_on, eve);
  const int nearest = ahead > kDaysOfWeek / 2 ? ahead - kDaysOfWeek : ahead;
  return eve + nearest + 1;
}

int Calendar::YearHolding(Date day) const {
  constexpr double kMeanYear = 365.2425;
  const double length = description_.kind == CalendarKind::kCustom ? period_offsets_.back() : kMeanYear;
  int year = description_.first_year + static_cast<int>(std::floor((day - first_date_) / length));
  while (YearStart(year) > day) --year;
  while (YearStart(year + 1) <= day) ++year;
  return year;
}

Calendar::PeriodPlace Calendar::PeriodHolding(Date day) const {
  const int year = YearHolding(day);
  if (description_.kind == CalendarKind::kMonths) {
    const int months = PartsOf(day).month - PartsOf(description_.first_date).month;
    return {year, (months + kMonths) % kMonths};
  }
  // Days behind the last period are those of a 53rd week, which belongs to it.
  const auto offset = static_cast<int>(day - YearStart(year));
  const auto behind = std::upper_bound(period_offsets_.begin(), std::prev(period_offsets_.end()), offset);
  return {year, static_cast<int>(behind - period_offsets_.begin()) - 1};
}

Date Calendar::PeriodStart(int year, int period) const {
  if (period == NumPeriods()) return YearStart(year + 1);
  if (description_.kind == CalendarKind::kMonths) {
    const DateParts start = PartsOf(YearStart(year));
    return DateFromParts(start.year, start.month + period, 1);
  }
  return YearStart(year) + period_offsets_[static_cast<std::size_t>(period)];
}

Integer Calendar::QuarterOfPeriod(Integer period, Integer period_count) {
  constexpr int kQuarters = 4;
  if (period_count == 13) return static_cast<Integer>(std::min((period - 1) / 3, kQuarters - 1) + 1);
  int left = period;
  for (int quarter = 1; quarter < kQuarters; ++quarter) {
    const int size = period_count / kQuarters + (quarter <= period_count % kQuarters ? 1 : 0);
    if (left <= size) return static_cast<Integer>(quarter);
    left -= size;
  }
  return kQuarters;
}

DateSpan Calendar::QuartersSpan(const PeriodPlace& place, int first_quarter, int last_quarter) const {
  const auto quarter_of = [this](int period) {
    return QuarterOfPeriod(static_cast<Integer>(period + 1), NumPeriods());
  };
  int first = place.period;
  while (first > 0 && quarter_of(first - 1) >= first_quarter) --first;
  int end = place.period + 1;
  while (end < NumPeriods() && quarter_of(end) <= last_quarter) ++end;
  return {PeriodStart(place.year, first), PeriodStart(place.year, end) - 1};
}

DateSpan Calendar::UnitOf(Date date, Integer level) const {
  const Date day = DayOf(date);
  switch (level == kOwnLevel ? data_level_ : level) {
    case kDayLevel:
    case kCustomRangeLevel:
      return {day, day};
    case kWeekLevel: {
      const Date last = day + DaysUntil(description_.week_ends_on, day);
      return {last - (kDaysOfWeek - 1), last};
    }
    case kPeriodLevel: {
      const PeriodPlace place = PeriodHolding(day);
      return {PeriodStart(place.year, place.period), PeriodStart(place.year, place.period + 1) - 1};
    }
    case kQuarterLevel: {
      const FiscalPlace place = PlaceOf(day);
      return QuartersSpan(PeriodHolding(day), place.quarter, place.quarter);
    }
    case kHalfLevel: {
      const FiscalPlace place = PlaceOf(day);
      return QuartersSpan(PeriodHolding(day), place.half * 2 - 1, place.half * 2);
    }
    case kYearLevel: {
      const int year = YearHolding(day);
      return {YearStart(year), YearStart(year + 1) - 1};
    }
    case kAllYearsLevel:
      return {std::min(first_date_, day), std::max(last_date_, day)};
    default:
      throw Failure(FailureNumber::kInvalidArgument, "A calendar has no level " + std::to_string(level), kSource);
  }
}

FiscalPlace Calendar::PlaceOf(Date date) const {
  const PeriodPlace place = PeriodHolding(DayOf(date));
  const auto period = static_cast<Integer>(place.period + 1);
  const Integer quarter = QuarterOfPeriod(period, NumPeriods());
  const auto half = static_cast<Integer>((quarter + 1) / 2);
  return {static_cast<Integer>(place.year), period, quarter, half};
}

BookCalendar::BookCalendar() {
  last_units_.fill(kUnsetSpan);
}

BookCalendar::BookCalendar(const Calendar& rules) : rules_(&rules), current_date_(rules.FirstDate()) {
  last_units_.fill(kUnsetSpan);
}

void BookCalendar::Attach(Masterfile& masterfile) {
  const auto* source = dynamic_cast<const CalendarSource*>(&masterfile);
  if (source == nullptr) {
    throw Failure(FailureNumber::kTypeMismatch, "A book's calendar can be attached to a book only", kSource);
  }
  *this = BookCalendar(source->CalendarRules());
}

const Calendar& BookCalendar::Rules() const {
  if (rules_ == nullptr) {
    throw Failure(FailureNumber::kObjectNotSet, "The calendar is not attached to a book", kSource);
  }
  return *rules_;
}

Date BookCalendar::CurrentDate() const {
  static_cast<void>(Rules());
  return current_date_;
}

void BookCalendar::SetCurrentDate(Date date) {
  static_cast<void>(Rules());
  current_date_ = date;
}

Date BookCalendar::LevelDate(Date date, Integer level) {
  const Integer own_level = Rules().DataLevel();
  const DateSpan unit = UnitOf(date, level == kOwnLevel ? own_level : level);
  asked_unit_ = unit;
  asked_ = true;
  return unit.last;
}

// A day is made as fast as remembered, and the unit of level 8 grows with the date.
DateSpan BookCalendar::UnitOf(Date date, Integer level) {
  if (level <= kDayLevel || level >= kCustomRangeLevel) return rules_->UnitOf(date, level);
  DateSpan& last = last_units_[static_cast<std::size_t>(level)];
  if (!(last.first <= date && date < last.last + 1)) last = rules_->UnitOf(date, level);
  return last;
}

FiscalPlace BookCalendar::Place() const {
  const Calendar& rules = Rules();
  if (!asked_) throw Failure(FailureNumber::kObjectNotSet, "LevelDate has not been asked yet", kSource);
  return rules.PlaceOf(asked_unit_.last);
}

Date BookCalendar::PriorPeriodEnd() const {
  static_cast<void>(Rules());
  if (!asked_) throw Failure(FailureNumber::kObjectNotSet, "LevelDate has not been asked yet", kSource);
  return asked_unit_.first - 1;
}

}  // namespace tallybook::engine
