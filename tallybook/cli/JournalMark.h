// Where a book's journal stood before an import.
#pragma once

#include <cstddef>

#include "tallybook/engine/Book.h"

namespace tallybook::cli {

class JournalMark {
 public:
  // The book outlives the mark.
  explicit JournalMark(engine::Book& book);

  // A failure while figures are written leaves the journal's entry open, and what was written stands: tells so on standard
  // error, with the command that takes it back, and with it all other files of the import. Where WriteRollback is 0
  // there is no way back, and that is told.
  void TellWhatStays() const;

 private:
  engine::Book& book_;
  std::size_t entries_before_;
};

}  // namespace tallybook::cli
