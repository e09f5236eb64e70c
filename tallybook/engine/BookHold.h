// A book's file as this process holds it, from before its connection is opened until behind that connection's end: what
// it is, the right to write it, and what stands beside it.
//
// Descriptors. The record locks that SQLite takes (fcntl, F_SETLK) belong to the process: the system drops all that the
// process has on a file as soon as any descriptor of that file is closed, also those of another connection. So what a
// file is, is told by device and inode, and each descriptor on a book's file stands in one table of the process that
// closes it when nobody here holds that file any more. Nothing else may open a book that is open.
//
// The right to write is an open-file-description lock on one byte of the book's file, outside those that SQLite locks.
// NAME.tbk-lock is locked besides, because earlier programs know of nothing else. It is never deleted: a file that is
// gone cannot keep a second writer from making a new one.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "base/Failure.h"
#include "base/Types.h"
#include "platform/FileSystem.h"
#include "tallybook/engine/FileState.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

class BookHold {
 public:
  // kLeaveAlone looks as well, and not even takes away what an ended connection has left.
  enum class Purpose { kLook, kChange, kLeaveAlone };

  // Finds and opens the file. `path` is one that ResolvedBookPath gave.
  //   fails   each with the path: as CheckIsBookFile; 70 where it may not be read, or written to change it
  BookHold(Text path, Purpose purpose);
  // Gives the rights up and takes away what an ended connection left beside the book. The connection is closed by then.
  ~BookHold();
  BookHold(const BookHold&) = delete;
  BookHold& operator=(const BookHold&) = delete;

  // Takes the right to write; a book that is in use elsewhere is waited for so many seconds at most.
  //   watch   asked while it is waited, here and below; outlives that
  //   fails   70 in use, 73 where the file system cannot lock files; WorkCancelled
  void TakeRightToWrite(double wait_seconds, WorkWatch& watch = Unwatched());
  // Takes the lock of earlier programs too, within the time that TakeRightToWrite was given. This makes NAME.tbk-lock,
  // with the mode (and, by root, the owner) of the book, so it comes when the file is known to be a book.
  //   fails   as TakeRightToWrite; 75 where something that is no file bears the lock's name
  void TakeOlderRight();

  // Keeps everybody else from the file, also those who only look, until the end of this; nobody here has it open.
  // Within the time that TakeRightToWrite was given.
  //   fails   70 where it is open elsewhere, or where its path leads to another file by now
  void TakeAlone();

  // Makes sure that SQLite can use the log and its index (-wal, -shm) where they are there: those that may not be used
  // and that nobody has open are taken away, unless the log holds anything. False: they stay, or SQLite may not make
  // them here, or the book may not be written.
  [[nodiscard]] bool CanShareLog();
  // True where the book has no log that holds anything: what is in the file is all.
  [[nodiscard]] bool LogIsEmpty() const { return StateAt(LogPath()).size == 0; }
  [[nodiscard]] Text LogPath() const { return path_ + "-wal"; }

  [[nodiscard]] const Text& Path() const { return path_; }
  // Failure 70 where the path leads to another file by now, or to none.
  void CheckInPlace() const;
  // The file's state now, wherever its path leads.
  [[nodiscard]] FileState State() const { return StateBehind(descriptor_); }
  // The same, once a change from then on will show in it. Failure 70 where the file never comes to rest.
  [[nodiscard]] FileState SettledState() const;

  // For reading the file past its connection; not the caller's to close.
  [[nodiscard]] int Descriptor() const { return descriptor_; }

 private:
  [[nodiscard]] Text IndexPath() const { return path_ + "-shm"; }
  [[nodiscard]] Text LockPath() const { return path_ + "-lock"; }

  [[nodiscard]] bool TryRight() const;
  void MakeLockFile() const;
  [[nodiscard]] std::unique_ptr<OpenFile> OpenLockFile() const;
  [[nodiscard]] bool WaitedInVain() const;
  [[nodiscard]] Text HolderWords() const;
  void ClearLog(bool only_unusable);

  Text path_;
  bool may_write_ = false;
  FileState opened_;
  int descriptor_ = -1;
  bool has_right_ = false;
  bool is_alone_ = false;
  std::chrono::steady_clock::time_point deadline_;
  WorkWatch* watch_ = &Unwatched();
  std::unique_ptr<OpenFile> older_right_;
};

// Whether a failure says that the book is open for writing elsewhere, or that a short commit of another program lasts:
// to wait and try again may help.
[[nodiscard]] bool IsInUse(const Failure& failure);

// The mark that a database at a path bears, 0 for none and for what is no database. It may be open in this process.
[[nodiscard]] std::int64_t ApplicationIdAt(const Text& path);
// True where a file bears the mark of a book.
[[nodiscard]] bool LooksLikeBook(const Text& path);

}  // namespace tallybook::engine
