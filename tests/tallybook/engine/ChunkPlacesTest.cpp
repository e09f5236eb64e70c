#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/ChunkPlaces.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::ChunkPlaces;
using engine::FirstKeyOf;
using ::testing::ElementsAre;

constexpr std::size_t kRowsOfChunk = 100;

class ChunkPlacesTest : public ::testing::Test {
 protected:
  static engine::StoredDescription Stored() {
    engine::StoredDescription stored = engine::WithFirstSlots(ShopDescription(), kRowsOfChunk);
    stored.retired_accounts = {11};
    return stored;
  }

  ChunkPlaces places{Stored()};
};

TEST_F(ChunkPlacesTest, KnowsTheAccountsThatTheBookHasOrHad) {
  EXPECT_THAT(places.Accounts(), ElementsAre(7, 11, 101, 205));
  EXPECT_EQ(places.CodeOf(205), "200");
  EXPECT_EQ(places.CodeOf(11), "");
  EXPECT_EQ(places.CodeOf(12), "");
}

TEST_F(ChunkPlacesTest, HasAsManyChunksOfAnAccountAsHoldItsRecords) {
  // 731 days of two years.
  EXPECT_EQ(places.ChunksOfAccount(), 8U);
  EXPECT_TRUE(places.Has(FirstKeyOf(11) + 7));
  EXPECT_FALSE(places.Has(FirstKeyOf(11) + 8));
  EXPECT_FALSE(places.Has(FirstKeyOf(12)));
  EXPECT_FALSE(places.Has(FirstKeyOf(101) + (std::int64_t{1} << 60)));
  EXPECT_FALSE(places.Has(-FirstKeyOf(101)));
}

TEST_F(ChunkPlacesTest, TellsTheDatesOfAChunk) {
  EXPECT_EQ(places.FirstDateOf(FirstKeyOf(7)), Day(2003, 1, 1));
  EXPECT_EQ(places.LastDateOf(FirstKeyOf(7)), Day(2003, 4, 10));
  EXPECT_EQ(places.FirstDateOf(FirstKeyOf(7) + 7), Day(2004, 12, 1));
  EXPECT_EQ(places.LastDateOf(FirstKeyOf(7) + 7), Day(2004, 12, 31));
  EXPECT_EQ(places.FirstDate(), Day(2003, 1, 1));
  EXPECT_EQ(places.LastDate(), Day(2004, 12, 31));
}

}  // namespace
}  // namespace tallybook::testing
