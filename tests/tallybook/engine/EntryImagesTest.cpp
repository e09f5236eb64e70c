#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "tallybook/engine/EntryImages.h"
#include "tests/tallybook/engine/ImagesFixture.h"

namespace tallybook::testing {
namespace {

using engine::ChunkShape;
using engine::EntryRows;
using engine::JournalRow;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

class EntryImagesTest : public ImagesFixture {
 protected:
  // What stood in each of the records written.
  using Told = std::map<Place, std::vector<Double>>;

  void SetUp() override { book = CreateAndOpen(); }

  void Add(const EntryRows& entry, Told& told) const {
    const ChunkShape& shape = images->Shape();
    for (std::size_t row = 0; row < shape.rows; ++row) {
      if (!engine::HasBit(entry.rows, row)) continue;
      const Double* figures = entry.before.Find(row, shape.fields);
      std::vector<Double>& kept = told[{engine::AccountOf(entry.key), DayOfRow(entry.key, row)}];
      EXPECT_THAT(kept, IsEmpty()) << "told twice";
      kept =
          figures == nullptr ? std::vector<Double>(shape.fields) : std::vector<Double>(figures, figures + shape.fields);
    }
  }
  [[nodiscard]] Told AllOf(const JournalRow& row) {
    Told told;
    images->Visit(row, [&](const EntryRows& entry) { Add(entry, told); });
    return told;
  }
};

TEST_F(EntryImagesTest, TellWhatStoodInEachRecordThatWasWritten) {
  Import({{101, 0}, {101, 700}}, 5);
  Import({{101, 0}, {101, 1}, {101, 700}, {7, 3}}, 6);
  Look();
  ASSERT_THAT(rows, SizeIs(2));
  EXPECT_THAT(AllOf(rows[0]),
              ElementsAre(Pair(Pair(101, 0), ElementsAre(0, 0, 0)), Pair(Pair(101, 700), ElementsAre(0, 0, 0))));
  EXPECT_THAT(AllOf(rows[1]),
              ElementsAre(Pair(Pair(7, 3), ElementsAre(0, 0, 0)), Pair(Pair(101, 0), ElementsAre(0, 5, 0)),
                          Pair(Pair(101, 1), ElementsAre(0, 0, 0)), Pair(Pair(101, 700), ElementsAre(0, 5, 0))));
}

TEST_F(EntryImagesTest, FindOneChunkAndNothingWhereNoneWasWritten) {
  Import({{101, 0}, {205, 3}}, 5);
  Import({{205, 3}}, 6);
  Look();
  const std::int64_t key = engine::FirstKeyOf(205);
  const auto found = images->Find(rows[1].entry, key);
  ASSERT_TRUE(found.has_value());
  Told told;
  Add(*found, told);
  EXPECT_THAT(told, ElementsAre(Pair(Pair(205, 3), ElementsAre(0, 5, 0))));
  const auto bits = images->FindBits(rows[1].entry, key);
  ASSERT_TRUE(bits.has_value());
  EXPECT_EQ(bits->rows, found->rows);
  EXPECT_FALSE(images->Find(rows[1].entry, engine::FirstKeyOf(101)).has_value());
  EXPECT_FALSE(images->FindBits(rows[1].entry, engine::FirstKeyOf(101)).has_value());
}

TEST_F(EntryImagesTest, OfAnEntryThatKeepsNoneTellTheRecordsAlone) {
  Import({{101, 0}}, 5);
  ImportWithoutImages({{101, 0}, {101, 2}}, 6);
  Look();
  ASSERT_THAT(rows, SizeIs(2));
  Told told;
  images->VisitBits(rows[1], [&](const EntryRows& entry) { Add(entry, told); });
  EXPECT_THAT(told, ElementsAre(Pair(Pair(101, 0), ::testing::_), Pair(Pair(101, 2), ::testing::_)));
}

TEST_F(EntryImagesTest, FromBeforeAllChunksWereStoredAnewAreToldAsChunksAreNow) {
  Import({{101, 0}, {101, 300}, {7, 700}}, 5);
  Import({{101, 0}, {101, 1}, {101, 300}, {7, 700}}, 6);
  engine::BookDescription grown = book->Description();
  for (Integer number = 20; number < 40; ++number) grown.fields.push_back({number, "", false});
  book->Grow(grown, "grow");
  Import({{101, 300}}, 8);
  Look();
  ASSERT_THAT(rows, SizeIs(4));
  ASSERT_FALSE(stored->former_layouts.empty()) << "the chunks were not stored anew";
  const Told told = AllOf(rows[1]);
  std::map<Place, Double> figures;
  for (const auto& [place, row] : told) {
    EXPECT_THAT(row, SizeIs(23));
    figures[place] = row[1];
  }
  EXPECT_THAT(figures, ElementsAre(Pair(Pair(7, 700), 5), Pair(Pair(101, 0), 5), Pair(Pair(101, 1), 0),
                                   Pair(Pair(101, 300), 5)));
  EXPECT_EQ(AllOf(rows[3]).at({101, 300})[1], 6);
}

}  // namespace
}  // namespace tallybook::testing
