#include "forms/modAllUI.h"
#include "reportdialog/CompareRanges.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CompareRangesTest : public RepPrintTest {
 protected:
  // A report by print sequence, at its dates: it can compare.
  void OpenComparing(Date current_date) {
    report_.type = kSequenceReport;
    OpenOn(current_date);
    Next();
  }
  void ChooseRange(eCompRange range) {
    ComboBox& list = dialog().cmbCompareRange;
    for (Integer i = 0; i < list.ListCount(); ++i) {
      if (list.ItemData(i) == static_cast<Long>(range)) {
        EXPECT_TRUE(list.UserChoose(i));
        return;
      }
    }
    ADD_FAILURE() << "no range " << static_cast<int>(range);
  }
  void ChooseType(Integer entry) { EXPECT_TRUE(dialog().cmbCompareType.UserChoose(entry)); }
};

TEST_F(CompareRangesTest, StartsWithNoRangeAndThroughTheDates) {
  dialog().Load();
  EXPECT_EQ(dialog().CompareRange(), eCompRange::CompNone);
  EXPECT_EQ(dialog().CompareType(), eCompType::CompInclude);
  const ComboBox& types = dialog().cmbCompareType;
  ASSERT_EQ(types.ListCount(), 3);
  EXPECT_EQ(types.List(0), "Up to the Date Range");
  EXPECT_EQ(types.List(1), "Through the Date Range");
  EXPECT_EQ(types.List(2), "Entire Compare Range");
  EXPECT_EQ(types.ItemData(0), 1);
  EXPECT_EQ(types.ItemData(2), 3);
  EXPECT_EQ(types.ListIndex(), 1);
}

TEST_F(CompareRangesTest, IsForReportsOfOneLineAndBySequenceWithoutDividedColumns) {
  struct Row {
    Integer type, style, columns;
    bool shown;
  };
  const Row rows[] = {{1, 4, 0, true},  {1, 1, 0, false}, {1, 3, 0, false}, {1, 4, 1, false}, {2, 0, 0, true},
                      {2, 0, 3, false}, {3, 0, 0, false}, {8, 0, 0, false}, {9, 0, 0, false}};
  for (const Row& row : rows) {
    dialog_.reset();
    report_.type = row.type;
    report_.sub_column_type = row.columns;
    dialog().SetForcedStyle(row.style);
    Open();
    while (dialog().Page() < 3) Next();
    EXPECT_EQ(dialog().frmCompare.Visible(), row.shown) << row.type << " " << row.style << " " << row.columns;
    if (!row.shown) {
      EXPECT_THAT(CompareEntries(), ElementsAre("None"));
    }
  }
}

TEST_F(CompareRangesTest, OffersOnlyLongerLengthsUpToTheYear) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kDayLength);
  EXPECT_THAT(CompareEntries(), ElementsAre("None", "Week", "Month", "Quarter", "Half Year", "Year"));
  EXPECT_EQ(dialog().cmbCompareRange.ItemData(5), static_cast<Long>(eCompRange::CompYear));
  ChooseLength(kQuarterLength);
  EXPECT_THAT(CompareEntries(), ElementsAre("None", "Half Year", "Year"));
  ChooseLength(kHalfYearLength);
  EXPECT_THAT(CompareEntries(), ElementsAre("None", "Year"));
}

TEST_F(CompareRangesTest, ListsThePeriodWithoutAMarkAsItStands) {
  host_->book.answers.num_periods = Integer{13};
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kWeekLength);
  EXPECT_THAT(CompareEntries(), ElementsAre("None", "Period", "Quarter", "Half Year", "Year"));
}

TEST_F(CompareRangesTest, IsOffAndAtNoneForAYearAndAbove) {
  for (const Integer length : {kYearLength, kCustomLength, kAllLength}) {
    dialog_.reset();
    OpenComparing(Day(2004, 5, 12));
    ChooseLength(kDayLength);
    ChooseRange(eCompRange::CompMonth);
    ChooseLength(length);
    EXPECT_FALSE(dialog().cmbCompareRange.Enabled());
    EXPECT_EQ(dialog().cmbCompareRange.ListIndex(), 0);
    EXPECT_EQ(dialog().CompareRange(), eCompRange::CompNone);
    EXPECT_FALSE(dialog().cmbCompareType.Visible());
    ChooseLength(kDayLength);
    EXPECT_TRUE(dialog().cmbCompareRange.Enabled());
  }
}

TEST_F(CompareRangesTest, OffersNothingBehindAYear) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kYearLength);
  dialog().BuildCompareList();
  EXPECT_THAT(CompareEntries(), ElementsAre("None"));
}

TEST_F(CompareRangesTest, OffersNothingWithNoLengthOn) {
  OpenComparing(Day(2004, 5, 12));
  for (Integer i = 1; i <= 8; ++i) dialog().optLength.SetValue(i, false);
  dialog().BuildCompareList();
  EXPECT_THAT(CompareEntries(), ElementsAre("None"));
}

TEST_F(CompareRangesTest, KeepsTheRangeThatTheNewListStillHolds) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kDayLength);
  ChooseRange(eCompRange::CompQuarter);
  ChooseLength(kPeriodLength);
  EXPECT_EQ(dialog().CompareRange(), eCompRange::CompQuarter);
  EXPECT_EQ(dialog().cmbCompareRange.SelectedText(), "Quarter");
}

TEST_F(CompareRangesTest, FallsBackToNoneWhereTheNewListHasNotTheRange) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kDayLength);
  ChooseRange(eCompRange::CompMonth);
  EXPECT_TRUE(dialog().cmbCompareType.Visible());
  ChooseLength(kQuarterLength);
  EXPECT_EQ(dialog().CompareRange(), eCompRange::CompNone);
  EXPECT_EQ(dialog().cmbCompareRange.SelectedText(), "None");
  EXPECT_FALSE(dialog().cmbCompareType.Visible());
}

// A report that turns from one line into a time series no longer shows the list, and keeps what was chosen: meant.
TEST_F(CompareRangesTest, KeepsTheRangeWhileTheListIsHidden) {
  report_.type = kStyledReport;
  dialog().SetForcedStyle(kOneLineStyle);
  OpenOn(Day(2004, 5, 12));
  Next();
  Next();
  ChooseLength(kDayLength);
  ChooseRange(eCompRange::CompYear);
  Back();
  Back();
  ChooseStyle(1);
  EXPECT_EQ(dialog().CompareRange(), eCompRange::CompYear);
}

TEST_F(CompareRangesTest, ComparesWithNothingByDefault) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kPeriodLength);
  Next();
  EXPECT_EQ(Compared(), Range());
  EXPECT_THAT(Compared(), ElementsAre("2004-05-01", "2004-05-31"));
}

TEST_F(CompareRangesTest, ReachesUpToThroughOrOverTheWholeUnit) {
  struct Row {
    Integer type;
    eCompType chosen;
    Text end, words;
  };
  const Row rows[] = {{0, eCompType::CompUpTo, "2004-04-30", "Quarter up to this Month"},
                      {1, eCompType::CompInclude, "2004-05-31", "Quarter through this Month"},
                      {2, eCompType::CompWhole, "2004-06-30", "Quarter"}};
  for (const Row& row : rows) {
    dialog_.reset();
    OpenComparing(Day(2004, 5, 12));
    ChooseLength(kPeriodLength);
    ChooseRange(eCompRange::CompQuarter);
    ChooseType(row.type);
    EXPECT_EQ(dialog().CompareType(), row.chosen);
    EXPECT_EQ(dialog().CompareRangeText(2), row.words);
    EXPECT_EQ(dialog().CompareRangeText(1), "Month");
    Next();
    EXPECT_THAT(Compared(), ElementsAre("2004-04-01", row.end));
    EXPECT_THAT(Range(), ElementsAre("2004-05-01", "2004-05-31"));
  }
}

TEST_F(CompareRangesTest, IsEmptyUpToTheFirstMonthOfItsQuarter) {
  OpenComparing(Day(2004, 4, 20));
  ChooseLength(kPeriodLength);
  ChooseRange(eCompRange::CompQuarter);
  ChooseType(0);
  Next();
  EXPECT_THAT(Compared(), ElementsAre("2004-04-01", "2004-03-31"));
}

TEST_F(CompareRangesTest, TakesAnAccelerationMarkOffTheFrontAlone) {
  EXPECT_EQ(WithoutMark("&Quarter"), "Quarter");
  EXPECT_EQ(WithoutMark("Range &Ending:"), "Range &Ending:");
  EXPECT_EQ(WithoutMark("Period"), "Period");
  EXPECT_EQ(WithoutMark("&&"), "&");
  EXPECT_EQ(WithoutMark(""), "");
}

TEST_F(CompareRangesTest, RefreshesTheTimeOfTheLastAct) {
  OpenComparing(Day(2004, 5, 12));
  ChooseLength(kDayLength);
  platform_.clock.Advance(60);
  ChooseRange(eCompRange::CompYear);
  EXPECT_EQ(dialog().LastActivity(), Now());
  platform_.clock.Advance(60);
  ChooseType(2);
  EXPECT_EQ(dialog().LastActivity(), Now());
}

TEST_F(CompareRangesTest, NeedsAReportToBuildItsList) {
  EXPECT_THAT([&] { dialog().BuildCompareList(); }, FailsWith(FailureNumber::kObjectNotSet));
}

TEST_F(CompareRangesTest, AnExportIsComparedWithItself) {
  OpenOn(Day(2004, 5, 12));
  ChooseLength(kWeekLength);
  Next();
  EXPECT_EQ(Compared(), Range());
  EXPECT_THAT(LogErrors(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
