// What an entry of the journal found: any figure of the records that it wrote, as it was before. One thread.
#pragma once

#include <cstdint>
#include <optional>

#include "base/Types.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/JournalEntry.h"

namespace tallybook::engine {

class Book;

class FiguresBefore {
 public:
  // Works on an open book, which must outlive it and not be changed meanwhile.
  FiguresBefore(Book& book, const JournalEntry& entry);

  // Nothing where that cannot be told: the entry kept no figures or did not write the record, it is of the first format, or
  // the book has no such field or date. Quick where one asks for the records of an account one after another. Failure 57
  // where the image is damaged.
  [[nodiscard]] std::optional<Double> Of(Long account_number, Date date, Integer field_number);

 private:
  Book& book_;
  JournalEntry entry_;
  EntryImages images_;
  bool keeps_ = false;
  std::int64_t key_ = -1;           // of the chunk that was asked for last
  std::optional<EntryRows> chunk_;  // what the entry wrote of it
};

}  // namespace tallybook::engine
