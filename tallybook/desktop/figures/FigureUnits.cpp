#include "tallybook/desktop/figures/FigureUnits.h"

#include <algorithm>
#include <array>
#include <string>

#include "base/Dates.h"

namespace tallybook::desktop {

namespace {

constexpr std::array kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

Text Weekday(Date date) {
  return kWeekdays[static_cast<std::size_t>(DayOfWeek(date) - 1)];
}

}  // namespace

std::vector<Integer> LevelsFrom(Integer data_level) {
  std::vector<Integer> levels;
  for (Integer level = data_level; level <= engine::kYearLevel; ++level) levels.push_back(level);
  return levels;
}

Text LevelName(Integer level) {
  switch (level) {
    case kDayLevel:
      return "Day";
    case kWeekLevel:
      return "Week";
    case kPeriodLevel:
      return "Period";
    case engine::kQuarterLevel:
      return "Quarter";
    case engine::kHalfLevel:
      return "Half-year";
    case engine::kYearLevel:
      return "Year";
    default:
      return "All dates";
  }
}

Text UnitName(const engine::Calendar& calendar, Integer level, const engine::DateSpan& unit, const DateWriter& write) {
  const engine::FiscalPlace place = calendar.PlaceOf(std::min(unit.last, calendar.LastDate()));
  Text year = std::to_string(place.year);
  switch (level) {
    case kDayLevel:
      return Weekday(unit.last) + " " + write(unit.last);
    case kWeekLevel:
      return "Week to " + write(unit.last);
    case kPeriodLevel:
      return calendar.PeriodName(place.period) + " " + year;
    case engine::kQuarterLevel:
      return "Q" + std::to_string(place.quarter) + " " + year;
    case engine::kHalfLevel:
      return "H" + std::to_string(place.half) + " " + year;
    case engine::kYearLevel:
      return year;
    default:
      return LevelName(level);
  }
}

FigureUnits::FigureUnits(const engine::Calendar& calendar, Integer level) : level_(level) {
  for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); day = units_.back().last + 1) {
    units_.push_back(calendar.UnitOf(day, level));
  }
  units_.back().last = std::max(units_.back().last, calendar.LastRecordDate());
}

std::size_t FigureUnits::IndexOf(Date date) const {
  const auto found = std::ranges::lower_bound(units_, date, {}, &engine::DateSpan::last);
  const auto last = units_.size() - 1;
  return std::min(static_cast<std::size_t>(found - units_.begin()), last);
}

UnitRange UnitsWithin(const FigureUnits& units, const engine::Calendar& calendar, Integer stretch, Date date) {
  const Date held = std::clamp(date, calendar.FirstDate(), calendar.LastDate());
  if (stretch == engine::kAllYearsLevel) return {0, units.Count()};
  const engine::DateSpan span = calendar.UnitOf(held, stretch);
  UnitRange range{units.IndexOf(span.first), units.IndexOf(span.last)};
  // A unit that ends behind the stretch is another stretch's; the last one has no other.
  const bool reaches_over = units.At(range.end).last > span.last && range.end + 1 < units.Count();
  if (!reaches_over) ++range.end;
  if (range.end <= range.first) range = {units.IndexOf(held), units.IndexOf(held) + 1};
  return range;
}

}  // namespace tallybook::desktop
