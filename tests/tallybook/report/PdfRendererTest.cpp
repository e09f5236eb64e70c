// The PDF documents as poppler's tools read them.
#include <array>
#include <cstdio>
#include <gmock/gmock.h>

#include "tallybook/report/PdfModule.h"
#include "tests/support/TempFolder.h"
#include "tests/tallybook/report/SampleReport.h"

namespace tallybook::report {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class PdfRendererTest : public ::testing::Test {
 protected:
  void Render(const Report& report, const PageHeads& heads = SampleHead()) {
    folder_.Write("report.pdf", NewPdfRenderer()->Render(report, heads));
  }

  // What a command prints; "FILE" in it stands for the document.
  [[nodiscard]] std::string Run(std::string command) const {
    command.replace(command.find("FILE"), 4, "'" + folder_.Path("report.pdf") + "'");
    std::FILE* const reader = ::popen((command + " 2>&1").c_str(), "r");
    std::string found;
    std::array<char, 4096> part;
    for (std::size_t count = 0; (count = std::fread(part.data(), 1, part.size(), reader)) > 0;)
      found.append(part.data(), count);
    EXPECT_EQ(::pclose(reader), 0) << found;
    return found;
  }
  [[nodiscard]] int PageCount() const {
    const std::string info = Run("pdfinfo FILE | grep Pages");
    return std::stoi(info.substr(info.find_first_of("0123456789")));
  }
  [[nodiscard]] std::string TextOfPage(int page) const {
    const std::string number = std::to_string(page);
    return Run("pdftotext -layout -f " + number + " -l " + number + " FILE -");
  }

  // A report whose one table has so many rows.
  static Report LongReport(int rows) {
    Report report = SampleReport();
    auto& table = std::get<Table>(report.blocks[2]);
    for (int row = 0; row < rows; ++row)
      table.body.push_back({std::to_string(1000 + row), "Account", std::to_string(1000 + row), "Account, renamed"});
    return report;
  }

  testing::TempFolder folder_;
};

TEST_F(PdfRendererTest, HoldsItsTextsOnAPageOfA4) {
  Render(SampleReport());
  EXPECT_THAT(TextOfPage(1), AllOf(HasSubstr("QDX Import Report"), HasSubstr("2004-02-03 14:05:09"),
                                   HasSubstr("North Shop - QDX Import"), HasSubstr("/in/SHOP<1>.QDX"),
                                   HasSubstr("Account Description"), HasSubstr("with a text that goes"),
                                   HasSubstr("Completed"), HasSubstr("Page 1 of 1")));
  EXPECT_THAT(Run("pdfinfo FILE"), AllOf(HasSubstr("Title:           QDX Import Report"), HasSubstr("(A4)"),
                                         HasSubstr("Feb  3 14:05:09 2004")));
}

TEST_F(PdfRendererTest, RepeatsHeadsAndCountsPages) {
  Render(LongReport(120));
  const int pages = PageCount();
  ASSERT_GE(pages, 3);
  for (int page = 1; page <= pages; ++page) {
    EXPECT_THAT(TextOfPage(page), HasSubstr("Page " + std::to_string(page) + " of " + std::to_string(pages)));
    EXPECT_THAT(TextOfPage(page), HasSubstr("North Shop - QDX Import"));
  }
  EXPECT_THAT(TextOfPage(2), AllOf(HasSubstr("Last Import"), HasSubstr("Account Description")));
}

TEST_F(PdfRendererTest, LosesNoRowBetweenPages) {
  Render(LongReport(500));
  const std::string text = Run("pdftotext -layout FILE -");
  for (int row = 0; row < 500; ++row) EXPECT_THAT(text, HasSubstr(std::to_string(1000 + row))) << row;
}

TEST_F(PdfRendererTest, AsksForTheHeadOfEachPageOnceInOrder) {
  std::vector<int> asked;
  const Blocks head = {Line{"Head"}};
  Render(LongReport(120), [&](int page) -> const Blocks& {
    asked.push_back(page);
    return head;
  });
  ASSERT_GE(asked.size(), 3U);
  for (std::size_t i = 0; i < asked.size(); ++i) EXPECT_EQ(asked[i], static_cast<int>(i + 1));
}

TEST_F(PdfRendererTest, MakesAPageForAnEmptyReport) {
  Render({.title = "Empty", .created = "2004-02-03 14:05:09", .blocks = {}});
  EXPECT_THAT(TextOfPage(1), AllOf(HasSubstr("Empty"), HasSubstr("Page 1 of 1")));
}

TEST_F(PdfRendererTest, EndsWithAHeadAndARowThatAreLongerThanAPage) {
  Report report = SampleReport();
  std::string endless;
  for (int i = 0; i < 5000; ++i) endless += "words without end ";
  std::get<Table>(report.blocks[2]).body.push_back({"x", endless, "y", "z"});
  report.blocks.emplace_back(Line{endless});
  const Blocks head(100, Line{"A head that fills the page"});
  Render(report, [&](int) -> const Blocks& { return head; });
  EXPECT_THAT(Run("pdfinfo FILE"), HasSubstr("Pages:"));
}

TEST_F(PdfRendererTest, BeginsANewPageWhereTheReportDoes) {
  Report report = SampleReport();
  report.blocks.emplace_back(PageBreak{});
  report.blocks.emplace_back(Line{"On the second"});
  report.blocks.emplace_back(PageBreak{});
  Render(report);
  EXPECT_EQ(PageCount(), 2) << "a break with nothing behind it makes no page";
  EXPECT_THAT(TextOfPage(2), AllOf(HasSubstr("North Shop - QDX Import"), HasSubstr("On the second")));
}

TEST_F(PdfRendererTest, KeepsLinesWithTheTableThatFollows) {
  // However much stands above them, the lines and the first row are on one page.
  for (int lines = 58; lines < 66; ++lines) {
    Report report{.title = "Kept", .created = "2004-02-03 14:05:09", .blocks = {}};
    for (int line = 0; line < lines; ++line) report.blocks.emplace_back(Line{"Line"});
    report.blocks.emplace_back(Line{.text = "Heading of it", .keeps_with_next = true});
    report.blocks.emplace_back(Line{.text = "", .keeps_with_next = true});
    report.blocks.emplace_back(Table{.widths = {1}, .head = {{"Head of it"}}, .body = {{"First row"}}});
    Render(report);
    for (int page = 1; page <= PageCount(); ++page) {
      const std::string text = TextOfPage(page);
      EXPECT_EQ(text.find("Heading of it") == std::string::npos, text.find("First row") == std::string::npos)
          << lines << " lines, page " << page;
    }
  }
}

TEST_F(PdfRendererTest, HasRoomForMoreRowsWhereTheyStandClose) {
  Report report = LongReport(200);
  Render(report);
  const int usual = PageCount();
  auto& look = std::get<Table>(report.blocks[2]).look;
  look = {.spacing = 4, .close_rows = true, .ruled_head = true};
  Render(report);
  EXPECT_LT(PageCount(), usual);
  EXPECT_THAT(TextOfPage(1), HasSubstr("Account Description"));
}

TEST_F(PdfRendererTest, MovesColumnsApartWithTheSpacing) {
  const auto gap = [&](Single spacing) {
    Report report;
    report.blocks = {Table{.widths = {1, 1}, .head = {}, .body = {{"left", "right"}}, .look = {.spacing = spacing}}};
    Render(report);
    const std::string words = Run("pdftotext -bbox FILE -");
    const auto right = words.rfind("xMin=\"", words.find(">right<"));
    return std::stod(words.substr(right + 6));
  };
  EXPECT_NEAR(gap(4) - gap(1), 15, 0.5) << "half of thirty points";
}

TEST_F(PdfRendererTest, TakesTextsThatAreNoUtf8) {
  Report report = SampleReport();
  report.blocks.emplace_back(Line{"odd \xFF byte"});
  Render(report);
  EXPECT_THAT(TextOfPage(1), AllOf(HasSubstr("odd"), HasSubstr("byte")));
}

TEST_F(PdfRendererTest, MakesTheSameBytesTwice) {
  EXPECT_EQ(NewPdfRenderer()->Render(SampleReport(), SampleHead()),
            NewPdfRenderer()->Render(SampleReport(), SampleHead()));
}

}  // namespace
}  // namespace tallybook::report
