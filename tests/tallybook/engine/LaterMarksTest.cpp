#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <rapidcheck.h>
#include <set>
#include <vector>

#include "tallybook/engine/LaterMarks.h"
#include "tests/tallybook/engine/ImagesFixture.h"

namespace tallybook::testing {
namespace {

using engine::JournalRow;
using engine::LaterMarks;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Long kAccounts = 24;

class LaterMarksTest : public ImagesFixture {
 protected:
  void Start() {
    images.reset();
    storage.reset();
    book.reset();
    for (const char* ending : {"", "-wal", "-shm"}) std::filesystem::remove(BookPath() + ending);
    engine::BookDescription description = ShopDescription();
    description.accounts.clear();
    for (Long number = 1; number <= kAccounts; ++number) {
      description.accounts.push_back({number, "A" + std::to_string(number), ""});
    }
    book = CreateAndOpen(description);
  }
  [[nodiscard]] LaterMarks MarksOf(std::size_t entry) {
    return {*images, rows[entry], std::span<const JournalRow>(rows).subspan(entry + 1)};
  }
};

TEST_F(LaterMarksTest, NameTheEntriesUpToWhereEachRecordHasOne) {
  Start();
  Import({{1, 0}, {1, 1}, {2, 0}, {3, 0}}, 1);
  Import({{1, 0}}, 2);
  Import({{1, 5}, {2, 1}}, 3);
  Import({{1, 0}, {1, 1}, {3, 0}}, 4);
  Import({{1, 0}, {1, 1}, {2, 0}}, 5);
  Look();
  const LaterMarks marks = MarksOf(0);
  EXPECT_THAT(marks.Of(engine::FirstKeyOf(1)), ElementsAre(0, 2));
  EXPECT_THAT(marks.Of(engine::FirstKeyOf(2)), ElementsAre(3));
  EXPECT_THAT(marks.Of(engine::FirstKeyOf(3)), ElementsAre(2));
  EXPECT_THAT(marks.Of(engine::FirstKeyOf(4)), IsEmpty());
  EXPECT_THAT(MarksOf(4).Of(engine::FirstKeyOf(1)), IsEmpty());
}

// Against sets of records, with entries of few chunks behind such of many and the other way round.
TEST_F(LaterMarksTest, AreThoseOfAPlainWalkOverAllEntries) {
  EXPECT_TRUE(rc::check([this] {
    Start();
    const std::size_t rows_of_chunk = book->Stored().rows_of_chunk;
    const auto key_of = [&](const Place& place) {
      return engine::FirstKeyOf(place.first) + static_cast<std::int64_t>(place.second / rows_of_chunk);
    };
    std::vector<std::set<Place>> entries;
    for (int count = *rc::gen::inRange(2, 6); count > 0; --count) {
      std::set<Place>& places = entries.emplace_back();
      const int most = *rc::gen::element(1, 3, 40);
      for (int left = *rc::gen::inRange(1, most + 1); left > 0; --left) {
        places.emplace(*rc::gen::inRange<Long>(1, kAccounts + 1), *rc::gen::element<std::size_t>(0, 1, 2, 729));
      }
      Import({places.begin(), places.end()}, static_cast<Double>(entries.size()));
    }
    Look();
    const LaterMarks marks = MarksOf(0);
    std::map<std::int64_t, std::set<Place>> alone;
    for (const Place& place : entries[0]) alone[key_of(place)].insert(place);
    std::map<std::int64_t, std::vector<std::size_t>> expected;
    for (std::size_t entry = 1; entry < entries.size(); ++entry) {
      for (auto& [key, left] : alone) {
        const auto taken = std::erase_if(left, [&](const Place& place) { return entries[entry].contains(place); });
        if (taken != 0) expected[key].push_back(entry - 1);
      }
    }
    for (Long account = 1; account <= kAccounts; ++account) {
      for (const std::size_t day : {std::size_t{0}, std::size_t{729}}) {
        const std::int64_t key = key_of({account, day});
        const auto found = marks.Of(key);
        RC_ASSERT((std::vector<std::size_t>(found.begin(), found.end()) == expected[key]));
      }
    }
  }));
}

}  // namespace
}  // namespace tallybook::testing
