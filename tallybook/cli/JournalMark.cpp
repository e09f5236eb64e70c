#include "tallybook/cli/JournalMark.h"

#include <fmt/format.h>
#include <iostream>

#include "tallybook/engine/Journal.h"

namespace tallybook::cli {

JournalMark::JournalMark(engine::Book& book) : book_(book), entries_before_(engine::Journal(book).Entries().size()) {}

void JournalMark::TellWhatStays() const {
  const auto entries = engine::Journal(book_).Entries();
  if (entries.size() <= entries_before_ || entries.back().state != engine::JournalState::kOpen) return;
  std::cerr << fmt::format("tallybook: the import ended half way; `tallybook journal undo {}` takes it back\n",
                           book_.Path());
}

}  // namespace tallybook::cli
