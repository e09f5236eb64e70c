#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/desktop/figures/ChartScale.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;

TEST(ChartScale, HasRoundTicksFromZero) {
  EXPECT_THAT(RoundScale(120, 870, 6).Ticks(), ElementsAre(0, 200, 400, 600, 800, 1000));
  EXPECT_THAT(RoundScale(0, 4, 5).Ticks(), ElementsAre(0, 1, 2, 3, 4));
}

TEST(ChartScale, HasItsZeroAmongTheTicksOfLosses) {
  EXPECT_THAT(RoundScale(-35, 80, 7).Ticks(), ElementsAre(-40, -20, 0, 20, 40, 60, 80));
  EXPECT_THAT(RoundScale(-35, -5, 5).Ticks(), ElementsAre(-40, -30, -20, -10, 0));
}

TEST(ChartScale, ShowsNothingAsOneStep) {
  EXPECT_THAT(RoundScale(0, 0, 5).Ticks(), ElementsAre(0, 1));
}

RC_GTEST_PROP(ChartScale, ShowsEveryValueInFewTicks, ()) {
  const auto magnitude = static_cast<Double>(*rc::gen::inRange(1, 1'000'000'000)) / 1000;
  const Double least = static_cast<Double>(*rc::gen::inRange(-1000, 1000)) * magnitude;
  const Double most = least + static_cast<Double>(*rc::gen::inRange(0, 1000)) * magnitude;
  const int ticks = *rc::gen::inRange(2, 12);
  const ChartScale scale = RoundScale(least, most, ticks);
  RC_ASSERT(scale.low <= least + scale.step * 1e-6 && scale.high >= most - scale.step * 1e-6);
  RC_ASSERT(scale.low <= 0 && scale.high >= 0);
  RC_ASSERT(static_cast<int>(scale.Ticks().size()) <= std::max(ticks, 3));
  RC_ASSERT(scale.ShareOf(scale.low) == 0 && scale.ShareOf(scale.high) == 1);
}

}  // namespace
}  // namespace tallybook::desktop
