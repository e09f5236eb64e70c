#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "base/ModParse.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

struct Split {
  Long count = 0;
  std::vector<std::string> fields;
};

Split SplitInto(std::size_t entries, std::string_view line, std::string_view stoppers = ";") {
  Split split;
  std::vector<std::string_view> fields(entries, "left from before");
  SplitQuoted split_quoted(",\t", stoppers);
  split.count = split_quoted(line, fields);
  split.fields.assign(fields.begin(), fields.end());
  return split;
}

TEST(SplitQuotedTest, CommaAndTabBothSeparate) {
  const Split split = SplitInto(4, "2004,2\t3,100");
  EXPECT_THAT(split.fields, ElementsAre("2004", "2", "3", "100"));
  EXPECT_EQ(split.count, 4);
}

TEST(SplitQuotedTest, BlanksAllEntriesFirst) {
  const Split split = SplitInto(3, "");
  EXPECT_THAT(split.fields, ElementsAre("", "", ""));
  EXPECT_EQ(split.count, 0);
}

TEST(SplitQuotedTest, TwoSeparatorsInARowMakeAnEmptyField) {
  const Split split = SplitInto(4, "a,,b");
  EXPECT_THAT(split.fields, ElementsAre("a", "", "b", ""));
  EXPECT_EQ(split.count, 3);
}

TEST(SplitQuotedTest, ALastFieldThatIsEmptyDoesNotCount) {
  EXPECT_EQ(SplitInto(4, "a,b,").count, 2);
  EXPECT_EQ(SplitInto(4, "a,b,\"\"").count, 2);
  EXPECT_EQ(SplitInto(4, ",").count, 1);
}

TEST(SplitQuotedTest, QuotesProtectSeparatorsAndStoppersAndAreDropped) {
  const Split split = SplitInto(3, "\"a,b;c\td\",\"\",e");
  EXPECT_THAT(split.fields, ElementsAre("a,b;c\td", "", "e"));
  EXPECT_EQ(split.count, 3);
}

TEST(SplitQuotedTest, AQuoteInTheMiddleSwitchesToo) {
  EXPECT_THAT(SplitInto(2, "ab\"c,d\"e,f").fields, ElementsAre("abc,de", "f"));
}

TEST(SplitQuotedTest, AQuoteThatNeverClosesTakesTheRest) {
  EXPECT_THAT(SplitInto(3, "a,\"b,c;d").fields, ElementsAre("a", "b,c;d", ""));
}

TEST(SplitQuotedTest, TwoQuotesInARowStandForNothing) {
  EXPECT_THAT(SplitInto(2, "\"a\"\"b\",c").fields, ElementsAre("ab", "c"));
}

TEST(SplitQuotedTest, AStopperEndsTheWork) {
  const Split split = SplitInto(4, "a,b;c,d");
  EXPECT_THAT(split.fields, ElementsAre("a", "b", "", ""));
  EXPECT_EQ(split.count, 2);
  EXPECT_EQ(SplitInto(4, "a,b,;c").count, 2);
}

TEST(SplitQuotedTest, WithoutStoppersASemicolonIsACharacterLikeAnyOther) {
  const Split split = SplitInto(4, "a,b;c,d", "");
  EXPECT_THAT(split.fields, ElementsAre("a", "b;c", "d", ""));
  EXPECT_EQ(split.count, 3);
}

TEST(SplitQuotedTest, TheWorkEndsWhereThereIsNoNextEntry) {
  const Split split = SplitInto(2, "a,b,c,d");
  EXPECT_THAT(split.fields, ElementsAre("a", "b"));
  EXPECT_EQ(split.count, 2);
  EXPECT_EQ(SplitInto(2, "a,,c,d").count, 1) << "the entry where it ended is empty";
}

TEST(SplitQuotedTest, BlanksStay) {
  EXPECT_THAT(SplitInto(2, " a , b ").fields, ElementsAre(" a ", " b "));
}

TEST(SplitQuotedTest, BytesAboveAsciiPassAsTheyStand) {
  EXPECT_THAT(SplitInto(2, "M\xC3\xBCller,M\xFCller").fields, ElementsAre("M\xC3\xBCller", "M\xFCller"));
}

TEST(SplitQuotedTest, SplitsADateByItsOwnSeparators) {
  for (const char* date : {"2/3/2004", "2.3.2004", "2 3 2004", "2/3.2004 rest"}) {
    std::vector<std::string_view> parts(3);
    SplitQuoted("/. ", "")(date, parts);
    EXPECT_THAT(parts, ElementsAre("2", "3", "2004")) << date;
  }
}

TEST(SplitQuotedTest, AnArrayWithoutEntriesTakesNothing) {
  std::vector<std::string_view> none;
  EXPECT_EQ(SplitQuoted(",", "")("a,b", none), 0);
}

TEST(SplitQuotedTest, AllFieldsWithQuotesOfALineStandSideBySide) {
  const Split split = SplitInto(4, "\"\",\"a long field with quotes, and a comma\",b\"c\",\"d\"\"e\"");
  EXPECT_THAT(split.fields, ElementsAre("", "a long field with quotes, and a comma", "bc", "de"));
  EXPECT_EQ(split.count, 4);
}

TEST(SplitQuotedTest, OneObjectSplitsLineAfterLine) {
  SplitQuoted split(",", "");
  std::vector<std::string_view> fields(2);
  EXPECT_EQ(split("\"a\",b", fields), 2);
  EXPECT_EQ(split("\"longer than before\"", fields), 1);
  EXPECT_THAT(fields, ElementsAre("longer than before", ""));
}

}  // namespace
}  // namespace tallybook::testing
