// An entry of a book's journal (Journal.h).
#pragma once

#include "base/Types.h"

namespace tallybook::engine {

// The numbers stand in book files.
enum class JournalState : Integer { kOpen = 0, kClosed = 1, kUndone = 2 };

enum class JournalKind : Integer { kImport = 1, kSet = 2, kUndo = 3, kLists = 4 };

struct JournalEntry {
  Long id = 0;       // from 1, in the order in which the file got them
  Long command = 0;  // the same for all entries of one command
  JournalKind kind = JournalKind::kImport;
  Date time = 0;         // when it was opened, local time
  Date first = kNoDate;  // the date range that was announced; kNoDate where none was
  Date last = kNoDate;
  Text what_ran;  // may be empty
  JournalState state = JournalState::kOpen;
  bool keeps_images = true;  // whether it can be undone
  Long undoes = 0;           // the entry that this one took back; 0: it is no undo
  Long chunks = 0;           // how many stored chunks were changed under it
};

}  // namespace tallybook::engine
