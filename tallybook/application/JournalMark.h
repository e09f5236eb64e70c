// Where a book's journal stood before an operation, and what that has left there.
#pragma once

#include <cstddef>
#include <vector>

#include "tallybook/engine/Book.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::application {

class JournalMark {
 public:
  // The book outlives the mark.
  explicit JournalMark(engine::Book& book);

  // The entries of the operation, oldest first.
  [[nodiscard]] std::vector<engine::JournalEntry> Since() const;

  // A failure while figures are written leaves the journal's entry open, and what was written stands: whether it can be
  // taken back, and with it all other files of the import. Where WriteRollback is 0 there is no way back.
  enum class Left { kNothing, kUndoable, kForGood };
  [[nodiscard]] Left LeftHalfWay() const;

 private:
  engine::Book& book_;
  std::size_t entries_before_;
};

}  // namespace tallybook::application
