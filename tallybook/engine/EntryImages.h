// What the journal's entries kept of the figures from before, as rows of chunks as they are now: an entry that was made
// before all chunks were stored anew (StoredDescription.h) kept other chunks, and what is asked here need not know.
//
// One thread. Everything fails with 57 where what it needs is damaged, as the storage does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "base/Types.h"
#include "tallybook/engine/BookStorage.h"
#include "tallybook/engine/ChunkRows.h"
#include "tallybook/engine/JournalRow.h"
#include "tallybook/engine/RowBits.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

// Rows of a chunk that an entry wrote, and what stood in them before; rows that are not held were zeros. Of an entry
// that keeps no images the bits alone count.
struct EntryRows {
  std::int64_t key = -1;
  RowBits rows;
  ChunkRows before;
};

class EntryImages {
 public:
  // Reads a chunk's bytes of this shape, held against their checksum.
  using Decoder =
      std::function<void(const ChunkShape& shape, std::int64_t key, std::span<const std::byte> bytes, ChunkRows& rows)>;

  // Both outlive it.
  EntryImages(BookStorage& storage, const StoredDescription& description, Decoder decode);

  [[nodiscard]] const ChunkShape& Shape() const { return shape_; }

  // All that an entry wrote, each chunk once, in the order of the keys.
  using Visitor = std::function<void(const EntryRows& rows)>;
  void Visit(const JournalRow& entry, const Visitor& visit);
  // The same without the figures, which are not read.
  void VisitBits(const JournalRow& entry, const Visitor& visit);
  // What an entry wrote of one chunk; nothing where it wrote none of it.
  [[nodiscard]] std::optional<EntryRows> Find(const JournalEntry& entry, std::int64_t key);
  [[nodiscard]] std::optional<EntryRows> FindBits(const JournalEntry& entry, std::int64_t key);

 private:
  void VisitMarks(const JournalRow& entry, bool with_images, const Visitor& visit);
  [[nodiscard]] std::optional<EntryRows> FindRows(const JournalEntry& entry, std::int64_t key, bool with_images);
  // Puts the marked rows of a chunk of another shape into those of a chunk as it is now.
  void Move(const ChunkShape& made, const EntryRows& former, std::size_t row, EntryRows& rows) const;

  BookStorage& storage_;
  const StoredDescription& description_;
  ChunkShape shape_;
  Decoder decode_;
};

}  // namespace tallybook::engine
