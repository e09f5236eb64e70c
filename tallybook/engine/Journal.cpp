#include "tallybook/engine/Journal.h"

#include <algorithm>
#include <string>

#include "support/Failure.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/FigureStore.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Journal";

[[noreturn]] void Refuse(const Book& book, const Text& why) {
  throw Failure(FailureNumber::kInvalidArgument, book.Path() + ": " + why, kSource);
}

}  // namespace

std::vector<JournalEntry> Journal::Entries() const {
  return book_.Store().Entries();
}

Long Journal::Undo(Long id) {
  book_.RequireWritable();
  const std::vector<JournalEntry> entries = Entries();
  const auto is_left = [](const JournalEntry& entry) { return entry.state != JournalState::kUndone; };
  const auto newest = std::find_if(entries.rbegin(), entries.rend(), is_left);
  if (id != 0) {
    const auto asked =
        std::find_if(entries.begin(), entries.end(), [id](const JournalEntry& entry) { return entry.id == id; });
    if (asked == entries.end()) Refuse(book_, "the journal has no entry " + std::to_string(id));
    if (!is_left(*asked)) Refuse(book_, "journal entry " + std::to_string(id) + " has been undone already");
  }
  if (newest == entries.rend()) Refuse(book_, "the journal has nothing to undo");
  if (id != 0 && id != newest->id) {
    Refuse(book_, "journal entry " + std::to_string(id) + " cannot be undone while entry " +
                      std::to_string(newest->id) + " stands on it; undo that one first");
  }
  book_.DropCurrentRecord();
  book_.Store().Undo(newest->id);
  return newest->id;
}

}  // namespace tallybook::engine
