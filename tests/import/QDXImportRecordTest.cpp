// What an import of exchange files leaves for its application to tell: counts, the end of each body, and the reason of
// a run that stopped.
#include <cstdio>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>

#include "import/QDXImport.h"
#include "platform/StopProgram.h"
#include "tests/import/ImportSetup.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class QDXImportRecordTest : public ::testing::Test {
 protected:
  [[nodiscard]] bool Import(const ExchangeFile& file) { return ImportBytes(file.Bytes()); }
  [[nodiscard]] bool ImportBytes(const std::string& bytes) {
    setup_.Put("DAY.QDX", bytes);
    return setup_.Import();
  }
  [[nodiscard]] const QDXFileImport& File() const { return setup_.record.files.at(0); }
  [[nodiscard]] const StopReason& Stop() const { return setup_.record.stop.value(); }

  ImportSetup setup_;
};

TEST_F(QDXImportRecordTest, CountsAccountsFieldsDatesAndFigures) {
  ASSERT_TRUE(Import(ManyFigures()));
  EXPECT_TRUE(File().done);
  EXPECT_EQ(File().file, "/in/DAY.QDX");
  EXPECT_THAT(File().accounts, ElementsAre(101, 205));
  EXPECT_THAT(File().fields, ElementsAre(1, 2));
  EXPECT_THAT(File().dates, ElementsAre(February(1), February(2), February(3)));
  EXPECT_EQ(File().applied, 6);
  EXPECT_EQ(File().not_mapped, 0);
  EXPECT_EQ(File().body_end, BodyEnd::kMarked);
  EXPECT_FALSE(setup_.record.stop);
}

TEST_F(QDXImportRecordTest, CountsFiguresThatTheDefinitionSendsNowhere) {
  setup_.MatchAccounts({{"300", "100"}});
  setup_.MatchFields({{2, 7}});
  ASSERT_TRUE(Import(ManyFigures()));
  EXPECT_THAT(File().accounts, ElementsAre(101));
  EXPECT_THAT(File().fields, ElementsAre(7));
  EXPECT_THAT(File().dates, ElementsAre(February(2), February(3)));
  EXPECT_EQ(File().applied, 2);
  EXPECT_EQ(File().not_mapped, 4);
}

TEST_F(QDXImportRecordTest, BalancesWhatWasReadAsAWholeAndFieldByField) {
  setup_.MatchAccounts({{"300", "100"}});
  setup_.MatchFields({{2, 7}});
  ASSERT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(File().read, 6);
  EXPECT_EQ(File().refused, 0);
  long long applied = 0;
  long long not_mapped = 0;
  for (const FieldTally& field : File().field_tallies) {
    EXPECT_EQ(field.in_database, field.in_file == 2 ? 7 : 0);
    applied += field.applied;
    not_mapped += field.not_mapped;
  }
  EXPECT_EQ(applied, 2);
  EXPECT_EQ(not_mapped, 4);
}

TEST_F(QDXImportRecordTest, CountsWhatWasReadAndNotAppliedOfARunThatFailsAsRefused) {
  setup_.host->record.FailOn("SetFieldValue", 3, Failure(FailureNumber::kDeviceError, "no more"));
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_FALSE(File().stored);
  EXPECT_EQ(File().applied, 2);
  EXPECT_GT(File().refused, 0);
  EXPECT_EQ(File().read, File().applied + File().not_mapped + File().refused);
}

TEST_F(QDXImportRecordTest, CountsEachFileOfARunByItself) {
  setup_.Put("A.QDX", ManyFigures(), 0);
  setup_.Put("B.QDX", OneFigure(), 1);
  ASSERT_TRUE(setup_.Import());
  ASSERT_EQ(setup_.record.files.size(), 2U);
  EXPECT_EQ(setup_.record.files[0].applied, 6);
  EXPECT_EQ(setup_.record.files[1].applied, 1);
  EXPECT_THAT(setup_.record.files[1].accounts, ElementsAre(101));
}

TEST_F(QDXImportRecordTest, CountsAFigureOnceWhateverIsTriedAgain) {
  setup_.host->record.FailOn("SetFieldValue", 1, Failure(FailureNumber::kDeviceError, "once"));
  setup_.platform.boxes.Answer({kRetry});
  ASSERT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(File().applied, 6);
  EXPECT_FALSE(setup_.record.stop);
}

TEST_F(QDXImportRecordTest, CountsWhatWasZeroedAndReadsNothingWhereItOnlyZeroes) {
  setup_.math = kZeroOnly;
  ASSERT_TRUE(Import(ManyFigures()));
  EXPECT_EQ(File().zeroed, 3 * 3 * 2) << "days, accounts, fields";
  EXPECT_EQ(File().applied, 0);
  EXPECT_EQ(File().body_end, BodyEnd::kUnread);
}

TEST_F(QDXImportRecordTest, ADateOutsideTheHeadersRangeIsCountedToo) {
  ExchangeFile file = OneFigure();
  file.blocks[0].days.push_back({February(20), {{1, 1}}});
  ASSERT_TRUE(Import(file));
  EXPECT_THAT(File().dates, ElementsAre(February(3), February(20)));
}

TEST_F(QDXImportRecordTest, AFileIsStoredThoughWhatComesBehindItsLastFigureFails) {
  // Printed before its figures are read, and behind them.
  setup_.host->record.FailOn("Printer.PrintLine", 2, Failure(FailureNumber::kDiskFull, "the report is full"));
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_TRUE(setup_.host->record.AllFaultsStruck());
  EXPECT_TRUE(File().stored);
  EXPECT_FALSE(File().done);
  EXPECT_EQ(File().applied, 6);
  EXPECT_EQ(Stop().words, "the report is full");
}

TEST_F(QDXImportRecordTest, AFileIsNotStoredWhereItsJournalEntryIsNotClosed) {
  setup_.host->record.FailOn("EndRollback", 1, Failure(FailureNumber::kDiskFull, "no room"));
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_TRUE(File().begun);
  EXPECT_FALSE(File().stored);
}

TEST_F(QDXImportRecordTest, AFileThatIsRefusedIsNotBegunAndThoseBehindItAreNamed) {
  setup_.Put("A.QDX", OneFigure(), 0);
  setup_.Put("B.QDX", ShopFile(February(1), DateFromParts(2099, 1, 1)), 1);
  setup_.Put("C.QDX", OneFigure(), 2);
  setup_.Put("D.QDX", OneFigure(), 3);
  setup_.platform.boxes.Answer({kOk, kOk});
  EXPECT_FALSE(setup_.Import());
  ASSERT_EQ(setup_.record.files.size(), 2U);
  EXPECT_TRUE(setup_.record.files[0].stored);
  EXPECT_FALSE(setup_.record.files[1].begun);
  EXPECT_THAT(setup_.record.not_begun, ElementsAre("/in/C.QDX", "/in/D.QDX"));
}

TEST_F(QDXImportRecordTest, ARunToItsEndLeavesNoFile) {
  setup_.Put("A.QDX", OneFigure(), 0);
  setup_.Put("B.QDX", OneFigure(), 1);
  ASSERT_TRUE(setup_.Import());
  EXPECT_THAT(setup_.record.not_begun, IsEmpty());
  EXPECT_TRUE(setup_.record.files[1].stored);
  EXPECT_FALSE(setup_.record.files[1].stays);
}

TEST_F(QDXImportRecordTest, AFileThatCannotBeDeletedOrRenamedHasTheReason) {
  const FailureNumber denied = FailureNumber::kPermissionDenied;
  for (const auto& [disposal, call, name] :
       {std::tuple{kDispDelete, FileCall::kDelete, "DAY.QDX"}, std::tuple{kDispRename, FileCall::kRename, "DAY.QDX"},
        std::tuple{kDispRename, FileCall::kDelete, "DAY.XDQ"}}) {
    ImportSetup setup;
    setup.definition.Disp = disposal;
    setup.Put("DAY.QDX", OneFigure());
    setup.Put("DAY.XDQ", "of last week");
    setup.platform.files.FailPath(call, name, denied);
    ASSERT_TRUE(setup.Import());
    const std::optional<StopReason>& stays = setup.record.files.at(0).stays;
    ASSERT_TRUE(stays) << name;
    EXPECT_EQ(stays->number, static_cast<Integer>(denied));
    EXPECT_THAT(stays->words, HasSubstr(name));
  }
}

TEST_F(QDXImportRecordTest, EveryCutOfTheBodyIsNoticed) {
  const ExchangeFile file = ManyFigures();
  const std::string whole = file.Bytes();
  const std::size_t body = whole.size() - file.Body().size();
  for (std::size_t length = body; length < whole.size(); ++length) {
    ImportSetup setup;
    setup.Put("DAY.QDX", whole.substr(0, length));
    ASSERT_TRUE(setup.Import()) << length;
    EXPECT_EQ(setup.record.files.at(0).body_end, BodyEnd::kCut) << length;
    EXPECT_EQ(setup.record.files.at(0).body_end_at, static_cast<long long>(length));
  }
}

TEST_F(QDXImportRecordTest, FiguresBehindAnAccountOutsideTheTableAreNoticed) {
  ExchangeFile file = ManyFigures();
  file.blocks[1].account_position = 9;
  ASSERT_TRUE(Import(file));
  EXPECT_EQ(File().body_end, BodyEnd::kStray);
  EXPECT_LT(File().body_end_at, static_cast<long long>(file.Bytes().size()));
}

TEST_F(QDXImportRecordTest, BytesBehindTheEndMarkAreNoMatter) {
  ASSERT_TRUE(ImportBytes(ManyFigures().Bytes() + "more of it"));
  EXPECT_EQ(File().body_end, BodyEnd::kMarked);
}

TEST_F(QDXImportRecordTest, TellsWhatTheChecksFound) {
  ExchangeFile file = OneFigure();
  file.accounts[1].code = "999";
  file.last = DateFromParts(2031, 1, 1);
  EXPECT_FALSE(Import(file));
  EXPECT_EQ(Stop().file, "/in/DAY.QDX");
  EXPECT_THAT(Stop().words, StartsWith("not imported: Account Code: 999 is in the Layout and not in the Database; "
                                       "its dates are 2004-02-01 to 2031-01-01, those of the database "));
  EXPECT_FALSE(File().done);
}

TEST_F(QDXImportRecordTest, TellsTheFailureWithThePlaceAndTheAccount) {
  setup_.host->record.FailOn("SetFieldValue", 3, Failure(FailureNumber::kDeviceError, "The host has failed"));
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_EQ(Stop().words, "The host has failed");
  EXPECT_EQ(Stop().number, 57);
  EXPECT_EQ(Stop().statement, 209);
  EXPECT_THAT(Stop().place, ::testing::MatchesRegex("byte [0-9]+, account 100"));
}

TEST_F(QDXImportRecordTest, TellsAFailureBeforeTheFirstFigureAndBehindTheLast) {
  setup_.platform.boxes.Answer({kCancel, kCancel});
  setup_.host->record.FailOn("BeginRollback", 1, Failure(FailureNumber::kDeviceError, "The host has failed"));
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_EQ(Stop().place, "before its first figure");
  setup_.host->record.FailOn("Printer.PrintLine", 2, Failure(FailureNumber::kDeviceError, "The host has failed"));
  EXPECT_FALSE(Import(ManyFigures()));
  EXPECT_EQ(Stop().place, "behind its last figure");
  EXPECT_EQ(Stop().statement, 240);
}

TEST_F(QDXImportRecordTest, TellsWhyAHeaderWasRefused) {
  EXPECT_FALSE(ImportBytes("no exchange file at all"));
  EXPECT_EQ(Stop().place, "byte 0");
  EXPECT_EQ(Stop().words, "no exchange file: it begins with \"no exchan\"");
  std::string other = OneFigure().Bytes();
  other[12] = '\x40';
  EXPECT_FALSE(ImportBytes(other));
  EXPECT_EQ(Stop().place, "byte 9");
  EXPECT_EQ(Stop().words, "the version stands as the bytes 00 00 80 40; those of 1.0 are 00 00 80 3F");
  EXPECT_FALSE(ImportBytes("Kelvo"));
  EXPECT_EQ(Stop().words, "no exchange file: it is too short to be one");
}

TEST_F(QDXImportRecordTest, TellsWhyAFileCouldNotBeOpened) {
  setup_.Put("DAY.QDX", OneFigure());
  setup_.platform.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPathOrAccess);
  setup_.platform.boxes.Answer({kCancel});
  EXPECT_FALSE(setup_.Import());
  EXPECT_EQ(Stop().number, 75);
  EXPECT_EQ(Stop().file, "/in/DAY.QDX");
}

TEST_F(QDXImportRecordTest, ARunWithoutFilesHasNone) {
  EXPECT_TRUE(setup_.Import());
  EXPECT_THAT(setup_.record.files, IsEmpty());
  EXPECT_FALSE(setup_.record.stop);
}

class PrintsTheReason : public StopWitness {
 public:
  void ProgramStops(const StopReason& reason) override {
    std::fputs((reason.file + ": " + reason.place + ": " + reason.words).c_str(), stderr);
  }
};

TEST(QDXImportRecordDeathTest, TheWitnessIsToldWhereTheProgramStops) {
  ImportSetup setup;
  PrintsTheReason witness;
  ThePlatform().stop_witness = &witness;
  ExchangeFile file = ShopFile();
  file.blocks = {{1, {{DateFromParts(2010, 1, 1), {{1, 1}}}}}};
  setup.Put("DAY.QDX", file);
  EXPECT_EXIT(std::_Exit(setup.Import() ? 0 : 3), ::testing::ExitedWithCode(EXIT_FAILURE),
              "/in/DAY.QDX: byte [0-9]+, account 100: the database has no record of its account 101 on 2010-01-01; "
              "its dates are ");
}

}  // namespace
}  // namespace tallybook::testing
