#include "tallybook/desktop/figures/ChartData.h"

#include <algorithm>
#include <string>

#include "tallybook/application/Shown.h"

namespace tallybook::desktop {

namespace {

template <typename Better>
Double Extreme(const std::vector<ChartLine>& lines, Better better) {
  Double extreme = 0;
  for (const ChartLine& line : lines) {
    for (const auto& value : line.values) {
      if (value && better(*value, extreme)) extreme = *value;
    }
  }
  return extreme;
}

Integer StretchOf(const FigureChoice& choice) {
  const bool all = choice.level == engine::kYearLevel || choice.stretch == engine::kAllYearsLevel;
  return all ? engine::kAllYearsLevel : engine::kYearLevel;
}

// Behind which level's units a mark stands: a year's worth of them.
Integer CutLevelOf(Integer level, bool all_years) {
  if (all_years) return engine::kYearLevel;
  return std::max(level, kPeriodLevel);
}

std::vector<ChartCut> CutsOf(const FigureUnits& units, const engine::Calendar& calendar, UnitRange range, Integer level,
                             const DateWriter& write) {
  std::vector<ChartCut> cuts;
  Date end_of_last = 0;
  for (std::size_t unit = range.first; unit < range.end; ++unit) {
    const Date date = std::min(units.At(unit).last, calendar.LastDate());
    if (date <= end_of_last) continue;
    const engine::DateSpan span = calendar.UnitOf(date, level);
    end_of_last = span.last;
    const bool is_period = level == kPeriodLevel;
    const Text name =
        is_period ? calendar.PeriodName(calendar.PlaceOf(date).period) : UnitName(calendar, level, span, write);
    cuts.push_back({unit - range.first, name});
  }
  return cuts;
}

ChartLine LineOf(FigureTable& table, Integer account, Integer field, UnitRange range) {
  ChartLine line{application::Shown(table.Field(field).description), false, {}};
  for (std::size_t unit = range.first; unit < range.end; ++unit)
    line.values.emplace_back(table.ValueAt({account, unit, field}));
  return line;
}

ChartLine LineOfYearBefore(FigureTable& table, Integer account, Integer field, UnitRange range) {
  ChartLine line{application::Shown(table.Field(field).description) + ", year before", true, {}};
  for (std::size_t unit = range.first; unit < range.end; ++unit) {
    const auto before = UnitOfYearBefore(table.Units(), table.Reader().CalendarRules(), unit);
    line.values.push_back(before ? std::optional(table.ValueAt({account, *before, field})) : std::nullopt);
  }
  return line;
}

bool HasValues(const ChartLine& line) {
  return std::ranges::any_of(line.values, [](const auto& value) { return value.has_value(); });
}

}  // namespace

Double ChartData::Least() const {
  return Extreme(lines, std::less<Double>());
}

Double ChartData::Most() const {
  return Extreme(lines, std::greater<Double>());
}

std::optional<std::size_t> UnitOfYearBefore(const FigureUnits& units, const engine::Calendar& calendar,
                                            std::size_t unit) {
  const Date date = std::min(units.At(unit).last, calendar.LastDate());
  const engine::FiscalPlace place = calendar.PlaceOf(date);
  const Date year_before = calendar.YearStart(place.year - 1);
  if (year_before < calendar.FirstDate()) return std::nullopt;
  if (units.Level() != kDayLevel) {
    const std::size_t number = unit - units.IndexOf(calendar.YearStart(place.year));
    const std::size_t before = units.IndexOf(year_before) + number;
    return units.At(before).last < calendar.YearStart(place.year) ? std::optional(before) : std::nullopt;
  }
  const Date days_into_period = date - calendar.UnitOf(date, kPeriodLevel).first;
  Date period = year_before;
  for (Integer passed = 1; passed < place.period; ++passed) period = calendar.UnitOf(period, kPeriodLevel).last + 1;
  if (period + days_into_period > calendar.UnitOf(period, kPeriodLevel).last) return std::nullopt;
  return units.IndexOf(period + days_into_period);
}

ChartData ChartOf(FigureTable& table, const ChartChoice& choice, const DateWriter& write) {
  ChartData chart;
  if (table.Accounts().empty() || table.Columns() == 0) return chart;
  const engine::Calendar& calendar = table.Reader().CalendarRules();
  const Integer stretch = StretchOf(table.Choice());
  const bool all_years = stretch == engine::kAllYearsLevel;
  const UnitRange range = UnitsWithin(table.Units(), calendar, stretch, table.Choice().date);
  const engine::AccountDescription& account = table.Account(choice.account);
  chart.title = application::Shown(account.code + "  " + account.description);
  if (!all_years)
    chart.title += "  " + std::to_string(calendar.PlaceOf(std::min(table.Choice().date, calendar.LastDate())).year);
  for (std::size_t unit = range.first; unit < range.end; ++unit) {
    chart.units.push_back(UnitName(calendar, table.Units().Level(), table.Units().At(unit), write));
  }
  chart.cuts = CutsOf(table.Units(), calendar, range, CutLevelOf(table.Units().Level(), all_years), write);
  for (const Integer field : choice.fields) {
    chart.lines.push_back(LineOf(table, choice.account, field, range));
    if (!choice.against_year_before || all_years) continue;
    ChartLine before = LineOfYearBefore(table, choice.account, field, range);
    if (HasValues(before)) chart.lines.push_back(std::move(before));
  }
  return chart;
}

}  // namespace tallybook::desktop
