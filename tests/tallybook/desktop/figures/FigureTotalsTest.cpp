#include <gtest/gtest.h>

#include "tallybook/desktop/figures/FigureTotals.h"
#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using testing::Day;

class FigureTotalsTest : public testing::FiguresFixture {
 protected:
  void ExpectTotalsOfAllRows() {
    FigureTotals totals(Table());
    totals.Start();
    while (totals.Work(std::chrono::milliseconds(0))) {
    }
    for (int column = 0; column < Table().Columns(); ++column) {
      Double sum = 0;
      for (int row = 0; row < Table().Rows(); ++row) sum += Table().Value(row, column);
      EXPECT_EQ(totals.Of(column), sum) << "column " << column;
    }
  }
};

TEST_F(FigureTotalsTest, AreTheSumsOfTheRowsShownInEveryView) {
  for (const FigureView view : {FigureView::kAccount, FigureView::kDate, FigureView::kField}) {
    for (const Integer level : {kDayLevel, kWeekLevel, engine::kQuarterLevel}) {
      for (const Integer stretch : {kPeriodLevel, engine::kYearLevel, engine::kAllYearsLevel}) {
        Choose(view, level, stretch, Day(2003, 1, 5));
        ExpectTotalsOfAllRows();
      }
    }
  }
}

TEST_F(FigureTotalsTest, AreUnknownUntilAllAccountsHaveBeenAdded) {
  Choose(FigureView::kDate, kDayLevel, kPeriodLevel);
  FigureTotals totals(Table());
  totals.Start();
  EXPECT_TRUE(totals.Work(std::chrono::milliseconds(0)));
  EXPECT_FALSE(totals.Of(0));
}

TEST_F(FigureTotalsTest, BeginAnewWhenTheBookHasChangedBetweenTwoParts) {
  Choose(FigureView::kDate, kDayLevel, kPeriodLevel);
  FigureTotals totals(Table());
  totals.Start();
  EXPECT_TRUE(totals.Work(std::chrono::milliseconds(0)));
  Write(101, Day(2003, 1, 1), 1, 99);
  Reader().Refresh();
  while (totals.Work(std::chrono::milliseconds(0))) {
  }
  EXPECT_EQ(totals.Of(0), 99);
}

}  // namespace
}  // namespace tallybook::desktop
