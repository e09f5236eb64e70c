// What a book's journal tells beside figures: who ran what, and the notes of each entry. One thread.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/EntryNotes.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::engine {

class Book;

// An entry with all that is kept of it.
struct NotedEntry {
  JournalEntry entry;
  Text who;  // as of JournalNotes::Users
  EntryNotes notes;
  Text due;  // as of JournalNotes::Due
};

class JournalNotes {
 public:
  // Works on an open book, which must outlive it.
  explicit JournalNotes(Book& book) : book_(book) {}

  // All entries, oldest first. Failure 57 where the journal or its notes are damaged.
  [[nodiscard]] std::vector<NotedEntry> Entries() const;

  // One of them, for which the notes of the others are not read; nothing for an id that is none. Fails as Entries.
  [[nodiscard]] std::optional<NotedEntry> Find(Long id) const;

  // The login name of whoever ran each command, by the command's number; empty for what ran before names were kept.
  // Failure 57 where the journal is damaged.
  [[nodiscard]] std::map<Long, Text> Users() const;

  // The notes of an entry; empty for one from before they were kept. Failure 57 where they are damaged.
  [[nodiscard]] EntryNotes Of(const JournalEntry& entry) const;

  // The files of an entry by its number, without a look at how many it should have; for many entries one after another.
  [[nodiscard]] std::vector<EntryFile> FilesOf(Long entry) const;

  // Keeps notes for entries, by their numbers, in the place of those that they have, and commits them together. Failure
  // 5 for a number that is none, 70 for a book open to read, else as Book::Commit; nothing is changed then.
  void Save(const std::map<Long, EntryNotes>& notes);
  void Save(Long entry, const EntryNotes& notes) { Save({{entry, notes}}); }

  // What is still to be done with the files of entries, in the application's own words, which the engine does not read;
  // by entry. Failure 57 where one is damaged.
  [[nodiscard]] std::map<Long, Text> Due() const;
  // Puts other words in their place, none for what has been done, and commits them together. Fails as Save.
  void SaveDue(const std::map<Long, Text>& due);
  void SaveDue(Long entry, const Text& due) { SaveDue({{entry, due}}); }

 private:
  Book& book_;
};

}  // namespace tallybook::engine
