// How the dates of a journal entry are told, by the command and by windows.
#pragma once

#include "base/Types.h"

namespace tallybook::engine {
struct JournalEntry;
}

namespace tallybook::application {

struct EntryDates {
  Text first;
  Text last;
  bool operator==(const EntryDates&) const = default;
};

// The entry's dates as 2004-02-03, and "-" for both where what ran had none. A comma-separated file whose date never
// changes announces no last date; its one date is told as both.
[[nodiscard]] EntryDates EntryDatesOf(const engine::JournalEntry& entry);

}  // namespace tallybook::application
