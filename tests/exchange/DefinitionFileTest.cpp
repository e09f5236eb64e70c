#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "base/CodePage.h"
#include "exchange/DefinitionFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

const Text kPath = "/book/TBQDX1.NORTH";

// A definition that reads "Daily" from DAY.QDX, and its lines.
const std::string kDaily =
    "\"Daily\",\"DAY.QDX\",2,-1,0\r\n"
    "2,1\r\n"
    "1,2\r\n"
    "7,-3\r\n"
    "\"100\",\"200\"\r\n"
    "205\r\n";

DefinitionRecord Daily() {
  DefinitionRecord record;
  record.Desc = "Daily";
  record.QdxFileName = "DAY.QDX";
  record.Disp = kDispRename;
  record.FldMatch = kOneForOne;
  record.AcctMatch = kManually;
  record.NumFields = 2;
  record.fields.Reset(2);
  record.fields(1) = {.FieldFrom = 1, .FieldTo = 2};
  record.fields(2) = {.FieldFrom = 7, .FieldTo = -3};
  record.NumAccounts = 1;
  record.accounts.Reset(1);
  record.accounts(1) = {.AccountFrom = 4, .AccountTo = 102, .from_code = "not", .to_code = "these"};
  record.AcctAll = 205;
  return record;
}

class DefinitionFileTest : public ::testing::Test {
 protected:
  void Put(const std::string& bytes) { platform_.memory.Put(kPath, bytes); }
  bool Read(TablesWanted tables = TablesWanted::kRead) {
    return ReadDefinition(kPath, tables, record_, [this] {
      ++cleared_;
      record_ = DefinitionRecord{};
    });
  }
  bool Read(const std::string& bytes) {
    Put(bytes);
    return Read();
  }
  // Codes that name the key that they were asked for.
  static void Write(const DefinitionRecord& record) {
    WriteDefinition(kPath, record,
                    {[](Integer from) { return "from" + std::to_string(from); },
                     [](Integer to) { return "to" + std::to_string(to); }});
  }
  [[nodiscard]] std::string Bytes() const { return platform_.memory.Bytes(kPath); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  DefinitionRecord record_;
  int cleared_ = 0;
};

// --- Reading ---------------------------------------------------------------------------------------------------------

TEST_F(DefinitionFileTest, EveryItemIsReadWhereItStands) {
  EXPECT_TRUE(Read(kDaily));
  EXPECT_EQ(record_.Desc, "Daily");
  EXPECT_EQ(record_.QdxFileName, "DAY.QDX");
  EXPECT_EQ(record_.Disp, 2);
  EXPECT_EQ(record_.FldMatch, -1);
  EXPECT_EQ(record_.AcctMatch, 0);
  EXPECT_EQ(record_.NumFields, 2);
  EXPECT_EQ(record_.NumAccounts, 1);
  EXPECT_EQ(record_.fields(1).FieldFrom, 1);
  EXPECT_EQ(record_.fields(1).FieldTo, 2);
  EXPECT_EQ(record_.fields(2).FieldFrom, 7);
  EXPECT_EQ(record_.fields(2).FieldTo, -3);
  EXPECT_EQ(record_.accounts(1).from_code, "100");
  EXPECT_EQ(record_.accounts(1).to_code, "200");
  EXPECT_EQ(record_.accounts(1).AccountFrom, 0);
  EXPECT_EQ(record_.AcctAll, 205);
  EXPECT_EQ(cleared_, 1);
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, TablesHave9999RowsAfterReading) {
  EXPECT_TRUE(Read(kDaily));
  EXPECT_EQ(record_.accounts.Rows(), 9999);
  EXPECT_EQ(record_.fields.Rows(), 9999);
}

TEST_F(DefinitionFileTest, WithTablesSkippedTitleSourceAndCountsAreRead) {
  Put(kDaily);
  EXPECT_TRUE(Read(TablesWanted::kSkip));
  EXPECT_EQ(record_.Desc, "Daily");
  EXPECT_EQ(record_.QdxFileName, "DAY.QDX");
  EXPECT_EQ(record_.NumFields, 2);
  EXPECT_EQ(record_.fields.Rows(), 0);
  EXPECT_EQ(record_.accounts.Rows(), 0);
}

TEST_F(DefinitionFileTest, AFileThatEndsBehindTheAccountRowsHasAcctAllZero) {
  const std::string whole = kDaily.substr(0, kDaily.size() - 5);
  for (const std::string& bytes : {whole, whole.substr(0, whole.size() - 2), whole + "\r\n", whole + "  "}) {
    record_.AcctAll = 77;
    EXPECT_TRUE(Read(bytes));
    EXPECT_EQ(record_.AcctAll, 0);
    EXPECT_EQ(record_.accounts(1).to_code, "200");
  }
}

TEST_F(DefinitionFileTest, TextsAreTrimmedOnTheRightAndNumbersNeedNoLineEnd) {
  EXPECT_TRUE(Read("\" Daily  \",\"DAY.QDX \",3,0,-2\n0,1\n\" 100 \",\"200   \"\n9"));
  EXPECT_EQ(record_.Desc, " Daily");
  EXPECT_EQ(record_.QdxFileName, "DAY.QDX");
  EXPECT_EQ(record_.AcctMatch, kAllToOne);
  EXPECT_EQ(record_.accounts(1).from_code, " 100");
  EXPECT_EQ(record_.accounts(1).to_code, "200");
  EXPECT_EQ(record_.AcctAll, 9);
}

TEST_F(DefinitionFileTest, CommasAndLineEndsWithinQuotesBelongToTheText) {
  EXPECT_TRUE(Read("\"a, b\",\"c\r\nd\",1,0,0\r\n0,0\r\n5\r\n"));
  EXPECT_EQ(record_.Desc, "a, b");
  EXPECT_EQ(record_.QdxFileName, "c\r\nd");
  EXPECT_EQ(record_.AcctAll, 5);
}

TEST_F(DefinitionFileTest, AnItemThatHoldsNoNumberReadsAsZero) {
  EXPECT_TRUE(Read("\"Daily\",\"DAY.QDX\",x,,\"\"\r\n0,0\r\n\r\n"));
  EXPECT_EQ(record_.Disp, 0);
  EXPECT_EQ(record_.FldMatch, 0);
  EXPECT_EQ(record_.AcctMatch, 0);
}

TEST_F(DefinitionFileTest, AnItemBelongsToItsLine) {
  EXPECT_TRUE(Read("\"Daily\",\"DAY.QDX\",2,-1,0\r\n1,0\r\n5,\r\n7\r\n"));
  EXPECT_EQ(record_.fields(1).FieldFrom, 5);
  EXPECT_EQ(record_.fields(1).FieldTo, 0);
  EXPECT_EQ(record_.AcctAll, 7);
  EXPECT_TRUE(Read("\"Daily\",\"DAY.QDX\",2,-1,\r\n0,1\r\n\"100\",\"200\"\r\n"));
  EXPECT_EQ(record_.AcctMatch, 0);
  EXPECT_EQ(record_.NumFields, 0);
  EXPECT_EQ(record_.NumAccounts, 1);
  EXPECT_EQ(record_.accounts(1).to_code, "200");
}

TEST_F(DefinitionFileTest, ALineWithTooFewItemsHasNothingForTheRest) {
  EXPECT_TRUE(Read("\"Daily\"\r\n1,1\r\n5\r\n\"100\"\r\n7\r\n"));
  EXPECT_EQ(record_.Desc, "Daily");
  EXPECT_EQ(record_.QdxFileName, "");
  EXPECT_EQ(record_.Disp, 0);
  EXPECT_EQ(record_.fields(1).FieldFrom, 5);
  EXPECT_EQ(record_.fields(1).FieldTo, 0);
  EXPECT_EQ(record_.accounts(1).from_code, "100");
  EXPECT_EQ(record_.accounts(1).to_code, "");
  EXPECT_EQ(record_.AcctAll, 7);
}

TEST_F(DefinitionFileTest, ALineWithTooManyItemsLosesTheSurplus) {
  EXPECT_TRUE(Read(
      "\"Daily\",\"DAY.QDX\",2,-1,0,9,\"more\r\nand more\"\r\n1,1, 8\r\n5,6,7\r\n\"100\",\"200\",\"300\" \r\n7,8\r\n"));
  EXPECT_EQ(record_.NumFields, 1);
  EXPECT_EQ(record_.fields(1).FieldTo, 6);
  EXPECT_EQ(record_.accounts(1).from_code, "100");
  EXPECT_EQ(record_.accounts(1).to_code, "200");
  EXPECT_EQ(record_.AcctAll, 7);
}

TEST_F(DefinitionFileTest, WithTablesSkippedAcctAllIsTakenFromTheLineBehindTheCounts) {
  Put("\"Daily\",\"DAY.QDX\",2,-1,0,9\r\n2,1,9\r\n5,6\r\n");
  EXPECT_TRUE(Read(TablesWanted::kSkip));
  EXPECT_EQ(record_.NumAccounts, 1);
  EXPECT_EQ(record_.AcctAll, 5);
}

TEST_F(DefinitionFileTest, ATextWithAQuoteIsSplitThere) {
  EXPECT_TRUE(Read("\"Say \"Hi\" now\",\"DAY.QDX\",2,0,0\r\n0,0\r\n0\r\n"));
  EXPECT_EQ(record_.Desc, "Say");
  EXPECT_EQ(record_.QdxFileName, "Hi\" now\"");
}

TEST_F(DefinitionFileTest, AFileThatCannotBeOpenedLeavesTheRecordUntouched) {
  record_.Desc = "before";
  EXPECT_FALSE(Read());
  Put(kDaily);
  platform_.files.FailPath(FileCall::kOpen, "TBQDX1", FailureNumber::kDeviceError);
  EXPECT_FALSE(Read());
  EXPECT_EQ(record_.Desc, "before");
  EXPECT_EQ(cleared_, 0);
}

// Reading keeps writers out, so one that is at work keeps the reader out.
TEST_F(DefinitionFileTest, AFileThatIsBeingWrittenCannotBeOpened) {
  Put("\"Title\",\"DAY.QDX\",1,0,-2\r\n0,0\r\n0\r\n");
  const auto writer = platform_.memory.Open(kPath, Access::kReadWrite, Sharing::kShared, Creation::kMustExist);
  EXPECT_FALSE(Read());
  EXPECT_EQ(record_.Desc, "");
}

TEST_F(DefinitionFileTest, AFileThatEndsTooEarlyIsFalseAndWhatWasReadStays) {
  EXPECT_FALSE(Read("\"Daily\",\"DAY.QDX\",2,-1,0\r\n2,1\r\n1,2\r\n"));
  EXPECT_EQ(record_.Desc, "Daily");
  EXPECT_EQ(record_.NumFields, 2);
  EXPECT_EQ(record_.fields(1).FieldTo, 2);
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
  EXPECT_FALSE(Read(""));
  EXPECT_EQ(record_.Desc, "");
}

TEST_F(DefinitionFileTest, ANumberBeyond16BitsIsFalse) {
  EXPECT_TRUE(Read("\"A\",\"B\",32767,-32768,0\r\n0,0\r\n0\r\n"));
  EXPECT_EQ(record_.Disp, 32'767);
  EXPECT_EQ(record_.FldMatch, -32'768);
  EXPECT_FALSE(Read("\"A\",\"B\",32768,0,0\r\n0,0\r\n0\r\n"));
  EXPECT_FALSE(Read("\"A\",\"B\",0,-32769,0\r\n0,0\r\n0\r\n"));
}

TEST_F(DefinitionFileTest, MoreRowsThanATableHasAreFalse) {
  std::string rows;
  for (int i = 0; i < 10'000; ++i) rows += "1,1\r\n";
  EXPECT_TRUE(Read("\"A\",\"B\",1,0,0\r\n9999,0\r\n" + rows.substr(0, rows.size() - 5) + "0\r\n"));
  EXPECT_EQ(record_.fields(9999).FieldTo, 1);
  EXPECT_FALSE(Read("\"A\",\"B\",1,0,0\r\n10000,0\r\n" + rows + "0\r\n"));
}

TEST_F(DefinitionFileTest, CountsBelowZeroHaveNoRows) {
  EXPECT_TRUE(Read("\"A\",\"B\",1,0,0\r\n-1,-5\r\n8\r\n"));
  EXPECT_EQ(record_.AcctAll, 8);
}

TEST_F(DefinitionFileTest, TextsPassThroughTheCodePage) {
  EXPECT_TRUE(Read("\"T\xE4glich \x80\",\"\x81\",1,0,0\r\n0,0\r\n0\r\n"));
  EXPECT_EQ(record_.Desc, "T\xC3\xA4glich \xE2\x82\xAC");
  EXPECT_EQ(ToCodePage(record_.QdxFileName), "\x81");
}

TEST_F(DefinitionFileTest, AFailedReadIsFalseAndClosesTheFile) {
  Put(kDaily);
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_FALSE(Read());
  EXPECT_EQ(platform_.files.FaultsRaised(), 1);
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, EveryPrefixIsReadOrRefusedWithoutHarm) {
  // Up to the last row's first quote a whole file cannot be there.
  const std::size_t last_text = kDaily.rfind("\"200");
  for (std::size_t length = 0; length <= kDaily.size(); ++length) {
    EXPECT_EQ(Read(kDaily.substr(0, length)), length > last_text) << length;
    EXPECT_EQ(platform_.memory.OpenHandles(), 0);
  }
}

// --- Writing ---------------------------------------------------------------------------------------------------------

TEST_F(DefinitionFileTest, TheLinesAreWrittenByteForByte) {
  Write(Daily());
  EXPECT_EQ(Bytes(),
            "\"Daily\",\"DAY.QDX\",2,-1,0\r\n"
            "2,1\r\n"
            "1,2\r\n"
            "7,-3\r\n"
            "\"from4\",\"to102\"\r\n"
            "205\r\n");
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, AnEmptyDefinitionHasThreeLines) {
  Write(DefinitionRecord{});
  EXPECT_EQ(Bytes(), "\"\",\"\",0,0,0\r\n0,0\r\n0\r\n");
}

TEST_F(DefinitionFileTest, WritingReplacesALongerFile) {
  Put(std::string(5000, 'x'));
  Write(DefinitionRecord{});
  EXPECT_EQ(Bytes(), "\"\",\"\",0,0,0\r\n0,0\r\n0\r\n");
}

TEST_F(DefinitionFileTest, ATextWithAQuoteIsWrittenRaw) {
  DefinitionRecord record;
  record.Desc = "Say \"Hi\"";
  Write(record);
  EXPECT_EQ(Bytes(), "\"Say \"Hi\"\",\"\",0,0,0\r\n0,0\r\n0\r\n");
}

TEST_F(DefinitionFileTest, ACharacterThatTheCodePageLacksIsAFailure) {
  DefinitionRecord record;
  record.Desc = "\xE6\x97\xA5";
  EXPECT_THAT([&] { Write(record); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, AFullDiskIsAFailureAndTheFileIsClosed) {
  platform_.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
  EXPECT_THAT([&] { Write(Daily()); }, FailsWith(FailureNumber::kDiskFull));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, AFileThatCannotBeMadeIsAFailureThatNamesIt) {
  platform_.files.FailNth(FileCall::kOpen, 1, FailureNumber::kPathNotFound);
  EXPECT_THAT([&] { Write(Daily()); }, FailsWith(FailureNumber::kPathOrAccess, kPath));
}

TEST_F(DefinitionFileTest, ACodeThatCannotBeToldIsAFailure) {
  const RowCodes codes{[](Integer position) -> Text { FailOutsideTable(position, 9999); },
                       [](Integer) { return Text(); }};
  EXPECT_THAT([&] { WriteDefinition(kPath, Daily(), codes); }, FailsWith(FailureNumber::kRange));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionFileTest, TablesOf9999RowsComeBack) {
  DefinitionRecord record;
  record.NumFields = record.NumAccounts = 9999;
  record.fields.Reset(9999);
  record.accounts.Reset(9999);
  for (Integer row = 1; row <= 9999; ++row) {
    record.fields(row) = {.FieldFrom = row, .FieldTo = static_cast<Integer>(-row)};
    record.accounts(row).AccountFrom = row;
    record.accounts(row).AccountTo = static_cast<Integer>(10'000 - row);
  }
  Write(record);
  EXPECT_TRUE(Read());
  for (Integer row = 1; row <= 9999; ++row) {
    ASSERT_EQ(record_.fields(row).FieldFrom, row);
    ASSERT_EQ(record_.fields(row).FieldTo, -row);
    ASSERT_EQ(record_.accounts(row).from_code, "from" + std::to_string(row));
    ASSERT_EQ(record_.accounts(row).to_code, "to" + std::to_string(10'000 - row));
  }
}

// --- Conversion ------------------------------------------------------------------------------------------------------

class DefinitionConversionTest : public DefinitionFileTest {
 protected:
  const Text old_path_ = "/book/KVQDX1.NORTH";
};

TEST_F(DefinitionConversionTest, CapitalizesTheTitleAndAddsTheExtensionOnly) {
  platform_.memory.Put(old_path_,
                       "\"DAILY mcSALES, o-hare\",\"C:\\IN\\DAY\",2,-1,0\r\n1,2\r\n1,2\r\n"
                       "\"100 \",\"200\"\r\n\"A\",\"B\"\r\n");
  const std::string old_bytes = platform_.memory.Bytes(old_path_);
  EXPECT_EQ(ConvertDefinition(old_path_, kPath), Conversion::kDone);
  EXPECT_EQ(Bytes(),
            "\"Daily McSales, O-Hare\",\"C:\\IN\\DAY.QDX\",2,-1,0\r\n1,2\r\n1,2\r\n"
            "\"100 \",\"200\"\r\n\"A\",\"B\"\r\n");
  EXPECT_EQ(platform_.memory.Bytes(old_path_), old_bytes);
  EXPECT_TRUE(Read());
  EXPECT_EQ(record_.AcctAll, 0);
}

TEST_F(DefinitionConversionTest, ASourceThatCannotBeReadMakesNoFile) {
  EXPECT_EQ(ConvertDefinition(old_path_, kPath), Conversion::kCannotRead);
  platform_.memory.Put(old_path_, "\"Daily\",\"DAY\",2");
  EXPECT_EQ(ConvertDefinition(old_path_, kPath), Conversion::kCannotRead);
  EXPECT_FALSE(platform_.memory.Has(kPath));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

TEST_F(DefinitionConversionTest, ATargetThatCannotBeWrittenLeavesNothingBehind) {
  platform_.memory.Put(old_path_, kDaily);
  platform_.files.FailPath(FileCall::kWrite, "TBQDX1", FailureNumber::kDiskFull);
  EXPECT_EQ(ConvertDefinition(old_path_, kPath), Conversion::kCannotWrite);
  EXPECT_FALSE(platform_.memory.Has(kPath));
  EXPECT_EQ(platform_.memory.OpenHandles(), 0);
}

// --- Round trip ------------------------------------------------------------------------------------------------------

// Any text that a definition can hold: characters of the code page but the quote, no blank at the end.
Text SomeText() {
  const auto bytes = *rc::gen::container<std::string>(
      rc::gen::suchThat(rc::gen::inRange(1, 256), [](int byte) { return byte != '"'; }));
  Text text = FromCodePage(bytes);
  while (text.ends_with(' ')) text.pop_back();
  return text;
}

RC_GTEST_PROP(DefinitionFileProperty, WhatIsWrittenIsReadBack, ()) {
  const auto number = rc::gen::arbitrary<Integer>();
  DefinitionRecord record;
  record.Desc = SomeText();
  record.QdxFileName = SomeText();
  record.Disp = *number;
  record.FldMatch = *number;
  record.AcctMatch = *number;
  record.AcctAll = *number;
  const auto fields = *rc::gen::container<std::vector<std::pair<Integer, Integer>>>(rc::gen::pair(number, number));
  record.NumFields = static_cast<Integer>(fields.size());
  record.fields.Reset(record.NumFields);
  for (Integer row = 1; row <= record.NumFields; ++row) {
    const auto& [from, to] = fields[static_cast<std::size_t>(row - 1)];
    record.fields(row) = {.FieldFrom = from, .FieldTo = to};
  }
  std::vector<Text> codes;
  for (int i = *rc::gen::inRange(0, 10); i > 0; --i) codes.push_back(SomeText());
  record.NumAccounts = static_cast<Integer>(codes.size());
  record.accounts.Reset(record.NumAccounts);
  for (Integer row = 1; row <= record.NumAccounts; ++row) {
    record.accounts(row).AccountFrom = row;
    record.accounts(row).AccountTo = static_cast<Integer>(record.NumAccounts + 1 - row);
  }
  const auto code = [&](Integer key) { return codes[static_cast<std::size_t>(key - 1)]; };
  ScriptedPlatform platform(FilesIn::kMemory);

  WriteDefinition(kPath, record, {code, code});
  DefinitionRecord back;
  RC_ASSERT(ReadDefinition(kPath, TablesWanted::kRead, back, [] {}));

  RC_ASSERT(back.Desc == record.Desc);
  RC_ASSERT(back.QdxFileName == record.QdxFileName);
  RC_ASSERT(back.Disp == record.Disp);
  RC_ASSERT(back.FldMatch == record.FldMatch);
  RC_ASSERT(back.AcctMatch == record.AcctMatch);
  RC_ASSERT(back.AcctAll == record.AcctAll);
  RC_ASSERT(back.NumFields == record.NumFields);
  RC_ASSERT(back.NumAccounts == record.NumAccounts);
  for (Integer row = 1; row <= record.NumFields; ++row) {
    RC_ASSERT(back.fields(row).FieldFrom == record.fields(row).FieldFrom);
    RC_ASSERT(back.fields(row).FieldTo == record.fields(row).FieldTo);
  }
  for (Integer row = 1; row <= record.NumAccounts; ++row) {
    RC_ASSERT(back.accounts(row).from_code == code(record.accounts(row).AccountFrom));
    RC_ASSERT(back.accounts(row).to_code == code(record.accounts(row).AccountTo));
  }
}

}  // namespace
}  // namespace tallybook::testing
