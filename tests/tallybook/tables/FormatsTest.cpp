// What stands in the files of the five formats, as their own readers see it.
#include "tallybook/tables/Formats.h"
#include "tests/tallybook/tables/TableTest.h"

namespace tallybook::tables {
namespace {

using testing::FailsWith;

class FormatsTest : public TableTest {};

// --- CSV -------------------------------------------------------------------------------------------------------------

TEST_F(FormatsTest, CsvQuotesTextsAndEndsItsLinesAfterRfc4180) {
  Create("CSV", folder_.Path("out.csv"));
  CommitTitles();
  CommitThreeRows();
  Close();
  EXPECT_EQ(folder_.Read("out.csv"),
            "\"Date\",\"Account\",\"Field\",\"Value\"\r\n"
            "2004-02-03,\"007\",1,12.500\r\n"
            "2004-02-03,\"007\",12,0.000\r\n"
            "2005-12-31,\"Zür, \"\"X\"\"\",3,1234567.891\r\n");
}

TEST_F(FormatsTest, CsvIsReadBackByAnotherReader) {
  Create("CSV", folder_.Path("out.csv"));
  SetDay(2004, 2, 3);
  SetAccount("a\r\nb,\"c\"");
  SetValue(1, 2);
  Commit();
  Close();
  EXPECT_EQ(Read("csv", "out.csv"), "text:2004-02-03 | text:a\r\nb,\"c\" | text:1 | text:2.000\n");
}

TEST_F(FormatsTest, CsvLeavesACellThatWasNeverSetEmpty) {
  Create("CSV", folder_.Path("out.csv"));
  SetValue(1, 2);
  Commit();
  Close();
  EXPECT_EQ(folder_.Read("out.csv"), ",,1,2.000\r\n");
}

// --- XLSX ------------------------------------------------------------------------------------------------------------

TEST_F(FormatsTest, XlsxHoldsTypedCells) {
  Create("XLSX", folder_.Path("out.xlsx"));
  CommitTitles();
  CommitThreeRows();
  Close();
  EXPECT_EQ(Read("xlsx", "out.xlsx"),
            "sheets: Table1\n"
            "created: 2004-02-03 14:05:09\n"
            "text:Date | text:Account | text:Field | text:Value\n"
            "date:2004-02-03 (yyyy-mm-dd) | text:007 | int:1 (General) | number:12.5 (0.000)\n"
            "date:2004-02-03 (yyyy-mm-dd) | text:007 | int:12 (General) | int:0 (0.000)\n"
            "date:2005-12-31 (yyyy-mm-dd) | text:Zür, \"X\" | int:3 (General) | number:1234567.891 (0.000)\n");
}

TEST_F(FormatsTest, XlsxWithoutARowIsAWholeWorkbook) {
  Create("XLSX", folder_.Path("out.xlsx"));
  Close();
  EXPECT_THAT(Read("xlsx", "out.xlsx"), ::testing::StartsWith("sheets: Table1\n"));
}

TEST_F(FormatsTest, XlsxLeavesNoTemporaryFileBehind) {
  Create("XLSX", folder_.Path("out.xlsx"));
  CommitTitles();
  Close();
  const std::filesystem::directory_iterator files(folder_.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(FormatsTest, XlsxRefusesADateThatSheetsCountWrongly) {
  Create("XLSX", folder_.Path("out.xlsx"));
  SetAccount("1");
  SetValue(1, 1);
  SetDay(1900, 3, 1);
  Commit();
  SetDay(1900, 2, 28);
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("1900-02-28"));
  Close();
  EXPECT_THAT(Read("xlsx", "out.xlsx"), ::testing::HasSubstr("date:1900-03-01"));
}

TEST_F(FormatsTest, XlsxEndsWithAClearFailureBehindItsLastRow) {
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.xlsx"), "XLSX", "Table1", 1, table_));
  ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kInteger, 5, 0, "Field"));
  ASSERT_TRUE(library_.SetInteger(table_, 1, 1));
  Long row = 1;
  while (library_.CommitRow(table_) == kRowCommitted) ++row;
  EXPECT_EQ(row, 1'048'577);
  EXPECT_EQ(library_.LastError(), folder_.Path("out.xlsx") +
                                      ": row 1048577: A sheet has no more than 1,048,576 rows: export fewer dates or "
                                      "accounts, or to another format");
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
  Close();
}

TEST_F(FormatsTest, XlsxRefusesATableNameThatNoSheetCanHave) {
  EXPECT_FALSE(library_.CreateTable(folder_.Path("out.xlsx"), "XLSX", "a/b", 1, table_));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(folder_.Path("out.xlsx")));
}

// --- DBF -------------------------------------------------------------------------------------------------------------

TEST_F(FormatsTest, DbfHoldsTypedFieldsInWindows1252) {
  Create("DBF", folder_.Path("out.dbf"));
  CommitThreeRows();
  Close();
  EXPECT_EQ(Read("dbf", "out.dbf"),
            "code page: cp1252\n"
            "fields: date D, account C(10), field N(5,0), value N(15,3)\n"
            "date:2004-02-03 | text:007        | int:1 | number:12.5\n"
            "date:2004-02-03 | text:007        | int:12 | number:0.0\n"
            "date:2005-12-31 | text:Zür, \"X\"   | int:3 | number:1234567.891\n");
}

TEST_F(FormatsTest, DbfIsThisFileByteForByte) {
  // Made by hand after the layout of dBASE III: header of 32 bytes, 32 for each field, 0x0D, the records, 0x1A.
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.dbf"), "DBF", "Table1", 1, table_));
  ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kInteger, 3, 0, "Field"));
  ASSERT_TRUE(library_.SetInteger(table_, 1, 42));
  Commit();
  Close();
  std::string expected("\x03\x68\x02\x03\x01\0\0\0\x41\0\x04\0",
                       12);  // 2004-02-03, 1 record, 65 bytes of head, 4 a record
  expected.append(17, '\0');
  expected.append("\x03\0\0", 3);  // Windows-1252
  expected.append("FIELD\0\0\0\0\0\0N\0\0\0\0\x03\0", 18);
  expected.append(14, '\0');
  expected.append("\x0D  42\x1A", 6);  // the blank in front says that the record is not deleted
  EXPECT_EQ(folder_.Read("out.dbf"), expected);
}

TEST_F(FormatsTest, DbfKeepsTheNameOfTheFile) {
  Create("DBF", folder_.Path("figures.2004"));
  Close();
  EXPECT_TRUE(folder_.Has("figures.2004"));
  EXPECT_FALSE(folder_.Has("figures.dbf"));
}

TEST_F(FormatsTest, DbfLeavesACodePageFileBesideAlone) {
  folder_.Write("table.cpg", "UTF-8");
  folder_.Write("out.cpg", "UTF-8");
  Create("DBF", folder_.Path("out.dbf"));
  Close();
  EXPECT_TRUE(folder_.Has("out.cpg"));
  EXPECT_TRUE(folder_.Has("table.cpg"));
}

TEST_F(FormatsTest, DbfRefusesACharacterThatItsCodePageLacks) {
  Create("DBF", folder_.Path("out.dbf"));
  SetDay(2004, 2, 3);
  SetValue(1, 1);
  SetAccount("Łódź");
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kInvalidArgument));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("Łódź"));
}

TEST_F(FormatsTest, DbfRefusesAFigureThatIsWiderThanItsField) {
  Create("DBF", folder_.Path("out.dbf"));
  SetDay(2004, 2, 3);
  SetAccount("1");
  SetValue(1, 99999999999.999);
  Commit();
  SetValue(1, 100000000000.0);
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("\"100000000000.000\" is wider than the 15 characters"));
  Close();
  EXPECT_THAT(Read("dbf", "out.dbf"), ::testing::EndsWith("number:99999999999.999\n"));
}

TEST_F(FormatsTest, DbfRefusesATextThatIsWiderThanItsField) {
  Create("DBF", folder_.Path("out.dbf"));
  SetDay(2004, 2, 3);
  SetValue(1, 1);
  SetAccount("Zürich 1234");
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
}

TEST_F(FormatsTest, DbfRefusesColumnsThatItCannotName) {
  for (const char* name : {"elevenchars", "with blank", "Größe"}) {
    ASSERT_TRUE(library_.CreateTable(folder_.Path("out.dbf"), "DBF", "Table1", 1, table_));
    ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kInteger, 5, 0, name));
    EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kInvalidArgument)) << name;
    EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(name));
    Close();
  }
}

// --- TXT -------------------------------------------------------------------------------------------------------------

TEST_F(FormatsTest, TextStandsInColumnsOfFixedWidth) {
  Create("TXT", folder_.Path("out.txt"));
  CommitThreeRows();
  Close();
  EXPECT_EQ(folder_.Read("out.txt"),
            " 2  3 2004 007            1          12.500\r\n"
            " 2  3 2004 007           12           0.000\r\n"
            "12 31 2005 Zür, \"X\"       3     1234567.891\r\n");
}

TEST_F(FormatsTest, TextRefusesALineBreakAndWhatIsTooWide) {
  for (const char* code : {"a\nb", "12345678901"}) {
    Create("TXT", folder_.Path("out.txt"));
    SetAccount(code);
    EXPECT_NE(library_.CommitRow(table_), kRowCommitted) << code;
    EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(code));
    Close();
  }
}

TEST_F(FormatsTest, TextRefusesADateColumn) {
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.txt"), "TXT", "Table1", 1, table_));
  ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kDate, 8, 0, "Date"));
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kInvalidArgument));
}

// --- SQLT ------------------------------------------------------------------------------------------------------------

TEST_F(FormatsTest, SqliteHoldsOneTableOfTypedValues) {
  Create("SQLT", folder_.Path("out.db"));
  CommitThreeRows();
  Close();
  EXPECT_EQ(Read("sqlt", "out.db"),
            "check: ok\n"
            "table: Table1 (Date TEXT, Account TEXT, Field INTEGER, Value REAL)\n"
            "text:2004-02-03 | text:007 | int:1 | number:12.5\n"
            "text:2004-02-03 | text:007 | int:12 | number:0.0\n"
            "text:2005-12-31 | text:Zür, \"X\" | int:3 | number:1234567.891\n");
}

TEST_F(FormatsTest, SqliteReplacesAnOlderFileAndWhatAKilledWriterLeft) {
  folder_.Write("out.db", "something else entirely");
  folder_.Write("out.db-journal", "left over");
  folder_.Write("out.db-wal", "left over");
  Create("SQLT", folder_.Path("out.db"));
  CommitThreeRows();
  Close();
  EXPECT_THAT(Read("sqlt", "out.db"), ::testing::StartsWith("check: ok\n"));
  EXPECT_FALSE(folder_.Has("out.db-journal"));
}

TEST_F(FormatsTest, SqliteTakesNamesWithQuotes) {
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.db"), "SQLT", "a table", 1, table_));
  ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kInteger, 5, 0, "\"odd\", name"));
  Close();
  EXPECT_EQ(Read("sqlt", "out.db"), "check: ok\ntable: a table (\"odd\", name INTEGER)\n");
}

// --- All -------------------------------------------------------------------------------------------------------------

class EveryFormatTest : public TableTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(EveryFormatTest, AFolderThatIsMissingFailsTheCreation) {
  EXPECT_FALSE(library_.CreateTable(folder_.Path("none/out"), GetParam(), "Table1", 4, table_));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr(folder_.Path("none/out")));
}

TEST_P(EveryFormatTest, ReplacesAnOlderFile) {
  folder_.Write("out", std::string(100'000, 'x'));
  Create(GetParam(), folder_.Path("out"));
  CommitThreeRows();
  Close();
  EXPECT_LT(folder_.Read("out").size(), 50'000U);
  EXPECT_THAT(folder_.Read("out"), ::testing::Not(::testing::HasSubstr("xxxx")));
}

TEST_P(EveryFormatTest, WritesTheSameBytesTwice) {
  for (const char* name : {"first", "second"}) {
    Create(GetParam(), folder_.Path(name));
    CommitThreeRows();
    Close();
  }
  EXPECT_EQ(folder_.Read("first"), folder_.Read("second"));
  EXPECT_FALSE(folder_.Read("first").empty());
}

INSTANTIATE_TEST_SUITE_P(Formats, EveryFormatTest, ::testing::Values("CSV", "XLSX", "DBF", "TXT", "SQLT"),
                         [](const auto& format) { return Text(format.param); });

}  // namespace
}  // namespace tallybook::tables
