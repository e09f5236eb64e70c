#include "tests/tallybook/engine/FlipTrial.h"

namespace tallybook::testing {
namespace {

using BookFlipTest = FlipTrial;

TEST_F(BookFlipTest, ShowsNoWrongFigureWhateverBitIsFlipped) {
  EXPECT_GT(Flip(1000, 20040204), 300);
}

}  // namespace
}  // namespace tallybook::testing
