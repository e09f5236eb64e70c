#include <gtest/gtest.h>

#include "tallybook/cli/Wording.h"

namespace tallybook::cli {
namespace {

const std::vector<Text> kCommands = {"new", "info", "values", "set", "export", "import"};
const std::vector<Text> kOptions = {"--from", "--to", "--map-account", "--map-field", "--format"};

TEST(WordingTest, ListsWordsAsASentenceDoes) {
  EXPECT_EQ(Listed({}, "or"), "");
  EXPECT_EQ(Listed({"a"}, "or"), "a");
  EXPECT_EQ(Listed({"a", "b"}, "or"), "a or b");
  EXPECT_EQ(Listed({"a", "b", "c"}, "and"), "a, b and c");
  EXPECT_EQ(Listed({"a", "b", "c"}), "a, b, c");
}

TEST(WordingTest, CountsSlips) {
  EXPECT_EQ(EditDistance("", "abc"), 3U);
  EXPECT_EQ(EditDistance("abc", "abc"), 0U);
  EXPECT_EQ(EditDistance("abc", "ac"), 1U) << "left out";
  EXPECT_EQ(EditDistance("abc", "abxc"), 1U) << "put in";
  EXPECT_EQ(EditDistance("abc", "axc"), 1U) << "changed";
  EXPECT_EQ(EditDistance("abc", "acb"), 1U) << "swapped";
  EXPECT_EQ(EditDistance("kitten", "sitting"), 3U);
}

TEST(WordingTest, AsksForTheWordThatASlipMadeOfIt) {
  EXPECT_EQ(DidYouMean("exprot", kCommands), "did you mean 'export'?");
  EXPECT_EQ(DidYouMean("valeus", kCommands), "did you mean 'values'?");
  EXPECT_EQ(DidYouMean("VALUE", kCommands), "did you mean 'values'?");
  EXPECT_EQ(DidYouMean("--form", kOptions), "did you mean '--format'?") << "a start before a slip";
}

TEST(WordingTest, AsksForAllWordsThatAreEquallyNear) {
  EXPECT_EQ(DidYouMean("--map", kOptions), "did you mean '--map-account' or '--map-field'?");
  EXPECT_EQ(DidYouMean("xport", {"export", "import"}), "did you mean 'export'?");
}

TEST(WordingTest, AsksNothingWhereNoWordIsNear) {
  EXPECT_EQ(DidYouMean("sell", kCommands), "");
  EXPECT_EQ(DidYouMean("", kCommands), "");
  EXPECT_EQ(DidYouMean("--", kOptions), "");
  EXPECT_EQ(DidYouMean("n", kCommands), "") << "a letter begins too much";
  EXPECT_EQ(DidYouMean(Text(100'000, 'x'), kCommands), "");
}

}  // namespace
}  // namespace tallybook::cli
