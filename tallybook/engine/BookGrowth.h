// How the lists and years of a book may change, and what a change was. A change is told by the description that the
// book is to have: accounts and fields are known by their numbers, positions by the lists' order. Nothing here touches
// a file.
//
//   may change      names, codes and descriptions; which accounts and fields there are, and their order; more years,
//   and
//                   how many are in use; higher limits
//   stays           data level, kind of calendar, first date and year, the day that ends a week, the periods' count and
//                   lengths. A number that was retired is never given again
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/engine/BookDescription.h"
#include "tallybook/engine/StoredDescription.h"

namespace tallybook::engine {

// Positions count from 1.
template <typename Row>
struct PlacedRow {
  Row row;
  Integer position = 0;
  bool operator==(const PlacedRow&) const = default;
};

template <typename Row>
struct ChangedRow {
  Row before;
  Row after;
  bool operator==(const ChangedRow&) const = default;
};

template <typename Row>
struct MovedRow {
  Row row;  // as it is to be
  Integer from = 0;
  Integer to = 0;
  bool operator==(const MovedRow&) const = default;
};

template <typename Row>
struct ListDifference {
  std::vector<PlacedRow<Row>> removed;   // by their positions before
  std::vector<PlacedRow<Row>> added;     // by their positions after
  std::vector<ChangedRow<Row>> changed;  // of the same number
  std::vector<MovedRow<Row>> moved;      // the fewest rows that were taken from their places among the others
  [[nodiscard]] bool IsEmpty() const { return removed.empty() && added.empty() && changed.empty() && moved.empty(); }
};

// A single item under the name that it has in the JSON form ("calendar.years"), in words.
struct ItemDifference {
  Text name;
  Text before;
  Text after;
  bool operator==(const ItemDifference&) const = default;
};

struct BookDifference {
  std::vector<ItemDifference> items;
  ListDifference<AccountDescription> accounts;
  ListDifference<FieldDescription> fields;
  [[nodiscard]] bool IsEmpty() const { return items.empty() && accounts.IsEmpty() && fields.IsEmpty(); }
};

// Values are not looked at.
[[nodiscard]] BookDifference FindDifference(const BookDescription& before, const BookDescription& after);

// Checks that a book may become `after`: as a new book's description is checked, and what was told above.
//   fails  Failure 5 that names the source, the place, what was found and what is wanted, as ParseBookDescription
void CheckGrowth(const StoredDescription& before, const BookDescription& after, const Text& source_name);

// A number for a new account or field: one above all that were ever given, or where that is beyond the limit the lowest
// that never was; 0 where there is none.
[[nodiscard]] Long FreeAccountNumber(const StoredDescription& stored);
[[nodiscard]] Integer FreeFieldNumber(const StoredDescription& stored);
// So many of them, in the order in which they would be given one by one; fewer where there are no more.
[[nodiscard]] std::vector<Long> FreeAccountNumbers(const StoredDescription& stored, std::size_t count);

// What a change was, as the journal keeps it: enough to take it back.
[[nodiscard]] Text ChangeText(const StoredDescription& before, const StoredDescription& after);
// The description from before the change, which must be the last one that is not taken back. What it had added is
// retired, and what it had removed has its number again. Failure 57 where the text is no change, or not one of `now`.
[[nodiscard]] StoredDescription TakenBack(const StoredDescription& now, const Text& change, const Text& path);

}  // namespace tallybook::engine
