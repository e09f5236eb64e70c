#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "base/Dates.h"
#include "tallybook/desktop/figures/FigureUnits.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;

engine::Calendar Rules(engine::CalendarKind kind, Integer data_level = kDayLevel) {
  engine::CalendarDescription description;
  description.kind = kind;
  description.first_date = DateFromParts(2023, 1, 1);
  description.first_year = 2023;
  description.years = 2;
  description.years_in_use = 2;
  return {description, data_level};
}

Text Name(const engine::Calendar& calendar, Integer level, Date date) {
  return UnitName(calendar, level, calendar.UnitOf(date, level), DateText);
}

TEST(FigureUnits, AreCalledAsPeopleCallThem) {
  const engine::Calendar calendar = Rules(engine::CalendarKind::kMonths);
  const Date date = DateFromParts(2024, 1, 2);
  EXPECT_EQ(Name(calendar, kDayLevel, date), "Tue 2024-01-02");
  EXPECT_EQ(Name(calendar, kWeekLevel, date), "Week to 2024-01-06");
  EXPECT_EQ(Name(calendar, kPeriodLevel, date), "January 2024");
  EXPECT_EQ(Name(calendar, engine::kQuarterLevel, date), "Q1 2024");
  EXPECT_EQ(Name(calendar, engine::kHalfLevel, date), "H1 2024");
  EXPECT_EQ(Name(calendar, engine::kYearLevel, date), "2024");
  EXPECT_EQ(Name(calendar, engine::kAllYearsLevel, date), "All dates");
}

TEST(FigureUnits, BeginWithTheBooksOwnLevel) {
  EXPECT_THAT(LevelsFrom(kDayLevel), ElementsAre(1, 2, 3, 4, 5, 6));
  EXPECT_THAT(LevelsFrom(kPeriodLevel), ElementsAre(3, 4, 5, 6));
}

TEST(FigureUnits, ReachOverTheWholeBook) {
  const engine::Calendar calendar = Rules(engine::CalendarKind::kMonths);
  EXPECT_EQ(FigureUnits(calendar, kDayLevel).Count(), 365U + 366U);
  EXPECT_EQ(FigureUnits(calendar, kPeriodLevel).Count(), 24U);
  EXPECT_EQ(FigureUnits(calendar, engine::kYearLevel).Count(), 2U);
}

TEST(FigureUnits, OfAWeekThatCrossesTheEndBelongToTheLastOne) {
  const engine::Calendar calendar = Rules(engine::CalendarKind::kMonths, kWeekLevel);
  ASSERT_GT(calendar.LastRecordDate(), calendar.LastDate());
  const FigureUnits months(calendar, kPeriodLevel);
  EXPECT_EQ(months.IndexOf(calendar.LastRecordDate()), months.Count() - 1);
  EXPECT_GE(months.At(months.Count() - 1).last, calendar.LastRecordDate());
}

TEST(FigureUnits, WithinAMonthAreItsDays) {
  const engine::Calendar calendar = Rules(engine::CalendarKind::kMonths);
  const FigureUnits days(calendar, kDayLevel);
  EXPECT_EQ(UnitsWithin(days, calendar, kPeriodLevel, DateFromParts(2023, 2, 14)), (UnitRange{31, 59}));
  EXPECT_EQ(UnitsWithin(days, calendar, engine::kAllYearsLevel, DateFromParts(2023, 2, 14)), (UnitRange{0, 731}));
}

TEST(FigureUnits, WithinAMonthAreTheWeeksThatEndInIt) {
  const engine::Calendar calendar = Rules(engine::CalendarKind::kMonths);
  const FigureUnits weeks(calendar, kWeekLevel);  // end on Saturdays: January 7, 14, 21, 28, February 4
  EXPECT_EQ(UnitsWithin(weeks, calendar, kPeriodLevel, DateFromParts(2023, 1, 31)), (UnitRange{0, 4}));
  EXPECT_EQ(UnitsWithin(weeks, calendar, kPeriodLevel, DateFromParts(2023, 2, 1)).first, 4U);
}

RC_GTEST_PROP(FigureUnits, StretchesShareOutAllUnits, ()) {
  const auto kind = static_cast<engine::CalendarKind>(*rc::gen::inRange(0, 4));
  const auto data_level = *rc::gen::inRange<Integer>(1, 4);
  const engine::Calendar calendar = Rules(kind, data_level);
  const auto level = *rc::gen::inRange<Integer>(data_level, 7);
  const auto stretch = *rc::gen::inRange<Integer>(level, 7);
  const FigureUnits units(calendar, level);
  std::size_t next = 0;
  for (Date date = calendar.FirstDate(); date <= calendar.LastDate();) {
    const UnitRange range = UnitsWithin(units, calendar, stretch, date);
    RC_ASSERT(range.first <= next && range.end >= next);
    next = range.end;
    date = calendar.UnitOf(date, stretch).last + 1;
  }
  RC_ASSERT(next == units.Count());
}

}  // namespace
}  // namespace tallybook::desktop
