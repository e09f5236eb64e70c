// The five fiscal calendars of a book as pure date arithmetic, and the date cursor over one.
//
//   months   periods are calendar months from the month of `first_date`; a year starts on the first of that month
//   4-4-5    years of 52 or 53 whole weeks. A year starts on the day after the `week_ends_on` day that is nearest to
//   13x4     (within three days of) the eve of the anniversary of `first_date`. The periods have 4, 4, 5, 4, 4, 5 ...
//   weeks    weeks, or 4 weeks each; a 53rd week belongs to the last. `weeks` has the periods of 13x4 and its own type.
//   custom   periods of the lengths that are given, every year alike, from `first_date` on
//
// The rules know every year, not only those held: YearStart answers for the year after the last one, for year 0 and for
// any other. A first date of 29 February has its anniversary on 1 March of common years. Times of day are dropped.
// A year can begin some days off `first_date`, and the first date that is held is the start of the first year.
#pragma once

#include <array>
#include <vector>

#include "base/Types.h"
#include "host/FiscalCalendar.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::engine {

// The levels of FiscalCalendar::LevelDate; 1 to 3 are the data levels as well.
inline constexpr Integer kQuarterLevel = 4;
inline constexpr Integer kHalfLevel = 5;
inline constexpr Integer kYearLevel = 6;
inline constexpr Integer kCustomRangeLevel = 7;  // gives the date itself
inline constexpr Integer kAllYearsLevel = 8;     // from the first date held to the last

// A stretch of whole days, both ends included.
struct DateSpan {
  Date first = 0;
  Date last = 0;
  bool operator==(const DateSpan&) const = default;
};

// Where a date stands in its fiscal year.
struct FiscalPlace {
  Integer year = 0;
  Integer period = 0;   // 1 to NumPeriods
  Integer quarter = 0;  // 1 to 4: of 12 periods 1-3, 4-6, 7-9, 10-12; of 13 1-3, 4-6, 7-9, 10-13; else the nearest
                        // equal split, earlier quarters taking the extra
  Integer half = 0;     // two quarters each
  bool operator==(const FiscalPlace&) const = default;
};

class Calendar {
 public:
  // Takes the description as it is; CheckBookDescription has found it sound.
  Calendar(CalendarDescription description, Integer data_level);

  [[nodiscard]] const CalendarDescription& Description() const { return description_; }
  [[nodiscard]] Integer DataLevel() const { return data_level_; }
  [[nodiscard]] Integer NumPeriods() const { return static_cast<Integer>(names_.size()); }
  // By period from 1; Failure 9 outside. The length is nominal: as described, or that of the first year.
  [[nodiscard]] const Text& PeriodName(Integer period) const;
  [[nodiscard]] Integer PeriodLength(Integer period) const;

  // The first date of a fiscal year, by its name; any year will do.
  [[nodiscard]] Date YearStart(int year) const;
  // The first date of the first year held, and the last of the last.
  [[nodiscard]] Date FirstDate() const { return first_date_; }
  [[nodiscard]] Date LastDate() const { return last_date_; }
  // The level date of the last record: a week that holds the last date can end behind it.
  [[nodiscard]] Date LastRecordDate() const { return UnitOf(last_date_, kOwnLevel).last; }

  // The unit of `level` (1 to 8, or kOwnLevel) that holds `date`. Level 8 runs from the first date held to the last, or
  // to `date` where that is later. Failure 5 for another level and for a date that is no number or thousands of years
  // off.
  [[nodiscard]] DateSpan UnitOf(Date date, Integer level) const;
  [[nodiscard]] FiscalPlace PlaceOf(Date date) const;

  // The quarter (1 to 4) of a period (1 to `period_count`).
  [[nodiscard]] static Integer QuarterOfPeriod(Integer period, Integer period_count);

 private:
  struct PeriodPlace {
    int year;
    int period;  // from 0
  };

  [[nodiscard]] PeriodPlace PeriodHolding(Date day) const;
  [[nodiscard]] int YearHolding(Date day) const;
  // The first date of a period counted from 0; the count of periods itself gives the start of the next year.
  [[nodiscard]] Date PeriodStart(int year, int period) const;
  [[nodiscard]] DateSpan QuartersSpan(const PeriodPlace& place, int first_quarter, int last_quarter) const;

  CalendarDescription description_;
  Integer data_level_;
  std::vector<Text> names_;
  std::vector<int> period_offsets_;  // days from the year's start, for the kinds that count days; one more than periods
  Date first_date_ = 0;
  Date last_date_ = 0;
};

// Who has a Calendar that a cursor can be attached to: a Masterfile of this engine.
class CalendarSource {
 public:
  virtual ~CalendarSource() = default;
  [[nodiscard]] virtual const Calendar& CalendarRules() const = 0;
};

// The cursor. Remembers the last unit of each level from weeks to years, so that a walk over dates costs little.
class BookCalendar : public FiscalCalendar {
 public:
  // Not attached: every operation but Attach is Failure 91 then.
  BookCalendar();
  // Attached to rules that outlive it.
  explicit BookCalendar(const Calendar& rules);

  // Failure 13 where `masterfile` is no book of this engine.
  void Attach(Masterfile& masterfile) override;

  // The first date held until somebody sets it.
  [[nodiscard]] Date CurrentDate() const override;
  void SetCurrentDate(Date date) override;

  Date LevelDate(Date date, Integer level) override;

  // Failure 91 before any LevelDate call.
  [[nodiscard]] Integer PeriodNumber() const override { return Place().period; }
  [[nodiscard]] Integer QuarterNumber() const override { return Place().quarter; }
  [[nodiscard]] Integer HalfNumber() const override { return Place().half; }
  [[nodiscard]] Integer FiscalYear() const override { return Place().year; }
  [[nodiscard]] Date PriorPeriodEnd() const override;

 private:
  [[nodiscard]] const Calendar& Rules() const;
  [[nodiscard]] FiscalPlace Place() const;
  [[nodiscard]] DateSpan UnitOf(Date date, Integer level);

  const Calendar* rules_ = nullptr;
  std::array<DateSpan, kYearLevel + 1> last_units_;  // by level; a span that ends before it begins is unset
  Date current_date_ = 0;
  DateSpan asked_unit_;
  bool asked_ = false;
};

}  // namespace tallybook::engine
