#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SalvageLosses.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::FindingKind;

class SalvageLossesTest : public ::testing::Test {
 protected:
  engine::ChunkPlaces places{engine::WithFirstSlots(ShopDescription(), 100)};
  engine::SalvageLosses losses{"/books/North.tbk", places};
};

TEST_F(SalvageLossesTest, LeavesOutThePathAndThatItIsDamage) {
  losses.Add(FindingKind::kFile, "/books/North.tbk: the book is damaged: its end is missing");
  losses.Add(FindingKind::kCompanions, "they cannot be read");
  const auto lost = losses.Take();
  ASSERT_EQ(lost.size(), 2U);
  EXPECT_EQ(lost[0].what, "its end is missing");
  EXPECT_EQ(lost[1].what, "they cannot be read");
  EXPECT_EQ(lost[1].kind, FindingKind::kCompanions);
  EXPECT_EQ(lost[1].first, kNoDate);
}

TEST_F(SalvageLossesTest, NamesAnAccountWithAllItsDates) {
  losses.AddOfAccount(FindingKind::kSums, 205, "unsure");
  const auto lost = losses.Take();
  ASSERT_EQ(lost.size(), 1U);
  EXPECT_EQ(lost[0].account, 205);
  EXPECT_EQ(lost[0].code, "200");
  EXPECT_EQ(lost[0].first, Day(2003, 1, 1));
  EXPECT_EQ(lost[0].last, Day(2004, 12, 31));
}

TEST_F(SalvageLossesTest, NamesTheDatesOfAChunkAndTheNumberOfAnEntry) {
  losses.AddChunk(engine::FirstKeyOf(7) + 1, "unreadable");
  losses.AddEntry(3, "missing");
  const auto lost = losses.Take();
  ASSERT_EQ(lost.size(), 2U);
  EXPECT_EQ(lost[0].kind, FindingKind::kChunk);
  EXPECT_EQ(lost[0].first, Day(2003, 4, 11));
  EXPECT_EQ(lost[0].last, Day(2003, 7, 19));
  EXPECT_EQ(lost[1].kind, FindingKind::kJournal);
  EXPECT_EQ(lost[1].entry, 3);
}

}  // namespace
}  // namespace tallybook::testing
