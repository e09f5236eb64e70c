#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <vector>

#include "tallybook/engine/StoredChunks.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using engine::Database;
using engine::DbStatement;
using engine::StoredChunk;
using engine::StoredChunks;
using engine::Transaction;

// The table of chunks alone. A chunk's figures are one byte here, its row in the table.
class ChunkTable {
 public:
  ChunkTable() : database_(folder_.Path("chunks.tbk")), chunks_(database_) {}

  void Put(std::int64_t key) {
    const auto row = static_cast<std::int64_t>(rows_.size()) + 1;
    const std::byte figures{static_cast<unsigned char>(row)};
    DbStatement(database_, "INSERT INTO chunk (key, figures) VALUES (?1, ?2)")
        .Bind(1, key)
        .Bind(2, std::span(&figures, 1))
        .Run();
    rows_[key] = row;
  }
  // Whether the reader finds just what was put under a key.
  [[nodiscard]] bool Agrees(std::int64_t key) {
    const std::optional<StoredChunk> found = chunks_.Find(key);
    const auto put = rows_.find(key);
    if (put == rows_.end()) return !found;
    return found && found->row == put->second && found->figures.size() == 1 &&
           found->figures[0] == std::byte{static_cast<unsigned char>(put->second)};
  }
  [[nodiscard]] StoredChunks& Chunks() { return chunks_; }
  [[nodiscard]] Database& Db() { return database_; }

 private:
  // The reader's statement needs its table.
  class WithTable : public Database {
   public:
    explicit WithTable(const Text& path) : Database(path, Mode::kCreate) {
      Execute("CREATE TABLE chunk (id INTEGER PRIMARY KEY, key INTEGER NOT NULL UNIQUE, figures BLOB NOT NULL)");
    }
  };

  TempFolder folder_;
  WithTable database_;
  StoredChunks chunks_;
  std::map<std::int64_t, std::int64_t> rows_;
};

TEST(StoredChunks, FindsNothingInAnEmptyTable) {
  ChunkTable table;
  EXPECT_TRUE(table.Agrees(0));
  EXPECT_TRUE(table.Agrees(7));
  EXPECT_TRUE(table.Agrees(3));
}

TEST(StoredChunks, FindsKeysInAnyOrderAndKnowsTheGaps) {
  ChunkTable table;
  for (const std::int64_t key : {30, 10, 20, 50}) table.Put(key);
  for (const std::int64_t key : {10, 15, 20, 20, 25, 30, 49, 50, 51, 99, 50, 9, 10, 50, 30, 31, 29, 10, 51, 40}) {
    EXPECT_TRUE(table.Agrees(key)) << key;
  }
}

TEST(StoredChunks, SeesWhatWasWrittenAfterItsWalkEnded) {
  ChunkTable table;
  table.Put(10);
  table.Put(30);
  EXPECT_TRUE(table.Agrees(10));
  EXPECT_TRUE(table.Agrees(20));
  table.Chunks().EndWalk();
  {
    Transaction transaction(table.Db());
    table.Put(20);
    transaction.Commit();
  }
  EXPECT_TRUE(table.Agrees(20));
  EXPECT_TRUE(table.Agrees(30));
}

TEST(StoredChunks, KeepsNoTransactionOpenBehindItsWalk) {
  ChunkTable table;
  table.Put(10);
  EXPECT_TRUE(table.Agrees(5));
  EXPECT_EQ(sqlite3_txn_state(table.Db().Handle(), "main"), SQLITE_TXN_READ);
  table.Chunks().EndWalk();
  EXPECT_EQ(sqlite3_txn_state(table.Db().Handle(), "main"), SQLITE_TXN_NONE);
}

RC_GTEST_PROP(StoredChunksProperties, AgreesWithWhatWasPutWhateverIsAskedInWhateverOrder, ()) {
  const auto key = rc::gen::inRange<std::int64_t>(0, 60);
  const auto put = *rc::gen::unique<std::vector<std::int64_t>>(key);
  const auto asked = *rc::gen::container<std::vector<std::int64_t>>(key);
  ChunkTable table;
  for (const std::int64_t one : put) table.Put(one);
  for (const std::int64_t one : asked) RC_ASSERT(table.Agrees(one));
}

}  // namespace
}  // namespace tallybook::testing
