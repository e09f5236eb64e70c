#include <chrono>
#include <cmath>
#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "base/Dates.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

Date At(int year, int month, int day, int hour, int minute, int second) {
  return DateFromParts(year, month, day) + TimeFromParts(hour, minute, second);
}

TEST(DatesTest, CountsDaysFromTheThirtiethOfDecember1899) {
  EXPECT_EQ(DateFromParts(1899, 12, 30), 0);
  EXPECT_EQ(DateFromParts(1899, 12, 29), -1);
  EXPECT_EQ(DateFromParts(1900, 1, 1), 2);
  EXPECT_EQ(DateFromParts(2004, 2, 3), 38020);
  EXPECT_EQ(DateFromParts(1970, 1, 1), 25569);
}

TEST(DatesTest, MonthsRunOverBothWays) {
  EXPECT_EQ(DateFromParts(2004, 13, 1), DateFromParts(2005, 1, 1));
  EXPECT_EQ(DateFromParts(2004, 0, 1), DateFromParts(2003, 12, 1));
  EXPECT_EQ(DateFromParts(2004, -11, 1), DateFromParts(2003, 1, 1));
  EXPECT_EQ(DateFromParts(2004, -12, 1), DateFromParts(2002, 12, 1));
  EXPECT_EQ(DateFromParts(2004, 26, 15), DateFromParts(2006, 2, 15));
}

TEST(DatesTest, DaysRunOverBothWays) {
  EXPECT_EQ(DateFromParts(2004, 3, 0), DateFromParts(2004, 2, 29));
  EXPECT_EQ(DateFromParts(2003, 3, 0), DateFromParts(2003, 2, 28));
  EXPECT_EQ(DateFromParts(2003, 2, 29), DateFromParts(2003, 3, 1));
  EXPECT_EQ(DateFromParts(2004, 1, -30), DateFromParts(2003, 12, 1));
  EXPECT_EQ(DateFromParts(2004, 1, 366), DateFromParts(2004, 12, 31));
}

TEST(DatesTest, LeapYearsAreGregorian) {
  EXPECT_EQ(PartsOf(DateFromParts(1900, 2, 29)), (DateParts{1900, 3, 1}));
  EXPECT_EQ(PartsOf(DateFromParts(2000, 2, 29)), (DateParts{2000, 2, 29}));
  EXPECT_EQ(PartsOf(DateFromParts(2100, 2, 29)), (DateParts{2100, 3, 1}));
}

TEST(DatesTest, PartsAreThoseOfTheNearestSecond) {
  const Date moment = At(2004, 2, 3, 14, 5, 9);
  EXPECT_EQ(PartsOf(moment), (DateParts{2004, 2, 3}));
  EXPECT_EQ(TimeOf(moment), (TimeParts{14, 5, 9}));
  EXPECT_EQ(TimeOf(moment + 0.4 / 86400), (TimeParts{14, 5, 9}));
  EXPECT_EQ(TimeOf(moment + 0.6 / 86400), (TimeParts{14, 5, 10}));
}

TEST(DatesTest, TheLastHalfSecondOfADayBelongsToTheNext) {
  const Date nearly = At(2004, 12, 31, 23, 59, 59) + 0.6 / 86400;
  EXPECT_EQ(PartsOf(nearly), (DateParts{2005, 1, 1}));
  EXPECT_EQ(TimeOf(nearly), (TimeParts{0, 0, 0}));
  EXPECT_EQ(DayOfWeek(nearly), 7);
}

TEST(DatesTest, TimesOfDayBeforeTheFirstDayCountForwardToo) {
  const Date moment = At(1899, 12, 28, 6, 0, 0);
  EXPECT_EQ(moment, -1.75);
  EXPECT_EQ(PartsOf(moment), (DateParts{1899, 12, 28}));
  EXPECT_EQ(TimeOf(moment), (TimeParts{6, 0, 0}));
}

TEST(DatesTest, NamesTheDayOfTheWeek) {
  EXPECT_EQ(DayOfWeek(DateFromParts(1899, 12, 30)), 7);
  EXPECT_EQ(DayOfWeek(DateFromParts(1899, 12, 29)), 6);
  EXPECT_EQ(DayOfWeek(DateFromParts(2004, 2, 1)), 1);
  EXPECT_EQ(DayOfWeek(DateFromParts(2004, 2, 3)), 3);
}

TEST(DatesTest, PrintsTheThreeTexts) {
  const Date moment = At(2004, 2, 3, 14, 5, 9);
  EXPECT_EQ(DateText(moment), "2004-02-03");
  EXPECT_EQ(DateTimeText(moment), "2004-02-03 14:05:09");
  EXPECT_EQ(LongDateText(moment), "Tuesday, February 3, 2004");
  EXPECT_EQ(DateText(DateFromParts(33, 4, 3)), "0033-04-03");
}

TEST(DatesTest, ReadsTheTextThatItPrints) {
  Date date = 0;
  EXPECT_TRUE(ReadDateText("2004-02-29", date));
  EXPECT_EQ(date, DateFromParts(2004, 2, 29));
}

TEST(DatesTest, RefusesOtherTextsAndDaysThatDoNotExist) {
  for (const char* text : {"", "2004-2-3", "2004-02-30", "2003-02-29", "2004-13-01", "2004-00-10", "2004-01-00",
                           "2004/02/03", "2004-02-03 ", " 2004-02-03", "20O4-02-03", "-004-02-03", "2004-02-031"}) {
    Date date = 7;
    EXPECT_FALSE(ReadDateText(text, date)) << text;
    EXPECT_EQ(date, 7) << text;
  }
}

TEST(DatesTest, ADateWhoseYearDoesNotFitIsAnOverflow) {
  EXPECT_EQ(PartsOf(DateFromParts(32767, 12, 31)).year, 32767);
  EXPECT_THAT([] { (void)PartsOf(DateFromParts(32768, 1, 1)); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { (void)PartsOf(1e300); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { (void)TimeOf(std::nan("")); }, FailsWith(FailureNumber::kOverflow));
}

// The standard library's calendar is the model.
RC_GTEST_PROP(DatesProperties, AgreesWithTheStandardCalendar, ()) {
  using std::chrono::sys_days;
  const int days = *rc::gen::inRange(-12'660'000, 11'270'000);
  const sys_days model = sys_days(std::chrono::year(1899) / 12 / 30) + std::chrono::days(days);
  const std::chrono::year_month_day expected(model);

  const DateParts parts = PartsOf(days);
  RC_ASSERT(parts.year == static_cast<int>(expected.year()));
  RC_ASSERT(static_cast<unsigned>(parts.month) == static_cast<unsigned>(expected.month()));
  RC_ASSERT(static_cast<unsigned>(parts.day) == static_cast<unsigned>(expected.day()));
  RC_ASSERT(static_cast<unsigned>(DayOfWeek(days)) == std::chrono::weekday(model).c_encoding() + 1);
  RC_ASSERT(DateFromParts(parts.year, parts.month, parts.day) == days);
}

RC_GTEST_PROP(DatesProperties, EverySecondSurvivesTheRoundTrip, ()) {
  const int day = *rc::gen::inRange(-100'000, 200'000);
  const int second = *rc::gen::inRange(0, 86400);
  const TimeParts expected{static_cast<Integer>(second / 3600), static_cast<Integer>(second / 60 % 60),
                           static_cast<Integer>(second % 60)};
  const Date moment = day + TimeFromParts(0, 0, second);
  RC_ASSERT(TimeOf(moment) == expected);
  RC_ASSERT(PartsOf(moment) == PartsOf(day));
}

RC_GTEST_PROP(DatesProperties, PrintedDatesReadBack, ()) {
  const Date date = *rc::gen::inRange(-600'000, 2'900'000);
  Date read = 0.5;
  RC_ASSERT(ReadDateText(DateText(date), read));
  RC_ASSERT(read == date);
}

}  // namespace
}  // namespace tallybook::testing
