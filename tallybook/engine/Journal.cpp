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

Text Named(const JournalEntry& entry) {
  return "journal entry " + std::to_string(entry.id);
}

}  // namespace

std::vector<JournalEntry> Journal::Entries() const {
  return book_.Store().Entries();
}

std::vector<JournalEntry> Journal::UndoNewest() {
  book_.RequireWritable();
  const std::vector<JournalEntry> all = Entries();
  const auto newest = std::find_if(all.rbegin(), all.rend(), IsLeft);
  if (newest == all.rend()) Refuse(book_, "the journal has nothing to undo");
  if (newest->kind == JournalKind::kLists) return UndoLists(all, *newest);
  std::vector<JournalEntry> undone;
  std::copy_if(newest, all.rend(), std::back_inserter(undone),
               [&](const JournalEntry& entry) { return IsLeft(entry) && entry.command == newest->command; });
  return Undo(all, undone);
}

std::vector<JournalEntry> Journal::Undo(Long id) {
  book_.RequireWritable();
  const std::vector<JournalEntry> all = Entries();
  const auto asked = std::ranges::find(all, id, &JournalEntry::id);
  if (asked == all.end()) Refuse(book_, "the journal has no entry " + std::to_string(id));
  if (asked->state == JournalState::kUndone) Refuse(book_, Named(*asked) + " has been undone already");
  if (asked->kind == JournalKind::kUndo) Refuse(book_, Named(*asked) + " is an undo, which cannot be undone itself");
  return asked->kind == JournalKind::kLists ? UndoLists(all, *asked) : Undo(all, {*asked});
}

// Changes of lists stand on each other alone; what figures have to do with them is told when it is tried.
std::vector<JournalEntry> Journal::UndoLists(const std::vector<JournalEntry>& all, const JournalEntry& undone) {
  if (!undone.keeps_images) Refuse(book_, Named(undone) + " cannot be undone: what stood on it is lost");
  for (auto later = all.rbegin(); later != all.rend() && later->id > undone.id; ++later) {
    if (IsLeft(*later) && later->kind == JournalKind::kLists) RefuseToPass(undone, *later);
  }
  book_.TakeListsBack(undone);
  return {undone};
}

void Journal::RefuseToPass(const JournalEntry& entry, const JournalEntry& later) const {
  Refuse(book_, Named(entry) + " cannot be undone while entry " + std::to_string(later.id) +
                    " stands on it; undo that one first");
}

std::vector<JournalEntry> Journal::Undo(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone) {
  for (const JournalEntry& entry : undone) {
    if (!entry.keeps_images) Refuse(book_, Named(entry) + " cannot be undone: it kept no figures from before");
  }
  // What kept no images can never be undone, so it stands on others only where it wrote the same records.
  for (auto later = all.rbegin(); later != all.rend() && later->id > undone.back().id; ++later) {
    if (!IsLeft(*later) || later->kind == JournalKind::kLists) continue;
    if (std::ranges::find(undone, later->id, &JournalEntry::id) != undone.end()) continue;
    for (const JournalEntry& entry : undone) {
      if (later->id < entry.id) continue;
      if (later->keeps_images) RefuseToPass(entry, *later);
      if (book_.Store().ShareRecords(entry.id, later->id)) {
        Refuse(book_, Named(entry) + " cannot be undone: entry " + std::to_string(later->id) +
                          ", which kept no figures from before, has written some of its records again");
      }
    }
  }
  book_.TakeBack(undone);
  return undone;
}

}  // namespace tallybook::engine
