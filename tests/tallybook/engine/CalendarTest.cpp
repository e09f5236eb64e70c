#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "tallybook/engine/Calendar.h"
#include "tests/support/CallRecord.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/MemoryMasterfile.h"

namespace tallybook::testing {
namespace {

using engine::BookCalendar;
using engine::Calendar;
using engine::CalendarDescription;
using engine::CalendarKind;
using engine::DateSpan;
using engine::FiscalPlace;
using ::testing::ElementsAre;

constexpr Integer kSaturday = 7;

Date Of(const Text& text) {
  Date date = 0;
  EXPECT_TRUE(ReadDateText(text, date)) << text;
  return date;
}

CalendarDescription Kind(CalendarKind kind, const Text& first_date = "2003-01-01") {
  CalendarDescription description;
  description.kind = kind;
  description.first_date = Of(first_date);
  description.first_year = 2003;
  description.years = 8;
  description.years_in_use = 8;
  description.week_ends_on = kSaturday;
  return description;
}

CalendarDescription Custom(const std::vector<int>& lengths) {
  CalendarDescription description = Kind(CalendarKind::kCustom);
  for (const int length : lengths) {
    description.periods.push_back(
        {"Part " + std::to_string(description.periods.size() + 1), static_cast<Integer>(length)});
  }
  return description;
}

std::vector<Text> YearStarts(const CalendarDescription& description, int first, int last) {
  const Calendar calendar(description, kDayLevel);
  std::vector<Text> starts;
  for (int year = first; year <= last; ++year) starts.push_back(DateText(calendar.YearStart(year)));
  return starts;
}

std::vector<Text> PeriodEnds(const CalendarDescription& description, int year) {
  const Calendar calendar(description, kDayLevel);
  std::vector<Text> ends;
  for (Date day = calendar.YearStart(year); day < calendar.YearStart(year + 1);) {
    day = calendar.UnitOf(day, kPeriodLevel).last;
    ends.push_back(DateText(day));
    ++day;
  }
  return ends;
}

TEST(Calendar, StartsAYearOfMonthsOnTheFirstOfItsMonth) {
  EXPECT_THAT(YearStarts(Kind(CalendarKind::kMonths), 2003, 2005),
              ElementsAre("2003-01-01", "2004-01-01", "2005-01-01"));
  EXPECT_THAT(YearStarts(Kind(CalendarKind::kMonths, "2002-07-15"), 2002, 2004),
              ElementsAre("2001-07-01", "2002-07-01", "2003-07-01"));
}

TEST(Calendar, StartsAYearOfWeeksBehindTheNearestLastDayOfAWeek) {
  // Worked out by trying the seven days around each eve.
  const std::vector<std::vector<Text>> starts_by_last_day = {
      {"2002-12-30", "2003-12-29", "2005-01-03", "2006-01-02", "2007-01-01", "2007-12-31", "2008-12-29", "2010-01-04"},
      {"2002-12-31", "2003-12-30", "2005-01-04", "2006-01-03", "2007-01-02", "2008-01-01", "2008-12-30", "2009-12-29"},
      {"2003-01-01", "2003-12-31", "2004-12-29", "2006-01-04", "2007-01-03", "2008-01-02", "2008-12-31", "2009-12-30"},
      {"2003-01-02", "2004-01-01", "2004-12-30", "2005-12-29", "2007-01-04", "2008-01-03", "2009-01-01", "2009-12-31"},
      {"2003-01-03", "2004-01-02", "2004-12-31", "2005-12-30", "2006-12-29", "2008-01-04", "2009-01-02", "2010-01-01"},
      {"2003-01-04", "2004-01-03", "2005-01-01", "2005-12-31", "2006-12-30", "2007-12-29", "2009-01-03", "2010-01-02"},
      {"2002-12-29", "2004-01-04", "2005-01-02", "2006-01-01", "2006-12-31", "2007-12-30", "2009-01-04", "2010-01-03"}};
  for (const CalendarKind kind : {CalendarKind::k445, CalendarKind::k13x4, CalendarKind::kWeeks}) {
    for (Integer last_day = 1; last_day <= 7; ++last_day) {
      CalendarDescription description = Kind(kind);
      description.week_ends_on = last_day;
      EXPECT_EQ(YearStarts(description, 2003, 2010), starts_by_last_day[static_cast<std::size_t>(last_day - 1)])
          << "weeks end on day " << last_day;
    }
  }
}

TEST(Calendar, CountsTheAnniversaryFromTheFirstDateAndNotFromTheYearsStart) {
  CalendarDescription description = Kind(CalendarKind::k445, "2003-09-01");
  description.first_year = 2004;
  EXPECT_THAT(YearStarts(description, 2004, 2011), ElementsAre("2003-08-31", "2004-08-29", "2005-09-04", "2006-09-03",
                                                               "2007-09-02", "2008-08-31", "2009-08-30", "2010-08-29"));
}

TEST(Calendar, KeepsTheAnniversaryOfALeapDayOnTheFirstOfMarch) {
  const Calendar calendar(Kind(CalendarKind::k445, "2004-02-29"), kDayLevel);
  // 2005-03-01 is a Tuesday; its eve's nearest Saturday is 2005-02-26.
  EXPECT_EQ(DateText(calendar.YearStart(2004)), "2005-02-27");
}

TEST(Calendar, GivesA53rdWeekToTheLastPeriod) {
  EXPECT_THAT(PeriodEnds(Kind(CalendarKind::k445), 2005),
              ElementsAre("2005-01-29", "2005-02-26", "2005-04-02", "2005-04-30", "2005-05-28", "2005-07-02",
                          "2005-07-30", "2005-08-27", "2005-10-01", "2005-10-29", "2005-11-26", "2005-12-31"));
  EXPECT_THAT(PeriodEnds(Kind(CalendarKind::k445), 2008),
              ElementsAre("2008-01-26", "2008-02-23", "2008-03-29", "2008-04-26", "2008-05-24", "2008-06-28",
                          "2008-07-26", "2008-08-23", "2008-09-27", "2008-10-25", "2008-11-22", "2009-01-03"));
  EXPECT_THAT(
      PeriodEnds(Kind(CalendarKind::k13x4), 2008),
      ElementsAre("2008-01-26", "2008-02-23", "2008-03-22", "2008-04-19", "2008-05-17", "2008-06-14", "2008-07-12",
                  "2008-08-09", "2008-09-06", "2008-10-04", "2008-11-01", "2008-11-29", "2009-01-03"));
  EXPECT_EQ(PeriodEnds(Kind(CalendarKind::kWeeks), 2008), PeriodEnds(Kind(CalendarKind::k13x4), 2008));
}

TEST(Calendar, EndsMonthsWhereTheyEnd) {
  EXPECT_THAT(PeriodEnds(Kind(CalendarKind::kMonths, "2003-07-01"), 2003),
              ElementsAre("2003-07-31", "2003-08-31", "2003-09-30", "2003-10-31", "2003-11-30", "2003-12-31",
                          "2004-01-31", "2004-02-29", "2004-03-31", "2004-04-30", "2004-05-31", "2004-06-30"));
}

TEST(Calendar, RepeatsTheLengthsOfACustomYear) {
  const CalendarDescription description = Custom({10, 5, 7});
  EXPECT_THAT(YearStarts(description, 2002, 2005), ElementsAre("2002-12-10", "2003-01-01", "2003-01-23", "2003-02-14"));
  EXPECT_THAT(PeriodEnds(description, 2004), ElementsAre("2003-02-01", "2003-02-06", "2003-02-13"));
}

TEST(Calendar, SplitsPeriodsIntoQuarters) {
  const auto quarters = [](Integer count) {
    Text text;
    for (Integer period = 1; period <= count; ++period)
      text += std::to_string(Calendar::QuarterOfPeriod(period, count));
    return text;
  };
  EXPECT_EQ(quarters(12), "111222333444");
  EXPECT_EQ(quarters(13), "1112223334444");
  EXPECT_EQ(quarters(14), "11112222333444");
  EXPECT_EQ(quarters(10), "1112223344");
  EXPECT_EQ(quarters(5), "11234");
  EXPECT_EQ(quarters(4), "1234");
  EXPECT_EQ(quarters(2), "12");
  EXPECT_EQ(quarters(1), "1");
}

TEST(Calendar, EndsEveryLevelOfADate) {
  const Calendar calendar(Kind(CalendarKind::k13x4), kDayLevel);
  const Date day = Of("2008-11-30");  // the first day of the last, long period of 2008
  const auto span = [&](Integer level) {
    const DateSpan unit = calendar.UnitOf(day, level);
    return DateText(unit.first) + " " + DateText(unit.last);
  };
  EXPECT_EQ(span(1), "2008-11-30 2008-11-30");
  EXPECT_EQ(span(2), "2008-11-30 2008-12-06");
  EXPECT_EQ(span(3), "2008-11-30 2009-01-03");
  EXPECT_EQ(span(4), "2008-09-07 2009-01-03");
  EXPECT_EQ(span(5), "2008-06-15 2009-01-03");
  EXPECT_EQ(span(6), "2007-12-30 2009-01-03");
  EXPECT_EQ(span(7), "2008-11-30 2008-11-30");
  EXPECT_EQ(span(8), "2002-12-29 2011-01-01");
  EXPECT_EQ(calendar.PlaceOf(day), (FiscalPlace{2008, 13, 4, 2}));
  EXPECT_EQ(calendar.PlaceOf(Of("2008-06-14")), (FiscalPlace{2008, 6, 2, 1}));
  EXPECT_EQ(calendar.PlaceOf(Of("2008-06-15")), (FiscalPlace{2008, 7, 3, 2}));
}

TEST(Calendar, LetsAWeekCrossTheYearsEnd) {
  const Calendar calendar(Kind(CalendarKind::kMonths), kWeekLevel);
  EXPECT_EQ(calendar.UnitOf(Of("2003-12-30"), kOwnLevel), (DateSpan{Of("2003-12-28"), Of("2004-01-03")}));
  EXPECT_EQ(calendar.UnitOf(Of("2004-01-03"), kOwnLevel), (DateSpan{Of("2003-12-28"), Of("2004-01-03")}));
  EXPECT_EQ(calendar.UnitOf(Of("2004-01-04"), kOwnLevel), (DateSpan{Of("2004-01-04"), Of("2004-01-10")}));
}

TEST(Calendar, HoldsFromTheFirstYearsStartToTheEveOfTheYearAfterTheLast) {
  const Calendar weeks(Kind(CalendarKind::k445), kDayLevel);
  EXPECT_EQ(DateText(weeks.FirstDate()), "2002-12-29");
  EXPECT_EQ(DateText(weeks.LastDate()), "2011-01-01");
  const Calendar months(Kind(CalendarKind::kMonths), kDayLevel);
  EXPECT_EQ(DateText(months.FirstDate()), "2003-01-01");
  EXPECT_EQ(DateText(months.LastDate()), "2010-12-31");
  const Calendar custom(Custom({100, 100, 165}), kDayLevel);
  EXPECT_EQ(custom.LastDate(), Of("2003-01-01") + 8 * 365 - 1);
}

TEST(Calendar, NamesAndMeasuresItsPeriods) {
  const Calendar from_july(Kind(CalendarKind::kMonths, "2003-07-01"), kDayLevel);
  EXPECT_EQ(from_july.PeriodName(1), "July");
  EXPECT_EQ(from_july.PeriodName(12), "June");
  EXPECT_EQ(from_july.PeriodLength(8), 29);  // February 2004
  const Calendar weeks(Kind(CalendarKind::k445), kDayLevel);
  EXPECT_EQ(weeks.PeriodName(3), "Period 3");
  EXPECT_EQ(weeks.PeriodLength(3), 35);
  EXPECT_EQ(weeks.PeriodLength(12), 35);
  EXPECT_EQ(weeks.NumPeriods(), 12);
  EXPECT_EQ(Calendar(Kind(CalendarKind::kWeeks), kDayLevel).NumPeriods(), 13);
  const Calendar custom(Custom({10, 5, 7}), kDayLevel);
  EXPECT_EQ(custom.PeriodName(2), "Part 2");
  EXPECT_EQ(custom.PeriodLength(2), 5);
  EXPECT_THAT([&] { static_cast<void>(custom.PeriodName(4)); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { static_cast<void>(custom.PeriodLength(0)); }, FailsWith(FailureNumber::kRange));
}

TEST(Calendar, AnswersForYearsFarFromTheBook) {
  const Calendar calendar(Kind(CalendarKind::kMonths), kDayLevel);
  EXPECT_EQ(calendar.YearStart(0), DateFromParts(0, 1, 1));
  EXPECT_EQ(DateText(calendar.YearStart(2500)), "2500-01-01");
  EXPECT_EQ(calendar.PlaceOf(Of("1776-07-04")), (FiscalPlace{1776, 7, 3, 2}));
}

TEST(Calendar, RefusesLevelsAndDatesThatItDoesNotKnow) {
  const Calendar calendar(Kind(CalendarKind::kMonths), kDayLevel);
  const auto unit = [&](Date date, Integer level) { static_cast<void>(calendar.UnitOf(date, level)); };
  EXPECT_THAT([&] { unit(Of("2004-01-01"), 0); }, FailsWith(FailureNumber::kInvalidArgument, "no level 0"));
  EXPECT_THAT([&] { unit(Of("2004-01-01"), 9); }, FailsWith(FailureNumber::kInvalidArgument, "no level 9"));
  EXPECT_THAT([&] { unit(std::numeric_limits<Date>::quiet_NaN(), 3); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_THAT([&] { unit(1e300, 3); }, FailsWith(FailureNumber::kInvalidArgument));
}

// The rules that every calendar keeps, told by their words and not by the code's arithmetic.
class EveryCalendar : public ::testing::TestWithParam<CalendarDescription> {};

TEST_P(EveryCalendar, CutsTimeIntoUnitsThatMeetWithoutGapOrOverlap) {
  const Calendar calendar(GetParam(), kDayLevel);
  for (Integer level = 1; level <= 6; ++level) {
    DateSpan before = calendar.UnitOf(calendar.FirstDate() - 400, level);
    for (Date day = before.last + 1; day < calendar.LastDate() + 400; ++day) {
      const DateSpan unit = calendar.UnitOf(day, level);
      ASSERT_LE(unit.first, day);
      ASSERT_GE(unit.last, day);
      if (unit == before) continue;
      ASSERT_EQ(unit.first, before.last + 1) << "level " << level << " at " << DateText(day);
      ASSERT_EQ(day, unit.first);
      before = unit;
    }
  }
}

TEST_P(EveryCalendar, NestsPeriodsQuartersHalvesAndYears) {
  const Calendar calendar(GetParam(), kDayLevel);
  for (Date day = calendar.FirstDate(); day <= calendar.LastDate(); ++day) {
    const FiscalPlace place = calendar.PlaceOf(day);
    ASSERT_GE(place.period, 1);
    ASSERT_LE(place.period, calendar.NumPeriods());
    ASSERT_EQ(place.half, (place.quarter + 1) / 2);
    ASSERT_EQ(calendar.UnitOf(day, engine::kYearLevel).first, calendar.YearStart(place.year));
    for (Integer level = kPeriodLevel; level < engine::kYearLevel; ++level) {
      const DateSpan inner = calendar.UnitOf(day, level);
      const DateSpan outer = calendar.UnitOf(day, static_cast<Integer>(level + 1));
      ASSERT_LE(outer.first, inner.first);
      ASSERT_GE(outer.last, inner.last);
      const FiscalPlace first = calendar.PlaceOf(inner.first);
      const FiscalPlace last = calendar.PlaceOf(inner.last);
      ASSERT_EQ(first.year, last.year);
      if (level >= engine::kQuarterLevel) {
        ASSERT_EQ(first.half, last.half);
      }
    }
  }
}

TEST_P(EveryCalendar, HasYearsOf52Or53WholeWeeksWhereItCountsWeeks) {
  const CalendarDescription& description = GetParam();
  const Calendar calendar(description, kDayLevel);
  for (int year = 1900; year < 2300; ++year) {
    const Date start = calendar.YearStart(year);
    const Date length = calendar.YearStart(year + 1) - start;
    if (description.kind == CalendarKind::kMonths) {
      ASSERT_TRUE(length == 365 || length == 366);
    } else if (description.kind != CalendarKind::kCustom) {
      ASSERT_TRUE(length == 364 || length == 371) << year;
      ASSERT_EQ(DayOfWeek(start - 1), description.week_ends_on);
      const DateParts first = PartsOf(description.first_date);
      const Date eve = DateFromParts(first.year + year - description.first_year, first.month, first.day) - 1;
      ASSERT_LE(std::abs(start - 1 - eve), 3);
    }
  }
}

std::vector<CalendarDescription> Calendars() {
  std::vector<CalendarDescription> calendars = {Kind(CalendarKind::kMonths),
                                                Kind(CalendarKind::kMonths, "2003-10-01"),
                                                Custom({365}),
                                                Custom({10, 5, 7}),
                                                Custom({91, 91, 91, 92}),
                                                Custom(std::vector<int>(13, 28)),
                                                Custom({30, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 1, 1})};
  for (const CalendarKind kind : {CalendarKind::k445, CalendarKind::k13x4, CalendarKind::kWeeks}) {
    for (Integer last_day = 1; last_day <= 7; ++last_day) {
      CalendarDescription description = Kind(kind, last_day % 2 == 0 ? "2003-01-01" : "2003-02-15");
      description.week_ends_on = last_day;
      calendars.push_back(description);
    }
  }
  return calendars;
}

INSTANTIATE_TEST_SUITE_P(Kinds, EveryCalendar, ::testing::ValuesIn(Calendars()));

TEST(BookCalendar, LevelsDatesAndTellsWhereTheyStand) {
  const Calendar rules(Kind(CalendarKind::kMonths), kPeriodLevel);
  BookCalendar calendar(rules);
  EXPECT_EQ(DateText(calendar.LevelDate(Of("2004-02-10"), kPeriodLevel)), "2004-02-29");
  EXPECT_EQ(calendar.PeriodNumber(), 2);
  EXPECT_EQ(calendar.QuarterNumber(), 1);
  EXPECT_EQ(calendar.HalfNumber(), 1);
  EXPECT_EQ(calendar.FiscalYear(), 2004);
  EXPECT_EQ(DateText(calendar.PriorPeriodEnd()), "2004-01-31");
  EXPECT_EQ(DateText(calendar.LevelDate(Of("2004-11-30"), 5)), "2004-12-31");
  EXPECT_EQ(calendar.PeriodNumber(), 12) << "the last one of the half year";
  EXPECT_EQ(DateText(calendar.PriorPeriodEnd()), "2004-06-30");
}

// The host in memory and the engine's, both with the months of three years from 2003 and weeks that end on Saturday.
TEST(EveryHostsCalendar, IsLeftOnTheLastDateOfTheUnitThatWasAskedFor) {
  const auto memory = SmallBook();
  CalendarDescription three_years = Kind(CalendarKind::kMonths);
  three_years.years = three_years.years_in_use = 3;
  const Calendar rules(three_years, kDayLevel);
  BookCalendar book(rules);
  const std::vector<FiscalCalendar*> calendars = {&memory->book.FiscalCalendar(), &book};
  const auto place = [](const FiscalCalendar& calendar) {
    return std::tuple(calendar.FiscalYear(), calendar.PeriodNumber(), calendar.QuarterNumber(), calendar.HalfNumber());
  };
  for (Date day = Of("2003-01-01"); day <= Of("2005-12-31"); day += 5) {
    for (Integer level = 1; level <= 8; ++level) {
      std::set<std::pair<Date, Date>> units;
      for (FiscalCalendar* const calendar : calendars) {
        const Date last = calendar->LevelDate(day, level);
        units.emplace(calendar->PriorPeriodEnd(), last);
        const auto left = place(*calendar);
        calendar->LevelDate(last, kDayLevel);
        ASSERT_EQ(left, place(*calendar)) << DateText(day) << " at level " << level;
      }
      ASSERT_EQ(units.size(), 1U) << DateText(day) << " at level " << level;
    }
  }
}

TEST(BookCalendar, TakesMinusOneForTheBooksOwnLevel) {
  const Calendar weeks(Kind(CalendarKind::kMonths), kWeekLevel);
  BookCalendar calendar(weeks);
  EXPECT_EQ(DateText(calendar.LevelDate(Of("2004-02-10"), kOwnLevel)), "2004-02-14");
}

TEST(BookCalendar, DoesNotMoveItsCursorWhenItLevelsADate) {
  const Calendar rules(Kind(CalendarKind::kMonths), kDayLevel);
  BookCalendar calendar(rules);
  EXPECT_EQ(calendar.CurrentDate(), rules.FirstDate());
  calendar.SetCurrentDate(Of("2004-05-06"));
  calendar.LevelDate(Of("2005-02-10"), 6);
  EXPECT_EQ(DateText(calendar.CurrentDate()), "2004-05-06");
  EXPECT_EQ(calendar.FiscalYear(), 2005);
}

TEST(BookCalendar, RemembersUnitsWithoutMixingThem) {
  const Calendar rules(Kind(CalendarKind::k445), kDayLevel);
  BookCalendar calendar(rules);
  for (Date day = Of("2003-06-01"); day < Of("2005-06-01"); day += 5) {
    for (Integer level = 1; level <= 8; ++level) {
      const DateSpan unit = rules.UnitOf(day, level);
      ASSERT_EQ(calendar.LevelDate(day, level), unit.last);
      ASSERT_EQ(calendar.PriorPeriodEnd(), unit.first - 1);
    }
  }
  // The unit of level 8 follows the date where that lies behind the book.
  EXPECT_EQ(calendar.LevelDate(rules.LastDate() + 10, 8), rules.LastDate() + 10);
  EXPECT_EQ(calendar.LevelDate(rules.LastDate() + 5, 8), rules.LastDate() + 5);
}

TEST(BookCalendar, DropsTheTimeOfDay) {
  const Calendar rules(Kind(CalendarKind::kMonths), kDayLevel);
  BookCalendar calendar(rules);
  EXPECT_EQ(calendar.LevelDate(Of("2004-02-10") + 0.75, 1), Of("2004-02-10"));
  EXPECT_EQ(calendar.LevelDate(Of("2004-02-29") + 0.75, 3), Of("2004-02-29"));
  EXPECT_EQ(calendar.LevelDate(Of("2004-02-29") + 0.75, 3), Of("2004-02-29"));  // from memory this time
}

TEST(BookCalendar, FailsUntilItIsAttachedAndAsked) {
  BookCalendar calendar;
  EXPECT_THAT([&] { static_cast<void>(calendar.CurrentDate()); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { calendar.LevelDate(38000, 1); }, FailsWith(FailureNumber::kObjectNotSet));
  const Calendar rules(Kind(CalendarKind::kMonths), kDayLevel);
  BookCalendar attached(rules);
  EXPECT_THAT([&] { static_cast<void>(attached.PeriodNumber()); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { static_cast<void>(attached.PriorPeriodEnd()); }, FailsWith(FailureNumber::kObjectNotSet));
}

TEST(BookCalendar, AttachesToBooksOnly) {
  CallRecord record;
  MemoryApp app(record);
  MemoryMasterfile other(app, record);
  BookCalendar calendar;
  EXPECT_THAT([&] { calendar.Attach(other); }, FailsWith(FailureNumber::kTypeMismatch));
}

}  // namespace
}  // namespace tallybook::testing
