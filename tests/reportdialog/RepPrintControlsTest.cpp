#include "reportdialog/RepPrintControls.h"
#include "tests/reportdialog/RepPrintFixture.h"

namespace tallybook::testing {
namespace {

class RepPrintControlsTest : public ::testing::Test {
 protected:
  [[nodiscard]] Text CaptionOf(const Text& name, Integer index) const {
    const Control* const control = controls_.Find(name, index);
    return control == nullptr ? "no " + name : control->Caption();
  }
  ScriptedPlatform platform_{FilesIn::kMemory};
  RepPrintControls controls_;
};

TEST_F(RepPrintControlsTest, BearTheirDesignNamesAndCaptions) {
  EXPECT_EQ(controls_.Caption(), "Print a Report");
  EXPECT_EQ(CaptionOf("FrmPage", 1), "Style of Report:");
  EXPECT_EQ(CaptionOf("FrmPage", 2), "Print Sequence:");
  EXPECT_EQ(CaptionOf("FrmPage", 3), "Dates:");
  EXPECT_EQ(CaptionOf("lblStyle", 0), "Time Series:");
  EXPECT_EQ(CaptionOf("lblStyle", 1), "Account Summary:");
  EXPECT_EQ(CaptionOf("OptStyle", 1), "&Day-by-Day");
  EXPECT_EQ(CaptionOf("OptStyle", 2), "&Week-by-Week");
  EXPECT_EQ(CaptionOf("OptStyle", 3), "&Month-by-Month (Period-by-Period)");
  EXPECT_EQ(CaptionOf("OptStyle", 4), "&One Line per Account/Grouping/Total for one period of time");
  EXPECT_EQ(CaptionOf("btnTranspose", 0), "Dates are in Rows (Normal)");
  EXPECT_EQ(CaptionOf("btnTranspose", 1), "Dates are in Columns (Transposed)");
  EXPECT_EQ(CaptionOf("chkNoData", -1), "&Print Lines with No Data");
  EXPECT_EQ(CaptionOf("chkNewPage", -1), "Print each &Account in a group on a separate page");
  EXPECT_EQ(CaptionOf("lblYear", 0), "&This Year:");
  EXPECT_EQ(CaptionOf("lblYear", 1), "&Last Year:");
  EXPECT_EQ(CaptionOf("Command1", 0), "&Help");
  EXPECT_EQ(CaptionOf("Command1", 1), "&Cancel");
  EXPECT_EQ(CaptionOf("Command1", 2), "Next >");
  EXPECT_EQ(CaptionOf("Command1", 3), "< Back");
}

TEST_F(RepPrintControlsTest, NameTheLengths) {
  const Text captions[] = {"&Day",       "&Week", "&Month or Period", "&Quarter",
                           "&Half Year", "&Year", "&Custom Range",    "&All Years in System"};
  for (Integer i = 1; i <= 8; ++i) EXPECT_EQ(CaptionOf("optLength", i), captions[i - 1]);
}

TEST_F(RepPrintControlsTest, StandOnTheirPages) {
  controls_.Show();
  controls_.PageFrame(kDatePage).SetVisible(true);
  EXPECT_TRUE(controls_.optLength(1).IsReachable());
  EXPECT_TRUE(controls_.Calendar[0].IsReachable());
  EXPECT_FALSE(controls_.OptStyle(1).IsReachable());
  EXPECT_FALSE(controls_.chkNoData.IsReachable());
  controls_.frmDate[0].SetVisible(false);
  EXPECT_FALSE(controls_.Calendar[0].IsReachable());
  EXPECT_TRUE(controls_.Command1[0].IsReachable());
}

TEST_F(RepPrintControlsTest, HaveThreePages) {
  EXPECT_EQ(controls_.PageCount(), 3);
  EXPECT_THAT([&] { (void)controls_.PageFrame(0); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { (void)controls_.PageFrame(4); }, FailsWith(FailureNumber::kRange));
}

}  // namespace
}  // namespace tallybook::testing
