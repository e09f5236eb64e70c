// The bytes of a stored chunk: the figures of one account for consecutive records (docs/book-file.md, "Chunks").
//
//   byte 0        form: 1 dense, 2 sparse, 3 decimals
//   bytes 1-2     first row that is stored, counted from 0
//   bytes 3-4     number of rows stored; the rows before and behind hold zeros only
//   dense         the figures, row by row, field by field, 8 bytes each (IEEE 754 binary64)
//   sparse        one bit for each figure, in the same order, lowest bit of a byte first, set where the figure is
//                 stored; then the stored figures, 8 bytes each; the others are zero
//   decimals      byte 5: decimals (0 to 3), byte 6: width (2 or 4); then for each figure a signed whole number of that
//                 width, which divided by 10 to the power of the decimals gives exactly the figure
//
// All numbers are little-endian. The writer takes the shortest form. A chunk that holds zeros only is not stored.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "support/Types.h"

namespace tallybook::engine {

// How many rows (records) a chunk has, and how many figures a row.
struct ChunkShape {
  std::size_t rows = 1;
  std::size_t fields = 1;
  [[nodiscard]] std::size_t Figures() const { return rows * fields; }
};

// A run of rows, counted from 0; `end` is one past the last.
struct RowRange {
  std::size_t first = 0;
  std::size_t end = 0;
  [[nodiscard]] bool Empty() const { return first >= end; }
};

// Writes the chunk's bytes into `bytes`, replacing what was there; none where all figures are zero.
//   figures  the whole chunk, row by row
//   used     the rows that may hold something other than zeros
void EncodeChunk(const ChunkShape& shape, std::span<const Double> figures, RowRange used,
                 std::vector<std::byte>& bytes);

// Reads a chunk's bytes into `figures`, a whole chunk of zeros, and gives the rows that were stored.
// Failure 57 for bytes that EncodeChunk never writes for this shape; the figures may have been changed by then.
RowRange DecodeChunk(const ChunkShape& shape, std::span<const std::byte> bytes, std::span<Double> figures);

}  // namespace tallybook::engine
