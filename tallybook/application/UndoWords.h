// What an undo came to, in words: for the command and for windows alike. One thread.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/UndoRequest.h"

namespace tallybook::application {

// "Undone: journal entry 3, set 100 2004-02-03 1 8."
[[nodiscard]] Text UndoneWords(const engine::JournalEntry& entry);

// A figure that was changed since as cells: the account's code, the date, the field's number; what it was before the
// entry, what the entry left and what it is now, in the shortest text that reads back to the same number, empty where
// that is not known; and the entry that changed it last. `entries` are all of the journal.
[[nodiscard]] std::vector<Text> CellsOf(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                                        const engine::ChangedSince& figure);

// The entry that changed it last: "entry 3, set 100 2004-02-03 1 8".
[[nodiscard]] Text LaterEntryOf(const std::vector<engine::JournalEntry>& entries, const engine::ChangedSince& figure);

// Of an undo that was not carried out: "journal entry 3 is not undone: 2 figures that it changed have been changed
// since"; of one that was, what became of these figures. Empty where there are none.
[[nodiscard]] Text ChangedSinceWords(const engine::UndoOutcome& outcome, engine::UndoWay way);

// Why an entry cannot be undone, as far as the journal's list tells it; empty where it may be. `entries` are all of
// them.
[[nodiscard]] Text WhyNotUndone(const std::vector<engine::JournalEntry>& entries, const engine::JournalEntry& entry);

// "Undo journal entry 3, import csv day.csv?", and in a second paragraph what that does: of one that was only looked
// at, and that no figure stands in the way of.
[[nodiscard]] Text UndoQuestion(const engine::UndoOutcome& outcome);

}  // namespace tallybook::application
