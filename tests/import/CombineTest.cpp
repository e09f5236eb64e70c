#include <gmock/gmock.h>
#include <limits>

#include "import/Combine.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

TEST(CombineTest, CombinesAFigureWithTheOneThatStands) {
  EXPECT_EQ(Combine(1, 10, 4), 14);
  EXPECT_EQ(Combine(2, 10, 4), 6);
  EXPECT_EQ(Combine(3, 10, 4), 4);
  EXPECT_EQ(Combine(0, 10, 4), 4) << "every other mode replaces";
}

TEST(CombineTest, CombinesNothingIntoWhatIsNoFigure) {
  const Double endless = std::numeric_limits<Double>::infinity();
  const Double none = std::numeric_limits<Double>::quiet_NaN();
  EXPECT_EQ(Combine(1, 1e308, -1e308), 0);
  EXPECT_THAT([] { (void)Combine(1, 1e308, 1e308); }, FailsWith(FailureNumber::kOverflow, "1e+308"));
  EXPECT_THAT([] { (void)Combine(2, -1e308, 1e308); }, FailsWith(FailureNumber::kOverflow));
  for (const Integer math : {Integer{1}, Integer{2}, Integer{3}}) {
    EXPECT_THAT([&] { (void)Combine(math, 0, endless); }, FailsWith(FailureNumber::kOverflow, "inf"));
    EXPECT_THAT([&] { (void)Combine(math, 0, none); }, FailsWith(FailureNumber::kOverflow, "nan"));
  }
  EXPECT_EQ(Combine(3, endless, 4), 4) << "a figure from before can be replaced";
}

}  // namespace
}  // namespace tallybook::testing
