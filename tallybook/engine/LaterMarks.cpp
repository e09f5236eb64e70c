#include "tallybook/engine/LaterMarks.h"

namespace tallybook::engine {

namespace {

// How many marks of an entry are read one behind another in the time in which one is searched.
constexpr std::int64_t kMarksOfASearch = 8;

}  // namespace

LaterMarks::LaterMarks(EntryImages& images, const JournalRow& entry, std::span<const JournalRow> later) {
  bool any = false;
  for (const JournalRow& row : later) any = any || row.marks != 0;
  if (!any) return;
  images.VisitBits(entry, [&](const EntryRows& rows) { written_[rows.key].alone = rows.rows; });
  for (std::size_t place = 0; place < later.size(); ++place) {
    const JournalRow& row = later[place];
    if (row.marks == 0) continue;
    if (row.marks <= kMarksOfASearch * static_cast<std::int64_t>(written_.size())) {
      images.VisitBits(row, [&](const EntryRows& rows) { Note(rows, place); });
      continue;
    }
    for (const auto& [key, written] : written_) {
      if (const auto rows = images.FindBits(row.entry, key)) Note(*rows, place);
    }
  }
}

void LaterMarks::Note(const EntryRows& rows, std::size_t place) {
  const auto found = written_.find(rows.key);
  if (found == written_.end() || !ShareBits(found->second.alone, rows.rows)) return;
  found->second.later.push_back(place);
  RowBits& alone = found->second.alone;
  for (std::size_t index = 0; index < std::min(alone.size(), rows.rows.size()); ++index)
    alone[index] &= ~rows.rows[index];
}

std::span<const std::size_t> LaterMarks::Of(std::int64_t key) const {
  const auto found = written_.find(key);
  if (found == written_.end()) return {};
  return found->second.later;
}

}  // namespace tallybook::engine
