// Keeping a book safe: backups, and getting a book out of one again. What may be written where, and that an output is
// whole or not there, is seen to here; what a backup holds is told in docs/book-file.md ("Backups"). One thread.
#pragma once

#include <cstdint>

#include "base/Types.h"
#include "tallybook/engine/BookBackup.h"

namespace tallybook::application {

struct BackupDone {
  engine::BackupContents contents;
  std::int64_t size = 0;  // of the file, in bytes
};

// Makes a backup of a book and its companion files at `file`: it gets its name when it has been read again and is
// sound. Writers may be at work in the book meanwhile.
//   replace  a backup that is there already is replaced; nothing else ever is
//   fails    75 where something is there, where OutputRules refuse the place, or where the place is no file; 57 where
//            the book is damaged; else as engine::WriteBackup. What was at `file` is there then
BackupDone BackUpBook(const Text& book, const Text& file, bool replace, engine::WorkWatch& watch = engine::Unwatched());

struct RestoreOptions {
  bool replace = false;     // the book that is there is replaced, and kept beside
  double wait_seconds = 0;  // the longest that it is waited for while others have it open
};

struct RestoreDone {
  engine::BackupContents contents;
  Text book;     // the path of the book that was made
  Text kept_as;  // where the one that was there is kept; empty where there was none
  // Why the companion files are not in place yet: the book has them within, and whoever opens it next puts them there.
  // Empty where they are.
  Text companions_wait;
};

// Makes the book of a backup, with its companion files, at `book`. At every moment either the book that was there
// stands at its place with all it has, or the one of the backup with all that has.
//
// A book that is replaced is kept beside as a backup, BOOK-replaced, with -2, -3 ... behind it where that is taken. One
// that is damaged is kept as it is, as a book of that name with companion files and log of its own.
//   fails   75 for what is no backup, where a book or companion files of its name stand there and are not to be
//           replaced, where something else stands there, or where another book's name is too much like it; 57 for a
//           backup that is damaged; 70 where others have the book open, or may not be written; 61;
//           engine::WorkCancelled. All is as it was then
RestoreDone RestoreBook(const Text& file, const Text& book, const RestoreOptions& options,
                        engine::WorkWatch& watch = engine::Unwatched());

}  // namespace tallybook::application
