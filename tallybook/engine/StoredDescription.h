// A book's description as its storage keeps it: with what only the storage need know.
#pragma once

#include <cstddef>

#include "tallybook/engine/BookDescription.h"

namespace tallybook::engine {

struct StoredDescription {
  BookDescription description;    // without values
  std::size_t rows_of_chunk = 1;  // how many records a chunk has; fixed when the book was made
};

}  // namespace tallybook::engine
