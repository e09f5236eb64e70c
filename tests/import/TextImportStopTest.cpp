// The reasons that the two text imports give for a false, for their application to tell.
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "import/CSVImport.h"
#include "import/DelimitedImport.h"
#include "platform/StopProgram.h"
#include "tests/import/TextImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

const Text kPath = "/in/figures.txt";

class TextImportStopTest : public TextImportFixture {
 protected:
  // False, with the reason of it.
  StopReason StopOfDelimited(const std::string& bytes) {
    setup_.platform.memory.Put(kPath, bytes);
    setup_.tally = {};
    EXPECT_FALSE(ImportDelimited(setup_.book(), {.file_name = kPath, .math = eMath::mAdd}, setup_.tally));
    return setup_.tally.stop.value_or(StopReason{});
  }
  StopReason StopOfCSV(const std::string& bytes, std::vector<Integer> clear_fields = {0}) {
    setup_.platform.memory.Put(kPath, bytes);
    setup_.tally = {};
    const bool no_prompts = true;
    EXPECT_FALSE(ImportCSV(setup_.book(),
                           {.file_name = kPath, .no_prompts = no_prompts, .clear_fields = std::move(clear_fields)},
                           setup_.tally));
    return setup_.tally.stop.value_or(StopReason{});
  }
};

TEST_F(TextImportStopTest, AFailureIsToldWithItsRecordAndValue) {
  Answer({kOk});
  const StopReason stop = StopOfDelimited("2,3,2004,100,1,5\r2,3,2004,200,1,12 pieces\r");
  EXPECT_EQ(stop.file, kPath);
  EXPECT_EQ(stop.place, "record 2");
  EXPECT_EQ(stop.words, "\"12 pieces\" is not a number");
  EXPECT_EQ(stop.number, 13);
  EXPECT_EQ(stop.statement, 107);
}

TEST_F(TextImportStopTest, AnAuditThatIsStoppedTellsTheRecord) {
  Answer({kOk, kNo});
  const StopReason stop = StopOfDelimited("2,3,2004,100,1,5\r2,3,2004,SHOP,1,5\r");
  EXPECT_EQ(stop.place, "record 2");
  EXPECT_EQ(stop.words, "Invalid Account Code SHOP");
}

TEST_F(TextImportStopTest, AnAuditOfABadDateTellsTheRecordThatItsQuestionDoesNot) {
  Answer({kOk, kNo});
  const StopReason stop = StopOfDelimited("2,3,2004,100,1,5\r2,3,2010,100,1,5\r");
  EXPECT_EQ(stop.place, "record 2");
  EXPECT_EQ(stop.words, "Invalid date: 2010-02-03 in import file");
}

TEST_F(TextImportStopTest, ErrorsThatWereLetPassAreTheReason) {
  Answer({kOk, kYes});
  EXPECT_EQ(StopOfDelimited("2,3,2004,SHOP,1,5\r").words, AuditFoundErrors().words);
  Answer({kYes, kYes});
  EXPECT_EQ(StopOfCSV("2,3,2004,1,1\r\nSHOP,1,5\r\n").words, AuditFoundErrors().words);
}

TEST_F(TextImportStopTest, CancelAndAMissingFileAreReasons) {
  Answer({kCancel});
  EXPECT_EQ(StopOfDelimited("2,3,2004,100,1,5\r").words, "cancelled before anything was imported");
  EXPECT_FALSE(ImportDelimited(setup_.book(), {.file_name = "/in/none.txt", .math = eMath::mAdd}, setup_.tally));
  EXPECT_EQ(setup_.tally.stop.value().words, "File: /in/none.txt does not exist.");
}

TEST_F(TextImportStopTest, ACutDateChangeTellsRecordAndByte) {
  const StopReason stop = StopOfCSV("2,3,2004,1,1\r\n100,1,5\r\n,,\r\n2,4");
  EXPECT_EQ(stop.number, 62);
  EXPECT_THAT(stop.place, MatchesRegex("record 3, byte [0-9]+"));
}

TEST_F(TextImportStopTest, AHeaderThatDoesNotReadTellsWhy) {
  const StopReason stop = StopOfCSV("99999,3,2004,1,1\r\n");
  EXPECT_EQ(stop.number, 6);
  EXPECT_EQ(stop.words, "no valid header: 99999.000000 does not fit a whole number of 16 bits");
}

TEST_F(TextImportStopTest, ADateThatWasLetPassIsToldWhereTheBookHasNoRecord) {
  Answer({kYes});
  const StopReason stop = StopOfCSV("2,3,2004,1,1\r\n100,1,5\r\n,,\r\n2,4,2010\r\n100,1,5\r\n");
  EXPECT_THAT(stop.words, StartsWith("the database has no record of its account 101 on 2010-02-04; its dates are "));
  EXPECT_THAT(stop.place, MatchesRegex("record 4, byte [0-9]+"));
  EXPECT_EQ(stop.statement, 165);
}

TEST_F(TextImportStopTest, ClearingThatMeetsNoRecordHasAReasonThoughNoBox) {
  Answer({kYes});
  const StopReason stop = StopOfCSV("2,3,2004,1,1\r\n100,1,5\r\n,,\r\n2,4,2010\r\n100,1,5\r\n", {0, 1});
  EXPECT_THAT(stop.words, StartsWith("the database has no record of its account 101 on 2010-02-04"));
  EXPECT_EQ(stop.statement, 150);
}

TEST_F(TextImportStopTest, AFileThatCannotBeOpenedTellsTheFailure) {
  setup_.platform.memory.Put(kPath, "2,3,2004,100,1,5\r");
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPathOrAccess);
  Answer({kCancel});
  EXPECT_FALSE(ImportDelimited(setup_.book(), {.file_name = kPath, .math = eMath::mAdd}, setup_.tally));
  EXPECT_EQ(setup_.tally.stop.value().number, 75);
  EXPECT_EQ(setup_.tally.stop.value().file, kPath);
}

TEST_F(TextImportStopTest, FiguresAreStoredThoughWhatComesBehindThemFails) {
  setup_.platform.memory.Put(kPath, "2,3,2004,100,1,5\r");
  Record().FailOn("App.Title", 2, Fault());  // of the closing message; the first is the question's
  Answer({kOk, kOk});
  EXPECT_FALSE(ImportDelimited(setup_.book(), {.file_name = kPath, .math = eMath::mAdd}, setup_.tally));
  EXPECT_TRUE(Record().AllFaultsStruck());
  EXPECT_TRUE(setup_.tally.stored);
  EXPECT_EQ(setup_.tally.stop.value().statement, 120);
  EXPECT_THAT(setup_.tally.accounts, ElementsAre(101));
  EXPECT_THAT(setup_.tally.fields, ElementsAre(1));
}

TEST_F(TextImportStopTest, FiguresAreNotStoredWhereTheJournalEntryIsNotClosed) {
  Answer({kOk, kOk});
  Record().FailOn("EndRollback", 1, Fault());
  (void)StopOfDelimited("2,3,2004,100,1,5\r");
  EXPECT_FALSE(setup_.tally.stored);
  Answer({kOk});
  Record().FailOn("EndRollback", 1, Fault());
  (void)StopOfCSV("2,3,2004,1,1\r\n100,1,5\r\n");
  EXPECT_FALSE(setup_.tally.stored);
}

TEST_F(TextImportStopTest, AFileThatKeepsItsNameHasTheReason) {
  setup_.platform.memory.Put(kPath, "2,3,2004,100,1,5\r");
  setup_.platform.files.FailPath(FileCall::kRename, "figures.txt", FailureNumber::kPermissionDenied);
  Answer({kOk});
  EXPECT_TRUE(ImportDelimited(setup_.book(), {.file_name = kPath, .math = eMath::mAdd}, setup_.tally));
  ASSERT_TRUE(setup_.tally.stays);
  EXPECT_EQ(setup_.tally.stays->number, 70);
}

class PrintsTheReason : public StopWitness {
 public:
  void ProgramStops(const StopReason& reason) override {
    std::fputs((reason.file + ": " + reason.place + ": " + reason.words).c_str(), stderr);
  }
};

using TextImportStopDeathTest = TextImportStopTest;

TEST_F(TextImportStopDeathTest, TheWitnessIsToldOfTheCommentThatStopsTheProgram) {
  PrintsTheReason witness;
  ThePlatform().stop_witness = &witness;
  EXPECT_EXIT(
      {
        Answer({kOk});
        (void)StopOfDelimited("2,3,2004,100,1,5\r;a comment\r");
      },
      ::testing::ExitedWithCode(EXIT_FAILURE),
      "/in/figures.txt: record 2: the database has no record of its account 101 on 1999-11-30; its dates are ");
}

}  // namespace
}  // namespace tallybook::testing
