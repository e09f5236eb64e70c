#include <gtest/gtest.h>

#include "import/XDQName.h"

namespace tallybook {
namespace {

TEST(XDQNameTest, TheLastThreeCharactersAreOverwrittenWhateverTheyAre) {
  EXPECT_EQ(XDQName("/in/north.QDX"), "/in/north.XDQ");
  EXPECT_EQ(XDQName("/in/figures"), "/in/figuXDQ");
  EXPECT_EQ(XDQName("ab"), "XDQ");
}

TEST(XDQNameTest, CharactersCountAndNotTheirBytes) {
  EXPECT_EQ(XDQName("caf\u00e9s"), "caXDQ");
}

}  // namespace
}  // namespace tallybook
