// What is asked of an undo, and what it came to.
#pragma once

#include <cstddef>
#include <exception>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/JournalEntry.h"

namespace tallybook::engine {

// What becomes of figures that have been changed since: what they are now is neither what the entry left nor what they
// were before it.
enum class UndoWay {
  kExact,    // nothing is undone where there is one
  kSkip,     // they stay as they are
  kForce,    // they are put back as well
  kReverse,  // the amounts that the entry added are taken out of every figure, whatever it is now
};

struct UndoRequest {
  // One entry alone, or all entries of one command of which anything is not undone; with neither, those of the newest
  // such command, but for undos.
  std::optional<Long> id;
  std::optional<Long> command = {};
  UndoWay way = UndoWay::kExact;
  bool only_look = false;  // finds all out, and changes nothing
  std::size_t most_listed = 100;
};

// A figure that has been changed since an entry that is to be undone.
struct ChangedSince {
  Long entry = 0;  // that is undone
  Long account_number = 0;
  Date date = 0;  // the record's level date
  Integer field_number = 0;
  Double before = 0;           // the entry
  std::optional<Double> left;  // what the entry left; none where a later entry kept no figures from before
  Double now = 0;
  Long later = 0;  // the entry that changed it last, as far as the journal tells
};

struct UndoOutcome {
  bool done = false;                 // else nothing was changed
  std::vector<JournalEntry> undone;  // or that would be, newest first
  long long figures = 0;             // put back, or that would be, entry by entry
  long long changed_since = 0;       // figures that have been; of kReverse none
  std::vector<ChangedSince> listed;  // the first of them
};

// Ends an undo that is not to be carried out when all is found out, so that its transaction is dropped.
class UndoDropped : public std::exception {};

}  // namespace tallybook::engine
