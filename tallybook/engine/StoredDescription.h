// A book's description as its storage keeps it: with what only the storage need know.
//
// A figure's place in a stored row is its field's slot, counted from 0. A field keeps its slot for good: one that is
// added gets the next, one that is removed leaves its own behind with what stands there, and one that is moved has the
// same as before. So a row that was stored earlier reads as it should: what it lacks at its end is zero.
//
// A chunk of a book whose rows have become much longer than those it was made with would outgrow a page by far. Then
// all chunks are stored anew with fewer rows each (WithLayoutThatFits); what the journal keeps from before stays as it
// is.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/ChunkRows.h"

namespace tallybook::engine {

// The most slots that a row may have; a stored row tells how many it has in two bytes.
inline constexpr std::size_t kMostSlots = 65'535;

// What chunks were like until they were stored anew: so are the marks and images of the journal's entries from then.
struct FormerLayout {
  Long last_entry = 0;  // with which they were stored anew
  std::size_t rows_of_chunk = 1;
  std::size_t first_slots = 0;
  bool operator==(const FormerLayout&) const = default;
};

struct StoredDescription {
  BookDescription description;               // without values
  std::size_t rows_of_chunk = 1;             // how many records a chunk has
  std::size_t first_slots = 0;               // of a row that does not tell how many it has
  std::size_t slots = 0;                     // given so far
  std::vector<std::size_t> slot_of_field;    // by the field's position, from 0
  std::vector<Long> retired_accounts;        // numbers of accounts and fields that were removed, rising: none is given
  std::vector<Long> retired_fields;          // again
  std::vector<FormerLayout> former_layouts;  // by their last entries, rising
  bool operator==(const StoredDescription&) const = default;
};

// A description whose fields have their slots in the order of the list: that of a new book, and of every book before
// format 3.
[[nodiscard]] StoredDescription WithFirstSlots(BookDescription description, std::size_t rows_of_chunk);

// What a chunk looks like. A book without fields has rows of one figure, which nothing reaches.
[[nodiscard]] inline ChunkShape ShapeOf(const StoredDescription& stored) {
  return {stored.rows_of_chunk, std::max<std::size_t>(stored.slots, 1), std::max<std::size_t>(stored.first_slots, 1)};
}
// What the marks and images of an entry of the journal are made of.
[[nodiscard]] ChunkShape ShapeOf(const StoredDescription& stored, Long entry);

// What becomes of `before` when its description becomes `after`, which is sound and may follow it (BookGrowth.h):
// numbers that are gone are retired, fields that are new get slots.
[[nodiscard]] StoredDescription Grown(const StoredDescription& before, const BookDescription& after);

// The same description, with as many rows to a chunk as a new book with such rows has, where chunks as they are would
// outgrow a page by far: `entry` is the last one of the journal that was made with them. What fits stays.
[[nodiscard]] StoredDescription WithLayoutThatFits(const StoredDescription& stored, Long entry);

}  // namespace tallybook::engine
