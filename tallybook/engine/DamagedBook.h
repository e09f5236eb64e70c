// A copy of a damaged book that is read however much is wrong with it. What the file is, and what stands beside it,
// stays. One thread.
#pragma once

#include "base/Failure.h"
#include "base/Types.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/Database.h"
#include "tallybook/engine/PrivateCopy.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

// Goes on after damage: gives whether `act` came to its end. A disk that is full is no damage, and its failure goes on.
template <typename Act>
bool Tries(Act act) {
  try {
    act();
    return true;
  } catch (const Failure& failure) {
    if (failure.Number() == FailureNumber::kDiskFull) throw;
    return false;
  }
}

class DamagedBook {
 public:
  // Copies the book and its log to among the system's temporary files, and opens the copy.
  //   path   one that ResolvedBookPath gave
  //   fails  75 for what does not look like a book at all, 70 where a writer is at work in it, 61 and 57 where there
  //          can be no copy; WorkCancelled while it is made
  explicit DamagedBook(const Text& path, WorkWatch& watch = Unwatched());

  [[nodiscard]] const Text& Path() const { return hold_.Path(); }
  // The copy. Its schema is taken as it reads, so each statement may fail, or end before its last row.
  [[nodiscard]] Database& Db() { return database_; }
  // For reading the copy, with what the log holds, page by page; not the caller's to close.
  [[nodiscard]] int CopyDescriptor() const { return copy_.Descriptor(); }
  // What is wrong with the log; empty where nothing is.
  [[nodiscard]] const Text& LogTrouble() const { return log_trouble_; }

  // Finds the description, and by it the format. Gives what is wrong with it: nothing where it agrees with its
  // checksum.
  //   fails  57 where there is none to be had, or where it is damaged and not to be taken `as_it_reads`
  Text LoadDescription(bool as_it_reads);
  // From then on.
  [[nodiscard]] Long Format() const { return format_; }
  [[nodiscard]] bool HasChecksums() const { return format_ > 1; }
  [[nodiscard]] const StoredDescription& Stored() const { return stored_; }

 private:
  [[nodiscard]] static std::vector<Long> FormatsToTry(std::int64_t told);
  [[nodiscard]] Database OpenCopy();

  BookHold hold_;
  PrivateCopy copy_;
  Text log_trouble_;
  Database database_;
  StoredDescription stored_;
  Long format_ = 0;
};

}  // namespace tallybook::engine
