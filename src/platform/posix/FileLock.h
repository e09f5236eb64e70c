// Locks on bytes of an open file. They belong to the open file and not to the process: what one process has opened
// twice stands in its own way as two processes do in each other's, and closing the one takes nothing from the other.
// They may lie behind the file's end.
#pragma once

#include <limits>
#include <optional>
#include <sys/types.h>

namespace tallybook {

struct FileBytes {
  off_t start = 0;
  off_t count = 1;
};

// Who makes a file holds this byte of it until it is finished, so that what nobody holds has been left behind. Far
// behind any data, and off the bytes by which open files are shared. Every process that runs any version of this goes
// by it: never move it.
inline constexpr FileBytes kMakersByte{.start = std::numeric_limits<off_t>::max() - 64, .count = 1};

enum class LockKind { kShared, kAlone };

// Does not wait. False where the lock is not to be had; errno is EAGAIN or EACCES where another has it, and otherwise
// says why the system cannot lock the file.
[[nodiscard]] bool TryLock(int file, FileBytes bytes, LockKind kind = LockKind::kAlone);
void Unlock(int file, FileBytes bytes);

struct LockHolder {
  bool exists = false;
  pid_t process = 0;  // 0 or less where the lock does not tell
};
// Who else keeps `bytes` from being locked alone. Empty where the system cannot tell; errno says why.
[[nodiscard]] std::optional<LockHolder> HolderOf(int file, FileBytes bytes);

}  // namespace tallybook
