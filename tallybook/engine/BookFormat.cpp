#include "tallybook/engine/BookFormat.h"

#include <algorithm>
#include <string>

#include "base/Failure.h"

namespace tallybook::engine {

namespace {

// A page of 16,384 bytes, and what of it is left for the figures of one chunk when the page's head (8), the row's own
// (2 + 3 + 9 + 6 + 8: place, lengths, row, types, key) and the chunk's bytes outside the figures (5 + 8) are taken off.
// The room is a whole number of eighths so small that eight chunks of an eighth fit a page as well:
// 8 + 8 x (2 + 2 + 3 + 5 + 6 + 2,029) is 16,384.
constexpr std::size_t kPageRoom = kLargestChunkRoom;
// One chunk of every account together stays below this, so that a walk from date to date over all accounts finds its
// chunks in a cache of the usual size.
constexpr std::size_t kChunksOfAllAccounts = std::size_t{128} << 20;

constexpr const char* kSchema = R"sql(
CREATE TABLE property (name TEXT PRIMARY KEY, value) WITHOUT ROWID;
CREATE TABLE period (position INTEGER PRIMARY KEY, name TEXT NOT NULL, length INTEGER NOT NULL);
CREATE TABLE account (position INTEGER PRIMARY KEY, number INTEGER NOT NULL UNIQUE, code TEXT NOT NULL UNIQUE,
                      description TEXT NOT NULL);
CREATE TABLE field (position INTEGER PRIMARY KEY, number INTEGER NOT NULL UNIQUE, description TEXT NOT NULL,
                    system INTEGER NOT NULL, slot INTEGER NOT NULL);
CREATE TABLE retired (list INTEGER NOT NULL, number INTEGER NOT NULL, PRIMARY KEY (list, number)) WITHOUT ROWID;
CREATE TABLE chunk (id INTEGER PRIMARY KEY, key INTEGER NOT NULL UNIQUE, figures BLOB NOT NULL);
CREATE TABLE account_sum (block INTEGER PRIMARY KEY, sums BLOB NOT NULL);
CREATE TABLE image (id INTEGER PRIMARY KEY, figures BLOB NOT NULL);
)sql";

constexpr const char* kJournalSchema = R"sql(
CREATE TABLE command (id INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, what TEXT NOT NULL, who TEXT NOT NULL,
                      checksum INTEGER NOT NULL);
CREATE TABLE journal (id INTEGER PRIMARY KEY AUTOINCREMENT, command INTEGER NOT NULL, kind INTEGER NOT NULL,
                      time REAL NOT NULL, first REAL NOT NULL, last REAL NOT NULL, what TEXT NOT NULL,
                      state INTEGER NOT NULL, images INTEGER NOT NULL, undoes INTEGER NOT NULL,
                      chunks INTEGER NOT NULL, marks INTEGER NOT NULL, marks_sum INTEGER NOT NULL,
                      checksum INTEGER NOT NULL, notes INTEGER NOT NULL DEFAULT 0,
                      notes_sum INTEGER NOT NULL DEFAULT 0);
CREATE TABLE journal_text (entry INTEGER NOT NULL, name TEXT NOT NULL, value, checksum INTEGER NOT NULL,
                           PRIMARY KEY (entry, name)) WITHOUT ROWID;
CREATE TABLE journal_file (entry INTEGER NOT NULL, position INTEGER NOT NULL, path TEXT NOT NULL, size INTEGER,
                           xxh3 BLOB, sha256 BLOB, checksum INTEGER NOT NULL, PRIMARY KEY (entry, position))
                          WITHOUT ROWID;
CREATE TABLE journal_chunk (entry INTEGER NOT NULL, key INTEGER NOT NULL, rows BLOB NOT NULL, image INTEGER,
                            PRIMARY KEY (entry, key)) WITHOUT ROWID;
)sql";

}  // namespace

// The record size decides how many records fit; a record larger than a page has a chunk of its own.
std::size_t ChooseRowsOfChunk(std::size_t accounts, std::size_t fields) {
  std::size_t room = kPageRoom;
  while (room > kSmallestChunkRoom && room * accounts > kChunksOfAllAccounts) room /= 2;
  const std::size_t record = std::max<std::size_t>(fields, 1) * sizeof(Double);
  return std::max<std::size_t>(room / record, 1);
}

void SetPageSize(Database& database) {
  database.Execute(("PRAGMA page_size = " + std::to_string(kPageSize)).c_str());
}

void CreateTables(Database& database) {
  SetApplicationId(database, kBookApplicationId);
  database.Execute(("PRAGMA user_version = " + std::to_string(kBookFormat)).c_str());
  database.Execute(kSchema);
  CreateJournalTables(database);
}

void CreateJournalTables(Database& database) {
  database.Execute(kJournalSchema);
}

void SetApplicationId(Database& database, std::int64_t id) {
  database.Execute(("PRAGMA application_id = " + std::to_string(id)).c_str());
}

bool IsBackup(Database& database) {
  return database.Number("PRAGMA application_id") == kBackupApplicationId;
}

Long FormatOf(Database& database, bool also_backups) {
  constexpr const char* kSource = "Tallybook.Book";
  const bool is_backup = IsBackup(database);
  if (is_backup && !also_backups) {
    throw Failure(FailureNumber::kPathOrAccess,
                  database.Path() + ": this file is the backup of a book; it has to be restored first", kSource);
  }
  if (!is_backup && database.Number("PRAGMA application_id") != kBookApplicationId) {
    throw Failure(FailureNumber::kPathOrAccess, database.Path() + ": this file is not a book", kSource);
  }
  const std::int64_t format = database.Number("PRAGMA user_version");
  if (format > kBookFormat) {
    throw Failure(FailureNumber::kFeatureUnavailable,
                  database.Path() + ": this book was made by a newer version of Tallybook (book version " +
                      std::to_string(format) + "; this one reads up to " + std::to_string(kBookFormat) + ")",
                  kSource);
  }
  if (format < 1) {
    throw Failure(FailureNumber::kDeviceError,
                  database.Path() + ": the book is damaged: its format is told as " + std::to_string(format), kSource);
  }
  return static_cast<Long>(format);
}

}  // namespace tallybook::engine
