#include "tallybook/engine/ChunkFinds.h"
#include "tests/tallybook/engine/SalvageFixture.h"

namespace tallybook::testing {
namespace {

using engine::ChunkFinds;
using engine::FirstKeyOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ChunkFindsTest : public SalvageFixture {
 protected:
  ChunkFinds& Copied() {
    Begin();
    finds.emplace(*damaged, *places, *chunks);
    finds->CopyAll();
    return *finds;
  }

  std::optional<ChunkFinds> finds;
};

TEST_F(ChunkFindsTest, CopiesEveryChunkOfABookThatIsWhole) {
  const auto keys = StoredKeys();
  ASSERT_EQ(keys.size(), 3U);
  Copied();
  EXPECT_EQ(NewKeys(), keys);
  EXPECT_THAT(finds->Others(), IsEmpty());
  EXPECT_TRUE(finds->IndexIsWhole());
  EXPECT_EQ(finds->Index().size(), keys.size());
  EXPECT_THAT(finds->MissingOfIndex(101), IsEmpty());
}

TEST_F(ChunkFindsTest, LeavesAChunkThatIsDamagedAndKnowsThatItIsMissing) {
  Meddle("UPDATE chunk SET figures = x'0102030405060708090A' WHERE key = (101 << 24) + 1");
  Copied();
  EXPECT_FALSE(chunks->Has(FirstKeyOf(101) + 1));
  EXPECT_THAT(finds->MissingOfIndex(101), ElementsAre(FirstKeyOf(101) + 1));
  EXPECT_THAT(finds->MissingOfIndex(205), IsEmpty());
}

TEST_F(ChunkFindsTest, TakesNoChunkWithoutAPlaceInTheBook) {
  Meddle("UPDATE chunk SET key = 12 << 24 WHERE key = 205 << 24");
  Meddle("UPDATE chunk SET key = (101 << 24) + 4000 WHERE key = (101 << 24) + 1");
  Copied();
  EXPECT_FALSE(chunks->Has(FirstKeyOf(12)));
  EXPECT_FALSE(chunks->Has(FirstKeyOf(101) + 4000));
  EXPECT_THAT(finds->MissingOfIndex(101), IsEmpty());
}

TEST_F(ChunkFindsTest, KeepsASecondChunkOfAPlaceApart) {
  Meddle("DROP INDEX IF EXISTS chunk_key");
  Meddle(
      "CREATE TABLE other (id INTEGER PRIMARY KEY, key INTEGER, figures BLOB); INSERT INTO other SELECT * FROM chunk;"
      "INSERT INTO other (key, figures) SELECT 101 << 24, figures FROM image; DROP TABLE chunk;"
      "ALTER TABLE other RENAME TO chunk");
  Copied();
  ASSERT_EQ(finds->Others().size(), 1U);
  EXPECT_EQ(finds->Others()[0].key, FirstKeyOf(101));
  EXPECT_NE(finds->Others()[0].checksum, chunks->All().at(FirstKeyOf(101)));
}

TEST_F(ChunkFindsTest, FindsInLeavesWhatTheTableHasNot) {
  Copied();
  // Nothing has been put there yet.
  chunks->Remove(FirstKeyOf(205));
  const auto& found = finds->OfLeaves(205);
  ASSERT_EQ(found.size(), 1U);
  EXPECT_EQ(found[0].key, FirstKeyOf(205));
  EXPECT_THAT(finds->OfLeaves(7), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
