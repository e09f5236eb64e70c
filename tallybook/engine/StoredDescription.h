// A book's description as its storage keeps it: with what only the storage need know.
//
// A figure's place in a stored row is its field's slot, counted from 0. A field keeps its slot for good: one that is added
// gets the next, one that is removed leaves its own behind with what stands there, and one that is moved has the same as
// before. So a row that was stored earlier reads as it should: what it lacks at its end is zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/ChunkRows.h"

namespace tallybook::engine {

// The most slots that a row may have; a stored row tells how many it has in two bytes.
inline constexpr std::size_t kMostSlots = 65'535;

struct StoredDescription {
  BookDescription description;             // without values
  std::size_t rows_of_chunk = 1;           // how many records a chunk has; fixed when the book was made
  std::size_t first_slots = 0;             // of a row that does not tell how many it has; fixed likewise
  std::size_t slots = 0;                   // given so far
  std::vector<std::size_t> slot_of_field;  // by the field's position, from 0
  std::vector<Long> retired_accounts;      // numbers of accounts and fields that were removed, rising: none is given
  std::vector<Long> retired_fields;        // again
  bool operator==(const StoredDescription&) const = default;
};

// A description whose fields have their slots in the order of the list: that of a new book, and of every book before
// format 3.
[[nodiscard]] StoredDescription WithFirstSlots(BookDescription description, std::size_t rows_of_chunk);

// What a chunk looks like. A book without fields has rows of one figure, which nothing reaches.
[[nodiscard]] inline ChunkShape ShapeOf(const StoredDescription& stored) {
  return {stored.rows_of_chunk, std::max<std::size_t>(stored.slots, 1), std::max<std::size_t>(stored.first_slots, 1)};
}

// What becomes of `before` when its description becomes `after`, which is sound and may follow it (BookGrowth.h): numbers
// that are gone are retired, fields that are new get slots.
[[nodiscard]] StoredDescription Grown(const StoredDescription& before, const BookDescription& after);

}  // namespace tallybook::engine
