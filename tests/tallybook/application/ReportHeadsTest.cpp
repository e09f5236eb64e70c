#include <gmock/gmock.h>
#include <sstream>

#include "tallybook/application/ReportHeads.h"
#include "tallybook/report/ReportPrinter.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::application {
namespace {

TEST(ReportHeads, BeginEachReportWithTheSystemAndTheReportsName) {
  const testing::ScriptedPlatform platform;
  const auto host = testing::SmallBook();
  std::ostringstream out;
  report::ReportPrinter printer({.path = {}, .stream = &out});
  ReportHeads heads;
  ASSERT_TRUE(printer.BeginReport(0, "Report"));
  printer.Columns().Add(1.0F);
  heads.InitReportPrinter(host->book, printer);
  EXPECT_THROW(printer.Columns().Item(1), Failure) << "columns of another report are gone";
  heads.PrintReportHeader(host->book, printer, "QDX Import");
  printer.EndReport();
  EXPECT_THAT(out.str(), ::testing::HasSubstr(host->book.SystemName() + " - QDX Import\n"));
}

TEST(ReportHeads, GiveTheSameEmptyListOfSequencesToEveryBook) {
  const auto host = testing::SmallBook();
  ReportHeads heads;
  EXPECT_EQ(&heads.PrintSequences(host->book), &heads.PrintSequences(host->book));
}

}  // namespace
}  // namespace tallybook::application
