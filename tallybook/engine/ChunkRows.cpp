#include "tallybook/engine/ChunkRows.h"

#include <algorithm>
#include <utility>

namespace tallybook::engine {

namespace {

// Rows are made room for in steps that grow: few moves for a chunk that fills up, little waste for one that does not.
constexpr std::size_t kFirstBytes = 2048;
constexpr std::size_t kGrowth = 4;

RowRange Grown(RowRange range, std::size_t row, const ChunkShape& shape) {
  const std::size_t first_rows = std::max<std::size_t>(kFirstBytes / (shape.fields * sizeof(Double)), 1);
  if (range.Count() == 0) return {row, std::min(shape.rows, row + first_rows)};
  const std::size_t wanted = range.Count() * kGrowth;
  if (row >= range.end) return {range.first, std::min(shape.rows, std::max(row + 1, range.first + wanted))};
  return {std::min(row, range.end - std::min(wanted, range.end)), range.end};
}

// Only what is likely of the rows taken on. On a side where an unlikely row is in use already there may be more of
// them.
RowRange WithinLikely(RowRange grown, RowRange used, RowRange likely) {
  return {used.first >= likely.first ? std::max(grown.first, likely.first) : grown.first,
          used.end <= likely.end ? std::min(grown.end, likely.end) : grown.end};
}

}  // namespace

Double* ChunkRows::Hold(std::size_t row, const ChunkShape& shape, RowRange likely) {
  if (!Holds(row)) {
    const bool first_row = range_.Count() == 0;
    const RowRange used = {first_row ? row : std::min(range_.first, row), std::max(range_.end, row + 1)};
    const RowRange grown = WithinLikely(Grown(range_, row, shape), used, likely);
    std::vector<Double> figures(grown.Count() * shape.fields);
    if (range_.Count() != 0) {
      const auto place = static_cast<std::ptrdiff_t>((range_.first - grown.first) * shape.fields);
      std::copy(figures_.begin(), figures_.end(), figures.begin() + place);
    }
    figures_ = std::move(figures);
    range_ = grown;
  }
  return figures_.data() + (row - range_.first) * shape.fields;
}

std::span<Double> ChunkRows::Renew(RowRange range, std::size_t fields) {
  figures_.assign(range.Count() * fields, 0.0);
  range_ = range;
  return figures_;
}

}  // namespace tallybook::engine
