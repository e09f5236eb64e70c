// The description of a book in its file's tables: single items by name, and the lists (docs/book-file.md, "The
// description").
#pragma once

#include <cstddef>

#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

struct StoredDescription {
  BookDescription description;  // without values
  std::size_t rows_of_chunk = 1;
};

// Writes into the tables of a new book. Takes the description as sound.
void SaveDescription(Database& database, const BookDescription& description, std::size_t rows_of_chunk);

// Reads it. What it gives is sound: a file that was changed by something else is failure 5 or 57.
[[nodiscard]] StoredDescription LoadDescription(Database& database);

}  // namespace tallybook::engine
