#include "tallybook/cli/JournalMark.h"

#include <algorithm>
#include <fmt/format.h>
#include <span>

#include "tallybook/cli/Lines.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

JournalMark::JournalMark(engine::Book& book) : book_(book), entries_before_(engine::Journal(book).Entries().size()) {}

void JournalMark::TellWhatStays() const {
  const auto entries = engine::Journal(book_).Entries();
  const auto since = std::span(entries).subspan(std::min(entries_before_, entries.size()));
  const auto is_open = [](const engine::JournalEntry& entry) { return entry.state == engine::JournalState::kOpen; };
  const auto is_final = [](const engine::JournalEntry& entry) { return !entry.keeps_images; };
  if (std::ranges::any_of(since, is_final)) {
    Warn("the import ended half way, and what it wrote stays");
  } else if (std::ranges::any_of(since, is_open)) {
    Warn(fmt::format("the import ended half way; `tallybook journal undo {}` takes {} back", book_.Path(),
                     since.size() > 1 ? "all of it" : "it"));
  }
}

}  // namespace tallybook::cli
