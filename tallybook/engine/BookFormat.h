// The format of a book's file: its mark, its number, its tables (docs/book-file.md).
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

// The mark of a book among SQLite files ("Tbk1").
inline constexpr std::int64_t kBookApplicationId = 0x54626B31;
// The format that this engine writes, and the newest that it reads.
inline constexpr Long kBookFormat = 3;

inline constexpr std::size_t kPageSize = 16'384;
// The least that a chunk's figures may take, in bytes, where its records are small enough.
inline constexpr std::size_t kSmallestChunkRoom = 2'016;
inline constexpr std::size_t kLargestChunkRoom = 8 * kSmallestChunkRoom;

// For a new file, before anything is in it.
void SetPageSize(Database& database);
// Makes the tables of a new book, and marks the file as one of this format. Within a transaction.
void CreateTables(Database& database);
// The journal's tables alone.
void CreateJournalTables(Database& database);

// The format of a file.
//   fails   75 for a file that is no book, 73 for a format newer than ours, 57 for a number that no format has
[[nodiscard]] Long FormatOf(Database& database);

// How many records a chunk of a new book has: as many as fill a page or a part of one, at least one.
[[nodiscard]] std::size_t ChooseRowsOfChunk(const BookDescription& description);

}  // namespace tallybook::engine
