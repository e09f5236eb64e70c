// How an import meets failures: of the host, of the file, and a record that cannot be read.
#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "import/QDXImport.h"
#include "tests/import/ImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

Failure HostFault() {
  return Failure(FailureNumber::kDeviceError, "The host has failed", "Host");
}

// --- A record that cannot be read ------------------------------------------------------------------------------------

TEST(QDXImportFailureDeathTest, ARecordThatCannotBeReadStopsTheProgramAtOnce) {
  for (const auto& [math, nth] : {std::pair{1, 1}, {1, 3}, {3, 1}, {3, 5}, {3, 10}, {4, 2}}) {
    ImportSetup setup;
    setup.Put("DAY.QDX", ManyFigures());
    setup.math = static_cast<Integer>(math);
    setup.host->record.GiveFalseOn("ReadRecord", nth);
    EXPECT_EXIT(std::_Exit(setup.Import() ? 0 : 3), ::testing::ExitedWithCode(EXIT_FAILURE), "^$")
        << math << " " << nth;
  }
}

TEST(QDXImportFailureDeathTest, ADateThatTheBookDoesNotHoldStopsTheProgram) {
  ImportSetup setup;
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{DateFromParts(2010, 1, 1), {{1, 1}}}}}};
  setup.Put("DAY.QDX", file);
  EXPECT_EXIT(std::_Exit(setup.Import() ? 0 : 3), ::testing::ExitedWithCode(EXIT_FAILURE), "^$");
}

// --- Failures while the operation runs -------------------------------------------------------------------------------

class QDXImportFailureTest : public ::testing::Test {
 protected:
  [[nodiscard]] bool Import(const ExchangeFile& file) {
    setup_.Put("DAY.QDX", file);
    return setup_.Import();
  }
  CallRecord& calls() { return setup_.host->record; }
  [[nodiscard]] std::vector<Text> Boxes() const { return setup_.platform.boxes.Texts(); }
  [[nodiscard]] bool IsClosed() const { return setup_.file_number == 0 && setup_.platform.memory.OpenHandles() == 0; }

  ImportSetup setup_;
};

TEST_F(QDXImportFailureTest, AFailureIsLoggedAndAskedAboutOnce) {
  calls().FailOn("SetFieldValue", 1, HostFault());
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(OneFigure()));
  EXPECT_THAT(setup_.host->app.log.errors,
              ElementsAre(MemoryLog::Error{"Host - CDataExchange:ImportQDXFile", 209, -1}));
  EXPECT_THAT(setup_.platform.boxes.Shown(),
              ElementsAre(ShownBox{kAsk, kQuestionIcon | kRetryCancel, "Tallybook", kCancel}));
}

TEST_F(QDXImportFailureTest, AFigureThatIsNoneIsAFailureAndIsNotStored) {
  for (const Double value : {std::numeric_limits<Double>::quiet_NaN(), std::numeric_limits<Double>::infinity()}) {
    setup_.host->app.log.errors.clear();
    setup_.host->book.Set(101, February(3), 1, 8);
    setup_.platform.boxes.Answer({kRetry, kCancel});
    EXPECT_FALSE(Import(OneFigure(value)));
    const MemoryLog::Error error{"Tallybook - CDataExchange:ImportQDXFile", 209, -1};
    EXPECT_THAT(setup_.host->app.log.errors, ElementsAre(error, error));
    EXPECT_EQ(setup_.host->book.Get(101, February(3), 1), 8);
    EXPECT_TRUE(IsClosed());
  }
}

TEST_F(QDXImportFailureTest, ASumBeyondANumberIsAFailureAndIsNotStored) {
  setup_.host->book.Set(101, February(3), 1, 1e308);
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(OneFigure(1e308)));
  EXPECT_EQ(setup_.host->app.log.errors.size(), 1U);
  EXPECT_EQ(setup_.host->book.Get(101, February(3), 1), 1e308);
}

TEST_F(QDXImportFailureTest, AsksWhereTheDatabaseCannotGiveItsApplication) {
  for (int call = 1; call <= 9; ++call) calls().FailOn("App", call, HostFault());
  setup_.platform.boxes.Answer({kRetry, kCancel});
  EXPECT_FALSE(Import(OneFigure()));
  const ShownBox question{kAsk, kQuestionIcon | kRetryCancel, ScriptedPlatform::kTitle, kRetry};
  ASSERT_EQ(setup_.platform.boxes.Shown().size(), 2U);
  EXPECT_EQ(setup_.platform.boxes.Shown()[0], question);
  calls().DisarmFaults();
  calls().FailOn("App", 1, HostFault());
  setup_.platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Import(OneFigure())) << "once it is there again";
}

TEST_F(QDXImportFailureTest, AFailureThatLastsIsAskedAboutEachTime) {
  setup_.definition.accounts.Reset(2);  // too small for the file
  setup_.platform.boxes.Answer({kRetry, kRetry, kCancel});
  EXPECT_FALSE(Import(OneFigure()));
  EXPECT_THAT(Boxes(), ElementsAre(kAsk, kAsk, kAsk));
  EXPECT_EQ(setup_.host->app.log.errors.size(), 3U);
  EXPECT_TRUE(IsClosed());
}

TEST_F(QDXImportFailureTest, RetryRepeatsTheComparisonAsAWhole) {
  ExchangeFile last = ShopFile();
  last.accounts[0].description = "Counter";
  last.accounts[2].description = "Court";
  setup_.platform.memory.Put(kArchive, last.Bytes());
  calls().FailOn("Printer.PrintRow", 3, HostFault());
  setup_.platform.boxes.Answer({kRetry, kOk});
  EXPECT_TRUE(Import(OneFigure()));
  EXPECT_EQ(Boxes().size(), 2U);
  EXPECT_EQ(setup_.host->book.Get(101, February(3), 1), 2.5);
  EXPECT_TRUE(IsClosed());
}

// Every operation of the host that an import uses behind the reading of the header.
const std::vector<Text> kHostOperations = {"WriteRecord",
                                           "ReadRecord",
                                           "SetFieldValue",
                                           "FieldValue",
                                           "Calendar.LevelDate",
                                           "Printer.PrintLine",
                                           "BeginRollback",
                                           "EndRollback",
                                           "FirstDate",
                                           "LastDate",
                                           "NumFields",
                                           "FieldNumber",
                                           "NumAccounts",
                                           "AccountNumber",
                                           "NewAccountRecord",
                                           "AccountRecord.SetSelect",
                                           "AccountRecord.Code",
                                           "AccountRecord.Number",
                                           "DataLevel",
                                           "FiscalCalendar",
                                           "App.BeginImport",
                                           "EndProgress",
                                           "Printer.BeginProgress",
                                           "Printer.ProgressFraction",
                                           "Printer.EndProgress",
                                           "Printer.ProgressCancelled"};

class EveryCallFailsOnce : public ::testing::TestWithParam<Text> {
 protected:
  // A replacing import of two files into a book that holds other figures there.
  static std::unique_ptr<ImportSetup> Prepared() {
    auto setup = std::make_unique<ImportSetup>();
    setup->math = 3;
    setup->definition.Disp = kDispRename;
    for (int day = 1; day <= 4; ++day) {
      setup->host->book.Set(101, February(day), 1, 1000);
      setup->host->book.Set(205, February(day), 2, 1000);
    }
    setup->Put("A.QDX", ManyFigures(), 1);
    ExchangeFile second = ShopFile(February(4), February(4));
    second.blocks = {{2, {{February(4), {{1, 64}}}}}, {3, {{February(4), {{2, 128}}}}}};
    setup->Put("B.QDX", second, 2);
    return setup;
  }
};

TEST_P(EveryCallFailsOnce, AndRetryLosesAndDoublesNothing) {
  const auto undisturbed = Prepared();
  ASSERT_TRUE(undisturbed->Import());
  int nth = 0;
  for (bool struck = true; struck;) {
    const auto setup = Prepared();
    CallRecord& record = setup->host->record;
    record.FailOn(GetParam(), ++nth, HostFault());
    setup->platform.boxes.Answer({kRetry});
    EXPECT_TRUE(setup->Import()) << nth;
    struck = record.AllFaultsStruck();
    EXPECT_EQ(setup->platform.boxes.Texts().size(), struck ? 1U : 0U) << nth;
    EXPECT_EQ(setup->host->book.Figures(), undisturbed->host->book.Figures()) << nth;
    EXPECT_EQ(setup->Lines(), undisturbed->Lines()) << nth;
    EXPECT_EQ(setup->host->book.Journal().size(), 2U) << nth;
    EXPECT_TRUE(setup->host->book.Journal().back().closed) << nth;
    EXPECT_TRUE(setup->Has("A.XDQ") && setup->Has("B.XDQ")) << nth;
    EXPECT_EQ(setup->platform.memory.OpenHandles(), 0) << nth;
    ASSERT_LT(nth, 1000);
  }
  EXPECT_GT(nth, 1) << "the operation was never called";
}

TEST_P(EveryCallFailsOnce, AndCancelLeavesWhatTheJournalTakesBack) {
  int nth = 0;
  for (bool struck = true; struck;) {
    const auto setup = Prepared();
    MemoryMasterfile& book = setup->host->book;
    const Figures before = book.Figures();
    setup->host->record.FailOn(GetParam(), ++nth, HostFault());
    setup->platform.boxes.Answer({kCancel});
    const bool done = setup->Import();
    struck = setup->host->record.AllFaultsStruck();
    EXPECT_EQ(done, !struck) << nth;
    EXPECT_EQ(setup->platform.boxes.AnswersLeft(), struck ? 0U : 1U) << nth;
    EXPECT_EQ(setup->platform.memory.OpenHandles(), 0) << nth;
    EXPECT_EQ(setup->file_number, 0) << nth;
    EXPECT_FALSE(setup->host->printer->progress.open) << nth;
    EXPECT_NE(setup->Has("B.QDX"), setup->Has("B.XDQ")) << nth;
    // A journal that was opened for the file at hand stays open unless the file's own end was reached.
    const auto lines = setup->Lines();
    const auto begun = std::count_if(lines.begin(), lines.end(), [](const Text& l) { return l.starts_with("Beg"); });
    const auto ended = setup->host->record.ArgumentsOf("EndRollback").size() - (struck && GetParam() == "EndRollback");
    const auto journal = book.Journal();
    EXPECT_LE(journal.size(), static_cast<std::size_t>(begun)) << nth;
    if (!journal.empty()) {
      EXPECT_EQ(journal.back().closed, ended == journal.size()) << nth;
    }
    while (book.UndoLastRollback()) continue;
    EXPECT_EQ(book.Figures(), before) << nth;
    ASSERT_LT(nth, 1000);
  }
  EXPECT_GT(nth, 1) << "the operation was never called";
}

INSTANTIATE_TEST_SUITE_P(HostOperations, EveryCallFailsOnce, ::testing::ValuesIn(kHostOperations),
                         [](const ::testing::TestParamInfo<Text>& operation) {
                           Text name = operation.param;
                           std::erase(name, '.');
                           return name;
                         });

class FailingFileTest : public ::testing::Test {
 protected:
  // More than one buffer's worth of figures, so that reads fall into the middle of items.
  static const ExchangeFile& LongFile() {
    static const ExchangeFile file = [] {
      ExchangeFile made = ShopFile(DateFromParts(2003, 1, 1), DateFromParts(2005, 12, 31));
      for (Integer account = 1; account <= 3; ++account) {
        made.blocks.push_back({account, {}});
        for (Date date = made.first; date <= made.last; ++date) {
          made.blocks.back().days.push_back({date, {{1, account + date}, {2, 1}}});
        }
      }
      return made;
    }();
    return file;
  }
};

TEST_F(FailingFileTest, ARetriedReadLosesAndDoublesNothing) {
  ImportSetup undisturbed;
  undisturbed.Put("DAY.QDX", LongFile());
  ASSERT_TRUE(undisturbed.Import());
  const int reads = undisturbed.platform.files.Calls(FileCall::kRead);
  ASSERT_GT(reads, 1);
  for (int nth = 1; nth <= reads; ++nth) {
    ImportSetup setup;
    setup.Put("DAY.QDX", LongFile());
    setup.platform.files.FailNth(FileCall::kRead, nth, FailureNumber::kDeviceError);
    if (nth > 1) setup.platform.boxes.Answer({kRetry});
    // The first read is the header's, which does not ask.
    EXPECT_EQ(setup.Import(), nth > 1) << nth;
    EXPECT_EQ(setup.platform.files.FaultsRaised(), 1) << nth;
    EXPECT_EQ(setup.platform.boxes.Texts(), nth > 1 ? std::vector<Text>{kAsk} : std::vector<Text>{});
    if (nth > 1) {
      EXPECT_EQ(setup.host->book.Figures(), undisturbed.host->book.Figures()) << nth;
      EXPECT_EQ(setup.Lines(), undisturbed.Lines()) << nth;
    }
  }
}

TEST_F(FailingFileTest, ACancelledReadLeavesWhatTheJournalTakesBack) {
  ImportSetup setup;
  const Figures before = setup.host->book.Figures();
  setup.Put("DAY.QDX", LongFile());
  setup.platform.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError);
  setup.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(setup.Import());
  EXPECT_NE(setup.host->book.Figures(), before);
  EXPECT_EQ(setup.platform.memory.OpenHandles(), 0);
  EXPECT_TRUE(setup.Has("DAY.QDX"));
  EXPECT_FALSE(setup.host->book.Journal().back().closed);
  EXPECT_TRUE(setup.host->book.UndoLastRollback());
  EXPECT_EQ(setup.host->book.Figures(), before);
}

TEST_F(FailingFileTest, AReadThatFailsAgainAndAgainIsAskedAboutUntilItWorks) {
  ImportSetup setup;
  setup.Put("DAY.QDX", LongFile());
  setup.platform.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError, 3);
  setup.platform.boxes.Answer({kRetry, kRetry, kRetry});
  EXPECT_TRUE(setup.Import());
  EXPECT_EQ(setup.host->book.Get(205, DateFromParts(2005, 12, 31), 2), 1);
}

TEST_F(FailingFileTest, AFileWhoseSizeCannotBeToldIsAskedAbout) {
  ImportSetup undisturbed;
  undisturbed.Put("DAY.QDX", ManyFigures());
  ASSERT_TRUE(undisturbed.Import());
  const int looks = undisturbed.platform.files.Calls(FileCall::kSize);
  ASSERT_GT(looks, 0);
  for (int nth = 1; nth <= looks; ++nth) {
    ImportSetup setup;
    setup.Put("DAY.QDX", ManyFigures());
    setup.platform.files.FailNth(FileCall::kSize, nth, FailureNumber::kDeviceError);
    setup.platform.boxes.Answer({kRetry});
    EXPECT_TRUE(setup.Import()) << nth;
    EXPECT_EQ(setup.platform.boxes.AnswersLeft(), 0U) << nth;
    EXPECT_EQ(setup.host->book.Figures(), undisturbed.host->book.Figures()) << nth;
  }
}

TEST_F(FailingFileTest, AFolderThatCannotBeSearchedIsAskedAbout) {
  ImportSetup setup;
  setup.Put("DAY.QDX", OneFigure());
  setup.platform.files.FailNth(FileCall::kFind, 1, FailureNumber::kPathNotFound);
  setup.platform.boxes.Answer({kRetry});
  EXPECT_TRUE(setup.Import());
  EXPECT_THAT(setup.host->app.log.errors,
              ElementsAre(MemoryLog::Error{"FaultyFileSystem - CDataExchange:ImportQDXFile", 10, -1}));
  EXPECT_EQ(setup.host->book.Get(101, February(3), 1), 2.5);
}

}  // namespace
}  // namespace tallybook::testing
