// The stretches of time that a table shows: the units of one level over a whole book, in order, and what they are
// called. A record belongs to the unit that holds its level date. The last unit takes the last record besides, which
// can end behind the last date held. Plain data; positions count from 0.
#pragma once

#include <cstddef>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/forms/PlainDate.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::desktop {

// The levels that a book's figures can be shown at: its own first, up to the year.
[[nodiscard]] std::vector<Integer> LevelsFrom(Integer data_level);
// "Day", "Week", "Period", "Quarter", "Half-year", "Year"; "All dates" for engine::kAllYearsLevel.
[[nodiscard]] Text LevelName(Integer level);
// "Tue 2024-01-02", "Week to 2024-01-06", "January 2024", "Q1 2024", "H1 2024", "2024". A period's year is the fiscal
// one.
[[nodiscard]] Text UnitName(const engine::Calendar& calendar, Integer level, const engine::DateSpan& unit,
                            const DateWriter& write);

class FigureUnits {
 public:
  FigureUnits(const engine::Calendar& calendar, Integer level);

  [[nodiscard]] Integer Level() const { return level_; }
  [[nodiscard]] std::size_t Count() const { return units_.size(); }
  [[nodiscard]] const engine::DateSpan& At(std::size_t index) const { return units_[index]; }
  // The unit that holds a date; the first or the last for one outside the book.
  [[nodiscard]] std::size_t IndexOf(Date date) const;

 private:
  Integer level_;
  std::vector<engine::DateSpan> units_;
};

// Indexes from the first to before the end.
struct UnitRange {
  std::size_t first = 0;
  std::size_t end = 0;
  [[nodiscard]] std::size_t Count() const { return end - first; }
  bool operator==(const UnitRange&) const = default;
};

// The units whose records end within the unit of `stretch` (a level, not below that of the units) that holds `date`.
[[nodiscard]] UnitRange UnitsWithin(const FigureUnits& units, const engine::Calendar& calendar, Integer stretch,
                                    Date date);

}  // namespace tallybook::desktop
