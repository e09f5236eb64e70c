// Where a figure came from: every entry of the journal that changed it, told from the images. What an entry found is
// the row of its image; what it left is what the next entry that wrote the row has found, or what stands in the book.
// One thread.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalRow.h"

namespace tallybook::engine {

class Book;

struct FigureChange {
  JournalEntry entry;
  std::optional<Double> before;  // none where the entry kept no figures from before; it may have changed another then
  Double after = 0;
};

struct FigureHistory {
  std::vector<FigureChange> changes;  // oldest first; the last one's `after` is `value`
  Double value = 0;                   // what stands in the book
  // The newest entry that kept no figures from before, or of which nothing is known any more: what the figure was
  // before it cannot be told. 0 where all of it is told.
  Long unknown_before = 0;
  bool of_first_format = false;  // the book is, and none of its entries tells which figures it changed
};

class Lineage {
 public:
  // Works on an open book, which must outlive it.
  explicit Lineage(Book& book) : book_(book) {}

  // The history of one figure. The book has no current record afterwards.
  //   date   any date of the record
  //   fails  5 for an account, a date or a field that the book has not, 57 where what is needed is damaged
  [[nodiscard]] FigureHistory Of(Long account_number, Date date, Integer field_number);

 private:
  struct Place;
  // Takes what one entry did to it, from the newest on; false where nothing before is known.
  bool Take(const JournalRow& row, const Place& place, FigureHistory& history, Double& value);

  Book& book_;
};

}  // namespace tallybook::engine
