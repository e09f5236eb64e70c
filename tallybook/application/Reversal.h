// Which imports can be taken back by taking their amounts out (engine::UndoWay::kReverse): those that added or
// subtracted. What replaced, zeroed or cleared figures added no amounts to them, and the journal tells which it was. Of
// an entry that does not tell it, from before that was kept, nobody knows: what it changed figures by is taken for its
// amounts. One thread.
#pragma once

#include <vector>

#include "tallybook/application/EntryFacts.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/UndoRequest.h"

namespace tallybook::application {

// Why the amounts of a journal entry cannot be taken out, as far as it tells; empty where they may be.
[[nodiscard]] Text WhyNotReversed(const engine::JournalEntry& entry, const EntryFacts& facts);

// Whether the amounts of all of these entries can be taken out. Fails as JournalNotes::Of.
[[nodiscard]] bool MayBeReversed(engine::Book& book, const std::vector<engine::JournalEntry>& entries);

// Failure 5 for the first entry of a request whose amounts cannot be taken out; else fails as Journal::Asked and
// JournalNotes::Of.
void NeedReversible(engine::Book& book, const engine::UndoRequest& request);

// A line for each of these entries that does not tell whether it added; they have been reversed. Fails as
// JournalNotes::Of.
[[nodiscard]] std::vector<Text> ReversedUntold(engine::Book& book, const std::vector<engine::JournalEntry>& entries);

}  // namespace tallybook::application
