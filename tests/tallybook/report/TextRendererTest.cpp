#include <algorithm>
#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "tallybook/report/TextRenderer.h"
#include "tests/tallybook/report/SampleReport.h"

namespace tallybook::report {
namespace {

using ::testing::ElementsAre;

TEST(TextRenderer, PrintsTitleMomentHeadLinesAndTables) {
  EXPECT_EQ(TextRenderer().Render(SampleReport(), SampleHead()),
            "QDX Import Report\n"
            "=================\n"
            "2004-02-03 14:05:09\n"
            "North Shop - QDX Import\n"
            "\n"
            "Importing QDX file: /in/SHOP<1>.QDX\n"
            "\n"
            "           Last Import                              This Import\n"
            "Code       Account Description           Code       Account Description\n"
            "---------  ----------------------------  ---------  ----------------------------\n"
            "007        Front of shop                 007        Front of shop, with a text\n"
            "                                                    that goes on and on\n"
            "Completed\n");
}

TEST(TextRenderer, FillsItsWidthExactly) {
  for (const int width : {20, 41, 80, 132}) {
    const std::string text = TextRenderer(width).Render(SampleReport(), SampleHead());
    const auto rule = text.find("\n-") + 1;
    EXPECT_EQ(text.find('\n', rule) - rule, static_cast<std::size_t>(width));
  }
}

TEST(TextRenderer, PrintsNoRuleForATableWithoutAHead) {
  Report report;
  report.blocks = {Table{.widths = {1, 1}, .head = {}, .body = {{"a", "b"}}}};
  EXPECT_THAT(TextRenderer(10).Render(report, SampleHead()), ::testing::EndsWith("\n\na     b\n"));
}

TEST(TextRenderer, PrintsRowsWithFewerCellsThanColumns) {
  Report report;
  report.blocks = {Table{.widths = {1, 1}, .head = {}, .body = {{"a"}, {}}}};
  EXPECT_THAT(TextRenderer(10).Render(report, SampleHead()), ::testing::EndsWith("\n\na\n\n"));
}

TEST(TextRenderer, PutsTheRoomBetweenColumnsAndTheRuleAboveAHeadWhereTheyAreWanted) {
  Report report;
  report.blocks = {Table{.widths = {1, 1},
                         .head = {{"A", "B"}},
                         .body = {{"a", "b"}},
                         .look = {.spacing = 4, .close_rows = true, .ruled_head = true}}};
  EXPECT_THAT(TextRenderer(15).Render(report, SampleHead()), ::testing::EndsWith("\n\n"
                                                                                 "-----     -----\n"
                                                                                 "A         B\n"
                                                                                 "-----     -----\n"
                                                                                 "a         b\n"));
}

TEST(TextRenderer, BeginsANewPageWithAFormFeedAndItsHead) {
  Report report;
  report.blocks = {Line{"one"}, PageBreak{}, Line{"two"}};
  std::vector<int> asked;
  const Blocks head = {Line{"Head"}};
  const std::string text = TextRenderer().Render(report, [&](int page) -> const Blocks& {
    asked.push_back(page);
    return head;
  });
  EXPECT_THAT(text, ::testing::EndsWith("\nHead\n\none\n\fHead\n\ntwo\n"));
  EXPECT_THAT(asked, ElementsAre(1, 2));
}

TEST(TextRenderer, ShowsNoControlCharacterToATerminal) {
  Report report;
  report.title = "a\x1b[2J";
  report.blocks = {Line{.text = "b\nc\xC2\x9B\u202E"}, Table{.widths = {1}, .head = {}, .body = {{"d\te\xFF"}}}};
  const Blocks no_head;
  const std::string text = TextRenderer().Render(report, [&](int) -> const Blocks& { return no_head; });
  EXPECT_EQ(text, "a\uFFFD[2J\n=====\n\n\nb c\uFFFD\uFFFD\nd e\uFFFD\n");
}

TEST(Wrapped, BreaksAtBlanksAndDropsThem) {
  EXPECT_THAT(Wrapped("one two  three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(Wrapped("one two", 4), ElementsAre("one", "two"));
  EXPECT_THAT(Wrapped("one two", 3), ElementsAre("one", "two"));
}

TEST(Wrapped, BreaksAWordThatIsWiderThanTheColumn) {
  EXPECT_THAT(Wrapped("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
}

TEST(Wrapped, GivesOneEmptyLineForNoText) {
  EXPECT_THAT(Wrapped("", 5), ElementsAre(""));
  EXPECT_THAT(Wrapped("   ", 5), ElementsAre(""));
}

TEST(Wrapped, NeverBreaksWithinACharacter) {
  EXPECT_THAT(Wrapped("äöüß", 2), ElementsAre("äö", "üß"));
  EXPECT_THAT(Wrapped("日本語", 4), ElementsAre("日本", "語"));
  EXPECT_THAT(Wrapped("日本", 1), ElementsAre("日", "本"));
}

TEST(DisplayWidth, CountsWhatATerminalShows) {
  EXPECT_EQ(DisplayWidth("äö"), 2);
  EXPECT_EQ(DisplayWidth("日本"), 4);
  EXPECT_EQ(DisplayWidth("e\xCC\x81"), 1);  // e and a combining accent
  EXPECT_EQ(DisplayWidth("\xFF"), 1);
}

RC_GTEST_PROP(Wrapped, KeepsEveryCharacterThatIsNoBlankInLinesThatFit, ()) {
  const auto text = *rc::gen::container<Text>(rc::gen::element<char>('a', 'b', 'c', ' '));
  const int width = *rc::gen::inRange(1, 12);
  Text joined;
  for (const Text& line : Wrapped(text, width)) {
    RC_ASSERT(DisplayWidth(line) <= width);
    joined += line;
  }
  Text expected = text;
  std::erase(expected, ' ');
  std::erase(joined, ' ');
  RC_ASSERT(joined == expected);
}

}  // namespace
}  // namespace tallybook::report
