#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <vector>

#include "tallybook/engine/ChunkRows.h"

namespace tallybook::testing {
namespace {

using engine::ChunkRows;
using engine::ChunkShape;
using engine::RowRange;

constexpr ChunkShape kShape = {100, 3};

TEST(ChunkRows, HoldsNothingAtFirst) {
  const ChunkRows rows;
  EXPECT_EQ(rows.Range().Count(), 0U);
  EXPECT_EQ(rows.Bytes(), 0U);
  EXPECT_EQ(rows.Find(0, kShape.fields), nullptr);
}

TEST(ChunkRows, GivesARowThatWasNotHeldWithZeros) {
  ChunkRows rows;
  const Double* row = rows.Hold(40, kShape);
  EXPECT_EQ(std::vector<Double>(row, row + kShape.fields), std::vector<Double>(kShape.fields, 0.0));
}

TEST(ChunkRows, HoldsNoMoreThanAFewRowsForOneThatIsUsed) {
  ChunkRows rows;
  rows.Hold(40, kShape)[0] = 1;
  EXPECT_LE(rows.Bytes(), 10 * kShape.fields * sizeof(Double));
}

TEST(ChunkRows, StaysWithinTheChunkWhenRowsAreHeldFromEitherEnd) {
  ChunkRows up;
  for (std::size_t row = 0; row < kShape.rows; ++row) up.Hold(row, kShape)[0] = 1;
  EXPECT_EQ(up.Range().first, 0U);
  EXPECT_EQ(up.Range().end, kShape.rows);
  ChunkRows down;
  for (std::size_t row = kShape.rows; row > 0; --row) down.Hold(row - 1, kShape)[0] = 1;
  EXPECT_EQ(down.Range().first, 0U);
  EXPECT_EQ(down.Range().end, kShape.rows);
}

TEST(ChunkRows, HoldsJustTheRowsItIsRenewedWith) {
  ChunkRows rows;
  rows.Hold(0, kShape)[0] = 7;
  const auto figures = rows.Renew({5, 7}, kShape.fields);
  EXPECT_EQ(std::vector<Double>(figures.begin(), figures.end()), std::vector<Double>(2 * kShape.fields, 0.0));
  EXPECT_FALSE(rows.Holds(0));
  EXPECT_FALSE(rows.Holds(4));
  EXPECT_TRUE(rows.Holds(5));
  EXPECT_TRUE(rows.Holds(6));
  EXPECT_FALSE(rows.Holds(7));
}

TEST(ChunkRows, IsAMapOfRowsWhateverTheOrderTheyAreWrittenIn) {
  EXPECT_TRUE(rc::check([](const std::vector<unsigned>& picks) {
    ChunkRows rows;
    std::map<std::size_t, Double> model;
    Double figure = 0;
    for (const unsigned pick : picks) {
      const std::size_t row = pick % kShape.rows;
      figure += 1;
      rows.Hold(row, kShape)[kShape.fields - 1] = figure;
      model[row] = figure;
    }
    for (std::size_t row = 0; row < kShape.rows; ++row) {
      const Double* held = rows.Find(row, kShape.fields);
      const auto expected = model.find(row);
      RC_ASSERT((held == nullptr ? 0 : held[kShape.fields - 1]) == (expected == model.end() ? 0 : expected->second));
      RC_ASSERT(held == nullptr || held[0] == 0);
    }
  }));
}

}  // namespace
}  // namespace tallybook::testing
