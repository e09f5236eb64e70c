#include "reportdialog/DateRanges.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using DateRangesTest = RepPrintTest;

// --- Year lists ------------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, FillsBothYearListsOldestFirst) {
  Open();
  for (const ComboBox& list : dialog().cmbYear) {
    ASSERT_EQ(list.ListCount(), 3);
    EXPECT_EQ(list.List(0), "2003");
    EXPECT_EQ(list.List(2), "2005");
  }
}

TEST_F(DateRangesTest, SelectsTheLastYearThatHasBegun) {
  OpenOn(Day(2004, 1, 1));
  EXPECT_EQ(dialog().cmbYear[0].SelectedText(), "2004");
}

TEST_F(DateRangesTest, StaysInTheLastYearHeldForALaterDate) {
  OpenOn(Day(2009, 6, 15));
  EXPECT_EQ(dialog().cmbYear[0].SelectedText(), "2005");
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2005-06-15");
}

TEST_F(DateRangesTest, SelectsNoYearForADateBeforeTheFirst) {
  OpenOn(Day(2002, 12, 31));
  EXPECT_EQ(dialog().cmbYear[0].ListIndex(), kNoEntry);
}

TEST_F(DateRangesTest, AsksTheHostForYearZeroWhereNoYearIsSelected) {
  host_->record.Record("YearStart", true);
  OpenOn(Day(2002, 12, 31));
  EXPECT_THAT(host_->record.ArgumentsOf("YearStart"), ::testing::Contains("0"));
  ASSERT_FALSE(LogErrors().empty());  // this host has no such year
  EXPECT_EQ(LogErrors()[0].message, "MemoryMasterfile-dlgRepPrint-SetFrameContents")
      << "the length's reaction ended there";
}

TEST_F(DateRangesTest, RunsTheYearReactionWhileTheListIsFilled) {
  dialog().SetCurrentDate(Day(2004, 7, 9));
  dialog().Calendar[1].SetDate(Day(2003, 1, 1));
  Open();
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-07-09");
}

TEST_F(DateRangesTest, ShowsTodayUntilADateIsSet) {
  Open();
  EXPECT_EQ(DateText(dialog().CurrentDate()), "2004-02-03");
  EXPECT_EQ(dialog().CurrentDate(), Day(2004, 2, 3)) << "without the time of day";
}

TEST_F(DateRangesTest, SetsBothCalendarsToTheCurrentDate) {
  dialog().SetCurrentDate(Day(2005, 5, 5));
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2005-05-05");
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2005-05-05");
}

TEST_F(DateRangesTest, ChangesTheCalendarsLimitsWithTheirDrawingOff) {
  Open();
  std::vector<Date> limits(4);
  for (std::size_t i = 0; i < 2; ++i) {
    const auto look = [this, &limits, i] {
      const CalendarBox& calendar = dialog().Calendar[i];
      const bool same = calendar.MinDate() == limits[2 * i] && calendar.MaxDate() == limits[2 * i + 1];
      limits[2 * i] = calendar.MinDate();
      limits[2 * i + 1] = calendar.MaxDate();
      return same;
    };
    look();
    dialog().Calendar[i].Changed.Connect([this, look, i] { EXPECT_TRUE(look() || !dialog().Calendar[i].Redraw()); });
  }
  const auto chooses = [this](auto choose) {
    const std::vector<Text> before = LimitsOf(1);
    choose();
    EXPECT_NE(LimitsOf(1), before);
    EXPECT_TRUE(dialog().Calendar[0].Redraw());
    EXPECT_TRUE(dialog().Calendar[1].Redraw());
  };
  chooses([this] { ChooseYear(0, 0); });
  chooses([this] { ChooseLength(kCustomLength); });
  chooses([this] { ChooseLength(kWeekLength); });
}

TEST_F(DateRangesTest, FillsTheYearListsAroundAYearThatTheHostCannotTell) {
  struct Row {
    Text operation;
    long long nth;
    std::vector<Text> this_year, last_year;
    Text selected;
  };
  const std::vector<Text> all = {"2003", "2004", "2005"};
  const Row rows[] = {{"NumYears", 1, {}, all, ""},
                      {"NumYears", 2, all, {}, "2005"},
                      {"FirstYear", 2, {"2003", "2005"}, all, "2005"},
                      {"YearStart", 1, all, all, "2005"}};
  for (const Row& row : rows) {
    dialog_.reset();
    LogErrors().clear();
    dialog().SetCurrentDate(Day(2005, 5, 12));
    host_->record.FailOn(row.operation, row.nth, Failure(FailureNumber::kDeviceError, "gone", "Engine"));
    Open();
    EXPECT_EQ(Entries(dialog().cmbYear[0]), row.this_year) << row.operation << row.nth;
    EXPECT_EQ(Entries(dialog().cmbYear[1]), row.last_year) << row.operation << row.nth;
    EXPECT_EQ(dialog().cmbYear[0].SelectedText(), row.selected) << row.operation << row.nth;
    ASSERT_FALSE(LogErrors().empty());
    EXPECT_EQ(LogErrors()[0].message, "Engine - dlgRepPrint:SetFields") << row.operation << row.nth;
  }
}

TEST_F(DateRangesTest, SelectsTheYearBeforeOneWhoseStartTheHostCannotTell) {
  dialog().SetCurrentDate(Day(2004, 5, 12));
  Open();
  // Each selected year asks for three starts of its own besides the one of the walk.
  for (long long nth = 1; nth <= 9; ++nth) {
    dialog_.reset();
    dialog().SetCurrentDate(Day(2004, 5, 12));
    host_->record.FailOn("YearStart", nth, Failure(FailureNumber::kDeviceError, "gone", "Engine"));
    Open();
    EXPECT_EQ(Entries(dialog().cmbYear[0]).size(), 3U) << nth;
    EXPECT_NE(dialog().cmbYear[0].ListIndex(), kNoEntry) << nth;
  }
}

TEST_F(DateRangesTest, SetsEachLimitOfTheFirstCalendarThatTheHostCanTell) {
  const Failure gone(FailureNumber::kDeviceError, "gone", "Engine");
  host_->record.FailOn("YearsInUse", 1, gone);
  Open();
  EXPECT_EQ(DateText(dialog().Calendar[0].MinDate()), "2003-01-01");
  EXPECT_EQ(dialog().Calendar[0].MaxDate(), kNoDate);
  EXPECT_THAT(LogErrors(), SizeIs(1));
  dialog_.reset();
  host_->record.FailOn("FirstSystemDate", 1, gone);
  Open();
  EXPECT_EQ(dialog().Calendar[0].MinDate(), kNoDate);
  EXPECT_EQ(DateText(dialog().Calendar[0].MaxDate()), "2005-12-31");
  EXPECT_THAT(LogErrors(), SizeIs(2));
  EXPECT_TRUE(dialog().Calendar[0].Redraw());
}

// --- Choosing a length -----------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, LimitsTheFirstCalendarAtLoadToTheYearsInUse) {
  BookShape shape;
  shape.years_in_use = 2;
  UseBook(shape);
  host_->book.answers.first_system_date = Day(2003, 2, 1);
  Open();
  EXPECT_THAT(LimitsOf(0), ElementsAre("2003-02-01", "2004-12-31"));
  EXPECT_TRUE(dialog().Calendar[0].FurtherFlag());
  EXPECT_TRUE(dialog().Calendar[1].FurtherFlag());
  EXPECT_TRUE(dialog().Calendar[0].Redraw());
}

TEST_F(DateRangesTest, ShowsTheMainCalendarAloneForTheShorterLengths) {
  Open();
  for (Integer length = 1; length <= 5; ++length) {
    ChooseLength(length);
    EXPECT_FALSE(dialog().frmDate[0].Visible());
    EXPECT_TRUE(dialog().frmDate[1].Visible());
    EXPECT_TRUE(dialog().cmbYear[0].Visible());
    EXPECT_THAT(LimitsOf(1), ElementsAre("2004-01-01", "2004-12-31"));
    EXPECT_EQ(dialog().SelectedLength(), length);
    EXPECT_EQ(dialog().InitialLength(), length);
  }
}

TEST_F(DateRangesTest, ShowsTheMainCalendarAgainWhereALengthIsChosen) {
  Open();
  dialog().Calendar[1].SetVisible(false);
  ChooseLength(kWeekLength);
  EXPECT_TRUE(dialog().Calendar[1].Visible());
}

TEST_F(DateRangesTest, ShowsTheYearListAloneForAYear) {
  Open();
  ChooseLength(kYearLength);
  EXPECT_TRUE(dialog().cmbYear[0].Visible());
  EXPECT_TRUE(dialog().lblYear[0].Visible());
  EXPECT_FALSE(dialog().cmbYear[1].Visible()) << "no report of two years";
  EXPECT_FALSE(dialog().frmDate[0].Visible());
  EXPECT_FALSE(dialog().frmDate[1].Visible());
}

TEST_F(DateRangesTest, HidesYearsAndFramesForAllYearsAndStillLabelsTheRange) {
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kAllLength);
  EXPECT_FALSE(dialog().cmbYear[0].Visible());
  EXPECT_FALSE(dialog().frmDate[0].Visible());
  EXPECT_FALSE(dialog().frmDate[1].Visible());
  const Text end = LongDateText(dialog().EndDate());
  EXPECT_EQ(LabelText(1), "All Years Ending: " + end);
  EXPECT_EQ(dialog().frmDate[1].Caption(), "All Years ");
}

TEST_F(DateRangesTest, ShowsBothCalendarsOverAllYearsHeldForACustomRange) {
  BookShape shape;
  shape.years_in_use = 2;
  UseBook(shape);
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_TRUE(dialog().frmDate[0].Visible());
  EXPECT_TRUE(dialog().frmDate[1].Visible());
  EXPECT_FALSE(dialog().cmbYear[0].Visible());
  EXPECT_THAT(LimitsOf(0), ElementsAre("2003-01-01", "2005-12-31"));
  EXPECT_THAT(LimitsOf(1), ElementsAre("2003-01-01", "2005-12-31"));
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2004-03-10");
  EXPECT_EQ(dialog().frmDate[0].Caption(), "Range &Beginning:");
}

TEST_F(DateRangesTest, OpensACustomRangeAtItsPresetStart) {
  dialog().SetCustomStartDate(Day(2003, 5, 1));
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2003-05-01");
}

TEST_F(DateRangesTest, KeepsTheFirstDateWhereTheUserClicksTheCustomRangeAgain) {
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  ChooseDate(0, Day(2004, 2, 1));
  ChooseLength(kCustomLength);
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2004-02-01");
}

TEST_F(DateRangesTest, RunsNothingWhereTheUserClicksTheLengthThatIsOn) {
  OpenOn(Day(2004, 3, 10));
  int repaints = 0;
  dialog().DateLabel[0].Repainted.Connect([&] { ++repaints; });
  for (Integer length = 1; length <= 8; ++length) {
    ChooseLength(length);
    repaints = 0;
    ChooseLength(length);
    EXPECT_EQ(repaints, 0) << "length " << length;
  }
}

TEST_F(DateRangesTest, KeepsTheMainDateOverAChangeOfLength) {
  OpenOn(Day(2004, 3, 10));
  for (const Integer length : {kCustomLength, kYearLength, kAllLength, kWeekLength}) ChooseLength(length);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-03-10");
}

// --- The two upper limits --------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, KeepsACustomRangeOfTwoYearsWithinTheYearsHeldWhenTheLengthIsChosen) {
  report_.uses_last_year = true;
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_THAT(LimitsOf(1), ElementsAre("2004-01-01", "2005-12-31"));
  ChooseLength(kDayLength);
  ChooseYear(0, 0);
  ChooseLength(kCustomLength);
  EXPECT_THAT(LimitsOf(0), ElementsAre("2003-01-01", "2004-12-31"));
  EXPECT_TRUE(dialog().cmbYear[0].Visible());
}

TEST_F(DateRangesTest, AsksForNoYearBehindThoseHeldWhenTheCustomLengthIsChosen) {
  report_.uses_last_year = true;
  OpenOn(Day(2005, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_THAT(LimitsOf(1), ElementsAre("2005-01-01", "2005-12-31"));
  EXPECT_THAT(LogErrors(), IsEmpty());
}

// A book whose host names the starts of years beyond those held.
class GenerousBook : public MemoryMasterfile {
 public:
  using MemoryMasterfile::MemoryMasterfile;
  [[nodiscard]] Date YearStart(Integer year) const override { return Day(year, 1, 1); }
};

TEST_F(DateRangesTest, LimitsTheLastYearDifferentlyByLengthAndByYear) {
  GenerousBook book(host_->app, host_->record, host_->book.Shape());
  report_.owner = &book;
  report_.uses_last_year = true;
  OpenOn(Day(2005, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_THAT(LimitsOf(1), ElementsAre("2005-01-01", "2005-12-31")) << "the end of the years held";
  ChooseYear(0, 2);
  EXPECT_THAT(LimitsOf(0), ElementsAre("2005-01-01", "2006-12-31")) << "two years, whatever is held";
  EXPECT_THAT(LimitsOf(1), ElementsAre("2005-01-01", "2006-12-31"));
  dialog_.reset();  // before the book
}

TEST_F(DateRangesTest, LimitsACustomRangeToTheYearsInUseWhenAYearIsChosen) {
  BookShape shape;
  shape.years_in_use = 2;
  UseBook(shape);
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  dialog().cmbYear[0].SetListIndex(0);  // hidden from the user then
  EXPECT_THAT(LimitsOf(0), ElementsAre("2003-01-01", "2004-12-31"));
  EXPECT_THAT(LimitsOf(1), ElementsAre("2003-01-01", "2004-12-31"));
}

// --- Choosing a year -------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, MovesTheCalendarToTheSameDayOfTheYearChosen) {
  OpenOn(Day(2004, 3, 10));
  ChooseYear(0, 2);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2005-03-10");
  EXPECT_THAT(LimitsOf(1), ElementsAre("2005-01-01", "2005-12-31"));
  EXPECT_EQ(DateText(dialog().CurrentDate()), "2004-03-10") << "a date set by program is no choice";
  EXPECT_TRUE(dialog().Calendar[1].Redraw());
}

TEST_F(DateRangesTest, ComesBackToTheCurrentDateInItsOwnYear) {
  OpenOn(Day(2004, 12, 31));
  ChooseYear(0, 0);
  ChooseYear(0, 1);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-12-31");
}

TEST_F(DateRangesTest, KeepsTheFirstAndLastDayOfAYearThatCrossesTheCalendars) {
  BookShape shape;
  shape.first_date = Day(2003, 4, 1);
  for (const Date date : {Day(2004, 3, 31), Day(2003, 4, 1)}) {
    UseBook(shape);
    OpenOn(date);
    EXPECT_EQ(dialog().cmbYear[0].SelectedText(), "2003");
    EXPECT_EQ(DateText(dialog().Calendar[1].Date()), DateText(date));
  }
  ChooseYear(0, 1);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-04-01");
}

TEST_F(DateRangesTest, TurnsTheTwentyNinthOfFebruaryIntoTheFirstOfMarch) {
  OpenOn(Day(2004, 2, 29));
  ChooseYear(0, 2);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2005-03-01");
  EXPECT_EQ(dialog().cmbYear[0].SelectedText(), "2005");
}

TEST_F(DateRangesTest, LeavesTheCalendarAloneWhenLastYearIsChosen) {
  report_.uses_last_year = true;
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  ChooseDate(0, Day(2004, 6, 1));  // pulls the main calendar along, away from the current date
  ChooseYear(1, 0);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-06-01");
}

TEST_F(DateRangesTest, OpensLastYearOneEntryAboveThisYear) {
  report_.uses_last_year = true;
  OpenOn(Day(2005, 3, 10));
  EXPECT_EQ(dialog().cmbYear[1].SelectedText(), "2004");
  EXPECT_TRUE(dialog().cmbYear[1].Visible());
  EXPECT_TRUE(dialog().lblYear[1].Visible());
}

TEST_F(DateRangesTest, OpensLastYearOnNoneInTheFirstYear) {
  report_.uses_last_year = true;
  OpenOn(Day(2003, 3, 10));
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), kNoEntry);
  EXPECT_THAT(LogErrors(), IsEmpty());
}

TEST_F(DateRangesTest, LogsTheEntryBeforeNoneAndLeavesLastYearOnNone) {
  report_.uses_last_year = true;
  OpenOn(Day(2002, 3, 10));
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), kNoEntry);
  EXPECT_THAT(LogErrors(), ::testing::Contains(::testing::Field(&MemoryLog::Error::message,
                                                                ::testing::EndsWith(" - dlgRepPrint:SetFields"))));
}

TEST_F(DateRangesTest, MovesLastYearBelowThisYear) {
  report_.uses_last_year = true;
  OpenOn(Day(2005, 3, 10));
  ChooseYear(0, 1);  // where last year stands
  EXPECT_EQ(dialog().cmbYear[0].ListIndex(), 1);
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), 0);
}

TEST_F(DateRangesTest, MovesThisYearBelowLastYearWithItsCalendar) {
  report_.uses_last_year = true;
  OpenOn(Day(2005, 3, 10));
  ChooseYear(1, 2);  // where this year stands
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), 2);
  EXPECT_EQ(dialog().cmbYear[0].ListIndex(), 1);
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-03-10") << "a list that is moved reacts itself";
  EXPECT_THAT(LimitsOf(1), ElementsAre("2004-01-01", "2004-12-31"));
}

TEST_F(DateRangesTest, LeavesTheOtherListOnNoneWhenBothStandOnTheFirstYear) {
  report_.uses_last_year = true;
  OpenOn(Day(2004, 3, 10));
  ASSERT_EQ(dialog().cmbYear[1].ListIndex(), 0);
  ChooseYear(0, 0);
  EXPECT_EQ(dialog().cmbYear[0].ListIndex(), 0);
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), kNoEntry);
}

TEST_F(DateRangesTest, LetsBothListsMeetWhereTheReportHasOneYear) {
  report_.in_print_job = true;
  OpenOn(Day(2005, 3, 10));
  ChooseYear(1, 2);
  EXPECT_EQ(dialog().cmbYear[0].ListIndex(), 2);
  EXPECT_EQ(dialog().cmbYear[1].ListIndex(), 2);
}

TEST_F(DateRangesTest, LogsAYearThatTheHostCannotTellAndStaysUsable) {
  report_.uses_last_year = true;
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  ChooseYear(0, 2);  // two years on lies beyond the year after the last
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_THAT(LogErrors()[0].message, ::testing::EndsWith("-dlgRepPrint-cmbYear_Click"));
  EXPECT_TRUE(dialog().Calendar[1].Redraw());
  ChooseYear(0, 1);
  EXPECT_THAT(LogErrors(), SizeIs(1));
}

// --- Choosing a date -------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, CentresOnTheDateChosenInTheMainCalendar) {
  OpenOn(Day(2004, 3, 10));
  dialog().Calendar[0].SetDate(Day(2003, 1, 1));
  ChooseDate(1, Day(2004, 5, 6));
  EXPECT_EQ(DateText(dialog().CurrentDate()), "2004-05-06");
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2003-01-01") << "the stored value alone changes";
}

TEST_F(DateRangesTest, PullsTheEndOfACustomRangeForwardButNeverItsBeginningBack) {
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  ChooseDate(0, Day(2004, 4, 1));
  EXPECT_EQ(DateText(dialog().Calendar[1].Date()), "2004-04-01");
  EXPECT_EQ(DateText(dialog().CurrentDate()), "2004-03-10");
  ChooseDate(1, Day(2004, 2, 1));
  EXPECT_EQ(DateText(dialog().Calendar[0].Date()), "2004-04-01");
}

TEST_F(DateRangesTest, ChangesTheRolesOfACustomRangeThatRunsBackwards) {
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  ChooseDate(0, Day(2004, 4, 1));
  ChooseDate(1, Day(2004, 2, 1));
  Next();
  EXPECT_THAT(Range(), ElementsAre("2004-02-01", "2004-04-01"));
  EXPECT_FALSE(dialog().Cancelled());
}

TEST_F(DateRangesTest, RoundsBothDatesOfACustomRangeToPeriodEndsInABookOfPeriods) {
  UseBook(AtLevel(kPeriodLevel));
  OpenOn(Day(2004, 3, 10));
  ChooseLength(kCustomLength);
  EXPECT_EQ(dialog().CustomRangeLevel(), 3);
  ChooseDate(0, Day(2004, 2, 3));
  EXPECT_EQ(LabelText(0), "Sunday, February 29, 2004");
  EXPECT_EQ(LabelText(1), "Wednesday, March 31, 2004");
  Next();
  EXPECT_THAT(Range(), ElementsAre("2004-02-29", "2004-03-31"));
}

TEST_F(DateRangesTest, RoundsACustomRangeByTheStyleButNotFinerThanTheBook) {
  struct Row {
    Integer data_level, style, expected;
  };
  for (const Row& row : {Row{1, 1, 1},
                         {1, 2, 2},
                         {1, 3, 3},
                         {1, 4, 1},
                         {2, 2, 2},
                         {2, 3, 3},
                         {2, 4, 2},
                         {3, 3, 3},
                         {3, 1, 3},
                         {2, 1, 2}}) {
    UseBook(AtLevel(row.data_level));
    report_.type = kStyledReport;
    dialog().SetInitialStyle(row.style);
    Open();
    Next();
    Next();
    ChooseLength(kCustomLength);
    EXPECT_EQ(dialog().CustomRangeLevel(), row.expected) << row.data_level << " " << row.style;
  }
}

TEST_F(DateRangesTest, RoundsTheShorterLengthsToThemselvesWithoutAStyle) {
  UseBook(AtLevel(kWeekLevel));
  Open();
  for (const Integer length : {kWeekLength, kPeriodLength, kQuarterLength, kYearLength}) {
    ChooseLength(length);
    EXPECT_EQ(dialog().CustomRangeLevel(), length);
  }
}

// --- BuildDateList ---------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, WordsFrameAndLabelsByLength) {
  struct Row {
    Integer length;
    Text caption, text;
  };
  OpenOn(Day(2004, 5, 12));  // a Wednesday
  const Row rows[] = {
      {1, "Day:", "Wednesday, May 12, 2004"},
      {2, "Week Ending:", "Saturday, May 15, 2004"},
      {3, "Fiscal Month:", "May - Ending: Monday, May 31, 2004"},
      {4, "Quarter Number:", "2 - Ending: Wednesday, June 30, 2004"},
      {5, "Half:", "1 of 2004 - Ending: Wednesday, June 30, 2004"},
      {6, "Year: ", "Year: 2004 - Ending: Friday, December 31, 2004"},
      {7, "Range &Ending:", "Wednesday, May 12, 2004"},
      {8, "All Years ", "All Years Ending: Saturday, December 31, 2005"},
  };
  for (const Row& row : rows) {
    ChooseLength(row.length);
    EXPECT_EQ(dialog().frmDate[1].Caption(), row.caption);
    EXPECT_EQ(LabelText(0), row.text);
    EXPECT_EQ(LabelText(1), row.text);
    EXPECT_EQ(LabelText(2), row.text);
    EXPECT_EQ(dialog().frmDate[0].Caption(), "Range &Beginning:");
    EXPECT_EQ(dialog().BuildDateList(), dialog().EndDate());
  }
}

TEST_F(DateRangesTest, StartsACustomRangeOnTheEveOfItsLastUnitUntilItIsFinished) {
  UseBook(AtLevel(kPeriodLevel));
  OpenOn(Day(2004, 5, 12));
  ChooseLength(kCustomLength);
  ChooseDate(0, Day(2004, 2, 3));
  EXPECT_THAT(Range(), ElementsAre("2004-04-30", "2004-05-31"));
  Next();
  EXPECT_THAT(Range(), ElementsAre("2004-02-29", "2004-05-31"));
}

TEST_F(DateRangesTest, RepaintsTheLabelsAtOnce) {
  Open();
  std::vector<Text> painted;
  for (Label& label : dialog().DateLabel) {
    label.Repainted.Connect([&painted, &label] { painted.push_back(label.Caption()); });
  }
  ChooseLength(kCustomLength);
  EXPECT_THAT(painted, ElementsAre("Tuesday, February 3, 2004", "Tuesday, February 3, 2004"));
}

TEST_F(DateRangesTest, TakesTheOptionsForTheTruth) {
  Open();
  for (Integer i = 1; i <= 8; ++i) dialog().optLength.SetValue(i, false);
  dialog().BuildDateList();
  EXPECT_EQ(dialog().SelectedLength(), kDayLength);
}

TEST_F(DateRangesTest, DoesNothingWithoutACalendar) {
  EXPECT_EQ(dialog().BuildDateList(), kNoDate);
  EXPECT_EQ(LabelText(0), "");
  EXPECT_EQ(dialog().frmDate[1].Caption(), "");
}

TEST_F(DateRangesTest, LogsAFailureOfTheCalendarAndGoesOnWithTheNextStatement) {
  OpenOn(Day(2004, 5, 12));
  ChooseLength(kWeekLength);
  const Date before = dialog().EndDate();
  host_->record.FailOn("Calendar.LevelDate", 1, Failure(FailureNumber::kDeviceError, "gone", "Engine"));
  EXPECT_TRUE(dialog().optLength(kQuarterLength).UserClick());
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_EQ(LogErrors()[0], (MemoryLog::Error{"Engine-dlgRepPrint-BuildDateList", 10, -1}));
  EXPECT_EQ(dialog().frmDate[1].Caption(), "Quarter Number:") << "the statements behind it ran";
  EXPECT_EQ(dialog().EndDate(), before);
}

TEST_F(DateRangesTest, LogsEachFailingStatementOfTheList) {
  OpenOn(Day(2004, 5, 12));
  ChooseLength(kCustomLength);
  host_->record.FailOn("Calendar.LevelDate", 1, Failure(FailureNumber::kDeviceError, "gone", "Engine"));
  host_->record.FailOn("Calendar.PriorPeriodEnd", 2, Failure(FailureNumber::kDeviceError, "gone", "Engine"));
  dialog().BuildDateList();
  EXPECT_TRUE(host_->record.AllFaultsStruck());
  ASSERT_THAT(LogErrors(), SizeIs(2));
  EXPECT_EQ(LogErrors()[0].line_number, 10);
  EXPECT_EQ(LogErrors()[1].line_number, 50);
}

// --- CollectDates ----------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, PutsTheCursorOfItsOwnCalendarOnTheEnd) {
  OpenOn(Day(2004, 5, 12));
  const Date shared_before = host_->book.FiscalCalendar().CurrentDate();
  ChooseLength(kQuarterLength);
  dialog().CollectDates();
  EXPECT_EQ(DateText(host_->factory.LastCalendar()->CurrentDate()), "2004-06-30");
  EXPECT_EQ(host_->book.FiscalCalendar().CurrentDate(), shared_before);
}

TEST_F(DateRangesTest, ThrowsWhereThereIsNoCalendarToCollectWith) {
  EXPECT_THAT([&] { dialog().CollectDates(); }, FailsWith(FailureNumber::kObjectNotSet));
}

// --- The words -------------------------------------------------------------------------------------------------------

TEST_F(DateRangesTest, SaysTheRangeInLongAndShortWords) {
  struct Row {
    Integer length;
    Text long_words, short_words;
  };
  OpenOn(Day(2004, 11, 3));
  const Row rows[] = {
      {1, "Day: Wednesday, November 3, 2004", "Day"},
      {2, "Week Ending: Saturday, November 6, 2004", "Week Ending"},
      {3, "Fiscal Month: November - Ending: Tuesday, November 30, 2004", "Fiscal Month Ending: "},
      {4, "Fourth Quarter of 2004 - Ending: Friday, December 31, 2004", "Fourth Quarter 2004 Ending"},
      {5, "Second Half of 2004 - Ending: Friday, December 31, 2004", "Second Half 2004 Ending"},
      {6, "Year 2004 - Ending: Friday, December 31, 2004", "Year 2004 Ending"},
      {7, "Days: Wednesday, November 3, 2004 to Wednesday, November 3, 2004", "Range Ending"},
  };
  for (const Row& row : rows) {
    ChooseLength(row.length);
    EXPECT_EQ(dialog().DateRangeText(), row.long_words);
    EXPECT_EQ(dialog().DateRangeShortText(), row.short_words);
  }
}

TEST_F(DateRangesTest, SaysTheRangeOnceTheComparisonHasMovedTheCalendar) {
  report_.type = kSequenceReport;
  OpenOn(Day(2004, 5, 12));
  Next();
  ChooseLength(kQuarterLength);
  EXPECT_TRUE(dialog().cmbCompareRange.UserChoose(2));
  EXPECT_EQ(dialog().CompareRange(), eCompRange::CompYear);
  dialog().CollectDates();
  EXPECT_EQ(host_->factory.LastCalendar()->QuarterNumber(), 4) << "the year has moved it";
  EXPECT_EQ(dialog().DateRangeText(), "Second Quarter of 2004 - Ending: Wednesday, June 30, 2004");
  EXPECT_EQ(dialog().DateRangeShortText(), "Second Quarter 2004 Ending");
}

TEST_F(DateRangesTest, SaysTheRangeOfTheLastListWhereverTheCalendarStands) {
  OpenOn(Day(2004, 5, 12));
  for (const Integer length : {kPeriodLength, kQuarterLength, kHalfYearLength, kYearLength}) {
    ChooseLength(length);
    const Text long_words = dialog().DateRangeText();
    const Text short_words = dialog().DateRangeShortText();
    (void)host_->factory.LastCalendar()->LevelDate(Day(2005, 11, 3), length);
    EXPECT_EQ(dialog().DateRangeText(), long_words);
    EXPECT_EQ(dialog().DateRangeShortText(), short_words);
  }
}

TEST_F(DateRangesTest, SaysAllYearsFromStartToEnd) {
  OpenOn(Day(2004, 11, 3));
  ChooseLength(kAllLength);
  Next();
  EXPECT_EQ(dialog().DateRangeText(), "All Years:Wednesday, January 1, 2003 to Saturday, December 31, 2005");
  EXPECT_EQ(dialog().DateRangeShortText(), "All Years Ending");
}

TEST_F(DateRangesTest, AllYearsReachToTheEndOfTheLastYearHeldThoughNotInUse) {
  BookShape shape;
  shape.years_in_use = 2;
  UseBook(shape);
  OpenOn(Day(2004, 11, 3));
  ChooseLength(kAllLength);
  Next();
  EXPECT_THAT(Range(), ElementsAre("2003-01-01", "2005-12-31"));
}

TEST_F(DateRangesTest, SaysACustomRangeByItsLevel) {
  for (const auto& [level, words] : {std::pair<Integer, Text>{2, "Weeks Ending: "}, {3, "Fiscal Months Ending: "}}) {
    UseBook(AtLevel(level));
    Open();
    ChooseLength(kCustomLength);
    EXPECT_EQ(dialog().DateRangeText(), words + LabelText(0) + " to " + LabelText(1));
  }
}

TEST_F(DateRangesTest, SaysNothingOfTheLevelOfACustomRangeThatNobodyNamed) {
  Open();
  ChooseLength(kCustomLength);
  host_->book.answers.data_level = Integer{4};
  EXPECT_EQ(dialog().DateRangeText(), " " + LabelText(0) + " to " + LabelText(1));
}

// A calendar that counts more quarters than a year has.
class FifthQuarter : public MemoryCalendar {
 public:
  using MemoryCalendar::MemoryCalendar;
  [[nodiscard]] Integer QuarterNumber() const override { return 5; }
  [[nodiscard]] Integer HalfNumber() const override { return 0; }
};

class OddFactory : public MemoryFactory {
 public:
  OddFactory(CallRecord& record, MemorySettings& settings) : MemoryFactory(record, settings), own_record_(record) {}
  std::unique_ptr<FiscalCalendar> NewFiscalCalendar() override { return std::make_unique<FifthQuarter>(own_record_); }

 private:
  CallRecord& own_record_;
};

TEST_F(DateRangesTest, FailsToNameAQuarterOrHalfThatNoYearHas) {
  OddFactory factory(host_->record, host_->settings);
  dialog_ = std::make_unique<dlgRepPrint>(factory);
  Open();
  for (const Integer length : {kQuarterLength, kHalfYearLength}) {
    ChooseLength(length);
    EXPECT_THAT([&] { (void)dialog().DateRangeText(); }, FailsWith(FailureNumber::kRange));
    EXPECT_THAT([&] { (void)dialog().DateRangeShortText(); }, FailsWith(FailureNumber::kRange));
  }
  EXPECT_THAT(LogErrors(), IsEmpty()) << "the label shows the number as it is";
  dialog_.reset();  // before the factory
}

TEST_F(DateRangesTest, CallsTheThirdLengthMonthOnlyWhereAYearHasTwelve) {
  Open();
  EXPECT_EQ(dialog().optLength(3).Caption(), "Month");
  host_->book.answers.num_periods = Integer{13};
  dialog_.reset();
  Open();
  EXPECT_EQ(dialog().optLength(3).Caption(), "Period");
}

}  // namespace
}  // namespace tallybook::testing
