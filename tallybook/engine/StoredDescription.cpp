#include "tallybook/engine/StoredDescription.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "tallybook/engine/BookFormat.h"

namespace tallybook::engine {

namespace {

template <typename Row>
std::vector<Long> Numbers(const std::vector<Row>& rows) {
  std::vector<Long> numbers;
  numbers.reserve(rows.size());
  for (const Row& row : rows) numbers.push_back(row.number);
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

// `retired`, and the numbers that `before` has and `after` has not.
template <typename Row>
std::vector<Long> Retired(const std::vector<Long>& retired, const std::vector<Row>& before,
                          const std::vector<Row>& after) {
  const std::vector<Long> old_numbers = Numbers(before);
  const std::vector<Long> new_numbers = Numbers(after);
  std::vector<Long> gone;
  std::set_difference(old_numbers.begin(), old_numbers.end(), new_numbers.begin(), new_numbers.end(),
                      std::back_inserter(gone));
  std::vector<Long> all;
  std::set_union(retired.begin(), retired.end(), gone.begin(), gone.end(), std::back_inserter(all));
  return all;
}

}  // namespace

StoredDescription WithFirstSlots(BookDescription description, std::size_t rows_of_chunk) {
  StoredDescription stored;
  stored.description = std::move(description);
  stored.rows_of_chunk = rows_of_chunk;
  stored.slots = stored.first_slots = stored.description.fields.size();
  for (std::size_t slot = 0; slot < stored.slots; ++slot) stored.slot_of_field.push_back(slot);
  return stored;
}

ChunkShape ShapeOf(const StoredDescription& stored, Long entry) {
  ChunkShape shape = ShapeOf(stored);
  const auto former = std::ranges::lower_bound(stored.former_layouts, entry, {}, &FormerLayout::last_entry);
  if (former == stored.former_layouts.end()) return shape;
  shape.rows = former->rows_of_chunk;
  shape.first_fields = std::max<std::size_t>(former->first_slots, 1);
  return shape;
}

// Twice the length is borne, so that a book that grows by a field at a time is stored anew seldom.
StoredDescription WithLayoutThatFits(const StoredDescription& stored, Long entry) {
  const std::size_t rows = ChooseRowsOfChunk(stored.description.accounts.size(), stored.slots);
  const bool fits = stored.slots <= 2 * std::max<std::size_t>(stored.first_slots, 1) ||
                    stored.rows_of_chunk * stored.slots * sizeof(Double) <= kLargestChunkRoom;
  if (fits || rows >= stored.rows_of_chunk) return stored;
  StoredDescription fitting = stored;
  fitting.former_layouts.push_back({entry, stored.rows_of_chunk, stored.first_slots});
  fitting.rows_of_chunk = rows;
  fitting.first_slots = stored.slots;
  return fitting;
}

StoredDescription Grown(const StoredDescription& before, const BookDescription& after) {
  StoredDescription grown = before;
  grown.description = after;
  grown.description.values.clear();
  grown.retired_accounts = Retired(before.retired_accounts, before.description.accounts, after.accounts);
  grown.retired_fields = Retired(before.retired_fields, before.description.fields, after.fields);
  std::map<Integer, std::size_t> slots;
  for (std::size_t index = 0; index < before.slot_of_field.size(); ++index) {
    slots[before.description.fields[index].number] = before.slot_of_field[index];
  }
  grown.slot_of_field.clear();
  for (const FieldDescription& field : after.fields) {
    const auto [place, is_new] = slots.try_emplace(field.number, grown.slots);
    if (is_new) ++grown.slots;
    grown.slot_of_field.push_back(place->second);
  }
  return grown;
}

}  // namespace tallybook::engine
