// What a chart shows: the figures of one account over time, a line a field, and the same of the year before. Plain
// data.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/figures/FigureTable.h"

namespace tallybook::desktop {

struct ChartLine {
  Text name;
  bool year_before = false;
  std::vector<std::optional<Double>> values;  // a unit each; none where the year before has no such unit, or no book
};

// A mark below the chart: where a period, quarter or year of the calendar begins.
struct ChartCut {
  std::size_t unit = 0;
  Text name;
};

struct ChartData {
  Text title;
  std::vector<Text> units;  // what they are called
  std::vector<ChartCut> cuts;
  std::vector<ChartLine> lines;
  [[nodiscard]] bool IsEmpty() const { return units.empty() || lines.empty(); }
  [[nodiscard]] Double Least() const;
  [[nodiscard]] Double Most() const;
};

struct ChartChoice {
  Integer account = 1;                // position
  std::vector<Integer> fields = {1};  // positions
  bool against_year_before = true;
};

// The fiscal year of the date that the table shows, in units of the table's level; all years where that is the year, or
// where the table shows all dates. Fails as FigureTable::Value.
[[nodiscard]] ChartData ChartOf(FigureTable& table, const ChartChoice& choice, const DateWriter& write);

// The unit of a year before that stands against a unit: the same day of the same period, or the unit of the same number
// of its year. None where there is none.
[[nodiscard]] std::optional<std::size_t> UnitOfYearBefore(const FigureUnits& units, const engine::Calendar& calendar,
                                                          std::size_t unit);

}  // namespace tallybook::desktop
