#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::testing {
namespace {

// The dates by the standard library's calendar, so that the calendar under test is not held against itself.
Date Day(int year, unsigned month, unsigned day) {
  using namespace std::chrono;
  const sys_days base = 1899y / December / 30;
  const year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
  return static_cast<Date>((sys_days(date) - base).count());
}

Date EndOfMonth(int year, unsigned month) {
  using namespace std::chrono;
  const year_month_day last = std::chrono::year(year) / std::chrono::month(month) / std::chrono::last;
  return Day(year, month, static_cast<unsigned>(last.day()));
}

BookShape Months(Date first_date, Integer week_ends_on = 7) {
  BookShape shape;
  shape.first_date = first_date;
  shape.week_ends_on = week_ends_on;
  return shape;
}

BookShape Periods(std::vector<Integer> lengths) {
  BookShape shape;
  shape.calendar = CalendarKind::kCustom;
  shape.period_lengths = std::move(lengths);
  return shape;
}

class MemoryCalendarTest : public ::testing::Test {
 protected:
  void Open(const BookShape& shape) { host_ = std::make_unique<MemoryHost>(shape); }
  FiscalCalendar& Calendar() { return host_->book.FiscalCalendar(); }
  MemoryMasterfile& Book() { return host_->book; }

  // Every day of the book, and some beyond both ends, lies in a unit that is whole and touches its neighbour.
  void ExpectUnitsWithoutGaps(Integer level) {
    Date first = Book().FirstDate() - 400;
    Calendar().LevelDate(first, level);
    Date unit_last = Calendar().LevelDate(first, level);
    Date unit_before = Calendar().PriorPeriodEnd();
    for (Date day = first; day <= Book().LastDate() + 400; ++day) {
      const Date last = Calendar().LevelDate(day, level);
      ASSERT_GE(last, day) << DateText(day) << " level " << level;
      ASSERT_LT(Calendar().PriorPeriodEnd(), day) << DateText(day) << " level " << level;
      if (day <= unit_last) {
        ASSERT_EQ(last, unit_last) << DateText(day) << " level " << level;
        ASSERT_EQ(Calendar().PriorPeriodEnd(), unit_before) << DateText(day) << " level " << level;
      } else {
        ASSERT_EQ(Calendar().PriorPeriodEnd(), unit_last) << DateText(day) << " level " << level;
        unit_before = unit_last;
        unit_last = last;
      }
    }
  }

 private:
  std::unique_ptr<MemoryHost> host_;
};

TEST_F(MemoryCalendarTest, ADayIsItsOwnUnitAtLevelsOneAndSeven) {
  Open(Months(Day(2003, 1, 1)));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 3), 1), Day(2004, 2, 3));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 3), 7), Day(2004, 2, 3));
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2004, 2, 2));
}

TEST_F(MemoryCalendarTest, WeeksEndOnTheChosenDayAndCrossAYearsEnd) {
  for (Integer day_of_week = 1; day_of_week <= 7; ++day_of_week) {
    Open(Months(Day(2003, 1, 1), day_of_week));
    for (Date day = Day(2003, 12, 20); day <= Day(2004, 1, 10); ++day) {
      const Date last = Calendar().LevelDate(day, kWeekLevel);
      EXPECT_EQ(DayOfWeek(last), day_of_week);
      EXPECT_GE(last, day);
      EXPECT_LT(last, day + 7);
      EXPECT_EQ(Calendar().PriorPeriodEnd(), last - 7);
    }
  }
  Open(Months(Day(2003, 1, 1)));  // weeks end on Saturday
  EXPECT_EQ(Calendar().LevelDate(Day(2003, 12, 29), kWeekLevel), Day(2004, 1, 3));
}

TEST_F(MemoryCalendarTest, APeriodOfMonthsEndsWithTheMonthInLeapYearsToo) {
  Open(Months(Day(2003, 1, 1)));
  for (int year = 2003; year <= 2005; ++year)
    for (unsigned month = 1; month <= 12; ++month) {
      EXPECT_EQ(Calendar().LevelDate(Day(year, month, 11), kPeriodLevel), EndOfMonth(year, month));
      EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(year, month, 1) - 1);
      EXPECT_EQ(Calendar().PeriodNumber(), static_cast<Integer>(month));
      EXPECT_EQ(Calendar().FiscalYear(), year);
    }
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 29), kPeriodLevel), Day(2004, 2, 29));
}

TEST_F(MemoryCalendarTest, QuartersHalvesAndYearsFollowTheFirstMonth) {
  Open(Months(Day(2003, 7, 1)));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 3), 4), EndOfMonth(2004, 3));
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2003, 12, 31));
  EXPECT_EQ(Calendar().QuarterNumber(), 3);
  EXPECT_EQ(Calendar().HalfNumber(), 2);
  EXPECT_EQ(Calendar().FiscalYear(), 2003);
  EXPECT_EQ(Calendar().LevelDate(Day(2003, 9, 30), 5), Day(2003, 12, 31));
  EXPECT_EQ(Calendar().HalfNumber(), 1);
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2003, 6, 30));
  EXPECT_EQ(Calendar().LevelDate(Day(2003, 7, 1), 6), Day(2004, 6, 30));
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2003, 6, 30));
  EXPECT_EQ(Book().YearStart(2004), Day(2004, 7, 1));
  EXPECT_EQ(Book().LastDate(), Day(2006, 6, 30));
}

TEST_F(MemoryCalendarTest, ThirteenPeriodsGiveTheLastQuarterFour) {
  Open(Periods(std::vector<Integer>(13, 28)));
  const Date first = Book().FirstDate();
  EXPECT_EQ(Calendar().LevelDate(first + 28 * 9, 4), first + 28 * 13 - 1);
  EXPECT_EQ(Calendar().QuarterNumber(), 4);
  EXPECT_EQ(Calendar().PriorPeriodEnd(), first + 28 * 9 - 1);
  EXPECT_EQ(Calendar().LevelDate(first + 28 * 9 - 1, 4), first + 28 * 9 - 1);
  EXPECT_EQ(Calendar().QuarterNumber(), 3);
  EXPECT_EQ(Book().LastDate(), first + 3 * 13 * 28 - 1);
}

TEST_F(MemoryCalendarTest, AnyOtherCountOfPeriodsIsSplitWithTheEarlierQuartersLarger) {
  Open(Periods({10, 11, 12, 13, 14, 15}));  // quarters of 2, 2, 1 and 1 periods
  const Date first = Book().FirstDate();
  EXPECT_EQ(Calendar().LevelDate(first, 4), first + 21 - 1);
  EXPECT_EQ(Calendar().LevelDate(first + 21, 4), first + 46 - 1);
  EXPECT_EQ(Calendar().LevelDate(first + 46, 4), first + 60 - 1);
  EXPECT_EQ(Calendar().LevelDate(first + 60, 4), first + 75 - 1);
  EXPECT_EQ(Calendar().PeriodNumber(), 6);
  EXPECT_EQ(Calendar().LevelDate(first + 75, 3), first + 85 - 1);
  EXPECT_EQ(Calendar().FiscalYear(), 2004);
}

TEST_F(MemoryCalendarTest, UnitsOfEveryLevelFollowEachOtherWithoutGaps) {
  for (const BookShape& shape : {Months(Day(2003, 1, 1), 3), Months(Day(2003, 10, 1), 1),
                                 Periods({28, 28, 35, 28, 28, 35, 28, 28, 35, 28, 28, 35}), Periods({200}),
                                 Periods({5, 90, 1}), Periods(std::vector<Integer>(13, 28))}) {
    Open(shape);
    for (Integer level = 1; level <= 6; ++level) ASSERT_NO_FATAL_FAILURE(ExpectUnitsWithoutGaps(level));
  }
}

TEST_F(MemoryCalendarTest, LevelEightIsEverythingHeld) {
  Open(Months(Day(2003, 1, 1)));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 3), 8), Day(2005, 12, 31));
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2002, 12, 31));
}

TEST_F(MemoryCalendarTest, TheOwnLevelIsTheBooks) {
  BookShape shape = Months(Day(2003, 1, 1));
  for (Integer level = kDayLevel; level <= kPeriodLevel; ++level) {
    shape.data_level = level;
    Open(shape);
    const Date own = Calendar().LevelDate(Day(2004, 2, 3), kOwnLevel);
    EXPECT_EQ(own, Calendar().LevelDate(Day(2004, 2, 3), level));
  }
}

TEST_F(MemoryCalendarTest, ATimeOfDayIsDropped) {
  Open(Months(Day(2003, 1, 1)));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 29) + 0.75, kDayLevel), Day(2004, 2, 29));
  EXPECT_EQ(Calendar().LevelDate(Day(2004, 2, 29) + 0.75, kPeriodLevel), Day(2004, 2, 29));
}

TEST_F(MemoryCalendarTest, LevelDateLeavesTheCursorAlone) {
  Open(Months(Day(2003, 1, 1)));
  Calendar().SetCurrentDate(Day(2004, 5, 6));
  Calendar().LevelDate(Day(2003, 1, 1), 6);
  EXPECT_EQ(Calendar().CurrentDate(), Day(2004, 5, 6));
}

TEST_F(MemoryCalendarTest, ReadingARecordLeavesTheLastLevelAlone) {
  Open(Months(Day(2003, 1, 1)));
  Book().AddAccount(1, "A");
  Calendar().LevelDate(Day(2004, 5, 6), 6);
  ASSERT_TRUE(Book().ReadRecord(1, Day(2003, 2, 2)));
  EXPECT_EQ(Calendar().FiscalYear(), 2004);
  EXPECT_EQ(Calendar().PriorPeriodEnd(), Day(2003, 12, 31));
}

TEST_F(MemoryCalendarTest, AnUnknownLevelIsAFailure) {
  Open(Months(Day(2003, 1, 1)));
  for (const Integer level : {Integer{0}, Integer{9}, Integer{-2}}) {
    try {
      Calendar().LevelDate(Day(2004, 2, 3), level);
      FAIL() << "level " << level << " was taken";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), FailureNumber::kInvalidArgument);
    }
  }
}

TEST_F(MemoryCalendarTest, ACalendarOfItsOwnWorksOnceAttached) {
  Open(Months(Day(2003, 1, 1)));
  CallRecord record;
  MemoryCalendar calendar(record);
  try {
    calendar.LevelDate(Day(2004, 2, 3), kDayLevel);
    FAIL() << "it worked without a database";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), FailureNumber::kObjectNotSet);
  }
  calendar.Attach(Book());
  EXPECT_EQ(calendar.LevelDate(Day(2004, 2, 3), kPeriodLevel), Day(2004, 2, 29));
  calendar.SetCurrentDate(Day(2005, 1, 1));
  EXPECT_NE(Calendar().CurrentDate(), Day(2005, 1, 1)) << "its cursor is its own";
}

TEST_F(MemoryCalendarTest, ShapesThatMakeNoCalendarAreRefused) {
  EXPECT_THROW(Open(Months(Day(2003, 1, 2))), Failure);
  EXPECT_THROW(Open(Periods({})), Failure);
  EXPECT_THROW(Open(Periods({28, 0})), Failure);
  EXPECT_THROW(Open(Months(Day(2003, 1, 1), 8)), Failure);
  BookShape shape;
  shape.data_level = 4;
  EXPECT_THROW(Open(shape), Failure);
}

}  // namespace
}  // namespace tallybook::testing
