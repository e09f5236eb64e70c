#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <vector>

#include "tallybook/engine/FigureUndo.h"
#include "tests/tallybook/engine/ImagesFixture.h"

namespace tallybook::testing {
namespace {

using engine::EntryRows;
using engine::FigureUndo;
using engine::UndoOutcome;
using engine::UndoWay;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

class FigureUndoTest : public ImagesFixture {
 protected:
  void SetUp() override { book = CreateAndOpen(); }

  // The records that differ once an entry is undone, told from 1, with their figures then.
  std::map<Place, std::vector<Double>> Undo(std::size_t entry, UndoWay way, std::size_t most_listed = 10) {
    const FigureUndo::Means means = {
        .images = *images,
        .description = *stored,
        .book = storage->Path(),
        .date_of = [this](std::int64_t key, std::size_t row) { return DayOf(DayOfRow(key, row)); },
        .told = &told_};
    FigureUndo undo(means, way, most_listed, rows, rows[entry - 1], outcome);
    std::map<Place, std::vector<Double>> figures;
    images->Visit(rows[entry - 1], [&](const EntryRows& written) {
      const engine::ChunkShape& shape = images->Shape();
      engine::ChunkRows now;
      if (const auto chunk = storage->FindChunk(written.key)) Decode(shape, written.key, chunk->figures, now);
      const engine::RowBits changed = undo.Apply(written, now);
      for (std::size_t row = 0; row < shape.rows; ++row) {
        if (!engine::HasBit(changed, row)) continue;
        const Double* becomes = now.Find(row, shape.fields);
        figures[{engine::AccountOf(written.key), DayOfRow(written.key, row)}] = {becomes, becomes + shape.fields};
      }
    });
    return figures;
  }

  UndoOutcome outcome;

 private:
  FigureUndo::FigureSet told_;
};

TEST_F(FigureUndoTest, PutsBackWhatStandsAsTheEntryLeftIt) {
  Import({{101, 0}, {205, 700}}, 5);
  Import({{101, 0}, {205, 700}}, 6);
  Look();
  EXPECT_THAT(Undo(2, UndoWay::kExact),
              ElementsAre(Pair(Place(101, 0), ElementsAre(0, 5, 0)), Pair(Place(205, 700), ElementsAre(0, 5, 0))));
  EXPECT_EQ(outcome.figures, 2);
  EXPECT_EQ(outcome.changed_since, 0);
}

TEST_F(FigureUndoTest, LeavesWhatLaterEntriesDidToOtherFiguresOfTheRecord) {
  Import({{101, 0}}, 5);
  const Integer another = 1;
  Import({{101, 0}}, 9, another);
  Look();
  EXPECT_THAT(Undo(1, UndoWay::kExact), ElementsAre(Pair(Place(101, 0), ElementsAre(9, 0, 0))));
  EXPECT_EQ(outcome.changed_since, 0);
}

TEST_F(FigureUndoTest, ChangesNothingThatIsAsItWasBeforeTheEntry) {
  Import({{101, 0}}, 5);
  Import({{101, 0}}, 0);
  Look();
  EXPECT_THAT(Undo(1, UndoWay::kExact), IsEmpty());
  EXPECT_EQ(outcome.figures, 0);
  EXPECT_EQ(outcome.changed_since, 0);
}

TEST_F(FigureUndoTest, TellsAFigureThatWasChangedSince) {
  Import({{101, 0}}, 5);
  Import({{101, 0}}, 6);
  Import({{101, 0}}, 7);
  Look();
  EXPECT_THAT(Undo(2, UndoWay::kExact), IsEmpty());
  EXPECT_EQ(outcome.changed_since, 1);
  ASSERT_THAT(outcome.listed, SizeIs(1));
  const engine::ChangedSince& listed = outcome.listed.front();
  EXPECT_EQ(listed.entry, 2);
  EXPECT_EQ(listed.account_number, 101);
  EXPECT_EQ(listed.date, DayOf(0));
  EXPECT_EQ(listed.field_number, 4);
  EXPECT_EQ(listed.before, 5);
  EXPECT_EQ(listed.left, 6);
  EXPECT_EQ(listed.now, 7);
  EXPECT_EQ(listed.later, 3);
}

TEST_F(FigureUndoTest, DoesWithAFigureChangedSinceWhatIsSaid) {
  Import({{101, 0}}, 5);
  Import({{101, 0}}, 7);
  Import({{101, 0}}, 17);
  Look();
  EXPECT_THAT(Undo(2, UndoWay::kSkip), IsEmpty());
  EXPECT_THAT(Undo(2, UndoWay::kForce), ElementsAre(Pair(Place(101, 0), ElementsAre(0, 5, 0))));
  EXPECT_THAT(Undo(2, UndoWay::kReverse), ElementsAre(Pair(Place(101, 0), ElementsAre(0, 15, 0))));
}

TEST_F(FigureUndoTest, ListsNoMoreThanIsAskedForAndNoneTwice) {
  Import({{101, 0}, {101, 1}, {205, 0}}, 5);
  Import({{101, 0}, {101, 1}, {205, 0}}, 6);
  Look();
  const std::size_t most_listed = 2;
  (void)Undo(1, UndoWay::kExact, most_listed);
  (void)Undo(1, UndoWay::kExact, most_listed);
  EXPECT_EQ(outcome.changed_since, 3);
  EXPECT_THAT(outcome.listed, SizeIs(2));
}

TEST_F(FigureUndoTest, CannotTakeOutWhatALaterEntryWithoutImagesHides) {
  Import({{101, 0}}, 5);
  ImportWithoutImages({{101, 0}}, 6);
  Look();
  EXPECT_THAT([&] { (void)Undo(1, UndoWay::kReverse); },
              FailsWith(FailureNumber::kInvalidArgument, "cannot be told: entry 2"));
  (void)Undo(1, UndoWay::kSkip);
  ASSERT_THAT(outcome.listed, SizeIs(1));
  EXPECT_EQ(outcome.listed.front().left, std::nullopt);
}

TEST_F(FigureUndoTest, CannotTakeOutWhatLeavesNoFigure) {
  Import({{101, 0}}, 1.5e308);
  Import({{101, 0}}, -1.5e308);
  Look();
  EXPECT_THAT([&] { (void)Undo(1, UndoWay::kReverse); }, FailsWith(FailureNumber::kOverflow, "too large for a figure"));
}

}  // namespace
}  // namespace tallybook::testing
