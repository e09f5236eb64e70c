// What of a book's file is lost, hidden or changed is told, never read as zeros.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <vector>

#include "tallybook/engine/BookFormat.h"
#include "tests/tallybook/engine/FlipTrial.h"

namespace tallybook::testing {
namespace {

using engine::Database;
using engine::DbStatement;

constexpr Long kShop = 101;
constexpr Long kCafe = 205;

class BookDamageTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    description.values = {
        {kShop, Day(2003, 1, 1), 1, 1}, {kShop, Day(2004, 12, 1), 1, 2}, {kCafe, Day(2003, 1, 1), 1, 3}};
    for (Integer number = 20; number < 60; ++number) description.fields.push_back({number, "", false});
    Create(description);
  }
  void ExpectDamaged(const Text& what, Long account, Date date) {
    EXPECT_THAT([&] { FiguresOf(*OpenToRead()); }, FailsWith(FailureNumber::kDeviceError, what));
    EXPECT_THAT([&] { static_cast<void>(OpenToRead()->ReadRecord(account, date)); },
                FailsWith(FailureNumber::kDeviceError, what));
    EXPECT_THAT([&] { static_cast<void>(Open()->ReadRecord(account, date)); },
                FailsWith(FailureNumber::kDeviceError, what));
  }
};

TEST_F(BookDamageTest, MissesAChunkThatIsGone) {
  Meddle("DELETE FROM chunk WHERE key = 101 << 24");
  ExpectDamaged("the book is damaged", kShop, Day(2003, 1, 1));
}

TEST_F(BookDamageTest, MissesAChunkThatAnIndexHides) {
  Meddle(
      "PRAGMA writable_schema = ON; UPDATE sqlite_master SET sql = replace(sql, 'NOT NULL UNIQUE, figures', "
      "'NOT NULL,        figures') WHERE name = 'chunk'; DELETE FROM sqlite_master WHERE tbl_name = 'chunk' AND type = "
      "'index'");
  Meddle("DELETE FROM chunk WHERE key = 101 << 24");
  EXPECT_THAT([&] { FiguresOf(*OpenToRead()); }, FailsWith(FailureNumber::kDeviceError, "account number 101"));
}

TEST_F(BookDamageTest, MissesWhatIsGoneFromARangeOfDates) {
  Meddle("DELETE FROM chunk WHERE key = 101 << 24");
  engine::FigureQuery query;
  query.last = Day(2003, 1, 31);
  EXPECT_THAT([&] { FiguresOf(*OpenToRead(), query); }, FailsWith(FailureNumber::kDeviceError, "account number 101"));
  query.accounts = {kCafe};
  EXPECT_EQ(FiguresOf(*OpenToRead(), query).size(), 1U);
}

TEST_F(BookDamageTest, MissesAllChunksAndAllSums) {
  Meddle("DELETE FROM chunk");
  EXPECT_THAT([&] { OpenToRead(); }, FailsWith(FailureNumber::kDeviceError, "the sums beside them do not agree"));
}

TEST_F(BookDamageTest, TellsAChunkOfBeforeFromTheOneThatWasWrittenLast) {
  Meddle("CREATE TABLE older AS SELECT key, figures FROM chunk");
  {
    const auto book = Open();
    Put(*book, kShop, Day(2003, 1, 1), 1, 9);
  }
  Meddle("UPDATE chunk SET figures = (SELECT figures FROM older WHERE older.key = chunk.key) WHERE key = 101 << 24");
  EXPECT_THAT([&] { FiguresOf(*OpenToRead()); },
              FailsWith(FailureNumber::kDeviceError, "do not agree with the sums beside them (account number 101"));
}

TEST_F(BookDamageTest, TellsAChunkThatStandsUnderAnotherKey) {
  Meddle("UPDATE chunk SET key = 7 << 24 WHERE key = 205 << 24");
  ExpectDamaged("the book is damaged", 7, Day(2003, 1, 1));
}

TEST_F(BookDamageTest, RefusesADescriptionThatWasChanged) {
  const std::string whole = folder.Read("North.tbk");
  for (const char* damage :
       {"UPDATE property SET value = 'South Shop' WHERE name = 'system_name'",
        "UPDATE account SET code = '201' WHERE number = 205", "UPDATE field SET description = 'Guest' WHERE number = 4",
        "DELETE FROM account WHERE number = 7", "UPDATE property SET value = value + 1 WHERE name = 'rows_of_chunk'",
        "DELETE FROM period WHERE position = 1", "UPDATE property SET value = 0 WHERE name = 'checksum'"}) {
    SCOPED_TRACE(damage);
    folder.Write("North.tbk", whole);
    Meddle(damage);
    if (folder.Read("North.tbk") == whole) continue;  // this book has no periods of its own
    EXPECT_THAT([&] { OpenToRead(); },
                FailsWith(FailureNumber::kDeviceError, "its description does not agree with its checksum"));
  }
}

TEST_F(BookDamageTest, RefusesANumberThatNoFormatHas) {
  Meddle("PRAGMA user_version = 0");
  EXPECT_THAT([&] { OpenToRead(); }, FailsWith(FailureNumber::kDeviceError, "its format is told as 0"));
  Meddle("PRAGMA user_version = 1");
  EXPECT_THAT([&] { FiguresOf(*OpenToRead()); }, FailsWith(FailureNumber::kDeviceError, "damaged"));
}

// A page holds a chunk's row whole, or SQLite chains pages, which costs a seek each.
TEST_F(BookDamageTest, FitsEveryChunkIntoAPage) {
  for (const int fields : {1, 2, 4, 63, 127, 252, 2016}) {
    for (const int accounts : {1, 9000, 20000}) {
      engine::BookDescription description;
      description.accounts.assign(static_cast<std::size_t>(accounts), {});
      description.fields.assign(static_cast<std::size_t>(fields), {});
      const std::size_t rows = engine::ChooseRowsOfChunk(description);
      const std::size_t figures = rows * static_cast<std::size_t>(fields) * sizeof(Double);
      const std::size_t per_page = engine::kLargestChunkRoom / figures;
      // Place, two lengths, row, types, key; head, figures and checksum of the chunk.
      const std::size_t longer_lengths = figures > 8'000 ? 2 : 0;
      const std::size_t cell = 2 + 2 + 3 + 5 + longer_lengths + 6 + 5 + figures + 8;
      EXPECT_LE(8 + per_page * cell, engine::kPageSize) << fields << " fields, " << accounts << " accounts";
    }
  }
}

TEST_F(BookDamageTest, StoresAFullChunkWithoutChainedPages) {
  std::filesystem::remove(BookPath());
  auto description = ShopDescription();
  description.calendar.years = 20;
  description.calendar.years_in_use = 20;
  description.fields.assign(1, {1, "", false});
  Create(description);
  {
    const auto book = Open();
    for (int day = 0; day < 5000; ++day) Put(*book, kShop, Day(2003, 1, 1) + day, 1, (day + 1) / 7.0);
  }
  Meddle("CREATE VIRTUAL TABLE IF NOT EXISTS temp.pages USING dbstat(main)");
  Database database(BookPath(), Database::Mode::kReadOnly);
  EXPECT_EQ(database.Number("SELECT max(length(figures)) FROM chunk"), 5 + 16'128 + 8);
  EXPECT_EQ(database.Number("SELECT count(*) FROM dbstat WHERE name = 'chunk' AND pagetype = 'overflow'"), 0);
}

using BookFlipSample = FlipTrial;

TEST_F(BookFlipSample, ShowsNoWrongFigureWhateverBitIsFlipped) {
  EXPECT_GT(Flip(100, 7), 20);
}

}  // namespace
}  // namespace tallybook::testing
