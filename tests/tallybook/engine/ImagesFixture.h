// What the tests share that look at the images of a book's journal: a book that is written, then closed and looked at
// by its storage.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <utility>
#include <vector>

#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/SqliteStorage.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {

class ImagesFixture : public BookFixture {
 protected:
  // A record by account and day, counted from the book's first.
  using Place = std::pair<Long, std::size_t>;

  static Date DayOf(std::size_t day) { return Day(2003, 1, 1) + static_cast<Date>(day); }

  // An entry of the journal that puts a value into each place.
  void Import(const std::vector<Place>& places, Double value, Integer field = 4) {
    book->BeginRollback(book->FirstDate(), book->LastDate());
    PutAll(places, value, field);
    book->EndRollback();
  }
  // One that keeps no images.
  void ImportWithoutImages(const std::vector<Place>& places, Double value) {
    PutAll(places, value, 4);
    book->EndProgress();
  }

  // Closes the book; all below is known from then on.
  void Look() {
    book->Close();
    const bool read_only = true;
    storage = std::make_unique<engine::SqliteStorage>(engine::BookFile(BookPath(), read_only));
    stored = storage->Description();
    images = std::make_unique<engine::EntryImages>(*storage, *stored, Decode);
    rows = storage->Entries();
  }
  static void Decode(const engine::ChunkShape& shape, std::int64_t key, std::span<const std::byte> bytes,
                     engine::ChunkRows& decoded) {
    const auto checked = engine::TakeChecked(bytes, key);
    ASSERT_TRUE(checked.has_value());
    engine::DecodeChunk(shape, checked->bytes, decoded);
  }
  [[nodiscard]] std::size_t DayOfRow(std::int64_t key, std::size_t row) const {
    return std::size_t{engine::ChunkNumberOf(key)} * images->Shape().rows + row;
  }

  std::unique_ptr<engine::Book> book;
  std::unique_ptr<engine::SqliteStorage> storage;
  std::shared_ptr<const engine::StoredDescription> stored;
  std::unique_ptr<engine::EntryImages> images;
  std::vector<engine::JournalRow> rows;

 private:
  void PutAll(const std::vector<Place>& places, Double value, Integer field) {
    for (const auto& [account, day] : places) Put(*book, account, DayOf(day), field, value);
  }
};

}  // namespace tallybook::testing
