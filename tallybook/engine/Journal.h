// The journal of a book: what ran, and the way back. Every write of a figure belongs to an entry. An entry is opened by
// Book::BeginRollback and keeps, for every record that was written under it, the figures from before; EndRollback
// closes it. What is written with no entry open gets one from the book itself, which tells the records and keeps no
// figures, so that it cannot be taken back. An entry that was never closed, because its run failed or its process was
// killed, can be undone as well.
//
// The entries of one command (Book::SetOperation, Book::Grow) belong together. Any of them can be undone, whatever came
// later: the figures that it changed are put to what they were before it, and what later entries did to the same
// records stays. A figure that is no longer what the entry left has been changed since; what becomes of it then is the
// caller's to say (UndoRequest.h). Undo leaves an entry of its own, which can be undone as well; what it took back
// stands again then.
//
// A change of the book's lists or years (Book::Grow) is an entry as well. Such changes stand on each other, and neither
// on figures nor figures on them: figures are kept by the numbers of account and field. Where one has taken away what
// the other needs, the undo is refused.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/JournalEntry.h"
#include "tallybook/engine/UndoRequest.h"

namespace tallybook::engine {

class Book;

class Journal {
 public:
  // Works on an open book, which must outlive it.
  explicit Journal(Book& book) : book_(book) {}

  // All entries, oldest first. Failure 57 where the journal is damaged.
  [[nodiscard]] std::vector<JournalEntry> Entries() const;

  // Takes back what is asked for, of a command all entries newest first. Done
  // wholly or not at all, whatever ends the process meanwhile; what is not done leaves every figure as it was. The book
  // has no current record afterwards.
  //   fails   5 where there is nothing to undo, for an id that is none or is undone, for a command of which nothing is
  //           left, for an entry that keeps no images, for the undo of a change of lists, where a later change of lists
  //           stands on one (the text names that one), where an account or the years that it wrote are gone, where what
  //           it added to the lists has figures since (the text counts them), and for kReverse where the amounts of an
  //           entry cannot be told, or it is no import; 6 where taking one out gives no figure; 70 for a book open to
  //           read; 57 where what it needs is damaged; else as Book::Commit
  UndoOutcome TakeBack(const UndoRequest& request);

  // The same for those that have nobody to ask: kExact, and failure 5 where figures have been changed since, which
  // names the first. Give the entries taken back, newest first.
  std::vector<JournalEntry> UndoNewest();
  std::vector<JournalEntry> Undo(Long id);

  // The entries that are asked for, newest first. Fails as TakeBack where there are none.
  [[nodiscard]] std::vector<JournalEntry> Asked(const UndoRequest& request) const { return Asked(Entries(), request); }

  // What the book's names, lists and years will be after UndoNewest, or after Undo where an id is given. Fails as these
  // do before they look at figures.
  [[nodiscard]] BookDescription DescriptionAfterUndo(std::optional<Long> id) const;

 private:
  // The entries that are asked for, newest first.
  [[nodiscard]] std::vector<JournalEntry> Newest(const std::vector<JournalEntry>& all) const;
  [[nodiscard]] std::vector<JournalEntry> OfCommand(const std::vector<JournalEntry>& all, Long command) const;
  [[nodiscard]] std::vector<JournalEntry> One(const std::vector<JournalEntry>& all, Long id) const;
  [[nodiscard]] std::vector<JournalEntry> Asked(const std::vector<JournalEntry>& all, const UndoRequest& request) const;
  void CheckCanUndo(const std::vector<JournalEntry>& all, const std::vector<JournalEntry>& undone) const;
  void CheckCanReverse(const std::vector<JournalEntry>& undone) const;
  std::vector<JournalEntry> UndoExactly(std::optional<Long> id);

  Book& book_;
};

}  // namespace tallybook::engine
