#include <gmock/gmock.h>
#include <sstream>

#include "tallybook/report/ReportPrinter.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::report {
namespace {

using ::testing::EndsWith;
using testing::FailsWith;
using testing::FileCall;
using ::testing::HasSubstr;
using ::testing::StartsWith;

// Sets up the four columns of the import report and prints a head, as the exchange object does.
class Listener : public PrinterEvents {
 public:
  void PrintInit(Printer& printer) override {
    ++inits;
    printer.SetColumnMode(1);
    for (const Single width : {1.0F, 3.0F, 1.0F, 3.0F}) printer.Columns().Add(width);
    printer.ApplyColumns();
  }
  void PrintHeader(Printer& printer) override {
    ++heads;
    printer.PrintLine("North Shop - QDX Import");
    if (clears_columns) printer.Columns().ClearText();
    if (!breaks_pages) return;
    printer.NewPage();
    printer.CheckPage();
  }

  int inits = 0;
  int heads = 0;
  bool clears_columns = false;
  bool breaks_pages = false;
};

class Display : public engine::ProgressDisplay {
 public:
  void Begin(const tallybook::Text& title) override { calls.push_back("begin " + title); }
  void Fraction(Single fraction) override { calls.push_back("fraction " + std::to_string(fraction)); }
  void Text(const tallybook::Text& text) override { calls.push_back("text " + text); }
  void CancelEnabled(bool enabled) override { calls.push_back(enabled ? "cancel on" : "cancel off"); }
  [[nodiscard]] bool Cancelled() override { return cancelled; }
  void End() override { calls.push_back("end"); }

  std::vector<tallybook::Text> calls;
  bool cancelled = false;
};

class ReportPrinterTest : public ::testing::Test {
 protected:
  void Begin(Printer& printer) {
    printer.SetEvents(&listener_);
    ASSERT_TRUE(printer.BeginReport(0, "QDX Import Report"));
  }
  static void SetCells(Printer& printer, std::initializer_list<const char*> texts) {
    Integer position = 1;
    for (const char* text : texts) printer.Columns().Item(position++).SetText(text);
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  std::ostringstream out_;
  Listener listener_;
  Display display_;
  ReportPrinter printer_{Destination{.path = {}, .stream = &out_}, &display_};
};

TEST_F(ReportPrinterTest, PrintsLinesAndTheTableOfAnImport) {
  Begin(printer_);
  printer_.PrintLine("Importing");
  printer_.PrintLine("");
  printer_.Columns().ClearText();
  SetCells(printer_, {"", "Last Import", "", "This Import"});
  printer_.PrintRow();
  SetCells(printer_, {"Code", "Account Description", "Code", "Account Description"});
  printer_.PrintHeadingRow();
  SetCells(printer_, {"100", "Old", "100", "New"});
  printer_.PrintRow();
  printer_.EndReport();
  EXPECT_EQ(out_.str(),
            "QDX Import Report\n"
            "=================\n"
            "2004-02-03 14:05:09\n"
            "North Shop - QDX Import\n"
            "\n"
            "Importing\n"
            "\n"
            "           Last Import                              This Import\n"
            "Code       Account Description           Code       Account Description\n"
            "---------  ----------------------------  ---------  ----------------------------\n"
            "100        Old                           100        New\n");
}

TEST_F(ReportPrinterTest, RaisesPrintInitOnceWithinBeginReport) {
  Begin(printer_);
  EXPECT_EQ(listener_.inits, 1);
  EXPECT_EQ(listener_.heads, 0);
  printer_.PrintLine("a");
  printer_.PrintLine("b");
  printer_.EndReport();
  EXPECT_EQ(listener_.inits, 1);
  EXPECT_EQ(listener_.heads, 1) << "text has one page";
}

TEST_F(ReportPrinterTest, PrintsTheHeadOfAReportWithoutALine) {
  Begin(printer_);
  printer_.EndReport();
  EXPECT_THAT(out_.str(), EndsWith("North Shop - QDX Import\n\n"));
}

TEST_F(ReportPrinterTest, RaisesAHeadForEachPageOfAPdf) {
  ReportPrinter printer({.path = folder_.Path("report.pdf")});
  Begin(printer);
  for (int line = 0; line < 200; ++line) printer.PrintLine("Line");
  EXPECT_EQ(listener_.heads, 1);
  printer.EndReport();
  EXPECT_GE(listener_.heads, 3);
  EXPECT_THAT(folder_.Read("report.pdf"), StartsWith("%PDF-"));
}

TEST_F(ReportPrinterTest, KeepsTheRowUnderWayWhenAHeadClearsTheColumns) {
  listener_.clears_columns = true;
  Begin(printer_);
  SetCells(printer_, {"100", "Old", "100", "New"});
  printer_.PrintRow();
  printer_.EndReport();
  EXPECT_THAT(out_.str(), EndsWith("\n100        Old                           100        New\n"));
}

TEST_F(ReportPrinterTest, ASecondHeadingRowBeginsAnotherTable) {
  Begin(printer_);
  SetCells(printer_, {"A", "", "", ""});
  printer_.PrintHeadingRow();
  SetCells(printer_, {"1", "", "", ""});
  printer_.PrintRow();
  SetCells(printer_, {"B", "", "", ""});
  printer_.PrintHeadingRow();
  printer_.EndReport();
  const std::string rule = "---------  ----------------------------  ---------  ----------------------------\n";
  EXPECT_THAT(out_.str(), EndsWith("A\n" + rule + "1\nB\n" + rule));
}

TEST_F(ReportPrinterTest, BreaksALineAtLineBreaksOfEitherKind) {
  Begin(printer_);
  printer_.PrintLine("a\r\nb\nc");
  printer_.EndReport();
  EXPECT_THAT(out_.str(), EndsWith("\na\nb\nc\n"));
}

TEST_F(ReportPrinterTest, PrintsTablesInTheLookThatWasSet) {
  printer_.SetRowStyle(kCloseRows);
  printer_.SetHeadStyle(kRuledHead);
  printer_.Columns().SetSpacing(printer_.Columns().Spacing() * 4);
  Begin(printer_);
  EXPECT_EQ(printer_.Columns().Spacing(), 4.0F) << "a report begins without columns, but keeps the spacing";
  SetCells(printer_, {"A", "", "", ""});
  printer_.PrintHeadingRow();
  printer_.EndReport();
  const std::string rule = "--------     -------------------------     --------     ------------------------\n";
  EXPECT_THAT(out_.str(), EndsWith("\n\n" + rule + "A\n" + rule));
}

TEST_F(ReportPrinterTest, TakesAStyleThatItDoesNotKnowForTheUsualOne) {
  printer_.SetRowStyle(77);
  printer_.SetHeadStyle(-1);
  Begin(printer_);
  SetCells(printer_, {"A", "", "", ""});
  printer_.PrintHeadingRow();
  printer_.EndReport();
  EXPECT_THAT(out_.str(),
              EndsWith("\n\nA\n---------  ----------------------------  ---------  ----------------------------\n"));
}

TEST_F(ReportPrinterTest, BeginsANewPageAndWithItAnotherTable) {
  Begin(printer_);
  printer_.NewPage();
  SetCells(printer_, {"1", "", "", ""});
  printer_.PrintRow();
  printer_.NewPage();
  printer_.NewPage();
  SetCells(printer_, {"2", "", "", ""});
  printer_.PrintRow();
  printer_.EndReport();
  EXPECT_THAT(out_.str(), EndsWith("Import\n\n1\n\fNorth Shop - QDX Import\n\n2\n"));
  EXPECT_EQ(listener_.heads, 2) << "nothing is printed on a page of its own";
}

TEST_F(ReportPrinterTest, KeepsAHeadAndTheLinesAboveItTogether) {
  ReportPrinter printer({.path = folder_.Path("report.html")});
  Begin(printer);
  printer.CheckPage();
  for (const char* line : {"far", "one", "two", "three"}) printer.PrintLine(line);
  SetCells(printer, {"A", "", "", ""});
  printer.PrintHeadingRow();
  printer.CheckPage();
  printer.EndReport();
  const std::string page = folder_.Read("report.html");
  EXPECT_THAT(page, HasSubstr("<p>far</p>"));
  for (const char* line : {"one", "two", "three"})
    EXPECT_THAT(page, HasSubstr("<p class=\"kept\">" + std::string(line) + "</p>"));
}

TEST_F(ReportPrinterTest, LetsAPageHeadNeitherBreakNorCheckAPage) {
  listener_.breaks_pages = true;
  Begin(printer_);
  printer_.PrintLine("a");
  printer_.EndReport();
  EXPECT_THAT(out_.str(), EndsWith("North Shop - QDX Import\n\na\n"));
}

TEST_F(ReportPrinterTest, TakesTheFormFromTheExtensionInAnyCase) {
  for (const auto& [name, start] : {std::pair{"r.txt", "QDX Import"}, std::pair{"r.HTML", "<!DOCTYPE html>"},
                                    std::pair{"r.htm", "<!DOCTYPE html>"}, std::pair{"r.Pdf", "%PDF-"}}) {
    ReportPrinter printer({.path = folder_.Path(name)});
    Begin(printer);
    printer.PrintLine("a");
    printer.EndReport();
    EXPECT_THAT(folder_.Read(name), StartsWith(start)) << name;
  }
}

TEST_F(ReportPrinterTest, RefusesAnExtensionThatNamesNoForm) {
  for (const char* name : {"report.doc", "report", "folder.txt/report"})
    EXPECT_THAT([&] { ReportPrinter printer({.path = name}); }, FailsWith(FailureNumber::kInvalidArgument, name));
}

TEST_F(ReportPrinterTest, TellsAtTheBeginningThatAFileCannotBeWritten) {
  ReportPrinter printer({.path = folder_.Path("none/report.txt")});
  printer.SetEvents(&listener_);
  EXPECT_THAT([&] { (void)printer.BeginReport(0, "T"); },
              FailsWith(FailureNumber::kPathNotFound, folder_.Path("none/report.txt")));
  EXPECT_EQ(listener_.inits, 0);
  EXPECT_NO_THROW(printer.EndReport());
}

TEST_F(ReportPrinterTest, TellsAFullDiskAtTheEndOnce) {
  for (const FileCall call : {FileCall::kWrite, FileCall::kClose}) {
    ReportPrinter printer({.path = folder_.Path("report.txt")});
    Begin(printer);
    printer.PrintLine("a");
    platform_.files.FailNth(call, 1, FailureNumber::kDiskFull);
    try {
      printer.EndReport();
      FAIL() << "a report that is not whole was called whole";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), FailureNumber::kDiskFull);
      EXPECT_THAT(failure.Description(), HasSubstr(folder_.Path("report.txt")));
    }
    EXPECT_NO_THROW(printer.EndReport());
  }
}

TEST_F(ReportPrinterTest, TellsADeviceThatIsFull) {
  std::filesystem::create_symlink("/dev/full", folder_.Path("report.txt"));
  ReportPrinter printer({.path = folder_.Path("report.txt")});
  Begin(printer);
  printer.PrintLine("a");
  EXPECT_THROW(printer.EndReport(), Failure);
}

TEST_F(ReportPrinterTest, TellsAStreamThatTakesNothing) {
  std::ofstream full("/dev/full");
  ReportPrinter printer({.path = {}, .stream = &full});
  Begin(printer);
  EXPECT_THROW(printer.EndReport(), Failure);
}

TEST_F(ReportPrinterTest, PrintsOneReportAfterTheOther) {
  Begin(printer_);
  printer_.PrintLine("first");
  printer_.EndReport();
  out_.str({});
  Begin(printer_);
  SetCells(printer_, {"1", "2", "3", "4"});
  EXPECT_THAT([&] { printer_.Columns().Item(5); }, FailsWith(FailureNumber::kRange)) << "columns are set up anew";
  printer_.PrintLine("second");
  printer_.EndReport();
  EXPECT_THAT(out_.str(), ::testing::Not(HasSubstr("first")));
  EXPECT_THAT(out_.str(), EndsWith("second\n"));
}

TEST_F(ReportPrinterTest, NeedsAReportThatHasBegun) {
  EXPECT_THAT([&] { printer_.PrintLine("a"); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { printer_.PrintRow(); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { printer_.PrintHeadingRow(); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { printer_.NewPage(); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_THAT([&] { printer_.CheckPage(); }, FailsWith(FailureNumber::kObjectNotSet));
  EXPECT_NO_THROW(printer_.EndReport());
  EXPECT_EQ(out_.str(), "");
}

TEST_F(ReportPrinterTest, RaisesTheRangeFailureForAColumnThatIsNone) {
  Begin(printer_);
  EXPECT_THAT([&] { printer_.Columns().Item(0); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { printer_.Columns().Item(5); }, FailsWith(FailureNumber::kRange));
  printer_.Columns().Clear();
  EXPECT_THAT([&] { printer_.PrintRow(); }, FailsWith(FailureNumber::kRange));
}

TEST_F(ReportPrinterTest, WorksWithoutAListener) {
  ASSERT_TRUE(printer_.BeginReport(0, "T"));
  printer_.PrintLine("a");
  printer_.EndReport();
  EXPECT_EQ(out_.str(), "T\n=\n2004-02-03 14:05:09\n\na\n");
}

TEST_F(ReportPrinterTest, KeepsTheOutputOption) {
  printer_.SetOutputOption(3);
  EXPECT_EQ(printer_.OutputOption(), 3);
}

TEST_F(ReportPrinterTest, ShowsItsProgressOnTheDisplay) {
  printer_.BeginProgress("Importing data");
  printer_.SetProgressFraction(0.5F);
  EXPECT_FALSE(printer_.ProgressCancelled());
  display_.cancelled = true;
  EXPECT_TRUE(printer_.ProgressCancelled());
  printer_.EndProgress();
  EXPECT_THAT(display_.calls,
              ::testing::ElementsAre("begin Importing data", "cancel off", "fraction 0.500000", "cancel on", "end"));
}

TEST_F(ReportPrinterTest, OffersACancelAnewWhereFurtherWorkLooksForOne) {
  printer_.BeginProgress("Zeroing out data");
  EXPECT_FALSE(printer_.ProgressCancelled());
  EXPECT_FALSE(printer_.ProgressCancelled());
  printer_.BeginProgress("Importing data");
  printer_.SetProgressFraction(0.5F);
  EXPECT_THAT(display_.calls, ::testing::ElementsAre("begin Zeroing out data", "cancel off", "cancel on",
                                                     "begin Importing data", "cancel off", "fraction 0.500000"));
}

TEST_F(ReportPrinterTest, TakesAnEndOfProgressThatNeverBegan) {
  printer_.EndProgress();
  printer_.SetProgressFraction(0.5F);
  display_.cancelled = true;
  EXPECT_FALSE(printer_.ProgressCancelled());
  EXPECT_TRUE(display_.calls.empty());
}

TEST_F(ReportPrinterTest, ClosesItsProgressAtItsEnd) {
  { ReportPrinter(Destination{.path = {}, .stream = &out_}, &display_).BeginProgress("T"); }
  EXPECT_EQ(display_.calls.back(), "end");
}

TEST_F(ReportPrinterTest, ShowsNothingWithoutADisplay) {
  ReportPrinter printer({.path = {}, .stream = &out_});
  EXPECT_NO_THROW(printer.BeginProgress("T"));
  EXPECT_FALSE(printer.ProgressCancelled());
}

}  // namespace
}  // namespace tallybook::report
