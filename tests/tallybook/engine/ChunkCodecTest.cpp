#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <rapidcheck.h>
#include <vector>

#include "tallybook/engine/ChunkCodec.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using engine::ChunkRows;
using engine::ChunkShape;
using engine::DecodeChunk;
using engine::EncodeChunk;
using engine::RowRange;

constexpr ChunkShape kShape = {6, 4};

constexpr std::size_t kFigures = kShape.rows * kShape.fields;

// Some rows of a chunk whose figures are given whole.
ChunkRows RowsOf(const ChunkShape& shape, const std::vector<Double>& figures, RowRange range) {
  ChunkRows rows;
  std::copy_n(figures.begin() + static_cast<std::ptrdiff_t>(range.first * shape.fields), range.Count() * shape.fields,
              rows.Renew(range, shape.fields).begin());
  return rows;
}

std::vector<Double> FiguresOf(const ChunkShape& shape, const ChunkRows& rows) {
  std::vector<Double> figures(shape.rows * shape.fields);
  std::ranges::copy(rows.Figures(), figures.begin() + static_cast<std::ptrdiff_t>(rows.Range().first * shape.fields));
  return figures;
}

std::vector<std::byte> Encoded(const ChunkShape& shape, const std::vector<Double>& figures) {
  std::vector<std::byte> bytes;
  EncodeChunk(shape, RowsOf(shape, figures, {0, shape.rows}), bytes);
  return bytes;
}

std::vector<Double> Decoded(const ChunkShape& shape, const std::vector<std::byte>& bytes) {
  ChunkRows rows;
  if (!bytes.empty()) DecodeChunk(shape, bytes, rows);
  return FiguresOf(shape, rows);
}

bool SameBits(const std::vector<Double>& a, const std::vector<Double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Double)) == 0;
}

std::vector<Double> Filled(const ChunkShape& shape, Double first, Double step) {
  std::vector<Double> figures(shape.rows * shape.fields);
  for (std::size_t index = 0; index < figures.size(); ++index)
    figures[index] = first + step * static_cast<Double>(index);
  return figures;
}

TEST(ChunkCodec, WritesNothingForAChunkOfZeros) {
  EXPECT_TRUE(Encoded(kShape, std::vector<Double>(kFigures)).empty());
}

TEST(ChunkCodec, KeepsEveryKindOfFigure) {
  std::vector<Double> figures = {1, -1, 0.1, 1e300, -1e-300, 5e-324, std::numeric_limits<Double>::infinity(), 12.34};
  figures.resize(kFigures);
  EXPECT_TRUE(SameBits(Decoded(kShape, Encoded(kShape, figures)), figures));
  figures[20] = std::numeric_limits<Double>::quiet_NaN();
  EXPECT_TRUE(SameBits(Decoded(kShape, Encoded(kShape, figures)), figures));
}

// Whole numbers from `first` on, divided by `divisor`.
std::vector<Double> Quotients(Double first, Double divisor) {
  std::vector<Double> figures = Filled(kShape, first, 1);
  for (Double& figure : figures) figure /= divisor;
  return figures;
}

TEST(ChunkCodec, TakesTwoBytesForSmallNumbersAndFourForLargerOnes) {
  const auto size = [](Double first, Double divisor) { return Encoded(kShape, Quotients(first, divisor)).size(); };
  EXPECT_EQ(size(1, 1), 7 + 2 * kFigures);
  EXPECT_EQ(size(1, 100), 7 + 2 * kFigures);
  EXPECT_EQ(size(30000, 1), 7 + 2 * kFigures);
  EXPECT_EQ(size(1234567, 100), 7 + 4 * kFigures);
  EXPECT_EQ(size(1, 1000), 7 + 2 * kFigures);
  EXPECT_EQ(size(1e9, 1), 7 + 4 * kFigures);
  EXPECT_EQ(size(1e10, 1), 5 + 8 * kFigures);
  EXPECT_EQ(size(1, 7), 5 + 8 * kFigures);
}

TEST(ChunkCodec, KeepsNumbersAtTheBoundsOfTheirWidths) {
  for (const Double power : {1.0, 10.0, 100.0, 1000.0}) {
    for (const Double whole :
         {32767.0, 32768.0, -32768.0, -32769.0, 2147483647.0, 2147483648.0, -2147483648.0, -2147483649.0}) {
      const std::vector<Double> figures = Filled(kShape, whole / power, 0);
      EXPECT_TRUE(SameBits(Decoded(kShape, Encoded(kShape, figures)), figures)) << whole << " / " << power;
    }
  }
}

TEST(ChunkCodec, StoresOnlyTheFiguresOfAThinChunk) {
  std::vector<Double> figures(kFigures);
  figures[0] = 0.1 + 0.2;
  figures[23] = 7;
  const std::vector<std::byte> bytes = Encoded(kShape, figures);
  EXPECT_EQ(bytes.size(), 5U + 3 + 2 * 8);
  EXPECT_TRUE(SameBits(Decoded(kShape, bytes), figures));
}

TEST(ChunkCodec, LeavesOutRowsOfZerosAtBothEnds) {
  std::vector<Double> figures(kFigures);
  figures[9] = 1e10 + 0.1;  // row 2
  std::vector<std::byte> bytes;
  EncodeChunk(kShape, RowsOf(kShape, figures, {1, 5}), bytes);
  EXPECT_EQ(bytes.size(), 5U + 1 + 8);
  ChunkRows rows;
  DecodeChunk(kShape, bytes, rows);
  EXPECT_EQ(rows.Range().first, 2U);
  EXPECT_EQ(rows.Range().end, 3U);
  EXPECT_TRUE(SameBits(FiguresOf(kShape, rows), figures));
}

TEST(ChunkCodec, GivesBackWhateverItWasGiven) {
  EXPECT_TRUE(rc::check([] {
    const ChunkShape shape = {static_cast<std::size_t>(*rc::gen::inRange(1, 40)),
                              static_cast<std::size_t>(*rc::gen::inRange(1, 12))};
    // Each chunk keeps to one kind, so that every form of it comes up: any doubles, money, small numbers.
    const int kind = *rc::gen::inRange(0, 3);
    const int share = *rc::gen::element(5, 50, 100);
    std::vector<Double> figures(shape.rows * shape.fields);
    for (Double& figure : figures) {
      if (*rc::gen::inRange(0, 100) >= share) continue;
      if (kind == 0) figure = *rc::gen::arbitrary<Double>() + 0.0;
      if (kind == 1) figure = *rc::gen::inRange(-100'000'000, 100'000'000) / 100.0;
      if (kind == 2) figure = *rc::gen::inRange(-300, 300);
    }
    RC_ASSERT(SameBits(Decoded(shape, Encoded(shape, figures)), figures));
  }));
}

// Rows got more figures since they were written.
constexpr ChunkShape kGrown = {kShape.rows, 7, kShape.fields};

std::vector<Double> WithRoom(const std::vector<Double>& figures) {
  std::vector<Double> grown(kGrown.rows * kGrown.fields);
  for (std::size_t index = 0; index < figures.size(); ++index) {
    grown[index / kShape.fields * kGrown.fields + index % kShape.fields] = figures[index];
  }
  return grown;
}

TEST(ChunkCodec, ReadsRowsThatHadFewerFiguresWithZerosBehindThem) {
  for (const auto& figures : {Filled(kShape, 0.1, 1e-7), Filled(kShape, 1.25, 3), Filled(kShape, 0, 1)}) {
    EXPECT_TRUE(SameBits(Decoded(kGrown, Encoded(kShape, figures)), WithRoom(figures)));
  }
}

TEST(ChunkCodec, WritesTheSameBytesAsBeforeWhileWhatCameSinceIsZero) {
  const std::vector<Double> figures = Filled(kShape, 1.25, 3);
  EXPECT_EQ(Encoded(kGrown, WithRoom(figures)), Encoded(kShape, figures));
}

TEST(ChunkCodec, TellsHowManyFiguresARowHasUpToTheLastThatIsNotZero) {
  std::vector<Double> figures = WithRoom(Filled(kShape, 1.25, 3));
  figures[2 * kGrown.fields + 5] = 8.5;
  const std::vector<std::byte> bytes = Encoded(kGrown, figures);
  EXPECT_EQ(bytes[0], std::byte{0x83});
  EXPECT_EQ(bytes[5], std::byte{6});
  EXPECT_TRUE(SameBits(Decoded(kGrown, bytes), figures));
  constexpr ChunkShape kGrownMore = {kShape.rows, 9, kShape.fields};
  const std::vector<Double> more = Decoded(kGrownMore, bytes);
  EXPECT_EQ(more[2 * kGrownMore.fields + 5], 8.5);
  EXPECT_EQ(more[2 * kGrownMore.fields + 6], 0);
}

TEST(ChunkCodec, RefusesAWidthThatItsRowsNeverHad) {
  std::vector<Double> figures = WithRoom(Filled(kShape, 1.25, 3));
  figures[6] = 8.5;
  std::vector<std::byte> bytes = Encoded(kGrown, figures);
  for (const int width : {0, 3, 4, 8, 255}) {
    bytes[5] = static_cast<std::byte>(width);
    ChunkRows rows;
    EXPECT_THAT([&] { DecodeChunk(kGrown, bytes, rows); }, FailsWith(FailureNumber::kDeviceError, "tells of rows of"));
  }
}

TEST(ChunkCodec, GivesBackWhateverItWasGivenWhenRowsHaveGrown) {
  EXPECT_TRUE(rc::check([] {
    const auto first = static_cast<std::size_t>(*rc::gen::inRange(1, 8));
    const ChunkShape shape = {static_cast<std::size_t>(*rc::gen::inRange(1, 20)),
                              first + static_cast<std::size_t>(*rc::gen::inRange(0, 6)), first};
    const bool money = *rc::gen::arbitrary<bool>();
    const int share = *rc::gen::element(1, 5, 50, 100);
    std::vector<Double> figures(shape.rows * shape.fields);
    for (Double& figure : figures) {
      if (*rc::gen::inRange(0, 100) >= share) continue;
      figure = money ? *rc::gen::inRange(-100'000'000, 100'000'000) / 100.0 : *rc::gen::arbitrary<Double>() + 0.0;
    }
    RC_ASSERT(SameBits(Decoded(shape, Encoded(shape, figures)), figures));
  }));
}

// Damage: every prefix and every flipped byte either fails as damaged or gives figures, and nothing else.
TEST(ChunkCodec, ToldAsDamageOrReadWhateverHappensToItsBytes) {
  std::vector<Double> thin(kFigures);
  thin[3] = 0.1 + 0.2;
  int refused = 0;
  for (const auto& figures : {Filled(kShape, 0.1, 1e-7), Filled(kShape, 1.25, 3), thin}) {
    const std::vector<std::byte> whole = Encoded(kShape, figures);
    for (std::size_t length = 0; length < whole.size(); ++length) {
      const std::vector<std::byte> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
      ChunkRows back;
      EXPECT_THAT([&] { DecodeChunk(kShape, cut, back); }, FailsWith(FailureNumber::kDeviceError, "damaged"));
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
      std::vector<std::byte> flipped = whole;
      flipped[at] ^= std::byte{0xFF};
      ChunkRows back;
      try {
        DecodeChunk(kShape, flipped, back);
        EXPECT_LE(back.Range().end, kShape.rows);
      } catch (const Failure& failure) {
        EXPECT_EQ(failure.Number(), FailureNumber::kDeviceError);
        ++refused;
      }
    }
  }
  EXPECT_GE(refused, 3 * 5);  // all five bytes of each head but a form that another form happens to fit
}

}  // namespace
}  // namespace tallybook::testing
