// A book and its companion files as one file, and back (docs/book-file.md, "Backups"). Where such files may go, and how
// they get there whole, is the application's business; here they are written into a file that is made for it.
#pragma once

#include <cstddef>

#include "base/Types.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

struct BackupContents {
  Text book_name;  // NAME, in which the companion files ended
  Date time = 0;   // when it was made, local time
  Long format = 0;
  std::size_t companions = 0;
};

// Writes a backup of the book at `book` into the empty file `to`: the book as one moment has it, whoever writes it
// meanwhile, and the companion files as the same moment has them. Nothing is looked at for damage, and the file is not
// handed to the disk.
//   shown   what failures call the file
//   fails   as Book::Open; 70 where somebody changes the companions all the while; 61, 57; WorkCancelled. The file is
//           in pieces then
BackupContents WriteBackup(const Text& book, const Text& to, const Text& shown, WorkWatch& watch = Unwatched());

// What a backup is.
//   fails   75 for what is no backup, 73 for one of a newer format, 57 where it is damaged so far
[[nodiscard]] BackupContents ReadBackup(const Text& path);

// Writes the book of a backup into the empty file `to`. It keeps its companion files within until it is opened at its
// place: whoever opens it first puts them beside it, as BookFile.h tells, and takes away what stands there under its
// name.
//   fails   as ReadBackup, and 61, 57; WorkCancelled
void UnpackBackup(const Text& backup, const Text& to, const Text& shown, WorkWatch& watch = Unwatched());

// True where a file bears the mark of a backup.
[[nodiscard]] bool LooksLikeBackup(const Text& path);

}  // namespace tallybook::engine
