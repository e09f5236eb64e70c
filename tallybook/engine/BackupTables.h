// What a backup has besides the book's own tables (docs/book-file.md, "Backups"): of which book it is, from when, and
// the companion files. A book that a restore has put in place keeps them until its companions stand beside it. One
// thread.
#pragma once

#include <cstddef>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

// What a backup tells of itself.
struct BackupHead {
  Text book_name;  // NAME, in which the companion files ended
  Date time = 0;   // when it was made, local time
};

// Copies a database, as its connection sees it, into the empty file at `path`, which needs no log beside it then.
// Nothing is made beside that file, and it is not handed to the disk. Failures call it `shown`.
void CopyToFile(Database& database, const Text& path, const Text& shown, WorkWatch& watch = Unwatched());

// Opens such a file to change it, so that nothing is ever beside it; a failure leaves it in pieces.
[[nodiscard]] Database OpenWorkFile(const Text& path, const Text& shown);

// Makes the tables and fills them. Within a transaction, as the next.
void SaveBackupTables(Database& database, const BackupHead& head, const std::vector<Companion>& companions);
void DropBackupTables(Database& database);
[[nodiscard]] bool HasBackupTables(Database& database);

// Each fails with 57 where the tables do not agree with their checksum.
[[nodiscard]] BackupHead LoadBackupHead(Database& database);
[[nodiscard]] std::vector<Companion> LoadCompanions(Database& database);

}  // namespace tallybook::engine
