#include <gmock/gmock.h>

#include "tallybook/report/HtmlRenderer.h"
#include "tests/tallybook/report/SampleReport.h"

namespace tallybook::report {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(HtmlRenderer, EscapesWhatHtmlReads) {
  EXPECT_EQ(HtmlEscaped("<a href=\"x\">'&'</a>"), "&lt;a href=&quot;x&quot;&gt;&#39;&amp;&#39;&lt;/a&gt;");
  EXPECT_EQ(HtmlEscaped("Zürich"), "Zürich");
}

TEST(HtmlRenderer, ReplacesWhatHtmlDoesNotAllow) {
  EXPECT_EQ(HtmlEscaped(Text("a\x01"
                             "b\0c\x7F",
                             6)),
            "a\uFFFDb\uFFFDc\uFFFD");
  EXPECT_EQ(HtmlEscaped("a\xFFz"), "a\uFFFDz");
  EXPECT_EQ(HtmlEscaped("a\tb\nc"), "a\tb\nc");
}

TEST(HtmlRenderer, IsOneFileThatAsksForNoOther) {
  const std::string page = HtmlRenderer().Render(SampleReport(), SampleHead());
  EXPECT_THAT(page, ::testing::StartsWith("<!DOCTYPE html>\n<html lang=\"en\">"));
  EXPECT_THAT(
      page, AllOf(Not(HasSubstr("http")), Not(HasSubstr("<script")), Not(HasSubstr("<link")), Not(HasSubstr("url("))));
}

TEST(HtmlRenderer, HoldsTitleHeadLinesAndTables) {
  const std::string page = HtmlRenderer().Render(SampleReport(), SampleHead());
  EXPECT_THAT(page, HasSubstr("<title>QDX Import Report</title>"));
  EXPECT_THAT(page, HasSubstr("<p>North Shop - QDX Import</p>\n<p class=\"created\">2004-02-03 14:05:09</p>"));
  EXPECT_THAT(page, HasSubstr("<p>Importing QDX file: /in/SHOP&lt;1&gt;.QDX</p>"));
  EXPECT_THAT(page, HasSubstr("<col style=\"width: 12.50%\"><col style=\"width: 37.50%\">"));
  EXPECT_THAT(page, HasSubstr("<thead>\n<tr><th scope=\"col\"></th><th scope=\"col\">Last Import</th>"));
  EXPECT_THAT(page, HasSubstr("<tbody>\n<tr><td>007</td><td>Front of shop</td>"));
}

TEST(HtmlRenderer, MarksTheLookOfATableThatIsNotTheUsualOne) {
  Report report = SampleReport();
  EXPECT_THAT(HtmlRenderer().Render(report, SampleHead()), HasSubstr("<table>\n"));
  auto& look = std::get<Table>(report.blocks[2]).look;
  look.ruled_head = true;
  EXPECT_THAT(HtmlRenderer().Render(report, SampleHead()), HasSubstr("<table class=\"ruled\">\n"));
  look = {.spacing = 4, .close_rows = true, .ruled_head = true};
  EXPECT_THAT(HtmlRenderer().Render(report, SampleHead()),
              HasSubstr("<table class=\"close ruled\" style=\"--gap: 4\">\n"));
}

TEST(HtmlRenderer, BreaksPagesWhereTheReportDoesAndKeepsLinesWithWhatFollows) {
  Report report;
  report.blocks = {Line{"one"}, PageBreak{}, Line{.text = "two", .keeps_with_next = true}};
  EXPECT_THAT(HtmlRenderer().Render(report, SampleHead()),
              HasSubstr("<p>one</p>\n<hr class=\"page\">\n<p class=\"kept\">two</p>\n"));
}

TEST(HtmlRenderer, FollowsADarkScreenAndPrintsOnWhite) {
  const std::string page = HtmlRenderer().Render(SampleReport(), SampleHead());
  EXPECT_THAT(page, AllOf(HasSubstr("color-scheme: light dark"), HasSubstr("prefers-color-scheme: dark"),
                          HasSubstr("@media print")));
}

}  // namespace
}  // namespace tallybook::report
