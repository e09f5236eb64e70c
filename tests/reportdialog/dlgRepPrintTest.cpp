#include <algorithm>

#include "forms/modAllUI.h"
#include "reportdialog/dlgRepPrint.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

class dlgRepPrintTest : public RepPrintTest {
 protected:
  // The calls of the sequence control since the last look.
  std::vector<Text> SequenceCalls() {
    std::vector<Text> calls;
    for (const Text& call : host_->record.calls) {
      if (call.starts_with("PrintSequence.")) calls.push_back(call.substr(14));
    }
    host_->record.calls.clear();
    return calls;
  }
  // A styled report of this style at its dates.
  void OpenDatesOfStyle(Integer style) {
    report_.type = kStyledReport;
    dialog().SetForcedStyle(style);
    Open();
    while (dialog().Page() < 3) Next();
  }
};

// --- Opening ---------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, BeginsWithThePageOfTheReportsType) {
  for (Integer type = 1; type <= 9; ++type) {
    dialog_.reset();
    report_.type = type;
    Open();
    const Integer first = type <= 2 ? type : Integer{3};
    EXPECT_EQ(dialog().FirstPage(), first) << type;
    EXPECT_EQ(dialog().Page(), first) << type;
    EXPECT_EQ(dialog().LastPage(), 3);
    EXPECT_THAT(VisiblePages(), ElementsAre(first)) << type;
    EXPECT_FALSE(dialog().Command1[kBackButton].Enabled()) << type;
    EXPECT_TRUE(dialog().Cancelled());
    EXPECT_THAT(LogErrors(), IsEmpty()) << type;
  }
}

TEST_F(dlgRepPrintTest, OpensAnExportAtItsDatesAndTouchesNoStyleOrSequence) {
  Open();
  EXPECT_EQ(dialog().Page(), 3);
  EXPECT_EQ(dialog().Command1[kNextButton].Caption(), "&Print");
  EXPECT_EQ(dialog().OptStyle.Selected(), 0);
  Next();
  EXPECT_THAT(SequenceCalls(), IsEmpty());
  EXPECT_THAT(report_.done, IsEmpty());
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty()) << "an export has no sequences to miss";
}

TEST_F(dlgRepPrintTest, NamesReportClassAndNumberInTheTitleOfAReport) {
  report_.type = kSequenceReport;
  report_.report_class = "Summary";
  report_.file_number = 12;
  Open();
  EXPECT_EQ(dialog().Caption(), "Sales by Account Summary Report Number: 12");
  report_.type = kExportReport;
  dialog_.reset();
  Open();
  EXPECT_EQ(dialog().Caption(), "Sales by Account");
}

TEST_F(dlgRepPrintTest, TakesTheTitleWhereThereIsNoShortOne) {
  dialog().SetFields(report_, "Sales", "", 0);
  EXPECT_EQ(dialog().ShortTitle(), "Sales");
  EXPECT_EQ(dialog().Command1[kNextButton].Caption(), "&Sales");
}

TEST_F(dlgRepPrintTest, LeavesTheHelpTopicWhereNoneIsGiven) {
  dialog().SetHelpContext(5);
  dialog().SetFields(report_, "Sales", "", 0);
  EXPECT_EQ(dialog().HelpContext(), 5);
  dialog().SetFields(report_, "Sales", "", 6);
  EXPECT_EQ(dialog().HelpContext(), 6);
}

TEST_F(dlgRepPrintTest, StandsInTheMiddleOfTheWorkArea) {
  Open();
  const Place place = platform_.screen.WindowPlace(dialog().Hwnd());
  const Place area = platform_.screen.WorkArea();
  EXPECT_EQ(place.left + place.width / 2, area.left + area.width / 2);
  EXPECT_EQ(place.top + place.height / 2, area.top + area.height / 2);
}

TEST_F(dlgRepPrintTest, ShowsTheProgressOfLoadingTheSequencesAndEndsIt) {
  report_.type = kSequenceReport;
  Open();
  EXPECT_THAT(host_->book.progress.titles, ElementsAre("Loading Print Sequences"));
  EXPECT_FALSE(host_->book.progress.open);
  EXPECT_EQ(host_->factory.LastSequence()->Report(), &report_);
  EXPECT_EQ(dialog().Sequences(), &host_->book.PrintSequences());
}

TEST_F(dlgRepPrintTest, EndsTheProgressWhenTheSequencesCannotBeLoaded) {
  report_.type = kSequenceReport;
  host_->record.FailOn("PrintSequence.LoadSequences", 1, Failure(FailureNumber::kDeviceError, "gone", "Sequences"));
  Open();
  EXPECT_FALSE(host_->book.progress.open);
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_EQ(LogErrors()[0].message, "Sequences - dlgRepPrint:SetFields");
  EXPECT_EQ(dialog().Page(), 2) << "the next statements ran";
}

// --- Styles ----------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, OffersTheStylesThatTheDataLevelAllows) {
  struct Row {
    Integer level;
    std::vector<bool> enabled;
  };
  for (const Row& row :
       {Row{1, {true, true, true, true}}, {2, {false, true, true, true}}, {3, {false, false, true, true}}}) {
    UseBook(AtLevel(row.level));
    report_.type = kStyledReport;
    Open();
    for (Integer style = 1; style <= 4; ++style) {
      EXPECT_EQ(dialog().OptStyle(style).Enabled(), row.enabled[static_cast<std::size_t>(style - 1)])
          << row.level << " " << style;
    }
    EXPECT_EQ(dialog().OptStyle.Selected(), row.level) << "the style of the data level is preselected";
  }
}

TEST_F(dlgRepPrintTest, OffersNeitherDayNorWeekAtTheDatesOfABookOfPeriods) {
  UseBook(AtLevel(kPeriodLevel));
  Open();
  EXPECT_THAT(EnabledLengths(), ElementsAre(3, 4, 5, 6, 7, 8));
  EXPECT_EQ(Length(), 3);
}

TEST_F(dlgRepPrintTest, TakesThePeriodsOutOfACalendarWithoutThem) {
  host_->book.answers.calendar_type = Integer{1};
  report_.type = kStyledReport;
  Open();
  EXPECT_FALSE(dialog().OptStyle(3).Enabled());
  ChooseStyle(4);
  Next();
  Next();
  EXPECT_THAT(EnabledLengths(), ElementsAre(1, 2, 4, 5, 6, 7, 8));
}

TEST_F(dlgRepPrintTest, OpensACalendarWithoutPeriodsOnTheQuarter) {
  host_->book.answers.calendar_type = Integer{1};
  dialog().SetInitialLength(kWeekLength);
  Open();
  EXPECT_EQ(Length(), kQuarterLength) << "its choice overwrites the initial length";
  dialog_.reset();
  dialog().SetForcedLength(kWeekLength);
  Open();
  EXPECT_EQ(Length(), kWeekLength);
}

TEST_F(dlgRepPrintTest, PreselectsTheForcedStyleBeforeTheInitialOne) {
  report_.type = kStyledReport;
  dialog().SetInitialStyle(2);
  Open();
  EXPECT_EQ(dialog().OptStyle.Selected(), 2);
  dialog_.reset();
  dialog().SetInitialStyle(2);
  dialog().SetForcedStyle(3);
  Open();
  EXPECT_EQ(dialog().OptStyle.Selected(), 3);
  EXPECT_EQ(dialog().InitialStyle(), 3) << "each choice overwrites it";
}

TEST_F(dlgRepPrintTest, LogsAStyleThatDoesNotExist) {
  report_.type = kStyledReport;
  dialog().SetForcedStyle(7);
  Open();
  ASSERT_FALSE(LogErrors().empty());
  EXPECT_THAT(LogErrors()[0].message, EndsWith(" - dlgRepPrint:SetFields"));
  EXPECT_EQ(dialog().Page(), 1);
}

TEST_F(dlgRepPrintTest, ClearsTheStylesOfAReportBySequence) {
  report_.type = kSequenceReport;
  dialog().OptStyle.SetValue(2, true);
  Open();
  EXPECT_EQ(dialog().OptStyle.Selected(), 0);
}

TEST_F(dlgRepPrintTest, OffersTranspositionToStyledReportsInTheirOwnPrintMode) {
  for (const Integer type : std::initializer_list<Integer>{1, 2, 9}) {
    for (const Integer mode : std::initializer_list<Integer>{0, 1}) {
      for (const bool transposed : {false, true}) {
        dialog_.reset();
        report_.type = type;
        report_.print_mode = mode;
        report_.transpose = transposed;
        Open();
        const bool offered = type == 1 && mode == 0;
        EXPECT_EQ(dialog().FrmTranspose.Visible(), offered);
        EXPECT_EQ(dialog().btnTranspose.Selected(), offered && transposed ? 1 : 0);
      }
    }
  }
}

TEST_F(dlgRepPrintTest, TransposesAStyledReportWhereTheCallerWantsIt) {
  report_.type = kStyledReport;
  dialog().SetInitialTranspose(true);
  Open();
  EXPECT_TRUE(dialog().btnTranspose.Value(1));
  dialog_.reset();
  report_.type = kSequenceReport;
  dialog().SetInitialTranspose(true);
  Open();
  EXPECT_FALSE(dialog().btnTranspose.Value(1));
}

TEST_F(dlgRepPrintTest, EnablesTranspositionAndLinesWithoutDataByStyle) {
  for (const Long kind : {0, 2}) {
    dialog_.reset();
    report_.type = kStyledReport;
    dialog().SetLineKind(kind);
    Open();
    for (Integer style = 1; style <= 4; ++style) {
      ChooseStyle(style);
      EXPECT_EQ(dialog().btnTranspose(0).Enabled(), style < 4);
      EXPECT_EQ(dialog().btnTranspose(1).Enabled(), style < 4);
      EXPECT_EQ(dialog().chkNoData.Enabled(), style == 4 || kind != 2) << style << " " << kind;
    }
  }
}

TEST_F(dlgRepPrintTest, TakesTheSwitchesFromTheReport) {
  for (const bool on : {false, true}) {
    dialog_.reset();
    report_.type = kSequenceReport;
    report_.print_no_data = on;
    report_.new_page = !on;
    Open();
    EXPECT_EQ(dialog().chkNoData.Checked(), on);
    EXPECT_EQ(dialog().chkNewPage.Checked(), !on);
  }
}

TEST_F(dlgRepPrintTest, OpensWithLinesWithoutDataByStyleAndLineKind) {
  struct Row {
    Integer style;
    Long kind;
    bool enabled;
  };
  for (const Row& row : {Row{4, 2, true}, {1, 2, false}, {1, 0, true}, {3, 1, true}}) {
    dialog_.reset();
    report_.type = kStyledReport;
    dialog().SetForcedStyle(row.style);
    dialog().SetLineKind(row.kind);
    Open();
    EXPECT_EQ(dialog().chkNoData.Enabled(), row.enabled) << row.style << " " << row.kind;
  }
}

// --- Sequences -------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, PreparesTheSequencesOnceForAStyle) {
  report_.type = kStyledReport;
  Open();
  EXPECT_FALSE(dialog().SequenceReady());
  EXPECT_THAT(SequenceCalls(), ElementsAre("LoadSequences"));
  Next();
  EXPECT_TRUE(dialog().SequenceReady());
  EXPECT_THAT(SequenceCalls(), ElementsAre("SetSequenceFixed false", "RefreshSequences"));
  Next();
  EXPECT_THAT(SequenceCalls(), ElementsAre("ApplySequences"));
  Back();
  EXPECT_THAT(SequenceCalls(), IsEmpty()) << "they are ready";
  Back();
  EXPECT_THAT(SequenceCalls(), ElementsAre("ApplySequences"));
  ChooseStyle(2);
  EXPECT_FALSE(dialog().SequenceReady());
  Next();
  EXPECT_THAT(SequenceCalls(), ElementsAre("SetSequenceFixed false", "RefreshSequences"));
}

TEST_F(dlgRepPrintTest, FixesTheSequenceOfAReportOfOneLine) {
  report_.type = kStyledReport;
  dialog().SetForcedStyle(4);
  Open();
  SequenceCalls();
  Next();
  EXPECT_THAT(SequenceCalls(), ElementsAre("SetSequenceFixed true", "RefreshSequences"));
  EXPECT_THAT(report_.done, ElementsAre("RestoreOrigSequence"));
}

TEST_F(dlgRepPrintTest, PassesOverTheSequencesWithinAPrintJob) {
  report_.type = kStyledReport;
  report_.in_print_job = true;
  Open();
  SequenceCalls();
  Next();
  EXPECT_EQ(dialog().Page(), 3);
  EXPECT_THAT(VisiblePages(), ElementsAre(3));
  EXPECT_THAT(report_.done, ElementsAre("RestoreOrigSequence"));
  EXPECT_THAT(SequenceCalls(), ElementsAre("SetSequenceFixed true", "RefreshSequences", "ApplySequences"));
}

TEST_F(dlgRepPrintTest, SkipsForwardsOnly) {
  report_.type = kStyledReport;
  report_.in_print_job = true;
  Open();
  Next();
  Back();
  EXPECT_EQ(dialog().Page(), 3) << "back to page 2 is passed over forwards again";
}

TEST_F(dlgRepPrintTest, OpensAReportBySequenceWithinAPrintJobAtItsDates) {
  report_.type = kSequenceReport;
  report_.in_print_job = true;
  Open();
  EXPECT_EQ(dialog().Page(), 3);
  EXPECT_TRUE(dialog().Command1[kBackButton].Enabled());
}

TEST_F(dlgRepPrintTest, PassesOverTheStyleOfASortedReport) {
  report_.type = kStyledReport;
  report_.sort_column = 2;
  Open();
  EXPECT_EQ(dialog().Page(), 2);
  EXPECT_THAT(VisiblePages(), ElementsAre(2));
  EXPECT_EQ(dialog().OptStyle.Selected(), 4);
  EXPECT_FALSE(dialog().Command1[kBackButton].Enabled());
  Next();
  EXPECT_EQ(dialog().Page(), 3);
  EXPECT_FALSE(dialog().Command1[kBackButton].Enabled());
}

TEST_F(dlgRepPrintTest, ShowsTheStyleOfAReportSortedByItsFirstColumn) {
  report_.type = kStyledReport;
  report_.sort_column = 1;
  Open();
  EXPECT_EQ(dialog().Page(), 1);
}

TEST_F(dlgRepPrintTest, AppliesTheSequencesOfEveryReportAtItsDates) {
  report_.type = 5;
  Open();
  EXPECT_THAT(SequenceCalls(), ElementsAre("ApplySequences"));
}

// --- Lengths ---------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, OffersTheLengthsAboveTheStyle) {
  struct Row {
    Integer style;
    bool same_level;
    Integer initial, forced, chosen;
    std::vector<Integer> enabled;
  };
  const Row rows[] = {
      {1, true, 0, 0, 1, {1, 2, 3, 4, 5, 6, 7, 8}}, {1, true, 5, 0, 5, {1, 2, 3, 4, 5, 6, 7, 8}},
      {2, true, 1, 0, 2, {2, 3, 4, 5, 6, 7, 8}},    {2, true, 2, 0, 2, {2, 3, 4, 5, 6, 7, 8}},
      {3, true, 0, 4, 3, {3, 4, 5, 6, 7, 8}},       {3, true, 0, 5, 5, {3, 4, 5, 6, 7, 8}},
      {1, false, 0, 0, 2, {2, 3, 4, 5, 6, 7, 8}},   {1, false, 1, 0, 2, {2, 3, 4, 5, 6, 7, 8}},
      {2, false, 3, 0, 3, {3, 4, 5, 6, 7, 8}},      {3, false, 3, 0, 4, {4, 5, 6, 7, 8}},
      {3, false, 7, 0, 7, {4, 5, 6, 7, 8}},         {3, false, 7, 5, 5, {4, 5, 6, 7, 8}},
      {2, false, 6, 3, 6, {3, 4, 5, 6, 7, 8}},      {4, false, 0, 0, 1, {1, 2, 3, 4, 5, 6, 7, 8}},
      {4, true, 6, 0, 6, {1, 2, 3, 4, 5, 6, 7, 8}}, {4, true, 6, 2, 2, {1, 2, 3, 4, 5, 6, 7, 8}},
  };
  for (const Row& row : rows) {
    dialog_.reset();
    dialog().SetAllowSameLevel(row.same_level);
    dialog().SetInitialLength(row.initial);
    dialog().SetForcedLength(row.forced);
    OpenDatesOfStyle(row.style);
    const Text which = std::to_string(row.style) + (row.same_level ? " same " : " above ") +
                       std::to_string(row.initial) + " " + std::to_string(row.forced);
    EXPECT_EQ(Length(), row.chosen) << which;
    EXPECT_EQ(EnabledLengths(), row.enabled) << which;
  }
}

TEST_F(dlgRepPrintTest, LimitsTheLengthsOfAnExportByTheDataLevelAlone) {
  struct Row {
    Integer level, initial, forced, chosen;
  };
  for (const Row& row : {Row{1, 0, 0, 1}, {2, 0, 0, 2}, {3, 0, 0, 3}, {1, 6, 0, 6}, {1, 6, 8, 8}, {2, 1, 0, 1}}) {
    UseBook(AtLevel(row.level));
    dialog().SetInitialLength(row.initial);
    dialog().SetForcedLength(row.forced);
    Open();
    EXPECT_EQ(Length(), row.chosen) << row.level << " " << row.initial << " " << row.forced;
    EXPECT_EQ(EnabledLengths().front(), row.level);
  }
}

TEST_F(dlgRepPrintTest, LimitsTheLengthsOfDatesInColumns) {
  struct Row {
    Integer style, initial, chosen;
    std::vector<Integer> enabled;
  };
  const Row rows[] = {{1, 0, 2, {1, 2, 7}},
                      {1, 7, 7, {1, 2, 7}},
                      {1, 6, 2, {1, 2, 7}},
                      {2, 0, 3, {2, 3, 4, 7}},
                      {2, 7, 7, {2, 3, 4, 7}},
                      {3, 0, 4, {3, 4, 5, 6, 7}},
                      {3, 8, 4, {3, 4, 5, 6, 7}},
                      {4, 0, 5, {1, 2, 3, 4, 5, 6, 7, 8}},
                      {4, 7, 7, {1, 2, 3, 4, 5, 6, 7, 8}}};
  for (const Row& row : rows) {
    dialog_.reset();
    dialog().SetAllowSameLevel(true);
    dialog().SetInitialTranspose(true);
    dialog().SetInitialLength(row.initial);
    OpenDatesOfStyle(row.style);
    EXPECT_EQ(Length(), row.chosen) << row.style << " " << row.initial;
    EXPECT_EQ(EnabledLengths(), row.enabled) << row.style << " " << row.initial;
  }
}

TEST_F(dlgRepPrintTest, LimitsTheLengthsByDividedColumns) {
  struct Row {
    Integer columns, max_length;
    bool last_year_shown;
  };
  for (const bool in_job : {false, true}) {
    for (const Row& row :
         {Row{1, 7, false}, {2, 7, false}, {3, 3, false}, {4, 2, false}, {5, 2, false}, {0, 8, true}, {6, 8, true}}) {
      dialog_.reset();
      report_.uses_last_year = !in_job;
      report_.in_print_job = in_job;
      report_.sub_column_type = row.columns;
      OpenOn(Day(2004, 5, 12));
      EXPECT_EQ(dialog().MaxLength(), row.max_length) << row.columns;
      EXPECT_EQ(EnabledLengths().back(), row.max_length) << row.columns;
      EXPECT_EQ(dialog().cmbYear[1].Visible(), row.last_year_shown) << row.columns;
      EXPECT_EQ(dialog().lblYear[1].Visible(), row.last_year_shown) << row.columns;
    }
  }
}

TEST_F(dlgRepPrintTest, LimitsNothingByColumnsForAReportOfOneYear) {
  report_.sub_column_type = 4;
  Open();
  EXPECT_EQ(dialog().MaxLength(), 8);
  EXPECT_FALSE(dialog().cmbYear[1].Visible());
}

// Filling takes all years away from a report of two years, and its date page gives them back: meant.
TEST_F(dlgRepPrintTest, OffersAllYearsAgainOnTheDatePageOfTwoYears) {
  report_.uses_last_year = true;
  report_.type = kSequenceReport;
  Open();
  EXPECT_FALSE(dialog().optLength(kAllLength).Enabled());
  Next();
  EXPECT_TRUE(dialog().optLength(kAllLength).Enabled());
}

// --- Buttons ---------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, WalksThroughThePagesAndBack) {
  report_.type = kStyledReport;
  Open();
  EXPECT_EQ(dialog().Command1[kNextButton].Caption(), "&Next >");
  Next();
  EXPECT_EQ(dialog().Command1[kNextButton].Caption(), "&Next >");
  EXPECT_TRUE(dialog().Command1[kBackButton].Enabled());
  Next();
  EXPECT_EQ(dialog().Command1[kNextButton].Caption(), "&Print");
  EXPECT_TRUE(dialog().Visible());
  Back();
  EXPECT_EQ(dialog().Page(), 2);
  Back();
  EXPECT_EQ(dialog().Page(), 1);
  EXPECT_FALSE(dialog().Command1[kBackButton].Enabled());
}

TEST_F(dlgRepPrintTest, TellsTheReportWhatWasChosen) {
  report_.type = kStyledReport;
  Open();
  ChooseStyle(2);
  EXPECT_TRUE(dialog().btnTranspose(1).UserClick());
  Next();
  EXPECT_TRUE(dialog().chkNewPage.UserClick());
  Next();
  SequenceCalls();
  Next();
  EXPECT_THAT(report_.done, ElementsAre("LineStyle 2", "NewPagePerAccount 1", "PrintNoData 0", "Transpose 1"));
  EXPECT_THAT(SequenceCalls(), ElementsAre("ApplySequences"));
  EXPECT_FALSE(dialog().Cancelled());
  EXPECT_FALSE(dialog().Visible());
}

TEST_F(dlgRepPrintTest, TellsAReportBySequenceOfNoStyle) {
  report_.type = kSequenceReport;
  Open();
  Next();
  Next();
  EXPECT_THAT(report_.done, Contains("LineStyle 0"));
}

TEST_F(dlgRepPrintTest, TellsAReportOfDatesNoStyleAtAll) {
  report_.type = 5;
  Open();
  Next();
  EXPECT_THAT(report_.done, ElementsAre("NewPagePerAccount 0", "PrintNoData 0", "Transpose 0"));
}

TEST_F(dlgRepPrintTest, WarnsOfMissingSequencesAndPrintsAllTheSame) {
  report_.type = kSequenceReport;
  report_.sequences = 0;
  Open();
  Next();
  Next();
  ASSERT_THAT(platform_.boxes.Shown(), SizeIs(1));
  EXPECT_EQ(platform_.boxes.Shown()[0].text, "No Print Sequences are defined, not data will be output.");
  EXPECT_EQ(platform_.boxes.Shown()[0].style, kExclamationIcon | kOkOnly);
  EXPECT_EQ(platform_.boxes.Shown()[0].caption, "Tallybook");
  EXPECT_FALSE(dialog().Cancelled());
}

TEST_F(dlgRepPrintTest, CancelsByItsButtonAndByItsCloseBox) {
  Open();
  Press(kCancelButton);
  EXPECT_TRUE(dialog().Cancelled());
  EXPECT_FALSE(dialog().Visible());
  dialog_.reset();
  Open();
  EXPECT_FALSE(dialog().UserClose()) << "the close is refused in favour of the cancel";
  EXPECT_TRUE(dialog().Cancelled());
  EXPECT_FALSE(dialog().Visible());
  EXPECT_TRUE(dialog().IsLoaded());
}

TEST_F(dlgRepPrintTest, IsCancelledAnewWhenItIsFilledAgain) {
  Open();
  Next();
  EXPECT_FALSE(dialog().Cancelled());
  Open();
  EXPECT_TRUE(dialog().Cancelled());
}

TEST_F(dlgRepPrintTest, HelpsWithItsTopicByButtonAndKey) {
  Open();
  Press(kHelpButton);
  EXPECT_THAT(host_->record.ArgumentsOf("App.HelpTopic"), ElementsAre("11000"));
  EXPECT_FALSE(dialog().Command1[kNextButton].UserKeyDown(112)) << "the key is consumed";
  EXPECT_THAT(host_->record.ArgumentsOf("App.HelpTopic"), ElementsAre("11000", "11000"));
  EXPECT_TRUE(dialog().Command1[kNextButton].UserKeyDown(113));
  EXPECT_TRUE(dialog().Visible());
}

TEST_F(dlgRepPrintTest, HasNoHelpBeforeItKnowsItsReport) {
  dialog().Show();
  Press(kHelpButton);
  EXPECT_FALSE(dialog().Command1[kHelpButton].UserKeyDown(kF1Key));
  EXPECT_THAT(host_->record.ArgumentsOf("App.HelpTopic"), ::testing::IsEmpty());
  EXPECT_TRUE(dialog().Visible());
}

TEST_F(dlgRepPrintTest, KeepsItsLooksWhileAPageChanges) {
  report_.type = kStyledReport;
  Open();
  const auto window = [&]() -> const ScriptedScreen::Window& { return *platform_.screen.Find(dialog().Hwnd()); };
  const int before = window().freezes;
  int changes = 0;
  for (Frame& page : dialog().FrmPage) {
    page.Changed.Connect([&] {
      ++changes;
      EXPECT_TRUE(window().frozen);
    });
  }
  Next();
  EXPECT_EQ(changes, 2) << "one page goes, one comes";
  EXPECT_EQ(window().freezes, before + 1);
  EXPECT_FALSE(window().frozen);
  host_->record.FailOn("PrintSequence.ApplySequences", 1, Failure(FailureNumber::kDeviceError, "gone", "Sequences"));
  Next();
  EXPECT_FALSE(window().frozen) << "after a failure too";
}

TEST_F(dlgRepPrintTest, HandlesPendingInputAfterEachButton) {
  Open();
  const int looks = platform_.input.Looks();
  Press(kHelpButton);
  EXPECT_GT(platform_.input.Looks(), looks);
}

TEST_F(dlgRepPrintTest, StaysOpenWhenTheReportCannotBeTold) {
  report_.type = kSequenceReport;
  Open();
  Next();
  host_->record.FailOn("PrintSequence.ApplySequences", 1, Failure(FailureNumber::kDeviceError, "gone", "Sequences"));
  Next();
  EXPECT_TRUE(dialog().Visible());
  EXPECT_TRUE(dialog().Cancelled());
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_EQ(LogErrors()[0].message, "Sequences-dlgRepPrint-Command1_Click");
  Next();
  EXPECT_FALSE(dialog().Cancelled());
}

TEST_F(dlgRepPrintTest, IsShownLikeAModalDialog) {
  dialog().SetFields(report_, "Export", "Export Data", 11000);
  platform_.user.On("dlgRepPrint", [&](Form&) { ChooseLength(kPeriodLength); })
      .Click("dlgRepPrint", "Command1", kNextButton);
  ShowLikeModal(dialog(), 0);
  EXPECT_FALSE(dialog().Cancelled());
  EXPECT_THAT(Range(), ElementsAre("2004-02-01", "2004-02-29"));
}

// --- From the command line -------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, FinishesWithoutBeingShownFromTheCommandLine) {
  int shown = 0;
  dialog().Activate.Connect([&] { ++shown; });
  report_.type = kStyledReport;
  report_.command_line = true;
  report_.sequences = 0;
  dialog().SetInitialLength(kQuarterLength);
  dialog().SetFields(report_, "Sales", "Print", 0);
  EXPECT_EQ(shown, 0);
  EXPECT_FALSE(dialog().Visible());
  EXPECT_FALSE(dialog().Cancelled());
  EXPECT_EQ(dialog().Page(), 3);
  EXPECT_THAT(Range(), ElementsAre("2004-01-01", "2004-03-31"));
  EXPECT_THAT(report_.done, ElementsAre("LineStyle 1", "NewPagePerAccount 0", "PrintNoData 0", "Transpose 0"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty()) << "nobody is there to be warned";
}

// --- Idle time -------------------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, ClosesAfterItsIdleTime) {
  host_->app.idle_minutes = 10;
  Open();
  EXPECT_TRUE(dialog().Timer1.Enabled());
  EXPECT_EQ(dialog().Timer1.Interval(), 15'000);
  platform_.clock.Advance(9 * 60);
  dialog().Timer1.Elapse();
  EXPECT_TRUE(dialog().Visible());
  platform_.clock.Advance(2 * 60);
  dialog().Timer1.Elapse();
  EXPECT_FALSE(dialog().Visible());
  EXPECT_TRUE(dialog().Cancelled());
  EXPECT_TRUE(host_->app.idle_expired);
}

TEST_F(dlgRepPrintTest, ClosesAtATickOfItsTimerWhileNobodyPressesAKey) {
  host_->app.idle_minutes = 10;
  dialog().SetFields(report_, "Export", "Export Data", 11000);
  platform_.user.Do([&] { platform_.clock.Advance(14); }).Wait(2).Do([&] {
    EXPECT_TRUE(dialog().Visible());
    platform_.clock.Advance(10 * 60);
  });
  ShowLikeModal(dialog(), 0);
  EXPECT_TRUE(dialog().Cancelled());
  EXPECT_TRUE(host_->app.idle_expired);
}

TEST_F(dlgRepPrintTest, StaysOpenForEverWithoutAnIdleTime) {
  Open();
  platform_.clock.Advance(1e7);
  dialog().Timer1.Elapse();
  EXPECT_TRUE(dialog().Visible());
  EXPECT_FALSE(host_->app.idle_expired);
}

TEST_F(dlgRepPrintTest, CountsItsIdleTimeFromTheLastAct) {
  host_->app.idle_minutes = 10;
  report_.type = kStyledReport;
  Open();
  const std::vector<std::function<void()>> acts = {[&] { ChooseStyle(2); },
                                                   [&] { Next(); },
                                                   [&] { Next(); },
                                                   [&] { ChooseLength(kPeriodLength); },
                                                   [&] { ChooseYear(0, 0); },
                                                   [&] { ChooseDate(1, Day(2003, 7, 1)); },
                                                   [&] { Press(kHelpButton); }};
  for (const auto& act : acts) {
    platform_.clock.Advance(9 * 60);
    act();
    EXPECT_EQ(dialog().LastActivity(), Now());
    dialog().Timer1.Elapse();
    EXPECT_TRUE(dialog().Visible());
  }
}

TEST_F(dlgRepPrintTest, ClosesWhenTheHostSaysThatTimeHasRunOut) {
  Open();
  host_->app.idle_expired = true;
  dialog().Timer1.Elapse();
  EXPECT_FALSE(dialog().Visible());
}

TEST_F(dlgRepPrintTest, ExpiresNothingWhileItIsHidden) {
  host_->app.idle_minutes = 1;
  dialog().SetFields(report_, "Sales", "", 0);
  platform_.clock.Advance(600);
  dialog().Timer1.Elapse();
  EXPECT_FALSE(host_->app.idle_expired);
}

TEST_F(dlgRepPrintTest, LogsAFailureOfItsTimerAndGoesOn) {
  host_->app.idle_minutes = 1;
  Open();
  platform_.clock.Advance(600);
  host_->record.FailOn("App.SetIdleExpired", 1, Failure(FailureNumber::kDeviceError, "gone", "Host"));
  dialog().Timer1.Elapse();
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_EQ(LogErrors()[0], (MemoryLog::Error{"Host-dlgRepPrint-Timer1_Timer", 10, -1}));
  EXPECT_TRUE(dialog().Visible());
}

// --- Failures and the end --------------------------------------------------------------------------------------------

TEST_F(dlgRepPrintTest, GoesOnAfterEachFailingQueryOfItsReport) {
  const Text queries[] = {"ReportType", "ReportClass",   "FileNum",    "PrintMode",   "Transpose",
                          "inPrintJob", "SubColumnType", "SortColumn", "PrintNoData", "NewPagePerAccount"};
  for (const Text& query : queries) {
    dialog_.reset();
    LogErrors().clear();
    report_.type = kStyledReport;
    report_.uses_last_year = query == "SubColumnType";
    report_.failing_query = query;
    Open();
    EXPECT_TRUE(dialog().Visible()) << query;
    EXPECT_FALSE(VisiblePages().empty()) << query;
    ASSERT_FALSE(LogErrors().empty() && query != "inPrintJob") << query;
    for (const MemoryLog::Error& error : LogErrors()) {
      EXPECT_THAT(error.message,
                  ::testing::AnyOf("TestReport - dlgRepPrint:SetFields", "TestReport-dlgRepPrint-SetFrameContents",
                                   "TestReport-dlgRepPrint-BuildDateList"))
          << query;
      EXPECT_GT(error.line_number, 0) << query;
    }
  }
}

TEST_F(dlgRepPrintTest, NamesThePageChangeInItsLog) {
  report_.type = kStyledReport;
  Open();
  report_.failing_query = "inPrintJob";
  Next();
  ASSERT_THAT(LogErrors(), SizeIs(1));
  EXPECT_EQ(LogErrors()[0], (MemoryLog::Error{"TestReport-dlgRepPrint-SetFrameContents", 40, -1}));
  EXPECT_EQ(dialog().Page(), 2) << "the next statements ran";
  EXPECT_TRUE(dialog().SequenceReady());
}

TEST_F(dlgRepPrintTest, StandsWithoutACalendarThatTheHostCannotMake) {
  host_->record.FailOn("NewFiscalCalendar", 1, Failure(FailureNumber::kOutOfMemory, "none", "Host"));
  Open();
  ASSERT_FALSE(LogErrors().empty());
  EXPECT_EQ(LogErrors()[0], (MemoryLog::Error{"Host - dlgRepPrint:SetFields", 10, -1}));
  EXPECT_EQ(LabelText(1), "");
  Next();
  EXPECT_TRUE(dialog().Cancelled()) << "there are no dates to finish with";
}

// Every call of the host fails in turn while a report is filled, walked through and finished.
TEST_F(dlgRepPrintTest, SurvivesTheFailureOfAnySingleCallOfTheHost) {
  for (long long nth = 1;; ++nth) {
    host_ = SmallBook();
    UseBook({});
    report_.type = kStyledReport;
    report_.uses_last_year = true;
    dialog().SetCurrentDate(Day(2005, 5, 12));
    host_->record.FailOn(kAnyOperation, nth, Failure(FailureNumber::kDeviceError, "gone", "Host"));
    try {
      Open();
      for (int i = 0; i < 3; ++i) (void)dialog().Command1[kNextButton].UserClick();
      dialog().Timer1.Elapse();
    } catch (const Failure& failure) {
      // The application object is what there is to tell by; without it nothing can be told.
      EXPECT_EQ(failure.Description(), "gone");
      EXPECT_THAT(LogErrors(), IsEmpty());
      EXPECT_LE(nth, 3);
    }
    if (!host_->record.AllFaultsStruck()) break;
    EXPECT_EQ(VisiblePages().size() > 1, false) << nth;
    EXPECT_FALSE(host_->book.progress.open && nth > 3 && LogErrors().empty()) << nth;
    ASSERT_LT(nth, 5000);
  }
}

TEST_F(dlgRepPrintTest, LetsGoOfEverythingWhenItIsUnloaded) {
  report_.type = kSequenceReport;
  Open();
  Next();
  Next();
  const Date end = dialog().EndDate();
  dialog().Unload();
  EXPECT_THAT(OpenForms(), Not(Contains(&dialog())));
  EXPECT_FALSE(dialog().Timer1.Enabled());
  EXPECT_EQ(dialog().SequenceControl(), nullptr);
  EXPECT_EQ(dialog().Sequences(), nullptr);
  EXPECT_EQ(dialog().EndDate(), end) << "the result stays";
  EXPECT_THAT([&] { (void)dialog().DateRangeText(); }, FailsWith(FailureNumber::kObjectNotSet));
}

}  // namespace
}  // namespace tallybook::testing
