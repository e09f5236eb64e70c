// The rollback journal of a book: what ran, and the way back. An entry is opened by Book::BeginRollback and holds, for
// every record that was written under it, the figures from before; EndRollback closes it. An entry that was never
// closed, because its run failed or its process was killed, can be undone as well.
//
// Entries are undone newest first: the figures of an older one have had later changes put on top of them.
#pragma once

#include <vector>

#include "support/Types.h"

namespace tallybook::engine {

class Book;

// The numbers stand in book files.
enum class JournalState : Integer { kOpen = 0, kClosed = 1, kUndone = 2 };

struct JournalEntry {
  Long id = 0;     // from 1, in the order of their beginning
  Date time = 0;   // when it was opened, local time
  Date first = 0;  // the date range that was announced
  Date last = 0;
  Text what_ran;  // may be empty
  JournalState state = JournalState::kOpen;
  Long chunks = 0;  // how many stored chunks were changed under it
};

class Journal {
 public:
  // Works on an open book, which must outlive it.
  explicit Journal(Book& book) : book_(book) {}

  // All entries, oldest first.
  [[nodiscard]] std::vector<JournalEntry> Entries() const;

  // Puts every record that was written under the entry back to what it was when the entry was opened; records that
  // were not written under it stay as they are. Done wholly or not at all, whatever ends the process meanwhile. The
  // book has no current record afterwards. Gives the id.
  //   id      0: the newest entry that is not undone
  //   fails   5 for an id that is none, is undone, or is not the newest that is left (the text names that one);
  //           5 where there is nothing to undo; 70 for a book open to read; else as Book::Commit
  Long Undo(Long id = 0);

 private:
  Book& book_;
};

}  // namespace tallybook::engine
