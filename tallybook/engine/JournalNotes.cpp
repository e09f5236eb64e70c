#include "tallybook/engine/JournalNotes.h"

#include "tallybook/engine/Book.h"
#include "tallybook/engine/FigureStore.h"

namespace tallybook::engine {

std::vector<NotedEntry> JournalNotes::Entries() const {
  FigureStore& store = book_.Store();
  if (!book_.ReadOnly()) store.Commit();
  BookStorage& storage = store.Storage();
  std::map<Long, Text> users = storage.Users();
  std::map<Long, Text> due = storage.TextsNamed(kDueText);
  std::vector<NotedEntry> entries;
  for (const JournalRow& row : storage.Entries()) {
    entries.push_back({row.entry, users[row.entry.command], storage.NotesOf(row), due[row.entry.id]});
  }
  return entries;
}

std::optional<NotedEntry> JournalNotes::Find(Long id) const {
  FigureStore& store = book_.Store();
  if (!book_.ReadOnly()) store.Commit();
  BookStorage& storage = store.Storage();
  for (const JournalRow& row : storage.Entries()) {
    if (row.entry.id != id) continue;
    return NotedEntry{row.entry, storage.Users()[row.entry.command], storage.NotesOf(row),
                      storage.TextsNamed(kDueText)[id]};
  }
  return std::nullopt;
}

std::map<Long, Text> JournalNotes::Users() const {
  return book_.Store().Storage().Users();
}

EntryNotes JournalNotes::Of(const JournalEntry& entry) const {
  return book_.Store().NotesOf(entry.id);
}

std::vector<EntryFile> JournalNotes::FilesOf(Long entry) const {
  return book_.Store().Storage().FilesOf(entry);
}

void JournalNotes::Save(const std::map<Long, EntryNotes>& notes) {
  book_.RequireWritable();
  book_.Store().SaveNotes(notes);
}

std::map<Long, Text> JournalNotes::Due() const {
  return book_.Store().Storage().TextsNamed(kDueText);
}

void JournalNotes::SaveDue(const std::map<Long, Text>& due) {
  book_.RequireWritable();
  book_.Store().SaveDue(due);
}

}  // namespace tallybook::engine
