#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "import/Matching.h"
#include "support/Utility.h"
#include "tests/import/ImportSetup.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;

auto RowIs(const Text& from, const Text& to) {
  return AllOf(Field("from_code", &AccountRow::from_code, from), Field("to_code", &AccountRow::to_code, to));
}

auto NumbersAre(Integer from, Integer to) {
  return AllOf(Field("AccountFrom", &AccountRow::AccountFrom, from), Field("AccountTo", &AccountRow::AccountTo, to));
}

class MatchingTest : public ::testing::Test {
 protected:
  // What the header in memory holds, as a file read before would have left it.
  void FileHas(const std::vector<Text>& codes, const std::vector<Integer>& fields = {}) {
    HeaderRecord& header = *setup_.header;
    header.NumAccounts = static_cast<Integer>(codes.size());
    for (std::size_t i = 0; i < codes.size(); ++i) header.AccountCodes(static_cast<Long>(i + 1)) = codes[i];
    header.NumFields = static_cast<Integer>(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) header.FieldNumbers(static_cast<Long>(i + 1)) = fields[i];
  }
  void Fill() { FillTables(definition(), *setup_.header, setup_.host->book); }
  void Match() { MatchAccountCodes(definition(), *setup_.header, setup_.host->book); }

  DefinitionRecord& definition() { return setup_.definition; }
  const AccountRow& Row(Long row) { return definition().accounts(row); }
  CallRecord& calls() { return setup_.host->record; }

  ImportSetup setup_;
};

// --- Filling the tables ----------------------------------------------------------------------------------------------

TEST_F(MatchingTest, OneForOneTakesTheFilesCodesForBothSides) {
  FileHas({"300", "X"});
  definition().AcctMatch = kOneForOne;
  Fill();
  EXPECT_EQ(definition().NumAccounts, 2);
  EXPECT_THAT(Row(1), RowIs("300", "300"));
  EXPECT_THAT(Row(2), RowIs("X", "X"));
  EXPECT_THAT(Row(3), RowIs("", ""));
}

TEST_F(MatchingTest, AllToOneSendsEveryCodeToTheTrimmedCodeOfTheTarget) {
  FileHas({"100", "X"});
  definition().AcctMatch = kAllToOne;
  definition().AcctAll = 205;
  Fill();
  EXPECT_EQ(definition().NumAccounts, 2);
  EXPECT_THAT(Row(1), RowIs("100", "300"));
  EXPECT_THAT(Row(2), RowIs("X", "300"));
}

TEST_F(MatchingTest, AllToOneToAnAccountThatIsNotThereHasABlankTarget) {
  FileHas({"100"});
  definition().AcctMatch = kAllToOne;
  definition().AcctAll = 999;
  Fill();
  EXPECT_THAT(Row(1), RowIs("100", ""));
}

TEST_F(MatchingTest, ManualTablesStandAsTheUserMadeThem) {
  FileHas({"200", "300"}, {1, 2});
  setup_.MatchAccounts({{"100", "200"}});
  setup_.MatchFields({{2, 7}});
  Fill();
  EXPECT_EQ(definition().NumAccounts, 1);
  EXPECT_THAT(Row(1), RowIs("100", "200"));
  EXPECT_EQ(definition().NumFields, 1);
  EXPECT_EQ(definition().fields(1).FieldFrom, 2);
  EXPECT_EQ(definition().fields(1).FieldTo, 7);
}

TEST_F(MatchingTest, AnAccountModeThatIsNoneLeavesTheTableAlone) {
  FileHas({"200", "300"});
  setup_.MatchAccounts({{"100", "200"}});
  definition().AcctMatch = 1;
  Fill();
  EXPECT_EQ(definition().NumAccounts, 1);
  EXPECT_THAT(Row(1), RowIs("100", "200"));
}

TEST_F(MatchingTest, EveryFieldModeButManualTakesTheFilesNumbersForBothSides) {
  for (const Integer mode : {Integer{-1}, Integer{1}, Integer{-2}}) {
    FileHas({}, {7, 2});
    definition().NumFields = 0;
    definition().fields.Reset(5);
    definition().FldMatch = mode;
    Fill();
    EXPECT_EQ(definition().NumFields, 2) << mode;
    EXPECT_EQ(definition().fields(1).FieldFrom, 7) << mode;
    EXPECT_EQ(definition().fields(1).FieldTo, 7) << mode;
    EXPECT_EQ(definition().fields(2).FieldTo, 2) << mode;
    EXPECT_EQ(definition().fields(3).FieldFrom, 0) << mode;
  }
}

TEST_F(MatchingTest, ATableTooSmallForTheFileIsAFailure) {
  FileHas({"100", "200", "300"}, {1, 2});
  definition().accounts.Reset(2);
  EXPECT_THAT([&] { Fill(); }, FailsWith(FailureNumber::kRange));
  definition().accounts.Reset(3);
  definition().fields.Reset(1);
  EXPECT_THAT([&] { Fill(); }, FailsWith(FailureNumber::kRange));
}

// --- Resolving codes -------------------------------------------------------------------------------------------------

TEST_F(MatchingTest, CodesGivePositionInTheFileAndNumberInTheBook) {
  FileHas({"A", "B", "C"});
  setup_.MatchAccounts({{"C", "100"}, {"A", "300"}});
  Match();
  EXPECT_THAT(Row(1), NumbersAre(3, 101));
  EXPECT_THAT(Row(2), NumbersAre(1, 205));
}

TEST_F(MatchingTest, CodesAreComparedCaseAndBlanksIncluded) {
  setup_.host->book.AddAccount(7, "ab");
  FileHas({"ab", " A", "Ab"});
  setup_.MatchAccounts({{"Ab", "ab"}, {"AB", "AB"}, {"A", " ab"}, {"ab ", "ab "}});
  Match();
  EXPECT_THAT(Row(1), NumbersAre(3, 7));
  EXPECT_THAT(Row(2), NumbersAre(0, 0));
  EXPECT_THAT(Row(3), NumbersAre(0, 0));
  EXPECT_THAT(Row(4), NumbersAre(0, 0)) << "only the book's side is trimmed";
}

TEST_F(MatchingTest, TheFirstOfARepeatedCodeWinsOnBothSides) {
  setup_.host->book.AddAccount(8, "200");
  FileHas({"B", "A", "A", "B"});
  setup_.MatchAccounts({{"A", "200"}, {"B", "200"}, {"A", "100"}});
  Match();
  EXPECT_THAT(Row(1), NumbersAre(2, 102));
  EXPECT_THAT(Row(2), NumbersAre(1, 102));
  EXPECT_THAT(Row(3), NumbersAre(2, 101));
}

TEST_F(MatchingTest, ACodeThatIsNotFoundClearsAccountFromAndKeepsAccountTo) {
  FileHas({"A"});
  setup_.MatchAccounts({{"GONE", "GONE"}});
  definition().accounts(1).AccountFrom = 5;
  definition().accounts(1).AccountTo = 42;
  Match();
  EXPECT_THAT(Row(1), NumbersAre(0, 42));
}

TEST_F(MatchingTest, CodesBehindTheFilesCountAreNotSeen) {
  FileHas({"A", "B"});
  setup_.header->NumAccounts = 1;
  setup_.MatchAccounts({{"B", "100"}});
  Match();
  EXPECT_THAT(Row(1), NumbersAre(0, 101));
}

TEST_F(MatchingTest, ProgressRunsFromZeroToOneHalfRowByRow) {
  FileHas({"A"});
  setup_.MatchAccounts({{"A", "100"}, {"A", "100"}, {"A", "100"}, {"A", "100"}});
  Match();
  EXPECT_THAT(calls().ArgumentsOf("ProgressFraction"), ElementsAre("0", "0.125", "0.25", "0.375", "0.5"));
}

TEST_F(MatchingTest, WithoutRowsProgressOnlyGoesBackToZero) {
  FileHas({"A"});
  setup_.MatchAccounts({});
  Match();
  EXPECT_THAT(calls().ArgumentsOf("ProgressFraction"), ElementsAre("0"));
}

TEST_F(MatchingTest, PendingInputIsLookedAtBeforeEachRow) {
  FileHas({"A"});
  setup_.MatchAccounts({{"A", "100"}, {"A", "100"}, {"A", "100"}});
  setup_.platform.input.SetPending(2);
  std::vector<std::size_t> steps_at_run;
  setup_.platform.input.OnRun([&] { steps_at_run.push_back(calls().ArgumentsOf("ProgressFraction").size()); });
  Match();
  EXPECT_EQ(setup_.platform.input.Looks(), 3);
  EXPECT_THAT(steps_at_run, ElementsAre(1U, 2U)) << "each run stands before its row's step";
}

TEST_F(MatchingTest, AnAccountNumberBeyond16BitsIsAFailure) {
  BookShape shape;
  shape.max_accounts = 50'000;
  ImportSetup setup(shape);
  setup.host->book.AddAccount(40'000, "BIG");
  setup.MatchAccounts({{"A", "BIG"}});
  EXPECT_THAT([&] { MatchAccountCodes(setup.definition, *setup.header, setup.host->book); },
              FailsWith(FailureNumber::kOverflow));
}

TEST_F(MatchingTest, EachAccountOfTheBookIsLookedAtOnceAtMost) {
  FileHas({"A"});
  std::vector<std::pair<Text, Text>> rows(200, {"A", "300"});
  rows.emplace_back("A", "GONE");
  rows.emplace_back("A", "100");
  setup_.MatchAccounts(rows);
  calls().Record("AccountRecord.SetSelect", true);
  Match();
  EXPECT_THAT(calls().ArgumentsOf("AccountRecord.SetSelect"), ElementsAre("101", "102", "205"));
}

// What the rule says, word for word: a search from the start for every row.
Integer SearchFile(const std::vector<Text>& codes, const Text& code) {
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (codes[i] == code) return static_cast<Integer>(i + 1);
  }
  return 0;
}

RC_GTEST_PROP(MatchingProperty, AgreesWithASearchFromTheStartForEachRow, ()) {
  const auto code = [] { return rc::gen::element<Text>("a", "A", "b", "bb", "c", "d", ""); };
  const auto in_file = *rc::gen::container<std::vector<Text>>(code());
  const auto in_book = *rc::gen::container<std::vector<Text>>(code());
  const auto rows = *rc::gen::container<std::vector<std::pair<Text, Text>>>(rc::gen::pair(code(), code()));
  ScriptedPlatform platform(FilesIn::kMemory);
  MemoryHost host;
  for (std::size_t i = 0; i < in_book.size(); ++i) host.book.AddAccount(static_cast<Long>(100 - i), in_book[i]);
  HeaderRecord header;
  header.NumAccounts = static_cast<Integer>(in_file.size());
  for (std::size_t i = 0; i < in_file.size(); ++i) header.AccountCodes(static_cast<Long>(i + 1)) = in_file[i];
  DefinitionRecord definition;
  definition.accounts.Reset(static_cast<Long>(rows.size()));
  definition.NumAccounts = static_cast<Integer>(rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    definition.accounts(static_cast<Long>(i + 1)) = {
        .AccountFrom = 9, .AccountTo = 9, .from_code = rows[i].first, .to_code = rows[i].second};
  }
  MatchAccountCodes(definition, header, host.book);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const AccountRow& row = definition.accounts(static_cast<Long>(i + 1));
    const Integer place = SearchFile(in_book, rows[i].second);
    RC_ASSERT(row.AccountFrom == SearchFile(in_file, rows[i].first));
    RC_ASSERT(row.AccountTo == (place == 0 ? 9 : 101 - place));
  }
}

// --- The comparison with the last import -----------------------------------------------------------------------------

class CompareWithLastImportTest : public ::testing::Test {
 protected:
  CompareWithLastImportTest() { definition().AcctMatch = definition().FldMatch = kManually; }

  // The copy of the last import is given; the file in hand is `this_file_`.
  bool CompareWith(const std::string& archive) {
    setup_.platform.memory.Put(kArchive, archive);
    return Compare();
  }
  bool CompareWith(const ExchangeFile& archive) { return CompareWith(archive.Bytes()); }
  bool Compare() {
    ReadThisFile();
    setup_.host->record.calls.clear();
    return CompareWithLastImport(definition(), *setup_.header, kArchive, setup_.host->book, setup_.host->printer);
  }
  void ReadThisFile() {
    const Text name = kFolder + "THIS.QDX";
    setup_.platform.memory.Put(name, this_file_.Bytes());
    Integer file_number = 0;
    const bool header_only = false;
    ASSERT_TRUE(MyReadQDXHeader(setup_.host->book, name, file_number, header_only, *setup_.header));
    CloseFileEx(file_number);
  }
  void Answer(Integer button) { setup_.platform.boxes.Answer({button}); }

  DefinitionRecord& definition() { return setup_.definition; }
  [[nodiscard]] std::vector<Text> Boxes() const { return setup_.platform.boxes.Texts(); }
  [[nodiscard]] std::vector<Text> Printed() const { return setup_.host->printer->Everything(); }
  [[nodiscard]] std::vector<Text> Fractions() const {
    return setup_.host->record.ArgumentsOf("Printer.ProgressFraction");
  }

  ImportSetup setup_;
  ExchangeFile last_ = ShopFile();
  ExchangeFile this_file_ = ShopFile();
};

const Text kQuestion = "The following items have changed since the last import: \r\n\r\n";

TEST_F(CompareWithLastImportTest, WithoutACopyNothingIsCompared) {
  EXPECT_TRUE(Compare());
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(setup_.host->record.calls, IsEmpty());
}

TEST_F(CompareWithLastImportTest, EqualTablesAreNotWorthAWord) {
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Printed(), IsEmpty());
}

TEST_F(CompareWithLastImportTest, AllToOneWithOneForOneFieldsComparesNothingNotEvenCounts) {
  definition().AcctMatch = kAllToOne;
  definition().FldMatch = kOneForOne;
  last_.accounts.pop_back();
  last_.fields = {{9, "Other"}};
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(setup_.host->record.calls, IsEmpty());
}

TEST_F(CompareWithLastImportTest, AllToOneWithManualFieldsComparesAccountsAllTheSame) {
  definition().AcctMatch = kAllToOne;
  last_.accounts[1].description = "Store room";
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "\r\nAccount Codes or Descriptions"));
}

TEST_F(CompareWithLastImportTest, OneForOneAccountsWithManualFieldsAreCompared) {
  definition().AcctMatch = kOneForOne;
  last_.accounts[0].code = "101";
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "\r\nAccount Codes or Descriptions"));
}

TEST_F(CompareWithLastImportTest, ACopyThatIsNoExchangeFileIsPassedOver) {
  last_.magic = "Kelvo QDY";
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre("File is NOT an QDX file."));
  EXPECT_THAT(Printed(), IsEmpty());
  EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
}

TEST_F(CompareWithLastImportTest, TheQuestionHasItsIconButtonsAndCaption) {
  last_.accounts[0].code = "101";
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(setup_.platform.boxes.Shown(), ElementsAre(ShownBox{kQuestion + "\r\nAccount Codes or Descriptions",
                                                                  kQuestionIcon | kOkCancel, "Tallybook", kOk}));
}

TEST_F(CompareWithLastImportTest, CancelStopsAndWhatWasPrintedStays) {
  last_.accounts[0].code = "101";
  Answer(kCancel);
  EXPECT_FALSE(CompareWith(last_));
  EXPECT_EQ(Printed().size(), 4U);
  EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
}

TEST_F(CompareWithLastImportTest, TheCopyIsClosedBeforeTheQuestion) {
  last_.accounts[0].code = "101";
  setup_.platform.memory.Put(kArchive, last_.Bytes());
  ReadThisFile();
  std::vector<std::size_t> boxes_at_run;
  setup_.platform.input.SetPending(2);
  setup_.platform.input.OnRun([&] { boxes_at_run.push_back(Boxes().size()); });
  Answer(kOk);
  EXPECT_TRUE(CompareWithLastImport(definition(), *setup_.header, kArchive, setup_.host->book, setup_.host->printer));
  EXPECT_THAT(boxes_at_run, ElementsAre(0U, 0U)) << "pending input is handled when the copy is opened and closed";
}

// Each way in which the two files may differ, and the list that it makes.
struct Changes {
  bool account_count;
  bool field_count;
  bool account_rows;
  bool field_rows;
  Text list;
};

class ListOfChangesTest : public CompareWithLastImportTest, public ::testing::WithParamInterface<Changes> {};

TEST_P(ListOfChangesTest, ReadsLetterByLetter) {
  const Changes& changes = GetParam();
  // More accounts and fields than last time draw no row of their own.
  if (changes.account_count) this_file_.accounts.push_back({"400", "Roof"});
  if (changes.field_count) this_file_.fields.push_back({7, "Weather"});
  if (changes.account_rows) last_.accounts[1].code = "201";
  if (changes.field_rows) last_.fields[1].description = "Guests";
  if (!changes.list.empty()) Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  if (changes.list.empty()) {
    EXPECT_THAT(Boxes(), IsEmpty());
  } else {
    EXPECT_THAT(Boxes(), ElementsAre(kQuestion + changes.list));
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllCombinations, ListOfChangesTest,
    ::testing::Values(
        Changes{false, false, false, false, ""}, Changes{true, false, false, false, "The number of Accounts"},
        Changes{false, true, false, false, "The number of Datafields"},
        Changes{true, true, false, false, "The number of Accountsand Datafields"},
        Changes{false, false, true, false, "\r\nAccount Codes or Descriptions"},
        Changes{true, false, true, false, "The number of Accounts\r\nAccount Codes or Descriptions"},
        Changes{false, true, true, false, "The number of Datafields\r\nAccount Codes or Descriptions"},
        Changes{true, true, true, false, "The number of Accountsand Datafields\r\nAccount Codes or Descriptions"},
        Changes{false, false, false, true, "\r\nField Descriptions"},
        Changes{true, false, false, true, "The number of Accounts\r\nField Descriptions"},
        Changes{false, true, false, true, "The number of Datafields\r\nField Descriptions"},
        Changes{true, true, false, true, "The number of Accountsand Datafields\r\nField Descriptions"},
        Changes{false, false, true, true, "\r\nAccount Codes or Descriptions\r\nField Descriptions"},
        Changes{true, false, true, true,
                "The number of Accounts\r\nAccount Codes or Descriptions\r\nField Descriptions"},
        Changes{false, true, true, true,
                "The number of Datafields\r\nAccount Codes or Descriptions\r\nField Descriptions"},
        Changes{true, true, true, true,
                "The number of Accountsand Datafields\r\nAccount Codes or Descriptions\r\nField Descriptions"}));

TEST_F(CompareWithLastImportTest, EachTableHasItsOwnHeadOnce) {
  last_.accounts[0] = {"101", "Front"};
  last_.accounts[2].description = "Court";
  last_.fields[0].number = 11;
  last_.fields[1].description = "Guests";
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(
      Printed(),
      ElementsAre("", " | Last Import |  | This Import", "# Code | Account Description | Code | Account Description",
                  "101 | Front | 100 | Front of shop", "300 | Court | 300 | Yard", "",
                  " | Last Import |  | This Import", "# # | Field Description | # | Field Description",
                  "11 | Sales | 1 | Sales", "2 | Guests | 2 | Customers"));
}

TEST_F(CompareWithLastImportTest, CodesAndDescriptionsAreComparedCaseIncluded) {
  last_.accounts[2].description = "yard";
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_EQ(Printed().back(), "300 | yard | 300 | Yard");
}

TEST_F(CompareWithLastImportTest, FewerAccountsThanLastTimePrintTheSurplusAgainstEmptyEntries) {
  this_file_.accounts.resize(1);
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "The number of Accounts\r\nAccount Codes or Descriptions"));
  EXPECT_THAT(Printed(), ElementsAre("", " | Last Import |  | This Import",
                                     "# Code | Account Description | Code | Account Description",
                                     "200 | Back of shop |  | ", "300 | Yard |  | "));
}

TEST_F(CompareWithLastImportTest, FewerAccountsMeetWhatAnEarlierReadLeft) {
  ReadThisFile();
  this_file_.accounts.resize(1);
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "The number of Accounts")) << "the rows left over are equal";
}

TEST_F(CompareWithLastImportTest, FieldsMatchedByNumberAreCountedAndNotCompared) {
  definition().FldMatch = kOneForOne;
  last_.fields = {{9, "Other"}, {10, "Others"}};
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), IsEmpty());
  last_.fields.pop_back();
  Answer(kOk);
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "The number of Datafields"));
}

TEST_F(CompareWithLastImportTest, ProgressRunsOverAccountsAndThenFields) {
  last_.accounts.push_back({"400", "Roof"});
  this_file_ = last_;
  EXPECT_TRUE(CompareWith(last_));
  EXPECT_THAT(Fractions(), ElementsAre("0.125", "0.25", "0.375", "0.5", "0.75", "1"));
}

TEST_F(CompareWithLastImportTest, ACopyCutShortGoesOnWithWhatWasReadBefore) {
  // The file ends within the second account's code: both rows behind the first repeat its text.
  const std::string cut = last_.Head() + last_.Tables().substr(0, 2 + 3 + 2 + 13 + 4);
  Answer(kOk);
  EXPECT_TRUE(CompareWith(cut));
  EXPECT_THAT(Boxes(), ElementsAre(kQuestion + "\r\nAccount Codes or Descriptions\r\nField Descriptions"));
  EXPECT_THAT(
      Printed(),
      ElementsAre("", " | Last Import |  | This Import", "# Code | Account Description | Code | Account Description",
                  "100 | Front of shop | 200 | Back of shop", "100 | Front of shop | 300 | Yard", "",
                  " | Last Import |  | This Import", "# # | Field Description | # | Field Description",
                  "0 |  | 1 | Sales", "0 |  | 2 | Customers"));
}

TEST_F(CompareWithLastImportTest, ACopyCutAnywhereIsNoFailure) {
  const std::string whole = last_.Head() + last_.Tables();
  for (std::size_t length = last_.Head().size(); length < whole.size(); ++length) {
    Answer(kOk);
    EXPECT_TRUE(CompareWith(whole.substr(0, length))) << length;
    EXPECT_EQ(setup_.platform.boxes.AnswersLeft(), 0U) << "the cut at byte " << length << " was not noticed";
    EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0) << length;
  }
}

TEST_F(CompareWithLastImportTest, AFailureToReadTheCopyTravelsUpAndClosesIt) {
  ReadThisFile();
  // Head and first rows come with the first read, so it takes a long table for a second one.
  last_.accounts.assign(9000, {"100", "Front of shop"});
  setup_.platform.memory.Put(kArchive, last_.Bytes());
  setup_.platform.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError);
  EXPECT_THAT(
      [&] {
        (void)CompareWithLastImport(definition(), *setup_.header, kArchive, setup_.host->book, setup_.host->printer);
      },
      FailsWith(FailureNumber::kDeviceError));
  EXPECT_EQ(setup_.platform.files.FaultsRaised(), 1);
  EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
}

TEST_F(CompareWithLastImportTest, APositionAbove9999CannotBeCompared) {
  last_.account_count = 10'000;
  setup_.platform.memory.Put(kArchive, last_.Bytes());
  ReadThisFile();
  EXPECT_THAT(
      [&] {
        (void)CompareWithLastImport(definition(), *setup_.header, kArchive, setup_.host->book, setup_.host->printer);
      },
      FailsWith(FailureNumber::kRange, "10000"));
  EXPECT_EQ(setup_.platform.memory.OpenHandles(), 0);
}

}  // namespace
}  // namespace tallybook::testing
