#include <cmath>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck/gtest.h>

#include "tallybook/tables/Cell.h"
#include "tests/support/FailsWith.h"

namespace tallybook::tables {
namespace {

Cell FigureCell(Double value, int decimals) {
  Cell cell;
  cell.kind = CellKind::kFigure;
  cell.figure = value;
  cell.decimals = decimals;
  return cell;
}

Column FigureColumn(int decimals) {
  return {.name = "Value", .type = ColumnType::kDouble, .width = 15, .decimals = decimals};
}

Text Figure(Double value, int cell_decimals, int column_decimals) {
  Text out;
  AppendFigure(FigureCell(value, cell_decimals), FigureColumn(column_decimals), out);
  return out;
}

TEST(Cell, SpellsAFigureWithTheDecimalsOfItsColumn) {
  EXPECT_EQ(Figure(12.5, 3, 3), "12.500");
  EXPECT_EQ(Figure(-1234567.8914, 3, 3), "-1234567.891");
  EXPECT_EQ(Figure(0, 3, 3), "0.000");
  EXPECT_EQ(Figure(2.6, 3, 0), "3");
}

TEST(Cell, RoundsToTheFewerDecimalsOfTheCell) {
  EXPECT_EQ(Figure(12.56, 1, 3), "12.600");
  EXPECT_EQ(Figure(12.56, 0, 3), "13.000");
}

TEST(Cell, RoundsByTheExactBinaryValue) {
  EXPECT_EQ(Figure(0.0625, 3, 3), "0.062");  // a true half goes to the even digit
  EXPECT_EQ(Figure(1.0005, 3, 3), "1.000");  // the nearest double lies below the half
  EXPECT_EQ(Figure(0.1875, 3, 3), "0.188");
}

TEST(Cell, GivesNoSignToAFigureThatRoundsToZero) {
  EXPECT_EQ(Figure(-0.0004, 3, 3), "0.000");
  EXPECT_EQ(Figure(-0.0, 3, 3), "0.000");
  EXPECT_EQ(Figure(-0.4, 0, 2), "0.00");
}

TEST(Cell, SpellsEveryDecimalWhereTheColumnWantsThem) {
  EXPECT_EQ(Figure(12.5, 3, kEveryDecimal), "12.5");
  EXPECT_EQ(Figure(0.1 + 0.2, 3, kEveryDecimal), "0.30000000000000004");
  EXPECT_EQ(Figure(-1e300, 3, kEveryDecimal), "-1e+300");
  EXPECT_EQ(Figure(-0.0, 3, kEveryDecimal), "0");
}

TEST(Cell, IsZeroWhereItsTextIs) {
  const auto is_zero = [](Double value, int decimals) {
    return RoundsToZero(FigureCell(value, 3), FigureColumn(decimals));
  };
  EXPECT_TRUE(is_zero(0.0004, 3));
  EXPECT_TRUE(is_zero(-0.0004, 3));
  EXPECT_TRUE(is_zero(0.5, 0));  // a true half goes to the even digit
  EXPECT_TRUE(is_zero(-0.0, kEveryDecimal));
  EXPECT_FALSE(is_zero(0.0006, 3));
  EXPECT_FALSE(is_zero(-1, 0));
  EXPECT_FALSE(is_zero(5e-324, kEveryDecimal));
}

TEST(Cell, HasRoomForTheGreatestDouble) {
  const Text text = Figure(-std::numeric_limits<Double>::max(), 15, 15);
  EXPECT_EQ(text.size(), 1U + 309U + 1U + 15U);
  EXPECT_EQ(std::strtod(text.c_str(), nullptr), -std::numeric_limits<Double>::max());
}

TEST(Cell, TellsTheColumnAndTheTextThatIsTooWide) {
  const Column account{.name = "Account", .type = ColumnType::kText, .width = 3, .decimals = 0};
  EXPECT_THAT(
      [&] { FailTooWide(account, "1234"); },
      testing::FailsWith(FailureNumber::kOverflow, "\"1234\" is wider than the 3 characters of column \"Account\""));
}

RC_GTEST_PROP(Cell, SpellsFiguresAsTheStandardLibraryPrintsThem, ()) {
  const auto value = *rc::gen::map(rc::gen::arbitrary<std::pair<std::int32_t, std::uint16_t>>(),
                                   [](const auto& parts) { return parts.first + parts.second / 65536.0; });
  char expected[64];
  std::snprintf(expected, sizeof expected, "%.3f", value);
  RC_PRE(Text(expected) != "-0.000");
  RC_ASSERT(Figure(value, 3, 3) == expected);
  RC_ASSERT(RoundedFigure(FigureCell(value, 3), FigureColumn(3)) == std::strtod(expected, nullptr));
}

}  // namespace
}  // namespace tallybook::tables
