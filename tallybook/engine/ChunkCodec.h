// The bytes of a stored chunk: the figures of one account for consecutive records (docs/book-file.md, "Chunks").
//
//   byte 0        form: 1 dense, 2 sparse, 3 decimals; 128 more where the chunk tells how many figures a row has
//   bytes 1-2     first row that is stored, counted from 0
//   bytes 3-4     number of rows stored; the rows before and behind hold zeros only
//   bytes 5-6     of a chunk that tells it, the number of figures of a stored row; what follows is two bytes further
//   on.
//                 Any other has those that a row had when the book was made. The figures behind hold zeros
//   dense         the figures, row by row, field by field, 8 bytes each (IEEE 754 binary64)
//   sparse        one bit for each figure, in the same order, lowest bit of a byte first, set where the figure is
//                 stored; then the stored figures, 8 bytes each; the others are zero
//   decimals      a byte for the decimals (0 to 3), one for the width (2 or 4); then for each figure a signed whole
//                 number of that width, which divided by 10 to the power of the decimals gives exactly the figure
//
// All numbers are little-endian. The writer takes the shortest form. A chunk that holds zeros only is not stored.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "tallybook/engine/ChunkRows.h"

namespace tallybook::engine {

// Writes the chunk's bytes into `bytes`, replacing what was there; none where all figures are zero.
void EncodeChunk(const ChunkShape& shape, const ChunkRows& rows, std::vector<std::byte>& bytes);

// Reads a chunk's bytes; `rows` holds just the rows that were stored from then on.
// Failure 57 for bytes that EncodeChunk never writes for this shape; the rows may have been changed by then.
void DecodeChunk(const ChunkShape& shape, std::span<const std::byte> bytes, ChunkRows& rows);

}  // namespace tallybook::engine
