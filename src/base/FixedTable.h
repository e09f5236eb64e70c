// A table of rows at positions from 1, as the system's records hold them. Every access is checked: a position outside
// the table is failure 9. A table may be given an upper limit that it never grows beyond.
#pragma once

#include <string>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook {

// Raises failure 9 for `position`, outside 1 to `rows`.
[[noreturn]] inline void FailOutsideTable(Long position, Long rows) {
  throw Failure(FailureNumber::kRange,
                "Position " + std::to_string(position) + " is outside a table of " + std::to_string(rows) + " rows");
}

template <typename Row>
class FixedTable {
 public:
  FixedTable() = default;
  explicit FixedTable(Long rows) : rows_(static_cast<std::size_t>(rows)) {}

  [[nodiscard]] Long Rows() const { return static_cast<Long>(rows_.size()); }
  // Makes the table `rows` rows long, all of them empty.
  void Reset(Long rows) { rows_.assign(static_cast<std::size_t>(rows), Row{}); }

  Row& operator()(Long position) { return rows_[IndexOf(position)]; }
  const Row& operator()(Long position) const { return rows_[IndexOf(position)]; }

 private:
  [[nodiscard]] std::size_t IndexOf(Long position) const {
    if (position < 1 || position > Rows()) FailOutsideTable(position, Rows());
    return static_cast<std::size_t>(position - 1);
  }

  std::vector<Row> rows_;
};

}  // namespace tallybook
