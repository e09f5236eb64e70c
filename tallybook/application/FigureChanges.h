// Changes of single figures as one journal entry: what the command `set` does, and what is typed or pasted in a window.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::engine {
class Book;
}

namespace tallybook::application {

struct FigureChange {
  Long account = 0;   // an account number
  Date date = 0;      // any date of the record
  Integer field = 0;  // a field number
  Double value = 0;
  bool operator==(const FigureChange&) const = default;
};

// Makes the changes, in order, under one entry of the kind "set" that bears these words. Gives the figures from before.
// One transaction takes the figures and their entry, where the book's `commit_seconds` outlast the call: where it fails
// nothing of both is kept for a later commit, and the book has been abandoned.
//   fails   51 where a record cannot be read; else as Book::ReadRecord, SetFieldValue, WriteRecord and EndRollback
std::vector<Double> ChangeFigures(engine::Book& book, const Text& what_ran, const std::vector<FigureChange>& changes);

}  // namespace tallybook::application
