// What an entry of the journal found: any figure of the records that it wrote, as it was before. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/engine/EntryImages.h"
#include "tallybook/engine/JournalEntry.h"

namespace tallybook::engine {

class Book;

class FiguresBefore {
 public:
  // Works on an open book, which must outlive it and not be changed meanwhile.
  FiguresBefore(Book& book, const JournalEntry& entry);

  // The figures of a record, until the next call; null where of none of them can be told what it was: the entry kept no
  // figures or did not write the record, it is of the first format, or the book has no such date. Quick where one asks
  // for the records of an account one after another. Failure 57 where the image is damaged.
  [[nodiscard]] const Double* Select(Long account_number, Date date);
  // Where among a record's figures that of a field is, counted from 0; nothing for a field that the book does not have.
  [[nodiscard]] std::optional<std::size_t> PlaceOf(Integer field_number) const;

 private:
  Book& book_;
  JournalEntry entry_;
  EntryImages images_;
  std::vector<std::uint16_t> place_of_field_;  // in a row, from 1; 0: no such field
  bool keeps_ = false;
  std::int64_t key_ = -1;           // of the chunk that was asked for last
  std::optional<EntryRows> chunk_;  // what the entry wrote of it
  std::vector<Double> zeros_;       // of a record that was not there
};

}  // namespace tallybook::engine
