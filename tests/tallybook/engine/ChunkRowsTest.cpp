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

constexpr ChunkShape kShape = {1000, 3};

std::vector<Double> FiguresOf(const ChunkRows& rows, std::size_t row) {
  const Double* held = rows.Find(row, kShape.fields);
  return held == nullptr ? std::vector<Double>(kShape.fields) : std::vector<Double>(held, held + kShape.fields);
}

TEST(ChunkRows, HoldsNothingAtFirst) {
  const ChunkRows rows;
  EXPECT_EQ(rows.Range().Count(), 0U);
  EXPECT_EQ(rows.Bytes(), 0U);
  EXPECT_EQ(rows.Find(0, kShape.fields), nullptr);
}

TEST(ChunkRows, GivesARowThatWasNotHeldWithZeros) {
  ChunkRows rows;
  static_cast<void>(rows.Hold(40, kShape));
  EXPECT_TRUE(rows.Holds(40));
  EXPECT_EQ(FiguresOf(rows, 40), (std::vector<Double>{0, 0, 0}));
}

TEST(ChunkRows, HoldsNoMoreThanAFewRowsForOneThatIsUsed) {
  ChunkRows rows;
  rows.Hold(40, kShape)[0] = 1;
  EXPECT_LE(rows.Bytes(), kShape.rows * kShape.fields * sizeof(Double) / 10);
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

TEST(ChunkRows, TakesNeighboursFromTheLikelyRowsOnly) {
  ChunkRows up;
  for (std::size_t row = 10; row < 30; ++row) up.Hold(row, kShape, {10, 30})[0] = 1;
  EXPECT_EQ(up.Range().first, 10U);
  EXPECT_EQ(up.Range().end, 30U);
  ChunkRows down;
  for (std::size_t row = 30; row > 10; --row) down.Hold(row - 1, kShape, {10, 30})[0] = 1;
  EXPECT_EQ(down.Range().first, 10U);
  EXPECT_LE(down.Range().end, 30U);
}

TEST(ChunkRows, HoldsARowThatIsNotLikely) {
  ChunkRows rows;
  rows.Hold(20, kShape, {10, 30})[0] = 1;
  rows.Hold(5, kShape, {10, 30})[0] = 2;
  rows.Hold(900, kShape, {10, 30})[0] = 3;
  rows.Hold(950, kShape, {0, 0})[0] = 4;
  EXPECT_EQ(FiguresOf(rows, 20)[0], 1);
  EXPECT_EQ(FiguresOf(rows, 5)[0], 2);
  EXPECT_EQ(FiguresOf(rows, 900)[0], 3);
  EXPECT_EQ(FiguresOf(rows, 950)[0], 4);
}

TEST(ChunkRows, GrowsAsEverWhereUnlikelyRowsAreUsed) {
  ChunkRows rows;
  std::size_t moves = 0;
  for (std::size_t row = 0; row < kShape.rows; ++row) {
    if (!rows.Holds(row)) ++moves;
    rows.Hold(row, kShape, {0, 10})[0] = 1;
  }
  EXPECT_LE(moves, 6U);
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
  EXPECT_TRUE(rc::check([](const std::vector<unsigned>& picks, unsigned one, unsigned other) {
    const RowRange likely = {std::min(one, other) % kShape.rows, std::max(one, other) % kShape.rows};
    ChunkRows rows;
    std::map<std::size_t, Double> model;
    Double figure = 0;
    for (const unsigned pick : picks) {
      const std::size_t row = pick % kShape.rows;
      figure += 1;
      rows.Hold(row, kShape, likely)[kShape.fields - 1] = figure;
      model[row] = figure;
    }
    for (std::size_t row = 0; row < kShape.rows; ++row) {
      RC_ASSERT(FiguresOf(rows, row) == (std::vector<Double>{0, 0, model[row]}));
    }
  }));
}

}  // namespace
}  // namespace tallybook::testing
