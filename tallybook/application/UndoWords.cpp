#include "tallybook/application/UndoWords.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/Dates.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/EntryWords.h"

namespace tallybook::application {

namespace {

Text CodeOf(const engine::Book& book, Long account) {
  const Integer position = book.AccountPosition(account);
  if (position == 0) return std::to_string(account);
  return book.Description().accounts[static_cast<std::size_t>(position - 1)].code;
}

Text EntriesOf(const engine::UndoOutcome& outcome) {
  Text named;
  for (const engine::JournalEntry& entry : outcome.undone) {
    named += (named.empty() ? "" : ", ") + std::to_string(entry.id);
  }
  return outcome.undone.size() == 1 ? "journal entry " + named + " is" : "journal entries " + named + " are";
}

}  // namespace

Text UndoneWords(const engine::JournalEntry& entry) {
  const Text what = WhatRan(entry);
  return fmt::format("Undone: journal entry {}{}.", entry.id, what.empty() ? what : ", " + what);
}

std::vector<Text> CellsOf(const engine::Book& book, const std::vector<engine::JournalEntry>& entries,
                          const engine::ChangedSince& figure) {
  return {CodeOf(book, figure.account_number),
          DateText(figure.date),
          std::to_string(figure.field_number),
          fmt::format("{}", figure.before),
          figure.left ? fmt::format("{}", *figure.left) : Text(),
          fmt::format("{}", figure.now),
          LaterEntryOf(entries, figure)};
}

Text LaterEntryOf(const std::vector<engine::JournalEntry>& entries, const engine::ChangedSince& figure) {
  const auto entry = std::ranges::find(entries, figure.later, &engine::JournalEntry::id);
  if (entry == entries.end()) return {};
  const Text what = WhatRan(*entry);
  return what.empty() ? fmt::format("entry {}", figure.later) : fmt::format("entry {}, {}", figure.later, what);
}

Text ChangedSinceWords(const engine::UndoOutcome& outcome, engine::UndoWay way) {
  if (outcome.changed_since == 0) return {};
  const bool one = outcome.changed_since == 1;
  const Text figures = Counted(outcome.changed_since, "figure") + " that " +
                       (outcome.undone.size() == 1 ? "it" : "they") + " changed " + (one ? "has" : "have") +
                       " been changed since";
  if (!outcome.done) return EntriesOf(outcome) + " not undone: " + figures;
  if (way == engine::UndoWay::kSkip) return figures + (one ? ", and stays as it is" : ", and stay as they are");
  return figures + (one ? ", and was put back as well" : ", and were put back as well");
}

Text WhyNotUndone(const std::vector<engine::JournalEntry>& entries, const engine::JournalEntry& entry) {
  if (entry.state == engine::JournalState::kUndone) return "This entry has been undone already.";
  if (!entry.keeps_images) return "This entry kept nothing from before, so it cannot be undone.";
  auto undone = std::ranges::find(entries, entry.id, &engine::JournalEntry::id);
  while (undone != entries.end() && undone->undoes != 0) {
    undone = std::ranges::find(entries, undone->undoes, &engine::JournalEntry::id);
  }
  const bool of_lists = undone != entries.end() && undone->kind == engine::JournalKind::kLists;
  if (!of_lists || entry.undoes == 0) return {};
  return "This entry took a change of lists back; it cannot be undone itself.";
}

Text UndoQuestion(const engine::UndoOutcome& outcome) {
  Text entries;
  for (const engine::JournalEntry& entry : outcome.undone) {
    const Text what = WhatRan(entry);
    entries += fmt::format("{}{}{}", entries.empty() ? "" : "; ", entry.id, what.empty() ? what : ", " + what);
  }
  const bool one = outcome.undone.size() == 1;
  const bool has_lists = std::ranges::any_of(
      outcome.undone, [](const engine::JournalEntry& entry) { return entry.kind == engine::JournalKind::kLists; });
  const Text figures = outcome.figures == 1 ? "1 figure goes back to what it was before."
                                            : Counted(outcome.figures, "figure") + " go back to what they were before.";
  return fmt::format("Undo journal {} {}?\r\n\r\n{}{} What was changed elsewhere since then stays.",
                     one ? "entry" : "entries", entries,
                     has_lists ? "The lists go back to what they were before. " : "", figures);
}

}  // namespace tallybook::application
