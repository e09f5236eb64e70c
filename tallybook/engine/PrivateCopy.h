// A book and its log, copied to where they can be put together by someone who may only read them.
#pragma once

#include "base/Types.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

// The copy has no name while it is made, where the system can do that. Then it has one for as long as it takes to open
// it, in a folder of its own in the system's folder for temporary files, which nobody else can enter. What a process
// that was killed has left there the next copy takes away.
class PrivateCopy {
 public:
  // Copies what `book` holds, and its log. Where a writer changes either meanwhile, the copy is made again.
  //   fails   70 where a writer gives no time for a copy, or where the log may not be read; 61, 57 where the copy
  //           cannot be written; WorkCancelled
  explicit PrivateCopy(const BookHold& book, WorkWatch& watch = Unwatched());
  ~PrivateCopy();
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  // Where the copy can be opened, with its log beside it, until Remove.
  [[nodiscard]] Text Path() const { return folder_ + "/copy.tbk"; }
  // Takes the names away. What is open stays readable, and is gone with the process, however that ends.
  void Remove() noexcept;
  // For reading the copied book past all names; not the caller's to close.
  [[nodiscard]] int Descriptor() const { return book_; }

 private:
  void MakeFolder(const BookHold& book);
  void MakeFiles(const BookHold& book);
  void CopySettled(const BookHold& book, WorkWatch& watch);
  void Copy(const BookHold& book, WorkWatch& watch);
  void GiveNames(const BookHold& book);

  Text folder_;  // empty while there is none
  int book_ = -1;
  int log_ = -1;
  bool has_names_ = false;
  bool has_log_ = false;
};

}  // namespace tallybook::engine
