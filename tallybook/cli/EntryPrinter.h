// Entries of the journal with all that is kept of them, in the forms of PrintForm.
#pragma once

#include <vector>

#include "tallybook/cli/PrintForm.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::cli {

// A row for each entry, oldest first; in JSON an array.
void PrintEntries(const std::vector<engine::NotedEntry>& entries, PrintForm form);
// One entry: its items line by line, a row, or an object.
void PrintEntry(const engine::NotedEntry& entry, PrintForm form);

}  // namespace tallybook::cli
