// The table shape of an export: what it asks of the export library. The walk stands in ExporterTest.
#include <gmock/gmock.h>

#include "base/Texts.h"
#include "tests/qdx/ExportFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using Row = std::vector<Text>;

class TableTargetTest : public ExportFixture {
 protected:
  TableTargetTest() {
    UseTable("DBF");
    UseRange(1, 2);
    host->book.Set(101, February(1), 1, 12.5);
    host->book.Set(205, February(2), 7, -0.001);
  }

  // The calls of the export library, in order, without those of other objects.
  std::vector<Text> LibraryCalls() const {
    std::vector<Text> calls;
    for (const Text& call : host->record.calls)
      if (call.starts_with("Export.")) calls.push_back(call);
    return calls;
  }
  void RecordCells() {
    for (const char* operation :
         {"FormatFlags", "SetByte", "SetInteger", "SetDouble", "SetDate", "SetText", "CommitRow"})
      host->record.Record(Text("Export.") + operation, true);
  }
};

// --- Layouts ---------------------------------------------------------------------------------------------------------

TEST_F(TableTargetTest, HasOneDateColumnWhereTheFormatHasAnyCapability) {
  RecordCells();
  EXPECT_TRUE(Run());
  EXPECT_THAT(LibraryCalls(),
              ElementsAre("Export.FormatFlags DBF", "Export.CreateTable /out/SALES.csv DBF Table1 4",
                          "Export.AddColumn 1 1 8 8 0 Date", "Export.AddColumn 1 2 9 10 0 Account",
                          "Export.AddColumn 1 3 4 5 0 Field", "Export.AddColumn 1 4 7 15 3 Value",  //
                          "Export.SetDate 1 1 2004-02-01", "Export.SetText 1 2 100",                //
                          "Export.SetInteger 1 3 1", "Export.SetDouble 1 4 12.5 3", "Export.CommitRow 1",
                          "Export.SetInteger 1 3 7", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetDate 1 1 2004-02-02", "Export.SetText 1 2 100",  //
                          "Export.SetInteger 1 3 1", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetInteger 1 3 7", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetDate 1 1 2004-02-01", "Export.SetText 1 2 200",  //
                          "Export.SetInteger 1 3 1", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetInteger 1 3 7", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetDate 1 1 2004-02-02", "Export.SetText 1 2 200",  //
                          "Export.SetInteger 1 3 1", "Export.SetDouble 1 4 0 3", "Export.CommitRow 1",
                          "Export.SetInteger 1 3 7", "Export.SetDouble 1 4 -0.001 3", "Export.CommitRow 1",
                          "Export.CloseTable 1"));
  EXPECT_TRUE(Logged().empty());
  ExpectAllClosed();
}

TEST_F(TableTargetTest, HasMonthDayAndYearWhereTheFormatHasNoCapability) {
  UseTable("TXT");
  UseRange(1, 1);
  request.with_zeros = false;
  RecordCells();
  EXPECT_TRUE(Run());
  EXPECT_THAT(LibraryCalls(),
              ElementsAre("Export.FormatFlags TXT", "Export.CreateTable /out/SALES.csv TXT Table1 6",
                          "Export.AddColumn 1 1 3 2 0 Month", "Export.AddColumn 1 2 3 2 0 Day",
                          "Export.AddColumn 1 3 3 4 0 Year", "Export.AddColumn 1 4 9 10 0 Account",
                          "Export.AddColumn 1 5 4 5 0 Field", "Export.AddColumn 1 6 7 15 3 Value",  //
                          "Export.SetByte 1 1 2", "Export.SetByte 1 2 1", "Export.SetByte 1 3 2004",
                          "Export.SetText 1 4 100", "Export.SetInteger 1 5 1", "Export.SetDouble 1 6 12.5 3",
                          "Export.CommitRow 1",  //
                          "Export.SetByte 1 1 2", "Export.SetByte 1 2 1", "Export.SetByte 1 3 2004",
                          "Export.SetText 1 4 200", "Export.CloseTable 1"));
}

TEST_F(TableTargetTest, HasATitleRowWhereBothLowBitsAreSet) {
  UseTable("CSV");
  request.with_zeros = false;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table().rows, ElementsAre(Row{"Date", "Account", "Field", "Value"}, Row{"2004-02-01", "100", "1", "12.5"},
                                        Row{"2004-02-02", "200", "7", "-0.001"}));
}

TEST_F(TableTargetTest, HasNoTitleRowWhereOneOfTheLowBitsIsMissing) {
  request.with_zeros = false;
  for (const Long capability : {1, 2, 4, 5, 6}) {
    host->factory.prepare_export = [&](MemoryExportObject& object) { object.SetCapability("DBF", capability); };
    library.reset();
    host->factory.exports.clear();
    EXPECT_TRUE(Run());
    EXPECT_THAT(Table().columns, SizeIs(4)) << capability;
    EXPECT_THAT(Table().rows, SizeIs(2)) << capability;
  }
}

TEST_F(TableTargetTest, HasATitleRowWhateverHigherBitsSay) {
  host->factory.prepare_export = [](MemoryExportObject& object) { object.SetCapability("DBF", 7); };
  request.with_zeros = false;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table().rows, SizeIs(3));
}

// --- Rows ------------------------------------------------------------------------------------------------------------

TEST_F(TableTargetTest, HasARowForEveryFieldWhereZerosAreWanted) {
  UseRange(3, 3);
  request.with_zeros = true;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table().rows, ElementsAre(Row{"2004-02-03", "100", "1", "0"}, Row{"2004-02-03", "100", "7", "0"},
                                        Row{"2004-02-03", "200", "1", "0"}, Row{"2004-02-03", "200", "7", "0"}));
}

TEST_F(TableTargetTest, HasNoRowForADateOfZerosWhereNoneAreWanted) {
  UseRange(3, 3);
  request.with_zeros = false;
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table().rows, IsEmpty());
  EXPECT_TRUE(Table().closed);
}

TEST_F(TableTargetTest, HoldsAccountCodesWithoutTrailingBlanks) {
  host->book.AddAccount(300, " 3 00 ", "Padded");
  host->book.Set(300, February(1), 1, 1);
  request.with_zeros = false;
  EXPECT_TRUE(Run());
  EXPECT_EQ(Table().rows.back(), (Row{"2004-02-01", " 3 00", "1", "1"}));
}

TEST_F(TableTargetTest, ShowsTheAccountUnderWayAsItsRecordDescribesIt) {
  EXPECT_TRUE(Run());
  const Text start = "Writing Export File\r\nAccount: ";
  EXPECT_THAT(host->book.progress.texts,
              ElementsAre(start + PadRight("Front of shop", ' ', 30), start + PadRight("Yard", ' ', 30)));
  EXPECT_THAT(host->book.progress.fractions,
              ElementsAre(static_cast<Single>(1.0 / 2 / 3 + 0.66), static_cast<Single>(2.0 / 2 / 3 + 0.66)));
}

TEST_F(TableTargetTest, EndsProgressBeforeItClosesTheTable) {
  EXPECT_TRUE(Run());
  ASSERT_GE(host->record.calls.size(), 2U);
  EXPECT_EQ(host->record.calls[host->record.calls.size() - 2], "EndProgress");
  EXPECT_EQ(host->record.calls.back(), "Export.CloseTable 1");
}

// --- The library and the name ----------------------------------------------------------------------------------------

TEST_F(TableTargetTest, MakesTheLibraryOnceAndKeepsIt) {
  EXPECT_TRUE(Run());
  EXPECT_NE(library, nullptr);
  EXPECT_TRUE(Run());
  EXPECT_THAT(host->factory.exports, SizeIs(1));
  EXPECT_THAT(*host->factory.exports[0], SizeIs(2));
}

TEST_F(TableTargetTest, UsesTheLibraryThatItIsGiven) {
  const auto own = std::make_shared<MemoryExportObject>(host->record);
  library = own;
  EXPECT_TRUE(Run());
  EXPECT_THAT(host->factory.exports, IsEmpty());
  EXPECT_THAT(*own->Written(), SizeIs(1));
}

TEST_F(TableTargetTest, MakesNoLibraryForAnExchangeFile) {
  request.as_table = false;
  EXPECT_TRUE(Run());
  EXPECT_EQ(library, nullptr);
  EXPECT_THAT(host->factory.exports, IsEmpty());
}

struct NameCase {
  Text given;
  Text format_code;
  Text created;
};
class TableNameTest : public TableTargetTest, public ::testing::WithParamInterface<NameCase> {};

TEST_P(TableNameTest, GetsTheExtensionOfTheFormatOnlyWhereItHasNone) {
  request.file_name = GetParam().given;
  request.format_code = GetParam().format_code;
  EXPECT_TRUE(Run());
  EXPECT_EQ(Table().path, GetParam().created);
  EXPECT_EQ(Table().format_code, GetParam().format_code);
}
INSTANTIATE_TEST_SUITE_P(Names, TableNameTest,
                         ::testing::Values(NameCase{"/out/SALES", "XLSX", "/out/SALES.xlsx"},
                                           NameCase{"/out/SALES.", "XLSX", "/out/SALES..xlsx"},
                                           NameCase{"/out/SALES.csv", "XLSX", "/out/SALES.csv"},
                                           NameCase{"/out/SALES.2004", "DBF", "/out/SALES.2004"},
                                           NameCase{"/out/v1.2/SALES", "DBF", "/out/v1.2/SALES"}));

TEST_F(TableTargetTest, TakesTheFirstFormatOfACode) {
  host->factory.prepare_export = [](MemoryExportObject& object) {
    object.formats.push_back({"Another", "second", "DBF", kHasDateColumn, 0});
  };
  request.file_name = "/out/SALES";
  EXPECT_TRUE(Run());
  EXPECT_EQ(Table().path, "/out/SALES.dbf");
}

// What CreateTable makes of it is the library's business.
TEST_F(TableTargetTest, LeavesANameAloneWhoseFormatNobodyHas) {
  request.file_name = "/out/SALES";
  request.format_code = "NONE";
  platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Run());
  EXPECT_THAT(host->record.ArgumentsOf("Export.CreateTable"), ElementsAre("/out/SALES NONE Table1 6"));
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre("Error creating export file: /out/SALES"));
}

TEST_F(TableTargetTest, IsDeletedUnderTheNameWithTheExtension) {
  platform.memory.Put("/out/SALES.dbf", "old");
  platform.memory.Put("/out/SALES", "another");
  request.file_name = "/out/SALES";
  EXPECT_TRUE(Run());
  EXPECT_FALSE(platform.memory.Has("/out/SALES.dbf"));
  EXPECT_TRUE(platform.memory.Has("/out/SALES"));
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(TableTargetTest, StartsAgainWithTheFormatWhereTheTableCannotBeCreated) {
  RecordCells();
  host->record.GiveFalseOn("Export.CreateTable", 1);
  platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Run());
  EXPECT_THAT(host->record.ArgumentsOf("Export.FormatFlags"), SizeIs(2));
  EXPECT_THAT(host->record.ArgumentsOf("Export.CreateTable"), SizeIs(2));
  EXPECT_THAT(host->record.ArgumentsOf("BeginProgress"), SizeIs(1));
  EXPECT_THAT(Table().rows, SizeIs(8));
}

TEST_F(TableTargetTest, IsNotClosedWhereItWasNeverCreated) {
  host->record.GiveFalseOn("Export.CreateTable", 1);
  host->record.FailOn("Export.CreateTable", 2, Failure(FailureNumber::kDiskFull, "full", "Library"));
  platform.boxes.Answer({kRetry, kCancel});
  EXPECT_FALSE(Run());
  EXPECT_TRUE(host->record.AllFaultsStruck());
  EXPECT_THAT(host->record.ArgumentsOf("Export.CloseTable"), IsEmpty());
}

// Each step of the creation, refused once: the table is given up, and made anew after a retry.
class TableCreationTest : public TableTargetTest, public ::testing::WithParamInterface<std::pair<const char*, int>> {
 protected:
  TableCreationTest() { UseTable("CSV"); }
};

TEST_P(TableCreationTest, AsksWhereAStepIsRefusedAndIsGivenUpOnCancel) {
  host->record.GiveFalseOn(GetParam().first, GetParam().second);
  platform.boxes.Answer({kCancel});
  EXPECT_FALSE(Run());
  EXPECT_TRUE(host->record.AllFaultsStruck());
  EXPECT_THAT(platform.boxes.Shown(), ElementsAre(ShownBox{"Error creating export file: /out/SALES.csv",
                                                           kQuestionIcon | kRetryCancel, "Tallybook", kCancel}));
  EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemQuestion"));
  EXPECT_TRUE(Logged().empty());
  EXPECT_THAT(host->record.ArgumentsOf("BeginProgress"), IsEmpty());
  EXPECT_THAT(host->record.ArgumentsOf("EndProgress"), IsEmpty());  // meant: no clean-up on this way out
  ExpectAllClosed();
}

TEST_P(TableCreationTest, IsMadeAnewOnRetry) {
  host->record.GiveFalseOn(GetParam().first, GetParam().second);
  platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table(host->factory.exports[0]->size() - 1).rows, SizeIs(1 + 8));
  ExpectAllClosed();
}

TEST_P(TableCreationTest, CountsAFailureAsARefusalAndLogsItsSource) {
  host->record.FailOn(GetParam().first, GetParam().second, Failure(FailureNumber::kDiskFull, "full", "Library"));
  platform.boxes.Answer({kRetry});
  EXPECT_TRUE(Run());
  EXPECT_TRUE(host->record.AllFaultsStruck());
  EXPECT_THAT(platform.boxes.Texts(), ElementsAre("Error creating export file: /out/SALES.csv"));
  ExpectLoggedOnce("Library");
  EXPECT_EQ(Logged()[0].line_number, 40);
  ExpectAllClosed();
}
INSTANTIATE_TEST_SUITE_P(Steps, TableCreationTest,
                         ::testing::Values(std::pair{"Export.CreateTable", 1}, std::pair{"Export.AddColumn", 1},
                                           std::pair{"Export.AddColumn", 2}, std::pair{"Export.AddColumn", 3},
                                           std::pair{"Export.AddColumn", 4}, std::pair{"Export.SetText", 1},
                                           std::pair{"Export.SetText", 4}, std::pair{"Export.CommitRow", 1}));

// Any step of a row, refused: the export has failed, and what was written stays.
class TableRowTest : public TableTargetTest, public ::testing::WithParamInterface<std::pair<const char*, int>> {};

TEST_P(TableRowTest, EndsTheExportWhereACellOrRowIsRefused) {
  host->record.GiveFalseOn(GetParam().first, GetParam().second);
  EXPECT_FALSE(Run());
  EXPECT_TRUE(host->record.AllFaultsStruck());
  ExpectLoggedOnce();
  EXPECT_TRUE(platform.boxes.Shown().empty());
  ExpectAllClosed();
}
INSTANTIATE_TEST_SUITE_P(Steps, TableRowTest,
                         ::testing::Values(std::pair{"Export.SetDate", 1}, std::pair{"Export.SetText", 2},
                                           std::pair{"Export.SetInteger", 3}, std::pair{"Export.SetDouble", 4},
                                           std::pair{"Export.CommitRow", 1}, std::pair{"Export.CommitRow", 8}));

TEST_F(TableTargetTest, KeepsTheRowsBeforeOneThatFails) {
  host->record.GiveFalseOn("Export.CommitRow", 3);
  EXPECT_FALSE(Run());
  EXPECT_THAT(Table().rows, SizeIs(2));
  // Log first, then the clean-up.
  EXPECT_THAT(LibraryCalls().back(), "Export.CloseTable 1");
  const auto at = [&](const Text& call) {
    return std::find_if(host->record.calls.begin(), host->record.calls.end(),
                        [&](const Text& candidate) { return candidate.starts_with(call); }) -
           host->record.calls.begin();
  };
  EXPECT_LT(at("Log.LogError"), at("EndProgress"));
  EXPECT_LT(at("EndProgress"), at("Export.CloseTable"));
}

TEST_F(TableTargetTest, FailsWhereTheAccountsDoNotFit) {
  host->book.answers.num_accounts = 32768;
  EXPECT_FALSE(Run());
  ExpectLoggedOnce();
  EXPECT_THAT(Table().rows, IsEmpty());
  ExpectAllClosed();
}

TEST_F(TableTargetTest, FailsWhereTheFieldsDoNotFit) {
  host->book.answers.num_fields = 32768;
  EXPECT_FALSE(Run());
  ExpectLoggedOnce();
  EXPECT_THAT(Table().rows, IsEmpty());
  ExpectAllClosed();
}

TEST_F(TableTargetTest, TellsOfATableThatCannotBeClosed) {
  host->record.FailOn("Export.CloseTable", 1, Failure(FailureNumber::kDiskFull, "full", "Library"));
  EXPECT_FALSE(Run());
  ExpectLoggedOnce("Library");
  EXPECT_FALSE(host->book.progress.open);
}

TEST_F(TableTargetTest, IsPartlyWrittenWhereTheUserCancels) {
  host->book.progress.CancelAtPoll(3);  // before the second date of the first account
  EXPECT_TRUE(Run());
  EXPECT_THAT(Table().rows, SizeIs(2));
  EXPECT_TRUE(Logged().empty());
  ExpectAllClosed();
}

TEST_F(TableTargetTest, StopsTheProgramWhereARecordCannotBeRead) {
  host->record.GiveFalseOn("ReadRecord", 2);
  EXPECT_EXIT(static_cast<void>(Run()), ::testing::ExitedWithCode(EXIT_FAILURE), "");
}

}  // namespace
}  // namespace tallybook::testing
