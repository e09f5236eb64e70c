#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/desktop/forms/PlainDate.h"

namespace tallybook::desktop {
namespace {

const Date kFrom = DateFromParts(2024, 5, 17);
const Date kToday = DateFromParts(2026, 11, 22);

// The date as text, or "-".
Text Read(const Text& typed, const DateHabits& habits = {}) {
  const auto date = ReadPlainDate(typed, kFrom, kToday, habits);
  return date ? DateText(*date) : "-";
}

TEST(PlainDate, ReadsTheFormsThatNeedNoLocale) {
  for (const char* typed : {"2024-02-03", "2024/2/3", "2024.02.03", "20240203", "3 Feb 2024", "Feb 3, 2024",
                            "February 3 2024", "3rd february 24", "3feb2024", " 3-Feb-24 "}) {
    EXPECT_EQ(Read(typed), "2024-02-03") << typed;
  }
}

TEST(PlainDate, ReadsDaysAndMonthsInTheOrderOfTheLocale) {
  const DateHabits american{DateOrder::kMonthFirst, {}};
  EXPECT_EQ(Read("3.2.2024"), "2024-02-03");
  EXPECT_EQ(Read("3/2/24", american), "2024-03-02");
  EXPECT_EQ(Read("3/2"), "2024-02-03");
  EXPECT_EQ(Read("3/2", american), "2024-03-02");
}

TEST(PlainDate, TakesWhatIsLeftOutFromTheDateShown) {
  EXPECT_EQ(Read("9"), "2024-05-09");
  EXPECT_EQ(Read("1 March"), "2024-03-01");
  EXPECT_EQ(Read("March"), "2024-03-01");
  EXPECT_EQ(Read("March 2023"), "2023-03-01");
  EXPECT_EQ(Read("2023-03"), "2023-03-01");
  EXPECT_EQ(Read("3/2023"), "2023-03-01");
  EXPECT_EQ(Read("2023"), "2023-01-01");
}

TEST(PlainDate, ReadsWordsAndCountsOfDays) {
  EXPECT_EQ(Read("today"), "2026-11-22");
  EXPECT_EQ(Read("Yesterday"), "2026-11-21");
  EXPECT_EQ(Read("tomorrow"), "2026-11-23");
  EXPECT_EQ(Read("+14"), "2024-05-31");
  EXPECT_EQ(Read("-17"), "2024-04-30");
}

TEST(PlainDate, TakesAYearOfTwoDigitsForTheNearest) {
  EXPECT_EQ(Read("1.1.99"), "1999-01-01");
  EXPECT_EQ(Read("1.1.60"), "2060-01-01");
}

TEST(PlainDate, KnowsTheMonthsOfTheLocale) {
  const DateHabits german{DateOrder::kDayFirst,
                          {"Januar", "Februar", "März", "April", "Mai", "Juni", "Juli", "August", "September",
                           "Oktober", "November", "Dezember"}};
  EXPECT_EQ(Read("3. Dez 2024", german), "2024-12-03");
  EXPECT_EQ(Read("3. März", german), "2024-03-03");
}

TEST(PlainDate, RefusesWhatIsNoDate) {
  for (const char* typed : {"", "  ", "soon", "2024-02-30", "31.4.2024", "2023-13-01", "1.2.3.4", "123", "12345678901",
                            "feb mar", "feb 1 2 3", "0", "2024-00-10", "+", "- 3 x"}) {
    EXPECT_EQ(Read(typed), "-") << typed;
  }
}

}  // namespace
}  // namespace tallybook::desktop
