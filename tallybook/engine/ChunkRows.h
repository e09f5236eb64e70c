// The figures of one account for consecutive records, in memory: as many rows of a chunk as are in use. What a book
// takes in memory so goes by its figures, not by the size of its chunks.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// How many rows (records) a chunk has, and how many figures a row in memory. `first_fields` are those that a stored row
// has unless the chunk tells more: the figures that a row had when the book was made; 0 where no field came since.
struct ChunkShape {
  std::size_t rows = 1;
  std::size_t fields = 1;
  std::size_t first_fields = 0;
  [[nodiscard]] std::size_t UsualWidth() const { return first_fields == 0 ? fields : first_fields; }
};

// A run of rows, counted from 0; `end` is one past the last.
struct RowRange {
  std::size_t first = 0;
  std::size_t end = 0;
  [[nodiscard]] std::size_t Count() const { return end - first; }
};

class ChunkRows {
 public:
  // The rows held; all others of the chunk hold zeros only.
  [[nodiscard]] RowRange Range() const { return range_; }
  // The figures of the rows held, row by row.
  [[nodiscard]] std::span<const Double> Figures() const { return figures_; }
  // What they take, in bytes.
  [[nodiscard]] std::size_t Bytes() const { return figures_.capacity() * sizeof(Double); }

  [[nodiscard]] bool Holds(std::size_t row) const { return row >= range_.first && row < range_.end; }
  // The figures of a row; null where it is not held. Valid until rows are held or dropped.
  [[nodiscard]] const Double* Find(std::size_t row, std::size_t fields) const {
    return Holds(row) ? figures_.data() + (row - range_.first) * fields : nullptr;
  }

  // The figures of a row for writing. A row that was not held comes with zeros, and with some neighbours, so that a
  // walk from row to row finds most of them held; the figures of all rows may move then. Of the neighbours only those
  // are taken that lie in `likely`, the rows that are likely to be written.
  [[nodiscard]] Double* Hold(std::size_t row, const ChunkShape& shape, RowRange likely);
  [[nodiscard]] Double* Hold(std::size_t row, const ChunkShape& shape) { return Hold(row, shape, {0, shape.rows}); }

  // Holds just these rows, with zeros; for whoever fills them in.
  [[nodiscard]] std::span<Double> Renew(RowRange range, std::size_t fields);

 private:
  RowRange range_;
  std::vector<Double> figures_;
};

}  // namespace tallybook::engine
