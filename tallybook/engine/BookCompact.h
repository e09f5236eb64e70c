// Giving back the room that a book's file does not use any more.
#pragma once

#include <cstdint>

#include "base/Types.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

// Sizes in bytes, of the file and the log beside it.
struct CompactResult {
  std::int64_t before = 0;
  std::int64_t after = 0;
};

// Writes a book's file anew without the room that it leaves unused. What it holds stays as it is, and so does its
// format. It takes the room of a second file meanwhile, and once more among the system's temporary files. The file gets
// smaller when the last who reads it has closed it.
//   fails   57 for a book that is damaged, which stays as it is; else as Book::Open, and 61; WorkCancelled
CompactResult CompactBook(const Text& path, double wait_seconds, WorkWatch& watch = Unwatched());

}  // namespace tallybook::engine
