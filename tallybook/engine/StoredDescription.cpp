#include "tallybook/engine/StoredDescription.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

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
