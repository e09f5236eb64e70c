#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "import/BatchImport.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

Failure SomeFailure() {
  return Failure(FailureNumber::kDeviceError, "It has failed", "Source");
}

// The exchange object's side of a batch: definitions by number, and a note of each thing asked.
class ScriptedDefinitions : public BatchDefinitions {
 public:
  struct Definition {
    Text description;
    Integer files = 1;
    bool good = true;
  };

  std::vector<Definition> definitions;
  bool loaded = false;
  bool can_load = true;
  std::function<void()> before_import = [] {};
  std::vector<Text> asked;

  [[nodiscard]] bool IsLoaded() const override { return loaded; }
  [[nodiscard]] bool Load(Masterfile&) override {
    asked.push_back("Load");
    loaded = can_load;
    return can_load;
  }
  void Discard() override {
    asked.push_back("Discard");
    loaded = false;
  }
  [[nodiscard]] Integer Count() const override { return static_cast<Integer>(definitions.size()); }
  void Select(Integer definition) override {
    asked.push_back("Select " + std::to_string(definition));
    selected_ = definition;
  }
  [[nodiscard]] Text Description(Integer definition) const override { return At(definition).description; }
  [[nodiscard]] Integer CountFiles() override {
    asked.emplace_back("CountFiles");
    return At(selected_).files;
  }
  void SetMath(Integer math) override { asked.push_back("SetMath " + std::to_string(math)); }
  [[nodiscard]] bool Import(Printer& report) override {
    asked.push_back("Import " + std::to_string(selected_));
    before_import();
    report.PrintLine("(import " + std::to_string(selected_) + ")");
    return selected_ == 0 || At(selected_).good;
  }

 private:
  [[nodiscard]] const Definition& At(Integer definition) const {
    return definitions.at(static_cast<std::size_t>(definition - 1));
  }
  Integer selected_ = 0;
};

class BatchImportTest : public ::testing::Test {
 protected:
  bool Run(const Text& import_type) {
    return ImportBatch({.owner_window = 4711, .masterfile = host_->book, .import_type = import_type}, definitions_,
                       host_->factory, printer_, stop_);
  }
  // The report of the run; each run makes one printer.
  const PrintedReport& Report() { return *host_->factory.reports.back(); }
  // What stands on the report behind its page head.
  std::vector<Text> Lines() {
    const std::vector<Text> lines = Report().Lines();
    return {lines.begin() + 1, lines.end()};
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<MemoryHost> host_ = SmallBook();
  ScriptedDefinitions definitions_;
  std::unique_ptr<Printer> printer_;
  std::optional<StopReason> stop_;
};

const Text kSomeFailed =
    "At least one set of QDX files were not able to be Imported.  Please check the log of the Import.";

// --- The report ------------------------------------------------------------------------------------------------------

TEST_F(BatchImportTest, TheReportHasItsTitleOwnerOptionHeadAndColumns) {
  definitions_.definitions = {{.description = "One"}};
  host_->app.user_option = 12;
  EXPECT_TRUE(Run("1"));
  EXPECT_EQ(Report().title, "QDX Import Report");
  EXPECT_EQ(Report().owner, 4711);
  EXPECT_EQ(Report().output_option, 12);
  EXPECT_EQ(Report().column_mode, 1);
  EXPECT_TRUE(Report().columns_applied);
  EXPECT_THAT(Report().widths, ElementsAre(1.0F, 3.0F, 1.0F, 3.0F));
  EXPECT_EQ(Report().Lines().front(), "QDX Import - North Shop");
  EXPECT_TRUE(Report().ended);
  EXPECT_EQ(printer_, nullptr);
}

TEST_F(BatchImportTest, TheReportIsPreparedOpenedAndClosedInThisOrder) {
  definitions_.definitions = {{.description = "One"}};
  EXPECT_TRUE(Run("1"));
  EXPECT_THAT(
      host_->record.calls,
      ElementsAre("Printer.OutputOption 0", "Printer.BeginReport 4711 QDX Import Report", "InitReportPrinter",
                  "Printer.ColumnMode 1", "Printer.ApplyColumns", "PrintReportHeader QDX Import",
                  "Printer.PrintLine QDX Import - North Shop", "Printer.PrintLine (import 1)", "Printer.EndReport"));
}

TEST_F(BatchImportTest, TellsOfADatabaseThatCannotGiveItsApplication) {
  definitions_.definitions = {{.description = "One"}};
  for (int call = 1; call <= 9; ++call) host_->record.FailOn("App", call, SomeFailure());
  host_->record.FailOn("Printer.PrintLine", 1, SomeFailure());
  EXPECT_FALSE(Run("1"));
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("It has failed"));
  EXPECT_EQ(platform_.boxes.Shown()[0].caption, ScriptedPlatform::kTitle);
  EXPECT_EQ(printer_, nullptr);
}

TEST_F(BatchImportTest, EveryPageHasTheHead) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.before_import = [&] { host_->factory.LastPrinter()->BeginPage(); };
  EXPECT_TRUE(Run("1"));
  EXPECT_THAT(Report().Lines(), ElementsAre("QDX Import - North Shop", "QDX Import - North Shop", "(import 1)"));
}

TEST_F(BatchImportTest, APrinterThatIsThereAlreadyIsUsedAndGoneAfterwards) {
  definitions_.definitions = {{.description = "One"}};
  auto made = std::make_unique<MemoryPrinter>(host_->record);
  const auto printed = made->Printed();
  printer_ = std::move(made);
  EXPECT_TRUE(Run("1"));
  EXPECT_THAT(printed->Lines(), Contains("(import 1)"));
  EXPECT_TRUE(printed->ended);
  EXPECT_THAT(host_->factory.reports, IsEmpty());
  EXPECT_EQ(printer_, nullptr);
}

TEST_F(BatchImportTest, ARefusedReportImportsNothingAndSetsNoBusyPointer) {
  definitions_.definitions = {{.description = "One"}};
  host_->record.GiveFalseOn("Printer.BeginReport", 1);
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(definitions_.asked, ElementsAre("Load", "Discard"));
  EXPECT_THAT(platform_.screen.Pointers(), ElementsAre(Pointer::kDefault));
  EXPECT_THAT(host_->record.ArgumentsOf("Printer.EndReport"), ElementsAre(""));
  EXPECT_EQ(printer_, nullptr);
}

TEST_F(BatchImportTest, ThePointerIsBusyWhileImportsRun) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.before_import = [&] { EXPECT_THAT(platform_.screen.Pointers(), ElementsAre(Pointer::kBusy)); };
  EXPECT_TRUE(Run("1"));
  EXPECT_THAT(platform_.screen.Pointers(), ElementsAre(Pointer::kBusy, Pointer::kDefault));
}

// --- The definitions -------------------------------------------------------------------------------------------------

TEST_F(BatchImportTest, DefinitionsThatCannotBeLoadedEndTheRun) {
  definitions_.can_load = false;
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(definitions_.asked, ElementsAre("Load", "Discard"));
  EXPECT_THAT(host_->factory.reports, IsEmpty());
  EXPECT_THAT(platform_.screen.Pointers(), ElementsAre(Pointer::kDefault));
}

TEST_F(BatchImportTest, AListThatTheCallerLoadedStaysLoaded) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.loaded = true;
  EXPECT_TRUE(Run("1"));
  EXPECT_TRUE(definitions_.loaded);
  EXPECT_THAT(definitions_.asked, ElementsAre("Select 1", "Import 1"));
}

TEST_F(BatchImportTest, AListThatTheRunLoadedIsDiscardedAlsoAfterAFailure) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.before_import = [] { throw SomeFailure(); };
  EXPECT_FALSE(Run("1"));
  EXPECT_FALSE(definitions_.loaded);
}

// --- One definition --------------------------------------------------------------------------------------------------

TEST_F(BatchImportTest, ANumberImportsThatDefinitionWithTheObjectsMode) {
  definitions_.definitions = {{.description = "One"}, {.description = "Two"}};
  EXPECT_TRUE(Run("2"));
  EXPECT_THAT(definitions_.asked, ElementsAre("Load", "Select 2", "Import 2", "Discard"));
  EXPECT_THAT(Lines(), ElementsAre("(import 2)"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(BatchImportTest, ANumbersResultIsThatOfItsImport) {
  definitions_.definitions = {{.description = "One", .good = false}};
  EXPECT_FALSE(Run("1"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty()) << "the import has told the reason";
}

TEST_F(BatchImportTest, TextsThatAreNotAllReadAsNumbers) {
  definitions_.definitions.resize(5);
  const std::vector<std::pair<Text, Text>> cases = {{" ALL", "Select 0"},    {"ALL ", "Select 0"}, {"", "Select 0"},
                                                    {"3 or so", "Select 3"}, {"1.5", "Select 2"},  {"2.5", "Select 2"},
                                                    {" 4", "Select 4"}};
  for (const auto& [text, select] : cases) {
    definitions_.asked.clear();
    EXPECT_TRUE(Run(text)) << text;
    EXPECT_THAT(definitions_.asked, Contains(select)) << text;
  }
}

TEST_F(BatchImportTest, ANumberBeyond16BitsIsToldOnTheReport) {
  EXPECT_FALSE(Run("40000"));
  EXPECT_THAT(Lines(), ElementsAre("Error: 670Tallybook"));
}

// --- All definitions -------------------------------------------------------------------------------------------------

TEST_F(BatchImportTest, AllRunsEveryDefinitionAsAReplacement) {
  definitions_.definitions = {{.description = "One", .files = 3}, {.description = "Two"}};
  EXPECT_TRUE(Run("ALL"));
  EXPECT_THAT(Lines(), ElementsAre("Importing QDX files for 2 Import Layouts", "", "Reading files for One",
                                   "Number of matching Files: 3", "(import 1)", "", "Reading files for Two",
                                   "Number of matching Files: 1", "(import 2)"));
  EXPECT_THAT(definitions_.asked, ElementsAre("Load", "Select 1", "CountFiles", "SetMath 3", "Import 1", "Select 2",
                                              "CountFiles", "SetMath 3", "Import 2", "Discard"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(BatchImportTest, AllIsMeantInAnyCase) {
  for (const char* text : {"all", "All", "aLL"}) {
    definitions_.definitions = {{.description = "One"}};
    EXPECT_TRUE(Run(text));
    EXPECT_EQ(Lines().front(), "Importing QDX files for 1 Import Layouts") << text;
  }
}

TEST_F(BatchImportTest, DescriptionsSortByTheirBytesCapitalsFirst) {
  for (const char* description : {"b", "B", "a", "Z", "\xC3\x84", "10", "9", ""}) {
    definitions_.definitions.push_back({.description = description, .files = 0});
  }
  EXPECT_TRUE(Run("ALL"));
  std::vector<Text> order;
  for (const Text& asked : definitions_.asked) {
    if (asked.starts_with("Select ")) order.push_back(asked.substr(7));
  }
  EXPECT_THAT(order, ElementsAre("8", "6", "7", "2", "4", "3", "1", "5"));
}

TEST_F(BatchImportTest, EqualDescriptionsComeLowerNumberFirst) {
  for (const char* description : {"Z", "Same", "A", "Same", "Same"}) {
    definitions_.definitions.push_back({.description = description, .files = 0});
  }
  EXPECT_TRUE(Run("ALL"));
  std::vector<Text> order;
  for (const Text& asked : definitions_.asked) {
    if (asked.starts_with("Select ")) order.push_back(asked.substr(7));
  }
  EXPECT_THAT(order, ElementsAre("3", "2", "4", "5", "1"));
}

TEST_F(BatchImportTest, ADefinitionWithoutFilesIsNoFailure) {
  definitions_.definitions = {{.description = "One", .files = 0, .good = false}};
  EXPECT_TRUE(Run("ALL"));
  EXPECT_THAT(Lines(), ElementsAre("Importing QDX files for 1 Import Layouts", "", "Reading files for One",
                                   "No matching files found."));
  EXPECT_THAT(definitions_.asked, ElementsAre("Load", "Select 1", "CountFiles", "Discard"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(BatchImportTest, AFailingDefinitionDoesNotStopTheOthersAndIsToldOnceAtTheEnd) {
  definitions_.definitions = {
      {.description = "A", .good = false}, {.description = "B"}, {.description = "C", .good = false}};
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(definitions_.asked, Contains("Import 2"));
  EXPECT_THAT(definitions_.asked, Contains("Import 3"));
  EXPECT_THAT(platform_.boxes.Shown(),
              ElementsAre(ShownBox{kSomeFailed, kInformationIcon | kOkOnly, "Tallybook", kOk}));
}

TEST_F(BatchImportTest, WithoutDefinitionsAllEndsInTheFailureLine) {
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(Lines(), ElementsAre("Importing QDX files for 0 Import Layouts", "Error: 972Tallybook"));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  EXPECT_TRUE(Report().ended);
}

TEST_F(BatchImportTest, TheUserInterfaceRunsOnceAtTheStartAndForEachDefinition) {
  definitions_.definitions = {{.description = "One"}, {.description = "Two"}};
  EXPECT_TRUE(Run("1"));
  EXPECT_EQ(platform_.input.Runs(), 1);
  EXPECT_TRUE(Run("ALL"));
  EXPECT_EQ(platform_.input.Runs(), 1 + 1 + 2);
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(BatchImportTest, AFailureIsOneLineOfNumberStatementAndSource) {
  definitions_.definitions = {{.description = "One"}, {.description = "Two"}};
  definitions_.before_import = [] { throw SomeFailure(); };
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(Lines(), ElementsAre("Importing QDX files for 2 Import Layouts", "", "Reading files for One",
                                   "Number of matching Files: 1", "Error: 5774Source"));
  EXPECT_THAT(host_->app.log.errors, IsEmpty());
  EXPECT_TRUE(Report().ended);
  EXPECT_EQ(printer_, nullptr);
  EXPECT_THAT(platform_.screen.Pointers(), ElementsAre(Pointer::kBusy, Pointer::kDefault));
}

TEST_F(BatchImportTest, AFailureBeforeThereIsAReportGoesToTheLog) {
  host_->record.FailOn("NewPrinter", 1, SomeFailure());
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Source - CDataExchange:ImportQDXFileEX", 50, -1}));
  EXPECT_FALSE(definitions_.loaded);
}

TEST_F(BatchImportTest, AFailureThatTheReportCannotTakeIsLoggedBeforeWhatKeptItOffTheReport) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.before_import = [&] {
    host_->record.FailOn("Printer.PrintLine", 1, Failure(FailureNumber::kDiskFull, "Full", "Report"));
    throw SomeFailure();
  };
  EXPECT_FALSE(Run("1"));
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Source - CDataExchange:ImportQDXFileEX", 70, -1},
                                                 MemoryLog::Error{"Report - CDataExchange:ImportQDXFileEX", 0, -1}));
  EXPECT_TRUE(Report().ended);
}

// The log may ask for the failure that is being handled, as one that shows descriptions does.
TEST_F(BatchImportTest, EachFailureIsLoggedWhileItIsTheOneBeingHandled) {
  definitions_.definitions = {{.description = "One"}};
  definitions_.before_import = [&] {
    host_->record.FailOn("Printer.PrintLine", 1, Failure(FailureNumber::kDiskFull, "Full", "Report"));
    throw SomeFailure();
  };
  EXPECT_FALSE(Run("1"));
  EXPECT_THAT(host_->app.log.handled, ElementsAre("It has failed", "Full"));
}

TEST_F(BatchImportTest, AReportThatCannotBeginIsLoggedOnceAndItsFailureAlone) {
  host_->record.FailOn("Printer.BeginReport", 1, SomeFailure());
  host_->record.FailOn("Printer.PrintLine", 1, Failure(FailureNumber::kObjectNotSet, "Not begun", "Report"));
  EXPECT_FALSE(Run("ALL"));
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Source - CDataExchange:ImportQDXFileEX", 50, -1}));
  EXPECT_THAT(host_->record.ArgumentsOf("Printer.EndReport"), ElementsAre(""));
  EXPECT_EQ(printer_, nullptr);
}

TEST_F(BatchImportTest, AResultThatWasSetStandsWhenTheReportsEndFails) {
  definitions_.definitions = {{.description = "One"}};
  host_->record.FailOn("Printer.EndReport", 1, SomeFailure());
  EXPECT_TRUE(Run("ALL"));
  EXPECT_EQ(printer_, nullptr);
  EXPECT_THAT(host_->app.log.errors, ElementsAre(MemoryLog::Error{"Source - CDataExchange:ImportQDXFileEX", 80, -1}));
  EXPECT_EQ(platform_.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(BatchImportTest, EveryCallOfTheHostMayFailAndTheRunStillEndsInOrder) {
  int nth = 0;
  for (bool struck = true; struck;) {
    ScriptedPlatform platform(FilesIn::kMemory);
    const auto host = SmallBook();
    ScriptedDefinitions definitions;
    definitions.definitions = {{.description = "One"}, {.description = "Two", .files = 0}};
    std::unique_ptr<Printer> printer;
    std::optional<StopReason> stop;
    host->record.FailOn(kAnyOperation, ++nth, SomeFailure());
    const bool done = ImportBatch({.owner_window = 0, .masterfile = host->book, .import_type = "ALL"}, definitions,
                                  host->factory, printer, stop);
    struck = host->record.AllFaultsStruck();
    EXPECT_TRUE(done || struck) << nth;
    EXPECT_EQ(printer, nullptr) << nth;
    EXPECT_FALSE(definitions.loaded) << nth;
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault) << nth;
    ASSERT_LT(nth, 200);
  }
  EXPECT_GT(nth, 10);
}

}  // namespace
}  // namespace tallybook::testing
