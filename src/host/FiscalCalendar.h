// The fiscal calendar of a database: which date holds a date's data, and where that date stands in the fiscal year.
// An embedding application implements it. One thread. The database owns its own calendar; a calendar that the
// factory made belongs to whoever asked for it and must not outlive the database that it is attached to.
#pragma once

#include "base/Types.h"

namespace tallybook {

class Masterfile;

// The level argument that stands for the database's own `DataLevel`.
inline constexpr Integer kOwnLevel = -1;

class FiscalCalendar {
 public:
  virtual ~FiscalCalendar() = default;

  // Binds a separately created calendar to `masterfile`, which must outlive it. Nothing else works before.
  virtual void Attach(Masterfile& masterfile) = 0;

  // The cursor date, shared by everyone who holds this calendar. Whoever walks it leaves it where the walk ended.
  [[nodiscard]] virtual Date CurrentDate() const = 0;
  virtual void SetCurrentDate(Date date) = 0;

  // The last date of the unit of `level` that holds `date`.
  //   level   1 the date itself, 2 week, 3 fiscal period, 4 quarter, 5 half year, 6 year, 7 the date itself,
  //           8 the last date held; kOwnLevel (-1) the database's own `DataLevel`
  //   gives   a date never before `date`; the next unit of that level starts on the result plus 1
  //   leaves  the calendar positioned on the result, which PeriodNumber, QuarterNumber, HalfNumber and FiscalYear tell
  //           the place of, and PriorPeriodEnd telling of the unit; CurrentDate does not move
  //   fails   with a host failure for a level that is none of these
  virtual Date LevelDate(Date date, Integer level) = 0;

  // The place in the fiscal year of the date that the last LevelDate call gave.
  [[nodiscard]] virtual Integer PeriodNumber() const = 0;   // 1 to Masterfile::NumPeriods
  [[nodiscard]] virtual Integer QuarterNumber() const = 0;  // 1 to 4
  [[nodiscard]] virtual Integer HalfNumber() const = 0;     // 1 or 2
  [[nodiscard]] virtual Integer FiscalYear() const = 0;     // the year's name, as 2004

  // The last date before the unit of the last LevelDate call; that date plus 1 is the unit's first date.
  [[nodiscard]] virtual Date PriorPeriodEnd() const = 0;
};

}  // namespace tallybook
