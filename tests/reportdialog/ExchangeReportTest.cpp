#include "exchange/CDataExchange.h"
#include "reportdialog/ExchangeReport.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// An exchange object whose report switch a test can turn.
class SwitchedExchange : public CDataExchange {
 public:
  using CDataExchange::CDataExchange;
  void PrintFromCommandLine() { SetCommandLinePrinting(true); }
};

class ExchangeReportTest : public ::testing::Test {
 protected:
  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  SwitchedExchange exchange_{host_->factory};
  ExchangeReport report_{exchange_};
};

TEST_F(ExchangeReportTest, AnswersAsAnExportOfDatesAlone) {
  exchange_.SetOwner(&host_->book);
  exchange_.SetReportType(1);
  EXPECT_EQ(&report_.Owner(), &host_->book);
  EXPECT_EQ(report_.ReportType(), 9);
  EXPECT_EQ(report_.ReportClass(), "");
  EXPECT_EQ(report_.PrintMode(), 9);
  report_.SetTranspose(true);
  EXPECT_FALSE(report_.Transpose());
  EXPECT_FALSE(report_.UsesLastYear());
  EXPECT_FALSE(report_.inPrintJob());
  EXPECT_EQ(report_.SubColumnType(), 0);
  EXPECT_EQ(report_.SortColumn(), 0);
  EXPECT_EQ(report_.NumSequences(), 0);
  EXPECT_FALSE(report_.CommandLinePrinting());
  report_.SetLineStyle(3);
  EXPECT_EQ(exchange_.LineStyle(), kDayLevel);
  report_.RestoreOrigSequence();
}

TEST_F(ExchangeReportTest, GivesTheNumberOfTheSelectedDefinition) {
  exchange_.SetOwner(&host_->book);
  EXPECT_EQ(report_.FileNum(), exchange_.FileNum());
  exchange_.SetFileNum(kSelected, 12);
  EXPECT_EQ(report_.FileNum(), 12);
}

TEST_F(ExchangeReportTest, OffersNoSwitchesOfLinesAndPages) {
  EXPECT_THAT([&] { (void)report_.PrintNoData(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { (void)report_.NewPagePerAccount(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { report_.SetPrintNoData(true); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([&] { report_.SetNewPagePerAccount(true); }, FailsWith(FailureNumber::kFeatureUnavailable));
}

TEST_F(ExchangeReportTest, CannotBeShownBeforeItHasADatabase) {
  dlgRepPrint dialog(host_->factory);
  EXPECT_THAT([&] { dialog.SetFields(report_, "Export", "Export", 0); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_TRUE(dialog.Cancelled());
}

TEST_F(ExchangeReportTest, GoesThroughTheDatePageAloneAndTouchesNothingElse) {
  exchange_.SetOwner(&host_->book);
  dlgRepPrint dialog(host_->factory);
  dialog.SetAllowSameLevel(true);
  dialog.SetCurrentDate(Day(2004, 5, 12));
  dialog.SetInitialLength(host_->book.DataLevel());
  dialog.SetFields(report_, "Export Data to File - North Shop Tallybook", "Export Data", 11000);
  dialog.Show();
  EXPECT_EQ(dialog.Caption(), "Export Data to File - North Shop Tallybook");
  EXPECT_EQ(dialog.HelpContext(), 11000);
  EXPECT_EQ(dialog.Page(), 3);
  EXPECT_EQ(dialog.optLength.Selected(), 1);
  EXPECT_EQ(dialog.Command1[kNextButton].Caption(), "&Export Data");
  EXPECT_FALSE(dialog.Command1[kBackButton].Enabled());
  EXPECT_FALSE(dialog.frmCompare.Visible());
  EXPECT_TRUE(dialog.Command1[kNextButton].UserClick());
  EXPECT_FALSE(dialog.Cancelled());
  EXPECT_FALSE(dialog.Visible());
  EXPECT_EQ(DateText(dialog.StartDate()), "2004-05-12");
  EXPECT_EQ(DateText(dialog.EndDate()), "2004-05-12");
  EXPECT_EQ(dialog.SequenceControl(), nullptr);
  EXPECT_EQ(host_->factory.LastSequence(), nullptr) << "no sequence control is even made";
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  EXPECT_THAT(host_->app.log.errors, IsEmpty());
}

TEST_F(ExchangeReportTest, FinishesByItselfFromTheCommandLine) {
  exchange_.SetOwner(&host_->book);
  exchange_.PrintFromCommandLine();
  dlgRepPrint dialog(host_->factory);
  dialog.SetCurrentDate(Day(2004, 5, 12));
  dialog.SetInitialLength(kPeriodLength);
  dialog.SetFields(report_, "Export", "Export", 0);
  EXPECT_FALSE(dialog.Visible());
  EXPECT_FALSE(dialog.Cancelled());
  EXPECT_EQ(DateText(dialog.StartDate()), "2004-05-01");
  EXPECT_EQ(DateText(dialog.EndDate()), "2004-05-31");
}

}  // namespace
}  // namespace tallybook::testing
