#include "tallybook/application/Reversal.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/Failure.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/application/ImportWays.h"
#include "tallybook/engine/JournalNotes.h"

namespace tallybook::application {

namespace {

EntryFacts FactsOfEntry(engine::Book& book, const engine::JournalEntry& entry) {
  return FactsOf(engine::JournalNotes(book).Of(entry).facts);
}

// What an import did to figures before or instead of adding; empty where it added alone, or where nobody knows.
Text OtherDeed(const EntryFacts& facts) {
  const Text& math = MathThatRan(facts);
  if (math == MathWord(static_cast<Integer>(eMath::mReplace))) return "replaced figures";
  if (math == MathWord(kZeroOnly)) return "zeroed figures";
  return ClearsFields(facts) ? "cleared fields before it added" : "";
}

bool TellsThatItAdded(const EntryFacts& facts) {
  const Text& math = MathThatRan(facts);
  return math == MathWord(static_cast<Integer>(eMath::mAdd)) ||
         math == MathWord(static_cast<Integer>(eMath::mSubtract));
}

}  // namespace

Text WhyNotReversed(const engine::JournalEntry& entry, const EntryFacts& facts) {
  if (entry.kind != engine::JournalKind::kImport) {
    return fmt::format("journal entry {} is no import, so there are no amounts that it added", entry.id);
  }
  const Text deed = OtherDeed(facts);
  return deed.empty() ? deed : fmt::format("journal entry {} {}, so there are no amounts to take out", entry.id, deed);
}

bool MayBeReversed(engine::Book& book, const std::vector<engine::JournalEntry>& entries) {
  return std::ranges::all_of(entries, [&](const engine::JournalEntry& entry) {
    return WhyNotReversed(entry, FactsOfEntry(book, entry)).empty();
  });
}

void NeedReversible(engine::Book& book, const engine::UndoRequest& request) {
  for (const engine::JournalEntry& entry : engine::Journal(book).Asked(request)) {
    const Text why = WhyNotReversed(entry, FactsOfEntry(book, entry));
    if (!why.empty()) throw Failure(FailureNumber::kInvalidArgument, book.Path() + ": " + why, "Tallybook.Journal");
  }
}

std::vector<Text> ReversedUntold(engine::Book& book, const std::vector<engine::JournalEntry>& entries) {
  std::vector<Text> lines;
  for (const engine::JournalEntry& entry : entries) {
    if (TellsThatItAdded(FactsOfEntry(book, entry))) continue;
    lines.push_back(
        fmt::format("journal entry {} does not tell whether it added or replaced; what it changed each figure "
                    "by was taken out",
                    entry.id));
  }
  return lines;
}

}  // namespace tallybook::application
