// Gives up what the journal keeps of long ago, for the room that it takes. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::engine {

class Book;

class JournalTrim {
 public:
  // Works on an open book, which must outlive it.
  explicit JournalTrim(Book& book) : book_(book) {}

  // Drops the figures from before of all entries up to the last that was opened before `date`, in one transaction, and
  // gives those that had some. They stay in the journal with what they are told to be and which records they wrote, and
  // cannot be taken back any more; changes of lists still can. The room stays with the file until it is compacted.
  //   fails  70 for a book open to read, 57 where what is to be dropped is damaged, else as Book::Commit
  std::vector<JournalEntry> Before(Date date);

 private:
  Book& book_;
};

}  // namespace tallybook::engine
