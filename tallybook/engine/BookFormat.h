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
// The mark of a backup of one ("Tbkb"): a book with its companion files in two tables more (BackupTables.h).
inline constexpr std::int64_t kBackupApplicationId = 0x54626B62;
// The format that this engine writes, and the newest that it reads.
inline constexpr Long kBookFormat = 4;
// From this format on an entry counts its notes.
inline constexpr Long kFirstFormatOfNotes = 4;

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

// Marks a file as something else: a book as a backup, or a backup as a book.
void SetApplicationId(Database& database, std::int64_t id);
[[nodiscard]] bool IsBackup(Database& database);

// The format of a file.
//   also_backups  a backup has one, too
//   fails   75 for a file that is no book, 73 for a format newer than ours, 57 for a number that no format has
[[nodiscard]] Long FormatOf(Database& database, bool also_backups = false);

// How many records a chunk of a new book has: as many as fill a page or a part of one, at least one.
[[nodiscard]] std::size_t ChooseRowsOfChunk(std::size_t accounts, std::size_t fields);
[[nodiscard]] inline std::size_t ChooseRowsOfChunk(const BookDescription& description) {
  return ChooseRowsOfChunk(description.accounts.size(), description.fields.size());
}

}  // namespace tallybook::engine
