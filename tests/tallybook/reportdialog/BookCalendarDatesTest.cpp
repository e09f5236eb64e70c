// The print dialog's dates over the five calendars of a book. Years start on the day after the Saturday nearest to the
// eve of 1 January, so that 2003 runs from 2002-12-29 over 53 weeks and 2004 from 2004-01-04 over 52, 2005 from
// 2005-01-02.
#include "tallybook/engine/Book.h"
#include "tallybook/engine/Calendar.h"
#include "tests/reportdialog/DateTable.h"
#include "tests/reportdialog/RepPrintFixture.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

// The objects of an application whose calendars are those of its books.
class BookFactory : public MemoryFactory {
 public:
  using MemoryFactory::MemoryFactory;
  std::unique_ptr<FiscalCalendar> NewFiscalCalendar() override { return std::make_unique<engine::BookCalendar>(); }
};

class BookCalendarDatesTest : public ::testing::Test {
 protected:
  static engine::BookDescription BookOf(engine::CalendarKind kind) {
    engine::BookDescription description;
    description.system_name = "North Shop";
    description.type_name = "Sales";
    description.calendar.kind = kind;
    description.calendar.first_date = Day(2003, 1, 1);
    description.calendar.first_year = 2003;
    description.calendar.years = 3;
    description.calendar.years_in_use = 3;
    description.accounts = {{101, "100", "Front of shop"}};
    description.fields = {{1, "Sales", false}};
    return description;
  }

  void Expect(engine::BookDescription description, const std::vector<DateRow>& rows, Integer data_level = kDayLevel) {
    description.data_level = data_level;
    const TempFolder folder;
    engine::Book::Create(folder.Path("North.tbk"), description);
    const auto book = engine::Book::Open(folder.Path("North.tbk"), app_);
    TestReport report(book.get());
    report.type = kSequenceReport;
    for (const DateRow& row : rows) {
      dlgRepPrint dialog(factory_);
      dialog.SetCurrentDate(DayOf(row.chosen));
      dialog.SetFields(report, "Sales", "Print", 0);
      dialog.Show();
      EXPECT_TRUE(dialog.Command1[kNextButton].UserClick());
      ExpectDates(dialog, row);
    }
    EXPECT_TRUE(app_.log.errors.empty());
  }

  ScriptedPlatform platform_;
  CallRecord record_;
  MemorySettings settings_;
  MemoryApp app_{record_};
  BookFactory factory_{record_, settings_};
};

TEST_F(BookCalendarDatesTest, KnowsMonths) {
  const std::vector<DateRow> rows = {{20040203, 3, 20040201, 20040229},
                                     {20040203, 4, 20040101, 20040331},
                                     {20040203, 5, 20040101, 20040630},
                                     {20040203, 6, 20040101, 20041231},
                                     {20040203, 3, 20040201, 20040229, 0, 5, 20040101, 20040630}};
  for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) {
    Expect(BookOf(engine::CalendarKind::kMonths), rows, level);
  }
}

TEST_F(BookCalendarDatesTest, KnowsYearsOfFourFourAndFiveWeeks) {
  const std::vector<DateRow> rows = {{20040203, 3, 20040201, 20040228},
                                     {20040229, 3, 20040229, 20040403},
                                     {20040403, 4, 20040104, 20040403},
                                     {20040404, 4, 20040404, 20040703},
                                     {20040203, 5, 20040104, 20040703},
                                     {20040704, 5, 20040704, 20050101},
                                     {20040203, 6, 20040104, 20050101},
                                     // The 53rd week of 2003 belongs to its last period of five weeks, now six.
                                     {20040102, 3, 20031123, 20040103},
                                     {20040102, 6, 20021229, 20040103},
                                     {20040203, 3, 20040201, 20040228, 0, 4, 20040104, 20040403}};
  for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) {
    Expect(BookOf(engine::CalendarKind::k445), rows, level);
  }
}

// Thirteen periods of four weeks; the last quarter has four of them.
const std::vector<DateRow> kThirteen = {
    {20040203, 3, 20040201, 20040228}, {20040229, 3, 20040229, 20040327}, {20040327, 4, 20040104, 20040327},
    {20040328, 4, 20040328, 20040619}, {20040203, 5, 20040104, 20040619}, {20040620, 5, 20040620, 20050101},
    {20040912, 4, 20040912, 20050101}, {20040203, 6, 20040104, 20050101}, {20040102, 3, 20031130, 20040103},
    {20040102, 4, 20030907, 20040103}, {20040102, 5, 20030615, 20040103}, {20040102, 6, 20021229, 20040103}};

TEST_F(BookCalendarDatesTest, KnowsYearsOfThirteenPeriods) {
  for (const Integer level : {kDayLevel, kWeekLevel, kPeriodLevel}) {
    Expect(BookOf(engine::CalendarKind::k13x4), kThirteen, level);
  }
}

TEST_F(BookCalendarDatesTest, KnowsYearsOfWeeksWithoutTheChoiceOfAPeriod) {
  std::vector<DateRow> rows = {{20040203, 2, 20040201, 20040207},
                               {20040102, 2, 20031228, 20040103},
                               {20040203, 2, 20040201, 20040207, 0, 4, 20040104, 20040327},
                               {20040310, 7, 20040207, 20040313, 20040203}};
  for (const DateRow& row : kThirteen) {
    if (row.length != kPeriodLength) rows.push_back(row);
  }
  Expect(BookOf(engine::CalendarKind::kWeeks), rows, kWeekLevel);
}

TEST_F(BookCalendarDatesTest, OpensABookOfWeeksOnTheQuarter) {
  const TempFolder folder;
  engine::Book::Create(folder.Path("North.tbk"), BookOf(engine::CalendarKind::kWeeks));
  const auto book = engine::Book::Open(folder.Path("North.tbk"), app_);
  TestReport report(book.get());
  dlgRepPrint dialog(factory_);
  dialog.SetInitialLength(kDayLength);
  dialog.SetFields(report, "Sales", "Print", 0);
  EXPECT_EQ(dialog.optLength.Selected(), kQuarterLength);
  EXPECT_FALSE(dialog.optLength(kPeriodLength).Enabled());
  EXPECT_EQ(dialog.optLength(kPeriodLength).Caption(), "Period");
}

TEST_F(BookCalendarDatesTest, KnowsPeriodsOfGivenLengths) {
  engine::BookDescription description = BookOf(engine::CalendarKind::kCustom);
  description.calendar.periods = {{"One", 70}, {"Two", 80}, {"Three", 75}, {"Four", 70}, {"Five", 70}};
  Expect(description, {{20030704, 3, 20030531, 20030813},
                       {20030401, 4, 20030101, 20030530},
                       {20030401, 5, 20030101, 20030813},
                       {20041230, 6, 20040101, 20041230},
                       {20041231, 6, 20041231, 20051230}});
}

TEST_F(BookCalendarDatesTest, RoundsCustomRangesToWeeksAndPeriods) {
  const auto book = BookOf(engine::CalendarKind::k445);
  Expect(book, {{20040310, 7, 20040203, 20040310, 20040203}, {20040203, 8, 20021229, 20051231}}, kDayLevel);
  Expect(book, {{20040310, 7, 20040207, 20040313, 20040203}, {20040203, 8, 20030104, 20051231}}, kWeekLevel);
  Expect(book, {{20040310, 7, 20040228, 20040403, 20040203}, {20040203, 8, 20030125, 20051231}}, kPeriodLevel);
}

}  // namespace
}  // namespace tallybook::testing
