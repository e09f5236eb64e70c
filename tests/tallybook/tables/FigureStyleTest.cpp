// What a FigureStyle makes of the figures and rows of each format.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <vector>

#include "base/Texts.h"
#include "tests/tallybook/tables/TableTest.h"

namespace tallybook::tables {
namespace {

// One row for each value, as an export sets them: with three decimals.
class FigureStyleTest : public TableTest {
 protected:
  explicit FigureStyleTest(FigureStyle style) : TableTest(style) {}

  // Into out.KIND; readers go by such endings.
  void Write(const Text& code, const std::vector<Double>& values) {
    Create(code, folder_.Path("out." + LowerCase(code)));
    SetDay(2004, 2, 3);
    SetAccount("007");
    for (const Double value : values) {
      SetValue(1, value);
      Commit();
    }
    Close();
  }

  // The last cell of each row that the reader of a format finds, without its type.
  [[nodiscard]] std::vector<Text> ValuesRead(const Text& kind) const {
    std::vector<Text> values;
    std::istringstream rows(Read(kind, "out." + kind));
    for (Text row; std::getline(rows, row);) {
      const std::size_t cell = row.rfind(" | ");
      if (cell == Text::npos) continue;
      const std::size_t value = row.find(':', cell) + 1;
      values.push_back(row.substr(value, row.find(' ', value) - value));
    }
    return values;
  }
};

std::vector<Double> AsDoubles(const std::vector<Text>& texts) {
  std::vector<Double> values;
  for (const Text& text : texts) values.push_back(std::strtod(text.c_str(), nullptr));
  return values;
}

const std::vector<Double> kAwkward = {0.1 + 0.2,
                                      -1.0 / 3,
                                      1e300,
                                      -5e-324,
                                      123456789012345678.0,
                                      std::numeric_limits<Double>::max(),
                                      std::nextafter(1.0, 2.0),
                                      12.5,
                                      0};

// --- every decimal ---------------------------------------------------------------------------------------------------

class EveryDecimalTest : public FigureStyleTest {
 protected:
  EveryDecimalTest() : FigureStyleTest({.decimals = kEveryDecimal, .leaves_out_zeros = false}) {}
};

TEST_F(EveryDecimalTest, CsvReadsBackToTheSameDoubles) {
  Write("CSV", kAwkward);
  EXPECT_EQ(AsDoubles(ValuesRead("csv")), kAwkward);
}

TEST_F(EveryDecimalTest, CsvHasTheShortestText) {
  Write("CSV", {0.1 + 0.2, 12.5, 0, -0.0});
  EXPECT_THAT(ValuesRead("csv"), ::testing::ElementsAre("0.30000000000000004", "12.5", "0", "0"));
}

TEST_F(EveryDecimalTest, SqliteReadsBackToTheSameDoubles) {
  Write("SQLT", kAwkward);
  EXPECT_EQ(AsDoubles(ValuesRead("sqlt")), kAwkward);
}

TEST_F(EveryDecimalTest, XlsxReadsBackToTheSameDoublesAndShowsThemAsTheyAre) {
  const std::vector<Double> values = {0.0004, 1.0 / 8, 1e300, -0.1234567890123456, 12.5, 0};
  Write("XLSX", values);
  EXPECT_EQ(AsDoubles(ValuesRead("xlsx")), values);
  EXPECT_THAT(Read("xlsx", "out.xlsx"), ::testing::HasSubstr("number:0.0004 (General)"));
}

TEST_F(EveryDecimalTest, XlsxRefusesAFigureOfMoreDigitsThanItKeeps) {
  for (const Double value : {0.1 + 0.2, std::numeric_limits<Double>::max()}) {
    Create("XLSX", folder_.Path("out"));
    SetValue(1, value);
    EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
    EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("A workbook keeps 16 digits of a figure, and "));
    Close();
  }
}

TEST_F(EveryDecimalTest, FormatsOfFixedWidthRefuseItBeforeAFileIsTouched) {
  for (const char* code : {"DBF", "TXT"}) {
    folder_.Write("out", "old");
    EXPECT_FALSE(ExportLibrary::HoldsEveryDecimal(code));
    EXPECT_FALSE(library_.CreateTable(folder_.Path("out"), code, "Table1", 4, table_));
    EXPECT_EQ(library_.LastError(), folder_.Path("out") + ": " + code +
                                        " has columns of fixed width, which cannot hold every decimal of a figure");
    EXPECT_EQ(folder_.Read("out"), "old");
  }
}

// --- a number of decimals --------------------------------------------------------------------------------------------

class FifteenDecimalsTest : public FigureStyleTest {
 protected:
  FifteenDecimalsTest() : FigureStyleTest({.decimals = kMostDecimals, .leaves_out_zeros = false}) {}
};

TEST_F(FifteenDecimalsTest, CsvHasThemAll) {
  Write("CSV", {0.0004, 12.5});
  EXPECT_THAT(ValuesRead("csv"), ::testing::ElementsAre("0.000400000000000", "12.500000000000000"));
}

TEST_F(FifteenDecimalsTest, XlsxHoldsAndShowsThemAll) {
  Write("XLSX", {0.123456789012345});
  EXPECT_THAT(Read("xlsx", "out.xlsx"), ::testing::HasSubstr("number:0.123456789012345 (0.000000000000000)"));
}

TEST_F(FifteenDecimalsTest, SqliteHoldsThemAll) {
  Write("SQLT", {0.123456789012345, 1e-15, 1e-16});
  EXPECT_EQ(AsDoubles(ValuesRead("sqlt")), (std::vector<Double>{0.123456789012345, 1e-15, 0}));
}

TEST_F(FifteenDecimalsTest, TextColumnsGrowByThem) {
  Write("TXT", {-1234567.0 - 1.0 / 8, 12345678901.0});
  EXPECT_EQ(folder_.Read("out.txt"),
            " 2  3 2004 007            1    -1234567.125000000000000\r\n"
            " 2  3 2004 007            1 12345678901.000000000000000\r\n");
}

TEST_F(FifteenDecimalsTest, DbfFieldsGrowAsFarAsFieldsCan) {
  Write("DBF", {-12.000000000000125, 1234.5});
  EXPECT_THAT(Read("dbf", "out.dbf"), ::testing::HasSubstr("value N(20,15)"));
  EXPECT_EQ(AsDoubles(ValuesRead("dbf")), (std::vector<Double>{-12.000000000000125, 1234.5}));
}

TEST_F(FifteenDecimalsTest, DbfRefusesAFigureThatIsWiderThanItsField) {
  Create("DBF", folder_.Path("out"));
  SetDay(2004, 2, 3);
  SetAccount("007");
  SetValue(1, 12345);
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kOverflow));
  EXPECT_THAT(library_.LastError(), ::testing::HasSubstr("is wider than the 20 characters"));
}

class NoDecimalsTest : public FigureStyleTest {
 protected:
  NoDecimalsTest() : FigureStyleTest({.decimals = 0, .leaves_out_zeros = false}) {}
};

TEST_F(NoDecimalsTest, RoundsInEveryFormat) {
  for (const char* code : {"CSV", "XLSX", "DBF", "SQLT"}) {
    Write(code, {12.7, -0.4, 2});
    EXPECT_EQ(AsDoubles(ValuesRead(LowerCase(code))), (std::vector<Double>{13, 0, 2})) << code;
  }
}

TEST_F(NoDecimalsTest, LeavesTextColumnsAsWideAsTheyWere) {
  Write("TXT", {12.7});
  EXPECT_EQ(folder_.Read("out.txt"), " 2  3 2004 007            1              13\r\n");
}

// --- without zeros ---------------------------------------------------------------------------------------------------

class WithoutZerosTest : public FigureStyleTest {
 protected:
  WithoutZerosTest() : FigureStyleTest({.decimals = {}, .leaves_out_zeros = true}) {}
};

TEST_F(WithoutZerosTest, LeavesOutWhatWouldBeWrittenAsZero) {
  for (const char* code : {"CSV", "XLSX", "DBF", "SQLT"}) {
    Write(code, {0.0004, 0.0006, 0, -0.0004, -2});
    EXPECT_EQ(AsDoubles(ValuesRead(LowerCase(code))), (std::vector<Double>{0.001, -2})) << code;
  }
}

TEST_F(WithoutZerosTest, KeepsTheTitles) {
  Create("CSV", folder_.Path("out"));
  CommitTitles();
  Close();
  EXPECT_EQ(folder_.Read("out"), "\"Date\",\"Account\",\"Field\",\"Value\"\r\n");
}

TEST_F(WithoutZerosTest, KeepsDateAndAccountThatCameWithARowLeftOut) {
  Create("TXT", folder_.Path("out"));
  SetDay(2004, 2, 3);
  SetAccount("1");
  SetValue(1, 5);
  Commit();
  SetDay(2004, 2, 4);
  SetAccount("2");
  SetValue(1, 0.0001);
  Commit();
  SetValue(2, 7);
  Commit();
  Close();
  EXPECT_EQ(folder_.Read("out"),
            " 2  3 2004 1              1           5.000\r\n"
            " 2  4 2004 2              2           7.000\r\n");
}

TEST_F(WithoutZerosTest, StillRefusesARowWhoseCellWasRefused) {
  Create("CSV", folder_.Path("out"));
  EXPECT_FALSE(library_.SetDouble(table_, 4, std::nan(""), 3));
  EXPECT_EQ(library_.CommitRow(table_), static_cast<Long>(FailureNumber::kInvalidArgument));
}

class EveryDecimalWithoutZerosTest : public FigureStyleTest {
 protected:
  EveryDecimalWithoutZerosTest() : FigureStyleTest({.decimals = kEveryDecimal, .leaves_out_zeros = true}) {}
};

TEST_F(EveryDecimalWithoutZerosTest, LeavesOutNothingButZeros) {
  Write("CSV", {5e-324, 0, -0.0, 0.25});
  EXPECT_THAT(ValuesRead("csv"), ::testing::ElementsAre("5e-324", "0.25"));
}

}  // namespace
}  // namespace tallybook::tables
