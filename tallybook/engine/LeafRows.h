// The rows of a database's tables, found without its trees: each page of the file that looks like the leaf of a table
// is read by itself (SQLite file format, "B-tree Pages", "Record Format"). What is found can be a row from before,
// which stands in a page that is not in use any more; who asks has a checksum for that. One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

#include "base/Types.h"

namespace tallybook::engine {

// Visits all rows of three columns of which the first is the row's own number, the second a whole number and the third
// a run of bytes, as `chunk` has them. What cannot be read is passed over.
//   file       open to be read
//   page_size  a power of two from 512 to 65536
//   fails      57 where the file cannot be read
using LeafRowVisitor = std::function<void(std::int64_t number, std::span<const std::byte> bytes)>;
void VisitLeafRows(int file, std::size_t page_size, const LeafRowVisitor& visit);

}  // namespace tallybook::engine
