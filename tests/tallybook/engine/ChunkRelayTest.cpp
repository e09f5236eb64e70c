#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/ChunkRelay.h"
#include "tallybook/engine/SqliteStorage.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::AccountSum;
using engine::AccountSums;
using engine::ChunkRelay;
using engine::ChunkRows;
using engine::ChunkShape;
using engine::FirstKeyOf;
using ::testing::ElementsAre;

constexpr ChunkShape kFrom{.rows = 7, .fields = 2, .first_fields = 2};
constexpr ChunkShape kTo{.rows = 3, .fields = 5, .first_fields = 5};

using Rows = std::map<std::size_t, std::vector<Double>>;  // by record

class ChunkRelayTest : public BookFixture {
 protected:
  void Put(Long account, std::uint32_t number, const std::map<std::size_t, std::vector<Double>>& rows_of_chunk) {
    ChunkRows rows;
    for (const auto& [row, figures] : rows_of_chunk) {
      std::copy(figures.begin(), figures.end(), rows.Hold(row, kFrom));
    }
    std::vector<std::byte> bytes;
    engine::EncodeChunk(kFrom, rows, bytes);
    const std::int64_t key = FirstKeyOf(account) + number;
    sums.Add(key, engine::AppendChecksum(bytes, key));
    static_cast<void>(storage.InsertChunk(key, bytes));
  }
  void Relay() { ChunkRelay(storage, kFrom, kTo).Run(sums); }
  std::int64_t RowOf(std::int64_t key) {
    const std::int64_t row = storage.FindChunk(key)->row;
    storage.EndWalk();
    return row;
  }
  // What stands there in chunks of the new shape.
  Rows RowsOf(Long account) {
    Rows all;
    seen = {};
    storage.VisitChunks(FirstKeyOf(account), FirstKeyOf(account + 1) - 1,
                        [&](std::int64_t key, std::span<const std::byte> bytes) {
                          const auto checked = engine::TakeChecked(bytes, key);
                          EXPECT_TRUE(checked);
                          seen.Add(key, checked->checksum);
                          ChunkRows rows;
                          engine::DecodeChunk(kTo, checked->bytes, rows);
                          for (std::size_t row = rows.Range().first; row < rows.Range().end; ++row) {
                            const Double* figures = rows.Find(row, kTo.fields);
                            all[engine::ChunkNumberOf(key) * kTo.rows + row].assign(figures, figures + kTo.fields);
                          }
                          return true;
                        });
    return all;
  }

  engine::SqliteStorage storage{engine::BookFile((Create(ShopDescription()), BookPath()), false)};
  engine::WriteTransaction transaction{storage};
  AccountSums sums;
  AccountSum seen;
};

TEST_F(ChunkRelayTest, KeepsEachFigureAtItsRecord) {
  Put(7, 0, {{0, {1, 2}}, {2, {0.5, 0}}, {6, {3, 4}}});
  Put(7, 1, {{0, {5, 6}}});
  Put(7, 4, {{6, {0, 1e300}}});
  Put(205, 0, {{1, {9, 9}}});
  Relay();
  EXPECT_EQ(RowsOf(7), (Rows{{0, {1, 2, 0, 0, 0}},
                             {1, {0, 0, 0, 0, 0}},
                             {2, {0.5, 0, 0, 0, 0}},
                             {6, {3, 4, 0, 0, 0}},
                             {7, {5, 6, 0, 0, 0}},
                             {34, {0, 1e300, 0, 0, 0}}}));
  EXPECT_EQ(seen, sums.Of(7));
  EXPECT_EQ(RowsOf(205), (Rows{{1, {9, 9, 0, 0, 0}}}));
  EXPECT_EQ(seen, sums.Of(205));
}

TEST_F(ChunkRelayTest, LeavesABookWithoutFiguresAlone) {
  Relay();
  EXPECT_FALSE(storage.HasChunks());
}

TEST_F(ChunkRelayTest, RefusesAChunkThatDoesNotAgreeWithItsChecksum) {
  Put(7, 0, {{0, {1, 2}}});
  storage.UpdateChunk(RowOf(FirstKeyOf(7)), std::vector<std::byte>(30));
  EXPECT_THAT([&] { Relay(); }, FailsWith(FailureNumber::kDeviceError, "the chunks of account number 7"));
}

TEST_F(ChunkRelayTest, RefusesAnAccountOfWhichAChunkIsMissing) {
  Put(7, 0, {{0, {1, 2}}});
  Put(7, 1, {{0, {1, 2}}});
  storage.DeleteChunk(RowOf(FirstKeyOf(7) + 1));
  EXPECT_THAT([&] { Relay(); }, FailsWith(FailureNumber::kDeviceError, "or with the sums beside them"));
}

}  // namespace
}  // namespace tallybook::testing
