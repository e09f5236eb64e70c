#include "tallybook/application/JournalMark.h"

#include <algorithm>

namespace tallybook::application {

JournalMark::JournalMark(engine::Book& book) : book_(book), entries_before_(engine::Journal(book).Entries().size()) {}

std::vector<engine::JournalEntry> JournalMark::Since() const {
  std::vector<engine::JournalEntry> entries = engine::Journal(book_).Entries();
  const auto before = static_cast<std::ptrdiff_t>(std::min(entries_before_, entries.size()));
  entries.erase(entries.begin(), entries.begin() + before);
  return entries;
}

JournalMark::Left JournalMark::LeftHalfWay() const {
  const auto since = Since();
  const auto is_open = [](const engine::JournalEntry& entry) { return entry.state == engine::JournalState::kOpen; };
  const auto is_final = [](const engine::JournalEntry& entry) { return !entry.keeps_images; };
  if (std::ranges::any_of(since, is_final)) return Left::kForGood;
  return std::ranges::any_of(since, is_open) ? Left::kUndoable : Left::kNothing;
}

}  // namespace tallybook::application
