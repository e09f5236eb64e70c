// What an entry of the journal found: any figure of the records that it wrote, as it was before. One thread.
#pragma once

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

  // Turns to a record. False where of none of its figures can be told what it was: the entry kept no figures or did not
  // write the record, it is of the first format, or the book has no such date. Quick where one asks for the records of
  // an account one after another. Failure 57 where the image is damaged.
  [[nodiscard]] bool Select(Long account_number, Date date);
  // A figure of that record; nothing where Select gave false, and for a field that the book does not have.
  [[nodiscard]] std::optional<Double> Of(Integer field_number) const {
    // A negative number wraps to one that no table reaches.
    const auto number = static_cast<std::uint16_t>(field_number);
    if (!is_told_ || number >= place_of_field_.size() || place_of_field_[number] == 0) return std::nullopt;
    return row_ == nullptr ? 0 : row_[place_of_field_[number] - 1];
  }

 private:
  Book& book_;
  JournalEntry entry_;
  EntryImages images_;
  std::vector<std::uint16_t> place_of_field_;  // in a row, from 1; 0: no such field
  bool keeps_ = false;
  std::int64_t key_ = -1;           // of the chunk that was asked for last
  std::optional<EntryRows> chunk_;  // what the entry wrote of it
  bool is_told_ = false;            // of the record turned to
  const Double* row_ = nullptr;     // its figures; null: zeros
};

}  // namespace tallybook::engine
