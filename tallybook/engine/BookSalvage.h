// All that can be read of a damaged book, in a new one, and a list of what is lost.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookCheck.h"

namespace tallybook::engine {

struct SalvageResult {
  Long format = 0;           // of the damaged book
  long long chunks = 0;      // that the new book has
  long long entries = 0;     // of its journal that are as they were
  long long companions = 0;  // files that it has beside it
  // What is lost, or what cannot be told of it: figures by account and dates, journal entries, the description. Empty
  // where nothing is.
  std::vector<BookFinding> lost;
};

// Makes a new book of what can be read of a damaged one, in the present format. The damaged one is not touched: it is
// copied to where it can be read whatever is wrong with it, which takes its room among the system's temporary files.
//
// A figure is taken only where the checksums say that it is the one written last, or where nothing speaks against it
// and what could not be found is in the list. The journal comes along; of what ran before an entry that is damaged
// nothing can be taken back any more, and an entry that is lost keeps its number. Companion files come as they are. A
// damaged backup is salvaged in the same way.
//   as_it_reads  takes a description that does not agree with its checksum, which is in the list then: figures may
//                stand under another account, field or date than before
//   fails        57 where the description cannot be read, or is damaged and not to be taken; 75 where something stands
//                at the new place or is too much like another book; 70 where a writer is at work in the damaged book;
//                else as Book::Create; WorkCancelled. There is no new book then
SalvageResult SalvageBook(const Text& damaged, const Text& new_book, bool as_it_reads, WorkWatch& watch = Unwatched());

}  // namespace tallybook::engine
