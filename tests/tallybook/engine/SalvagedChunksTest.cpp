#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SalvagedChunks.h"
#include "tallybook/engine/SumTable.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::AccountSum;
using engine::FirstKeyOf;
using engine::FoundChunk;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

FoundChunk ChunkAt(std::int64_t key) {
  FoundChunk chunk{key, 0, {std::byte{1}, std::byte{2}}};
  chunk.checksum = engine::AppendChecksum(chunk.bytes, key);
  return chunk;
}

class SalvagedChunksTest : public BookFixture {
 protected:
  engine::BookFile file{(Create(ShopDescription()), BookPath()), false};
  engine::Transaction transaction{file.Db()};
  engine::SalvagedChunks chunks{file.Db()};
};

TEST_F(SalvagedChunksTest, KeepsWhatIsPutUntilItIsTakenAway) {
  chunks.Put(ChunkAt(FirstKeyOf(7) + 3));
  chunks.Put(ChunkAt(FirstKeyOf(7)));
  chunks.Put(ChunkAt(FirstKeyOf(101)));
  EXPECT_THAT(chunks.KeysOf(7), ElementsAre(FirstKeyOf(7), FirstKeyOf(7) + 3));
  chunks.Remove(FirstKeyOf(7));
  EXPECT_FALSE(chunks.Has(FirstKeyOf(7)));
  EXPECT_TRUE(chunks.Has(FirstKeyOf(7) + 3));
  EXPECT_THAT(chunks.KeysOf(8), IsEmpty());
  EXPECT_EQ(file.Db().Number("SELECT count(*) FROM chunk"), 2);
}

TEST_F(SalvagedChunksTest, AddsAnAccountsChunksUp) {
  AccountSum sum;
  for (const std::int64_t number : {1, 5}) {
    const FoundChunk chunk = ChunkAt(FirstKeyOf(7) + number);
    sum.Add(chunk.key, chunk.checksum);
    chunks.Put(chunk);
  }
  EXPECT_EQ(chunks.SumOf(7), sum);
  EXPECT_EQ(chunks.SumOf(8), AccountSum());
}

TEST_F(SalvagedChunksTest, StoresTheSumsOfAll) {
  chunks.Put(ChunkAt(FirstKeyOf(7) + 1));
  chunks.Put(ChunkAt(FirstKeyOf(300)));
  chunks.SaveSums();
  engine::AccountSums sums;
  engine::SumTable(file.Db()).Visit(
      [&](std::int64_t block, std::span<const std::byte> bytes) { sums.Take(block, bytes, BookPath()); });
  EXPECT_EQ(sums.Of(7), chunks.SumOf(7));
  EXPECT_EQ(sums.Of(300), chunks.SumOf(300));
}

}  // namespace
}  // namespace tallybook::testing
