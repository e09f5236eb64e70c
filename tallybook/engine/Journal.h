// The journal of a book: what ran, and the way back. Every write of a figure belongs to an entry. An entry is opened by
// Book::BeginRollback and keeps, for every record that was written under it, the figures from before; EndRollback closes
// it. What is written with no entry open gets one from the book itself, which tells the records and keeps no figures, so
// that it cannot be taken back. An entry that was never closed, because its run failed or its process was killed, can be
// undone as well.
//
// The entries of one command (Book::SetOperation, Book::Grow) belong together. Undo is newest first: the figures of an older entry
// have had later changes put on top of them. It leaves an entry of its own.
//
// A change of the book's lists or years (Book::Grow) is an entry as well. Such changes stand on each other, and neither
// on figures nor figures on them: figures are kept by the numbers of account and field. Where one has taken away what the
// other needs, the undo is refused.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"

namespace tallybook::engine {

class Book;

// The numbers stand in book files.
enum class JournalState : Integer { kOpen = 0, kClosed = 1, kUndone = 2 };

enum class JournalKind : Integer { kImport = 1, kSet = 2, kUndo = 3, kLists = 4 };

struct JournalEntry {
  Long id = 0;       // from 1, in the order in which the file got them
  Long command = 0;  // the same for all entries of one command
  JournalKind kind = JournalKind::kImport;
  Date time = 0;         // when it was opened, local time
  Date first = kNoDate;  // the date range that was announced; kNoDate where none was
  Date last = kNoDate;
  Text what_ran;  // may be empty
  JournalState state = JournalState::kOpen;
  bool keeps_images = true;  // whether it can be undone
  Long undoes = 0;           // the entry that this one took back; 0: it is no undo
  Long chunks = 0;           // how many stored chunks were changed under it
};

class Journal {
 public:
  // Works on an open book, which must outlive it.
  explicit Journal(Book& book) : book_(book) {}

  // All entries, oldest first. Failure 57 where the journal is damaged.
  [[nodiscard]] std::vector<JournalEntry> Entries() const;

  // Take back the newest command of which anything is not undone, all of its entries, or one entry alone. Every record
  // that was written under them is put to what it was when they were opened; records that were not written under them
  // stay as they are. Done wholly or not at all, whatever ends the process meanwhile. The book has no current record
  // afterwards. Give the entries taken back, newest first.
  //   fails   5 where there is nothing to undo, for an id that is none, is undone or is an undo, for an entry that keeps
  //           no images, where a later entry stands on it (the text names that one), where an account or the years that
  //           it wrote are gone, and where what it added to the lists has figures since (the text counts them); 70 for a book open to read; 57
  //           where what it needs is damaged; else as Book::Commit
  std::vector<JournalEntry> UndoNewest();
  std::vector<JournalEntry> Undo(Long id);

  // What the book's names, lists and years will be after UndoNewest, or after Undo where an id is given. Fails as these do
  // before they look at figures.
  [[nodiscard]] BookDescription DescriptionAfterUndo(std::optional<Long> id) const;

 private:
  // The entries that are asked for, newest first.
  [[nodiscard]] std::vector<JournalEntry> Newest(const std::vector<JournalEntry>& all) const;
  [[nodiscard]] std::vector<JournalEntry> One(const std::vector<JournalEntry>& all, Long id) const;
  void CheckNothingStandsOn(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone) const;
  std::vector<JournalEntry> Undo(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone);
  [[noreturn]] void RefuseToPass(const JournalEntry& entry, const JournalEntry& later) const;

  Book& book_;
};

}  // namespace tallybook::engine
