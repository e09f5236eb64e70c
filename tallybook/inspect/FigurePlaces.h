// Which figures a file has named so far, by account, date and field: a bit for each, so that a file of many millions
// can be looked through. A record takes 4 bytes for each account of its date and a bit for each field of the book.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "base/Types.h"

namespace tallybook::inspect {

class FigurePlaces {
 public:
  FigurePlaces(Long accounts, Long fields);

  // Remembers a figure by positions in the lists, from 1. False where it was named before.
  bool Add(Long account_position, Date date, Long field_position);

 private:
  using Word = std::uint64_t;

  std::size_t accounts_;
  std::size_t words_;                                   // of a record
  std::map<Date, std::vector<std::uint32_t>> records_;  // by account: its record's place, from 1
  std::vector<Word> named_;                             // of the records, one behind the other
};

}  // namespace tallybook::inspect
