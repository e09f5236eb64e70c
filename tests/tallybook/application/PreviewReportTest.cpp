// A preview as a report.
#include <gmock/gmock.h>
#include <sstream>

#include "tallybook/application/PreviewReport.h"
#include "tallybook/report/ReportPrinter.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::application {
namespace {

using preview::ImportPreview;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

class PreviewReportTest : public ::testing::Test {
 protected:
  PreviewReportTest()
      : host_(testing::SmallBook()), preview_({.book = host_->book, .factory = host_->factory, .app = host_->app}) {
    preview_.BeginFile("north.QDX");
  }

  void Write(Date date, Integer field, Double value) {
    ASSERT_TRUE(preview_.Book().ReadRecord(101, date));
    preview_.Book().SetFieldValue(field, value);
    ASSERT_TRUE(preview_.Book().WriteRecord());
  }
  Text Print(const PreviewOutcome& outcome) {
    preview_.End();
    std::ostringstream text;
    report::ReportPrinter printer({.path = "", .stream = &text});
    PrintPreviewReport(printer, host_->book, preview_, outcome);
    return text.str();
  }

  testing::ScriptedPlatform platform_;
  std::unique_ptr<testing::MemoryHost> host_;
  ImportPreview preview_;
};

TEST_F(PreviewReportTest, HasFiguresTotalsAndFiles) {
  Write(host_->book.FirstDate(), 2, 5);
  PreviewOutcome outcome{.done = true, .imports = {{.file = "north.QDX", .imported = true}}, .report = {"as ever"}};
  const Text report = Print(outcome);
  EXPECT_THAT(report, AllOf(HasSubstr("1 figure in 1 record would change; 0 records would end as they are."),
                            HasSubstr("2 Customers"), HasSubstr("north.QDX"), HasSubstr("as ever")));
  EXPECT_THAT(report, Not(HasSubstr("would not be done")));
}

TEST_F(PreviewReportTest, SaysThatTheImportWouldNotBeDone) {
  EXPECT_THAT(Print({}), HasSubstr("The import would not be done."));
}

TEST_F(PreviewReportTest, SaysHowManyFiguresItHasNoRoomFor) {
  constexpr std::size_t kMore = 4;
  for (std::size_t index = 0; index < kMostFiguresOfAReport + kMore; ++index) {
    constexpr std::size_t kDaysOfAFile = 1000;
    if (index % kDaysOfAFile == 0) preview_.BeginFile("next.QDX");
    Write(host_->book.FirstDate() + static_cast<Date>(index % kDaysOfAFile), 7, static_cast<Double>(index + 1));
  }
  const bool told = Print({.done = true}).find("... and 4 lines that this report has no room for\n") != Text::npos;
  EXPECT_TRUE(told);
}

TEST(PreviewReport, ShowsAFigureAsItWasEntered) {
  EXPECT_EQ(FigureText(0.1 + 0.2), "0.3");
  EXPECT_EQ(FigureText(-12.5), "-12.5");
}

}  // namespace
}  // namespace tallybook::application
