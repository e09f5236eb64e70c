#include <gmock/gmock.h>

#include "base/ModParse.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(SplitTextTest, GivesThePiecesBetweenDelimiters) {
  EXPECT_THAT(SplitText("a,b,c", ","), ElementsAre("a", "b", "c"));
  EXPECT_THAT(SplitText("a--b", "--"), ElementsAre("a", "b"));
}

TEST(SplitTextTest, KeepsEmptyPieces) {
  EXPECT_THAT(SplitText(",a,,b,", ","), ElementsAre("", "a", "", "b", ""));
  EXPECT_THAT(SplitText(",", ","), ElementsAre("", ""));
}

TEST(SplitTextTest, AnEmptyTextGivesNoPieces) {
  EXPECT_THAT(SplitText("", ","), IsEmpty());
  EXPECT_THAT(SplitText("", ""), IsEmpty());
}

TEST(SplitTextTest, ATextWithoutTheDelimiterGivesOne) {
  EXPECT_THAT(SplitText("abc", ","), ElementsAre("abc"));
  EXPECT_THAT(SplitText("abc", "abcd"), ElementsAre("abc"));
}

TEST(SplitTextTest, AnEmptyDelimiterSplitsNothing) {
  EXPECT_THAT(SplitText("abc", ""), ElementsAre("abc"));
}

TEST(SplitTextTest, TheLastPieceWithinTheLimitTakesTheRest) {
  EXPECT_THAT(SplitText("a,b,c,d", ",", 1), ElementsAre("a,b,c,d"));
  EXPECT_THAT(SplitText("a,b,c,d", ",", 2), ElementsAre("a", "b,c,d"));
  EXPECT_THAT(SplitText("a,b,c,d", ",", 4), ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(SplitText("a,b,c,d", ",", 9), ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(SplitText("a,b", ",", 0), IsEmpty());
}

TEST(SplitTextTest, ALimitBelowMinusOneIsAFailure) {
  EXPECT_THAT([] { (void)SplitText("a", ",", -2); }, FailsWith(FailureNumber::kInvalidArgument, "-2"));
}

TEST(SplitTextTest, ComparesCaseOnlyWhereItIsAskedTo) {
  EXPECT_THAT(SplitText("1x2X3", "x"), ElementsAre("1", "2X3"));
  EXPECT_THAT(SplitText("1x2X3", "x", -1, Compare::kText), ElementsAre("1", "2", "3"));
  EXPECT_THAT(SplitText("AäBÄC", "ä", -1, Compare::kText), ElementsAre("A", "B", "C"));
  EXPECT_THAT(SplitText("ÉxÿXŸ", "X", -1, Compare::kText), ElementsAre("É", "ÿ", "Ÿ"));
}

}  // namespace
}  // namespace tallybook::testing
