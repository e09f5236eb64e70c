// What the tests of the parts of a salvage share: a damaged book, and a new one to be filled from it.
#pragma once

#include <memory>
#include <optional>

#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/ChunkPlaces.h"
#include "tallybook/engine/DamagedBook.h"
#include "tallybook/engine/SalvageLosses.h"
#include "tallybook/engine/SalvagedChunks.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {

// Account 101 has two chunks, and 205 has one. The first entry of the journal keeps no images, the second has one.
class SalvageFixture : public BookFixture {
 protected:
  void SetUp() override {
    const auto book = CreateAndOpen();
    for (int day = 0; day < 700; ++day) Put(*book, 101, Day(2003, 1, 1) + day, 1, day / 7.0 + 1);
    Put(*book, 205, Day(2003, 1, 1), 4, 5);
    book->Commit();
    book->SetOperationName("set");
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 1, 1));
    Put(*book, 101, Day(2003, 1, 1), 4, 4711);
    book->EndRollback();
  }

  // Opens the book as it is by now, and makes the new one.
  void Begin() {
    damaged = std::make_unique<engine::DamagedBook>(BookPath());
    damaged->LoadDescription(false);
    places.emplace(damaged->Stored());
    losses.emplace(BookPath(), *places);
    engine::Book::Create(folder.Path("Saved.tbk"), ShopDescription());
    file.emplace(folder.Path("Saved.tbk"), false);
    transaction.emplace(file->Db());
    chunks.emplace(file->Db());
  }
  [[nodiscard]] std::vector<std::int64_t> StoredKeys() {
    std::vector<std::int64_t> keys;
    engine::Database database(BookPath(), engine::Database::Mode::kReadWrite);
    engine::DbStatement select(database, "SELECT key FROM chunk ORDER BY key");
    while (select.Step()) keys.push_back(select.Int(0));
    return keys;
  }
  [[nodiscard]] std::vector<std::int64_t> NewKeys() const {
    std::vector<std::int64_t> keys;
    for (const auto& [key, checksum] : chunks->All()) keys.push_back(key);
    return keys;
  }

  std::unique_ptr<engine::DamagedBook> damaged;
  std::optional<engine::ChunkPlaces> places;
  std::optional<engine::SalvageLosses> losses;
  std::optional<engine::BookFile> file;
  std::optional<engine::Transaction> transaction;
  std::optional<engine::SalvagedChunks> chunks;
};

}  // namespace tallybook::testing
