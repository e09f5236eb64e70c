#include <filesystem>
#include <gmock/gmock.h>
#include <sstream>

#include "tallybook/application/ReferenceFactory.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;

class ReferenceFactoryTest : public ::testing::Test {
 protected:
  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  ReferenceFactory factory_;
};

TEST_F(ReferenceFactoryTest, MakesASettingsFileThatIsNotOpenYet) {
  const auto file = factory_.NewIniFile();
  file->SetFileName(folder_.Path("book.ini"));
  file->SetSection("CSV");
  file->WriteValue("ImportFile", "a.csv");
  EXPECT_EQ(factory_.NewIniFile()->ReadValue("ImportFile", "none"), "none");
  EXPECT_EQ(folder_.Read("book.ini"), "[CSV]\nImportFile=a.csv\n");
}

TEST_F(ReferenceFactoryTest, MakesAnExportLibraryWithFiveFormats) {
  EXPECT_EQ(factory_.NewDataExportObject()->NumFormats(), 5);
  EXPECT_NE(factory_.NewDataExportObject(), factory_.NewDataExportObject());
}

TEST_F(ReferenceFactoryTest, MakesPrintersForTheDestination) {
  std::ostringstream out;
  factory_.SetReportDestination({.path = {}, .stream = &out});
  const auto to_stream = factory_.NewPrinter();
  factory_.SetReportDestination({.path = folder_.Path("r.html")});
  const auto to_file = factory_.NewPrinter();
  for (Printer* printer : {to_stream.get(), to_file.get()}) {
    ASSERT_TRUE(printer->BeginReport(0, "Title"));
    printer->PrintLine("line");
    printer->EndReport();
  }
  EXPECT_THAT(out.str(), ::testing::StartsWith("Title\n=====\n"));
  EXPECT_THAT(folder_.Read("r.html"), ::testing::HasSubstr("<p>line</p>"));
}

TEST_F(ReferenceFactoryTest, WritesTheReportsThatAreUnderWayWithALastLine) {
  std::ostringstream out;
  factory_.SetReportDestination({.path = {}, .stream = &out});
  const auto ended = factory_.NewPrinter();
  ASSERT_TRUE(ended->BeginReport(0, "Ended"));
  ended->EndReport();
  const auto never_begun = factory_.NewPrinter();
  { const auto gone = factory_.NewPrinter(); }
  const auto under_way = factory_.NewPrinter();
  ASSERT_TRUE(under_way->BeginReport(0, "Under way"));
  under_way->PrintLine("line");
  out.str("");
  factory_.EndReports("Stopped: here");
  EXPECT_THAT(out.str(), ::testing::StartsWith("Under way\n"));
  EXPECT_THAT(out.str(), ::testing::HasSubstr("line\nStopped: here\n"));
  EXPECT_THAT(out.str(), ::testing::Not(::testing::HasSubstr("Ended")));
}

TEST_F(ReferenceFactoryTest, KeepsReportsUntilItIsToldWhatTheyEndIn) {
  factory_.SetReportClosing([] { return std::vector<Text>{"of its own"}; });
  factory_.HoldReports();
  const std::vector<Text> names = {"r.txt", "r.html", "r.pdf"};
  for (const Text& name : names) {
    factory_.SetReportDestination({.path = folder_.Path(name)});
    const auto printer = factory_.NewPrinter();
    ASSERT_TRUE(printer->BeginReport(0, "Title"));
    printer->PrintLine("line");
    printer->EndReport();
    EXPECT_EQ(folder_.Read(name), "");
  }
  factory_.WriteHeldReports({"nothing is kept"});
  EXPECT_THAT(folder_.Read("r.txt"), ::testing::EndsWith("line\nnothing is kept\n"));
  EXPECT_THAT(folder_.Read("r.html"), ::testing::HasSubstr("<p>nothing is kept</p>"));
  EXPECT_THAT(folder_.Read("r.pdf"), ::testing::StartsWith("%PDF"));
  factory_.SetReportDestination({.path = folder_.Path("r.txt")});
  const auto next = factory_.NewPrinter();
  ASSERT_TRUE(next->BeginReport(0, "Next"));
  next->EndReport();
  EXPECT_THAT(folder_.Read("r.txt"), ::testing::EndsWith("of its own\n"));
}

class HeadOfTwoLines : public PrinterEvents {
 public:
  void PrintInit(Printer& /*printer*/) override {}
  void PrintHeader(Printer& printer) override { printer.PrintLine("head " + std::to_string(++heads)); }
  int heads = 0;
};

TEST_F(ReferenceFactoryTest, KeepsTheHeadsOfAReportWhoseListenerIsGone) {
  std::ostringstream out;
  factory_.SetReportDestination({.path = {}, .stream = &out});
  factory_.HoldReports();
  {
    HeadOfTwoLines listener;
    const auto printer = factory_.NewPrinter();
    printer->SetEvents(&listener);
    ASSERT_TRUE(printer->BeginReport(0, "Title"));
    printer->PrintLine("line");
    printer->EndReport();
  }
  EXPECT_EQ(out.str(), "");
  factory_.WriteHeldReports({"end"});
  EXPECT_THAT(out.str(), ::testing::HasSubstr("head 1\n\nline\nend\n"));
}

TEST_F(ReferenceFactoryTest, TellsOfAKeptReportThatCannotBeWrittenWhenTheOthersAre) {
  factory_.HoldReports();
  for (const char* name : {"gone/r.txt", "r.txt"}) {
    std::filesystem::create_directory(folder_.Path("gone"));
    factory_.SetReportDestination({.path = folder_.Path(name)});
    const auto printer = factory_.NewPrinter();
    ASSERT_TRUE(printer->BeginReport(0, "Title"));
    printer->EndReport();
  }
  std::filesystem::remove_all(folder_.Path("gone"));
  EXPECT_THAT([&] { factory_.WriteHeldReports({"end"}); }, FailsWith(FailureNumber::kPathNotFound, "gone/r.txt"));
  EXPECT_THAT(folder_.Read("r.txt"), ::testing::EndsWith("end\n"));
}

TEST_F(ReferenceFactoryTest, WritesKeptReportsWithTheLastLineOfAProcessThatStops) {
  std::ostringstream out;
  factory_.SetReportDestination({.path = {}, .stream = &out});
  factory_.HoldReports();
  const auto ended = factory_.NewPrinter();
  ASSERT_TRUE(ended->BeginReport(0, "Ended"));
  ended->EndReport();
  const auto under_way = factory_.NewPrinter();
  ASSERT_TRUE(under_way->BeginReport(0, "Under way"));
  factory_.EndReports("Stopped: here");
  EXPECT_THAT(out.str(), ::testing::ContainsRegex("Ended(.|\n)*Stopped: here\n(.|\n)*Under way(.|\n)*Stopped: here\n"));
}

TEST_F(ReferenceFactoryTest, RefusesADestinationThatNamesNoForm) {
  EXPECT_THAT([&] { factory_.SetReportDestination({.path = "r.doc"}); },
              FailsWith(FailureNumber::kInvalidArgument, "r.doc"));
}

TEST_F(ReferenceFactoryTest, MakesACalendarThatIsNotAttached) {
  const auto calendar = factory_.NewFiscalCalendar();
  EXPECT_THAT([&] { (void)calendar->CurrentDate(); }, FailsWith(FailureNumber::kObjectNotSet));
}

class SequenceControl : public PrintSequence {
 public:
  void LoadSequences(SequenceReport& /*report*/) override {}
  [[nodiscard]] bool SequenceFixed() const override { return true; }
  void SetSequenceFixed(bool /*fixed*/) override {}
  void RefreshSequences() override {}
  void ApplySequences() override {}
};

TEST_F(ReferenceFactoryTest, NeedsTheWindowedApplicationForWindows) {
  EXPECT_THAT([&] { (void)factory_.NewEdtForm(); }, FailsWith(FailureNumber::kFeatureUnavailable, "list window"));
  EXPECT_THAT([&] { (void)factory_.NewPrintSequence(); },
              FailsWith(FailureNumber::kFeatureUnavailable, "print sequence"));
  factory_.SetSequenceMaker([] { return std::make_unique<SequenceControl>(); });
  EXPECT_TRUE(factory_.NewPrintSequence()->SequenceFixed());
  factory_.SetListWindowMaker([]() -> std::unique_ptr<EdtForm> { return nullptr; });
  EXPECT_EQ(factory_.NewEdtForm(), nullptr) << "what the maker gives";
}

}  // namespace
}  // namespace tallybook::application
