#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/figures/ChartData.h"
#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using testing::Day;
using ::testing::ElementsAre;

class ChartDataTest : public testing::FiguresFixture {
 protected:
  [[nodiscard]] ChartData Chart(bool against_year_before = true) {
    return ChartOf(Table(), {1, {1}, against_year_before}, DateText);
  }
};

TEST_F(ChartDataTest, ShowsTheFiscalYearInUnitsOfTheTablesLevel) {
  Choose(FigureView::kAccount, kPeriodLevel, kPeriodLevel, Day(2003, 7, 4));
  const ChartData chart = Chart();
  ASSERT_EQ(chart.units.size(), 12U);
  EXPECT_EQ(chart.units[0], "January 2003");
  EXPECT_EQ(chart.title, "100  Front of shop  2003");
  ASSERT_EQ(chart.lines.size(), 1U) << "the book has no year before";
  EXPECT_EQ(chart.lines[0].values[0], 4960);
  EXPECT_EQ(chart.lines[0].values[1], 0);
  EXPECT_EQ(chart.Most(), 4960);
  EXPECT_EQ(chart.Least(), 0);
}

TEST_F(ChartDataTest, StandsAgainstTheYearBeforeWhereTheBookHasOne) {
  Choose(FigureView::kAccount, kPeriodLevel, kPeriodLevel, Day(2004, 7, 4));
  const ChartData chart = Chart();
  ASSERT_EQ(chart.lines.size(), 2U);
  EXPECT_EQ(chart.lines[0].values[0], 0);
  EXPECT_TRUE(chart.lines[1].year_before);
  EXPECT_EQ(chart.lines[1].name, "Sales, year before");
  EXPECT_EQ(chart.lines[1].values[0], 4960);
  EXPECT_EQ(Chart(false).lines.size(), 1U);
}

TEST_F(ChartDataTest, SetsADayAgainstTheSameDayOfItsPeriodAndALeapDayAgainstNone) {
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel, Day(2004, 7, 4));
  const ChartData chart = Chart();
  ASSERT_EQ(chart.units.size(), 366U);
  const auto& before = chart.lines[1].values;
  EXPECT_EQ(before[30], 310);
  EXPECT_EQ(before[31 + 28], std::nullopt) << "February 29";
  EXPECT_EQ(before[31 + 29], 0);
}

TEST_F(ChartDataTest, HasItsCutsWhereTheCalendarHas) {
  Choose(FigureView::kAccount, kDayLevel, kPeriodLevel, Day(2003, 7, 4));
  const ChartData days = Chart();
  ASSERT_EQ(days.cuts.size(), 12U);
  EXPECT_EQ(days.cuts[2].unit, 31U + 28U);
  EXPECT_EQ(days.cuts[2].name, "March");
  Choose(FigureView::kAccount, engine::kQuarterLevel, engine::kAllYearsLevel);
  const ChartData quarters = Chart();
  EXPECT_EQ(quarters.units.size(), 8U);
  ASSERT_EQ(quarters.cuts.size(), 2U);
  EXPECT_EQ(quarters.cuts[1].unit, 4U);
  EXPECT_EQ(quarters.cuts[1].name, "2004");
}

TEST_F(ChartDataTest, HasALineForEachFieldAsked) {
  Choose(FigureView::kAccount, kPeriodLevel, kPeriodLevel);
  const ChartData chart = ChartOf(Table(), {2, {1, 2}, true}, DateText);
  ASSERT_EQ(chart.lines.size(), 2U);
  EXPECT_EQ(chart.lines[1].name, "Guests");
  EXPECT_EQ(chart.lines[1].values[0], 7);
}

}  // namespace
}  // namespace tallybook::desktop
