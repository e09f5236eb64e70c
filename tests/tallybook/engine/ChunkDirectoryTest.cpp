#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/engine/ChunkDirectory.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/SqliteStorage.h"
#include "tests/support/FailsWith.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::AccountSum;
using engine::ChunkDirectory;
using engine::FirstKeyOf;

class ChunkDirectoryTest : public BookFixture {
 protected:
  void SetUp() override {
    for (const std::uint32_t number : {2U, 5U, 9U}) {
      const std::int64_t key = FirstKeyOf(7) + number;
      static_cast<void>(storage.InsertChunk(key, figures));
      sum.Add(key, 0);
    }
  }

  engine::SqliteStorage storage{engine::BookFile((Create(ShopDescription()), BookPath()), false)};
  std::vector<std::byte> figures{std::byte{0}};
  AccountSum sum;
};

TEST_F(ChunkDirectoryTest, TellsWhichChunksThereAre) {
  ChunkDirectory directory(storage);
  EXPECT_TRUE(directory.Has(FirstKeyOf(7) + 5, sum));
  EXPECT_FALSE(directory.Has(FirstKeyOf(7) + 6, sum));
  EXPECT_FALSE(directory.Has(FirstKeyOf(8), AccountSum()));
  EXPECT_EQ(directory.CountBetween(FirstKeyOf(7) + 3, FirstKeyOf(7) + 9, sum), 2U);
  EXPECT_EQ(directory.CountBetween(FirstKeyOf(7), FirstKeyOf(7) + 1, sum), 0U);
}

TEST_F(ChunkDirectoryTest, KeepsUpWithWhatIsTold) {
  ChunkDirectory directory(storage);
  EXPECT_FALSE(directory.Has(FirstKeyOf(7) + 6, sum));
  directory.Note(FirstKeyOf(7) + 6, true);
  directory.Note(FirstKeyOf(7) + 2, false);
  EXPECT_TRUE(directory.Has(FirstKeyOf(7) + 6, sum));
  EXPECT_FALSE(directory.Has(FirstKeyOf(7) + 2, sum));
}

TEST_F(ChunkDirectoryTest, RefusesAnIndexThatDoesNotShowWhatWasWritten) {
  AccountSum more = sum;
  more.Add(FirstKeyOf(7) + 1, 0);
  EXPECT_THAT([&] { static_cast<void>(ChunkDirectory(storage).Has(FirstKeyOf(7), more)); },
              FailsWith(FailureNumber::kDeviceError, "its index shows 3 chunks of account number 7, not the 4"));
  AccountSum other = sum;
  other.Remove(FirstKeyOf(7) + 5, 0);
  other.Add(FirstKeyOf(7) + 6, 0);
  EXPECT_THAT([&] { static_cast<void>(ChunkDirectory(storage).Has(FirstKeyOf(7), other)); },
              FailsWith(FailureNumber::kDeviceError, "the book is damaged"));
}

}  // namespace
}  // namespace tallybook::testing
