// All that is kept of an entry of the journal, item by item, in words: for the command and for windows alike. One
// thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

struct EntryItem {
  Text name;   // "Who"; what belongs to the item above begins with two blanks
  Text value;  // never empty
  bool operator==(const EntryItem&) const = default;
};

// "Journal entry 3: import csv day.csv".
[[nodiscard]] Text EntryHeading(const engine::NotedEntry& noted);
// Its items in their order; those that an entry has no value for are left out.
[[nodiscard]] std::vector<EntryItem> ItemsOf(const engine::NotedEntry& noted);

// The files' paths, one behind the other.
[[nodiscard]] Text PathsOf(const std::vector<engine::EntryFile>& files);

}  // namespace tallybook::application
