// The dialog over books of months and of periods of given lengths, at all three data levels.
#include "tests/reportdialog/DateTable.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

class DateTableTest : public RepPrintTest {
 protected:
  void Expect(const BookShape& shape, const std::vector<DateRow>& rows) {
    for (const DateRow& row : rows) {
      UseBook(shape);
      report_.type = kSequenceReport;
      OpenOn(DayOf(row.chosen));
      Next();
      ExpectDates(dialog(), row);
      EXPECT_TRUE(LogErrors().empty());
    }
  }
};

// The lengths from a period up, which are alike at every data level. Two years and leap day, first and last days.
const std::vector<DateRow> kMonths = {
    {20040203, 3, 20040201, 20040229},
    {20040229, 3, 20040201, 20040229},
    {20030228, 3, 20030201, 20030228},
    {20040101, 3, 20040101, 20040131},
    {20051231, 3, 20051201, 20051231},
    {20040203, 4, 20040101, 20040331},
    {20040401, 4, 20040401, 20040630},
    {20041231, 4, 20041001, 20041231},
    {20040630, 5, 20040101, 20040630},
    {20040701, 5, 20040701, 20041231},
    {20040203, 6, 20040101, 20041231},
    {20030101, 6, 20030101, 20031231},
    {20040203, 3, 20040201, 20040229, 0, 4, 20040101, 20040331},
    {20040203, 3, 20040201, 20040229, 0, 5, 20040101, 20040630},
    {20041115, 3, 20041101, 20041130, 0, 6, 20040101, 20041231},
    {20041115, 4, 20041001, 20041231, 0, 5, 20040701, 20041231},
    {20041115, 5, 20040701, 20041231, 0, 6, 20040101, 20041231},
};

TEST_F(DateTableTest, KnowsMonthsQuartersHalvesAndYearsAtEveryLevel) {
  for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) Expect(AtLevel(level), kMonths);
}

TEST_F(DateTableTest, KnowsWeeksThatEndOnSaturdays) {
  // 2004-01-03, 2004-02-07 and 2005-01-01 are Saturdays.
  const std::vector<DateRow> weeks = {
      {20040203, 2, 20040201, 20040207},
      {20040207, 2, 20040201, 20040207},
      {20040208, 2, 20040208, 20040214},
      {20040101, 2, 20031228, 20040103},
      {20041231, 2, 20041226, 20050101},
      {20040203, 2, 20040201, 20040207, 0, 3, 20040201, 20040229},
      {20040203, 2, 20040201, 20040207, 0, 6, 20040101, 20041231},
  };
  for (const Integer level : {kDayLevel, kWeekLevel}) Expect(AtLevel(level), weeks);
}

TEST_F(DateTableTest, KnowsWeeksThatEndOnWednesdays) {
  BookShape shape;
  shape.week_ends_on = 4;
  Expect(shape, {{20040203, 2, 20040129, 20040204}, {20040205, 2, 20040205, 20040211}});
}

TEST_F(DateTableTest, KnowsDays) {
  Expect(AtLevel(kDayLevel), {{20040203, 1, 20040203, 20040203},
                              {20040229, 1, 20040229, 20040229},
                              {20040203, 1, 20040203, 20040203, 0, 2, 20040201, 20040207},
                              {20040203, 1, 20040203, 20040203, 0, 3, 20040201, 20040229},
                              {20040203, 1, 20040203, 20040203, 0, 4, 20040101, 20040331}});
}

TEST_F(DateTableTest, RoundsCustomRangesAndAllYearsToTheDataLevel) {
  // Of a book without styles; both ends of a custom range are ends of units. 2003-01-04 is the first Saturday.
  Expect(AtLevel(kDayLevel), {{20040310, 7, 20040203, 20040310, 20040203}, {20040203, 8, 20030101, 20051231}});
  Expect(AtLevel(kWeekLevel), {{20040310, 7, 20040207, 20040313, 20040203}, {20040203, 8, 20030104, 20051231}});
  Expect(AtLevel(kPeriodLevel), {{20040310, 7, 20040229, 20040331, 20040203}, {20040203, 8, 20030131, 20051231}});
  // The same day twice, and a range that runs backwards.
  Expect(AtLevel(kWeekLevel),
         {{20040203, 7, 20040207, 20040207, 20040203}, {20040203, 7, 20040207, 20040313, 20040310}});
}

TEST_F(DateTableTest, KnowsPeriodsOfGivenLengths) {
  // Five periods of 70, 80, 75, 70 and 70 days; the first two are the first quarter, the first three the first half.
  // A year has 365 days, so that the year after 2004-01-01 starts on 2004-12-31.
  BookShape shape;
  shape.calendar = CalendarKind::kCustom;
  shape.period_lengths = {70, 80, 75, 70, 70};
  Expect(shape, {{20030704, 3, 20030531, 20030813},
                 {20030311, 3, 20030101, 20030311},
                 {20030312, 3, 20030312, 20030530},
                 {20030704, 4, 20030531, 20030813},
                 {20030401, 4, 20030101, 20030530},
                 {20030401, 5, 20030101, 20030813},
                 {20030814, 5, 20030814, 20031231},
                 {20041230, 6, 20040101, 20041230},
                 {20041231, 6, 20041231, 20051230},
                 {20030704, 2, 20030629, 20030705},
                 {20030704, 8, 20030101, 20051230},
                 {20030704, 3, 20030531, 20030813, 0, 6, 20030101, 20031231}});
}

}  // namespace
}  // namespace tallybook::testing
