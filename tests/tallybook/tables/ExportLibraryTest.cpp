#include <cmath>

#include "tallybook/tables/ExportLibrary.h"
#include "tests/tallybook/tables/TableTest.h"

namespace tallybook::tables {
namespace {

using testing::FailsWith;

class ExportLibraryTest : public TableTest {};

constexpr Long kInvalid = static_cast<Long>(FailureNumber::kInvalidArgument);

TEST_F(ExportLibraryTest, OffersFiveFormatsInTheirOrder) {
  struct Row {
    const char* code;
    const char* extension;
    Long capability;
  };
  const Row rows[] = {{"CSV", "csv", 3}, {"XLSX", "xlsx", 3}, {"DBF", "dbf", 1}, {"TXT", "txt", 0}, {"SQLT", "db", 1}};
  ASSERT_EQ(library_.NumFormats(), 5);
  Integer position = 0;
  for (const Row& row : rows) {
    FormatDescription format;
    ASSERT_TRUE(library_.FormatInfo(++position, format));
    EXPECT_EQ(format.code, row.code);
    EXPECT_EQ(format.extension, row.extension);
    EXPECT_EQ(format.capability, row.capability);
    EXPECT_EQ(format.kind, 0);
    EXPECT_EQ(library_.FormatFlags(row.code), row.capability);
    EXPECT_LE(format.name.size(), 40U);
    EXPECT_LE(format.extension.size(), 4U);
    EXPECT_LE(format.code.size(), 5U);
  }
}

TEST_F(ExportLibraryTest, DescribesNoFormatOutsideTheList) {
  FormatDescription format{.name = "untouched", .extension = {}, .code = {}};
  EXPECT_FALSE(library_.FormatInfo(0, format));
  EXPECT_FALSE(library_.FormatInfo(6, format));
  EXPECT_EQ(format.name, "untouched");
  EXPECT_EQ(library_.FormatFlags("csv"), 0);
  EXPECT_EQ(library_.FormatFlags(""), 0);
}

TEST_F(ExportLibraryTest, CreatesNothingForACodeThatNoFormatHas) {
  EXPECT_FALSE(library_.CreateTable(folder_.Path("out"), "WK1", "Table1", 4, table_));
  EXPECT_EQ(table_, 0);
  EXPECT_FALSE(folder_.Has("out"));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("WK1"));
}

TEST_F(ExportLibraryTest, CreatesNoTableWithoutColumns) {
  EXPECT_FALSE(library_.CreateTable(folder_.Path("out"), "CSV", "Table1", 0, table_));
}

TEST_F(ExportLibraryTest, GivesTheLowestFreeHandle) {
  Long first = 0;
  Long second = 0;
  ASSERT_TRUE(library_.CreateTable(folder_.Path("a"), "CSV", "T", 1, first));
  ASSERT_TRUE(library_.CreateTable(folder_.Path("b"), "CSV", "T", 1, second));
  EXPECT_EQ(first, 1);
  EXPECT_EQ(second, 2);
  ASSERT_TRUE(library_.AddColumn(first, 1, ColumnType::kText, 1, 0, "A"));
  library_.CloseTable(first);
  ASSERT_TRUE(library_.CreateTable(folder_.Path("c"), "CSV", "T", 1, first));
  EXPECT_EQ(first, 1);
}

TEST_F(ExportLibraryTest, RaisesFailure52ForAHandleThatIsNotOpen) {
  const auto bad = FailsWith(FailureNumber::kBadFileNumber, "7");
  EXPECT_THAT([&] { (void)library_.AddColumn(7, 1, ColumnType::kText, 1, 0, "A"); }, bad);
  EXPECT_THAT([&] { (void)library_.SetByte(7, 1, 1); }, bad);
  EXPECT_THAT([&] { (void)library_.SetInteger(7, 1, 1); }, bad);
  EXPECT_THAT([&] { (void)library_.SetDouble(7, 1, 1, 3); }, bad);
  EXPECT_THAT([&] { (void)library_.SetDate(7, 1, 1); }, bad);
  EXPECT_THAT([&] { (void)library_.SetText(7, 1, ""); }, bad);
  EXPECT_THAT([&] { (void)library_.CommitRow(7); }, bad);
  EXPECT_THAT([&] { library_.CloseTable(7); }, bad);
}

TEST_F(ExportLibraryTest, FreesTheHandleAtTheClose) {
  Create("CSV", folder_.Path("out.csv"));
  Close();
  EXPECT_THAT([&] { Close(); }, FailsWith(FailureNumber::kBadFileNumber));
}

TEST_F(ExportLibraryTest, RefusesColumnsThatMakeNoSense) {
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.csv"), "CSV", "Table1", 2, table_));
  EXPECT_FALSE(library_.AddColumn(table_, 0, ColumnType::kText, 10, 0, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 3, ColumnType::kText, 10, 0, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 1, static_cast<ColumnType>(5), 10, 0, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 1, ColumnType::kText, 0, 0, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 1, ColumnType::kDouble, 10, -1, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 1, ColumnType::kDouble, 10, 16, "A"));
  EXPECT_FALSE(library_.AddColumn(table_, 1, ColumnType::kText, 10, 0, ""));
}

TEST_F(ExportLibraryTest, RefusesARowBeforeAllColumnsAreDefined) {
  ASSERT_TRUE(library_.CreateTable(folder_.Path("out.csv"), "CSV", "Table1", 2, table_));
  ASSERT_TRUE(library_.AddColumn(table_, 1, ColumnType::kText, 10, 0, "A"));
  EXPECT_EQ(library_.CommitRow(table_), kInvalid);
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("column 2 was never defined"));
}

TEST_F(ExportLibraryTest, RefusesAColumnBehindTheFirstRow) {
  Create("CSV", folder_.Path("out.csv"));
  CommitTitles();
  EXPECT_FALSE(library_.AddColumn(table_, 1, ColumnType::kText, 10, 0, "A"));
}

TEST_F(ExportLibraryTest, KeepsTheCellsFromRowToRow) {
  Create("CSV", folder_.Path("out.csv"));
  SetDay(2004, 2, 3);
  SetAccount("1");
  SetValue(1, 1);
  Commit();
  Commit();
  Close();
  EXPECT_EQ(folder_.Read("out.csv"), "2004-02-03,\"1\",1,1.000\r\n2004-02-03,\"1\",1,1.000\r\n");
}

TEST_F(ExportLibraryTest, TakesNothingButWhatTheColumnIsFor) {
  Create("DBF", folder_.Path("out.dbf"));
  EXPECT_FALSE(library_.SetText(table_, 1, "Date"));
  EXPECT_EQ(library_.LastError(), "\"Date\" is a date and takes no text");
  EXPECT_FALSE(library_.SetInteger(table_, 4, 1));
  EXPECT_FALSE(library_.SetByte(table_, 3, 1));
  EXPECT_FALSE(library_.SetDate(table_, 2, 1));
  EXPECT_FALSE(library_.SetDouble(table_, 5, 1, 3));
}

TEST_F(ExportLibraryTest, RefusesFiguresAndDatesThatAreNone) {
  Create("CSV", folder_.Path("out.csv"));
  EXPECT_FALSE(library_.SetDouble(table_, 4, std::nan(""), 3));
  EXPECT_FALSE(library_.SetDouble(table_, 4, HUGE_VAL, 3));
  EXPECT_FALSE(library_.SetDouble(table_, 4, 1, 16));
  EXPECT_FALSE(library_.SetDate(table_, 1, std::nan("")));
  EXPECT_FALSE(library_.SetDate(table_, 1, DateFromParts(1, 1, 1) - 1));
  EXPECT_FALSE(library_.SetDate(table_, 1, DateFromParts(10000, 1, 1)));
  EXPECT_FALSE(library_.SetText(table_, 2, "\xFF"));
}

TEST_F(ExportLibraryTest, DropsTheTimeOfDay) {
  Create("CSV", folder_.Path("out.csv"));
  ASSERT_TRUE(library_.SetDate(table_, 1, DateFromParts(2004, 2, 3) + 0.99));
  SetAccount("1");
  SetValue(1, 1);
  Commit();
  Close();
  EXPECT_THAT(folder_.Read("out.csv"), ::testing::StartsWith("2004-02-03,"));
}

TEST_F(ExportLibraryTest, DoesNotWriteARowWhoseCellWasRefused) {
  Create("CSV", folder_.Path("out.csv"));
  CommitThreeRows();
  const auto whole = folder_.Path("out.csv");
  SetAccount("2");
  EXPECT_FALSE(library_.SetDouble(table_, 4, std::nan(""), 3));
  EXPECT_EQ(library_.CommitRow(table_), kInvalid);
  EXPECT_EQ(library_.LastError(), whole + ": row 4: column 4: nan is no figure");
  SetValue(1, 1);
  EXPECT_EQ(library_.CommitRow(table_), kInvalid) << "a table that has failed takes no further row";
  EXPECT_EQ(library_.LastError(), whole + ": row 4: column 4: nan is no figure");
  EXPECT_NO_THROW(Close()) << "the reason has been told";
  EXPECT_THAT(folder_.Read("out.csv"), ::testing::EndsWith("1234567.891\r\n"));
}

TEST_F(ExportLibraryTest, HasNoErrorBeforeAnythingFailed) {
  EXPECT_EQ(library_.LastError(), "");
}

TEST_F(ExportLibraryTest, WritesTwoTablesSideBySide) {
  Create("CSV", folder_.Path("a.csv"));
  const Long first = table_;
  Create("SQLT", folder_.Path("b.db"));
  CommitThreeRows();
  Close();
  table_ = first;
  CommitThreeRows();
  Close();
  EXPECT_THAT(folder_.Read("a.csv"), ::testing::EndsWith("1234567.891\r\n"));
  EXPECT_THAT(Read("sqlt", "b.db"), ::testing::StartsWith("check: ok\n"));
}

}  // namespace
}  // namespace tallybook::tables
