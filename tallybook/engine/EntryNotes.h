// What an entry of the journal keeps beside its figures: the files that were read, and what the application tells of
// the run. Plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// A file as it was when it was read. What is not known of it is empty.
struct EntryFile {
  Text path;
  std::optional<std::int64_t> size;  // in bytes
  std::vector<std::byte> xxh3;       // XXH3 of 128 bits over its bytes, 16 bytes, highest first
  std::vector<std::byte> sha256;     // 32 bytes

  bool operator==(const EntryFile&) const = default;
};

struct EntryNotes {
  std::vector<EntryFile> files;
  Text facts;  // the application's own words, which the engine does not read

  [[nodiscard]] bool Empty() const { return files.empty() && facts.empty(); }
  bool operator==(const EntryNotes&) const = default;
};

}  // namespace tallybook::engine
