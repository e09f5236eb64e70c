// What the system tells of a file from one moment to the next, to notice that it was changed or replaced.
#pragma once

#include <cstdint>

#include "base/Types.h"

namespace tallybook::engine {

struct FileState {
  bool exists = false;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t changed = 0;  // when its bytes were changed last, in nanoseconds since 1970

  bool operator==(const FileState&) const = default;
  [[nodiscard]] bool IsSameFile(const FileState& other) const {
    return exists && other.exists && device == other.device && inode == other.inode;
  }
};

// The state of the file at a path (which is not opened), or behind a descriptor. One that cannot be asked does not
// exist.
[[nodiscard]] FileState StateAt(const Text& path);
[[nodiscard]] FileState StateBehind(int descriptor);

// True where a change from now on will show in the state: the system tells the time of a change in steps of some
// milliseconds, so that two changes of one step look like one.
[[nodiscard]] bool IsSettled(const FileState& state);

}  // namespace tallybook::engine
