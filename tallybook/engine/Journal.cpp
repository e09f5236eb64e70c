#include "tallybook/engine/Journal.h"

#include <algorithm>
#include <string>

#include "base/Failure.h"
#include "tallybook/engine/Book.h"
#include "tallybook/engine/FigureStore.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Journal";

[[noreturn]] void Refuse(const Book& book, const Text& why) {
  throw Failure(FailureNumber::kInvalidArgument, book.Path() + ": " + why, kSource);
}

// An undo and what it took back leave nothing to stand on.
bool IsLeft(const JournalEntry& entry) {
  return entry.state != JournalState::kUndone && entry.kind != JournalKind::kUndo;
}

bool IsOfLists(const JournalEntry& entry) {
  return entry.kind == JournalKind::kLists;
}

Text Named(const JournalEntry& entry) {
  return "journal entry " + std::to_string(entry.id);
}

}  // namespace

std::vector<JournalEntry> Journal::Entries() const {
  return book_.Store().Entries();
}

std::vector<JournalEntry> Journal::Newest(const std::vector<JournalEntry>& all) const {
  const auto newest = std::find_if(all.rbegin(), all.rend(), IsLeft);
  if (newest == all.rend()) Refuse(book_, "the journal has nothing to undo");
  std::vector<JournalEntry> entries;
  std::copy_if(newest, all.rend(), std::back_inserter(entries),
               [&](const JournalEntry& entry) { return IsLeft(entry) && entry.command == newest->command; });
  return entries;
}

std::vector<JournalEntry> Journal::One(const std::vector<JournalEntry>& all, Long id) const {
  const auto asked = std::ranges::find(all, id, &JournalEntry::id);
  if (asked == all.end()) Refuse(book_, "the journal has no entry " + std::to_string(id));
  if (asked->state == JournalState::kUndone) Refuse(book_, Named(*asked) + " has been undone already");
  if (asked->kind == JournalKind::kUndo) Refuse(book_, Named(*asked) + " is an undo, which cannot be undone itself");
  return {*asked};
}

std::vector<JournalEntry> Journal::UndoNewest() {
  book_.RequireWritable();
  const std::vector<JournalEntry> all = Entries();
  return Undo(all, Newest(all));
}

std::vector<JournalEntry> Journal::Undo(Long id) {
  book_.RequireWritable();
  const std::vector<JournalEntry> all = Entries();
  return Undo(all, One(all, id));
}

BookDescription Journal::DescriptionAfterUndo(std::optional<Long> id) const {
  const std::vector<JournalEntry> all = Entries();
  const std::vector<JournalEntry> undone = id ? One(all, *id) : Newest(all);
  CheckNothingStandsOn(all, undone);
  StoredDescription description = book_.Stored();
  for (const JournalEntry& entry : undone) {
    if (IsOfLists(entry)) description = book_.DescriptionBefore(description, entry);
  }
  return description.description;
}

void Journal::RefuseToPass(const JournalEntry& entry, const JournalEntry& later) const {
  Refuse(book_, Named(entry) + " cannot be undone while entry " + std::to_string(later.id) +
                    " stands on it; undo that one first");
}

// Changes of lists stand on each other alone, and so do those of figures; what one has to do with the other is told when it
// is tried. What kept no images can never be undone, so it stands on others only where it wrote the same records.
void Journal::CheckNothingStandsOn(const std::vector<JournalEntry>& all,
                                   const std::vector<JournalEntry>& undone) const {
  for (const JournalEntry& entry : undone) {
    if (entry.keeps_images) continue;
    Refuse(book_, Named(entry) + " cannot be undone: " +
                      (IsOfLists(entry) ? "what stood on it is lost" : "it kept no figures from before"));
  }
  for (auto later = all.rbegin(); later != all.rend() && later->id > undone.back().id; ++later) {
    if (!IsLeft(*later) || std::ranges::find(undone, later->id, &JournalEntry::id) != undone.end()) continue;
    for (const JournalEntry& entry : undone) {
      if (later->id < entry.id || IsOfLists(*later) != IsOfLists(entry)) continue;
      if (later->keeps_images || IsOfLists(*later)) RefuseToPass(entry, *later);
      if (book_.Store().ShareRecords(entry.id, later->id)) {
        Refuse(book_, Named(entry) + " cannot be undone: entry " + std::to_string(later->id) +
                          ", which kept no figures from before, has written some of its records again");
      }
    }
  }
}

std::vector<JournalEntry> Journal::Undo(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone) {
  CheckNothingStandsOn(all, undone);
  std::vector<JournalEntry> figures;
  std::vector<JournalEntry> lists;
  for (const JournalEntry& entry : undone) (IsOfLists(entry) ? lists : figures).push_back(entry);
  book_.TakeBack(figures, lists);
  return undone;
}

}  // namespace tallybook::engine
