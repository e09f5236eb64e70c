#include "tallybook/engine/Journal.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/Dates.h"
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

bool Contains(const std::vector<JournalEntry>& entries, Long id) {
  return std::ranges::find(entries, id, &JournalEntry::id) != entries.end();
}

// What an undo took back, or the undo that it took back did, and so on.
JournalEntry TakenBackBy(const std::vector<JournalEntry>& all, const JournalEntry& undo) {
  JournalEntry entry = undo;
  while (entry.undoes != 0) entry = *std::ranges::find(all, entry.undoes, &JournalEntry::id);
  return entry;
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
  return OfCommand(all, newest->command);
}

std::vector<JournalEntry> Journal::OfCommand(const std::vector<JournalEntry>& all, Long command) const {
  std::vector<JournalEntry> entries;
  std::copy_if(all.rbegin(), all.rend(), std::back_inserter(entries),
               [&](const JournalEntry& entry) { return IsLeft(entry) && entry.command == command; });
  if (entries.empty()) Refuse(book_, "nothing is left to undo of command " + std::to_string(command));
  return entries;
}

std::vector<JournalEntry> Journal::One(const std::vector<JournalEntry>& all, Long id) const {
  const auto asked = std::ranges::find(all, id, &JournalEntry::id);
  if (asked == all.end()) Refuse(book_, "the journal has no entry " + std::to_string(id));
  if (asked->state == JournalState::kUndone) Refuse(book_, Named(*asked) + " has been undone already");
  if (asked->kind == JournalKind::kUndo && IsOfLists(TakenBackBy(all, *asked))) {
    Refuse(book_, Named(*asked) + " is the undo of a change of lists, which cannot be undone itself");
  }
  return {*asked};
}

std::vector<JournalEntry> Journal::Asked(const std::vector<JournalEntry>& all, const UndoRequest& request) const {
  if (request.id) return One(all, *request.id);
  return request.command ? OfCommand(all, *request.command) : Newest(all);
}

std::vector<JournalEntry> Journal::UndoNewest() {
  return UndoExactly(std::nullopt);
}

std::vector<JournalEntry> Journal::Undo(Long id) {
  return UndoExactly(id);
}

std::vector<JournalEntry> Journal::UndoExactly(std::optional<Long> id) {
  UndoRequest request;
  request.id = id;
  request.most_listed = 1;
  UndoOutcome outcome = TakeBack(request);
  if (outcome.done) return std::move(outcome.undone);
  const ChangedSince& first = outcome.listed.front();
  const auto account = static_cast<std::size_t>(book_.AccountPosition(first.account_number) - 1);
  Refuse(book_, "journal entry " + std::to_string(first.entry) +
                    " cannot be undone exactly: " + std::to_string(outcome.changed_since) +
                    (outcome.changed_since == 1 ? " figure has" : " figures have") + " been changed since (account " +
                    book_.Description().accounts[account].code + ", " + DateText(first.date) + ", field " +
                    std::to_string(first.field_number) + ", by entry " + std::to_string(first.later) + ")");
}

BookDescription Journal::DescriptionAfterUndo(std::optional<Long> id) const {
  const std::vector<JournalEntry> all = Entries();
  UndoRequest request;
  request.id = id;
  const std::vector<JournalEntry> undone = Asked(all, request);
  CheckCanUndo(all, undone);
  StoredDescription description = book_.Stored();
  for (const JournalEntry& entry : undone) {
    if (IsOfLists(entry)) description = book_.DescriptionBefore(description, entry);
  }
  return description.description;
}

// Changes of lists stand on each other alone; what figures have to do with them is told when it is tried.
void Journal::CheckCanUndo(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone) const {
  for (const JournalEntry& entry : undone) {
    if (!entry.keeps_images) {
      Refuse(book_, Named(entry) + " cannot be undone: " +
                        (IsOfLists(entry) ? "what stood on it is lost" : "it kept no figures from before"));
    }
    if (!IsOfLists(entry)) continue;
    for (auto later = all.rbegin(); later != all.rend() && later->id > entry.id; ++later) {
      if (!IsLeft(*later) || !IsOfLists(*later) || Contains(undone, later->id)) continue;
      Refuse(book_, Named(entry) + " cannot be undone while entry " + std::to_string(later->id) +
                        " stands on it; undo that one first");
    }
  }
}

void Journal::CheckCanReverse(const std::vector<JournalEntry>& undone) const {
  for (const JournalEntry& entry : undone) {
    if (entry.kind != JournalKind::kImport) {
      Refuse(book_, Named(entry) + " is no import, so there are no amounts that it added");
    }
  }
}

UndoOutcome Journal::TakeBack(const UndoRequest& request) {
  book_.RequireWritable();
  const std::vector<JournalEntry> all = Entries();
  UndoOutcome outcome;
  outcome.undone = Asked(all, request);
  CheckCanUndo(all, outcome.undone);
  if (request.way == UndoWay::kReverse) CheckCanReverse(outcome.undone);
  std::vector<JournalEntry> figures;
  std::vector<JournalEntry> lists;
  for (const JournalEntry& entry : outcome.undone) (IsOfLists(entry) ? lists : figures).push_back(entry);
  try {
    book_.TakeBack(figures, lists, request, outcome);
    outcome.done = true;
  } catch (const UndoDropped&) {
    outcome.done = false;
  }
  return outcome;
}

}  // namespace tallybook::engine
