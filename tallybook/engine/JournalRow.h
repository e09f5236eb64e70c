// What a book's storage keeps of its journal: entries, and which rows of which chunks an entry changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Checksums.h"
#include "tallybook/engine/EntryNotes.h"
#include "tallybook/engine/JournalEntry.h"

namespace tallybook::engine {

// An entry as its row has it.
struct JournalRow {
  JournalEntry entry;           // id 0: not stored yet
  std::int64_t marks = 0;       // how many marks are kept of it
  std::uint64_t marks_sum = 0;  // their checksums added up, modulo 2 to the 64th
  std::int64_t notes = 0;       // how many texts and files are kept of it
  std::uint64_t notes_sum = 0;  // as marks_sum
};

// What an entry did to a chunk: a bit for each row of the chunk that was written, lowest bit first, and the row of
// `image` that has the chunk from before.
struct ChunkMark {
  std::vector<std::byte> rows;
  std::int64_t image = 0;  // 0: there was no chunk, or the entry keeps no images
  Checksum checksum = 0;
};

// The name of the text that tells what an entry of kind kLists changed (BookGrowth.h, ChangeText).
inline constexpr const char* kChangeText = "change";
// The name of the text of an undo that tells in which state the entry was that it took back, where that was not closed.
inline constexpr const char* kWasText = "was";
inline constexpr const char* kWasOpen = "open";
// The name of the text that tells what is still to be done with the files of an entry (JournalNotes::Due).
inline constexpr const char* kDueText = "due";

using MarkBitsVisitor = std::function<void(std::int64_t key, const ChunkMark& mark)>;
// Takes a mark with the bytes of its image, empty where there was no chunk.
using MarkVisitor = std::function<void(std::int64_t key, const ChunkMark& mark, std::span<const std::byte> image)>;

}  // namespace tallybook::engine
