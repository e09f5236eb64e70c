// What a path leads to, told without opening it: opening a pipe waits or takes what another wanted, and closing a book
// that this process has open would give up its locks.
#pragma once

#include <cstdint>

#include "base/Types.h"

namespace tallybook::application {

enum class FileKind { kMissing, kRegular, kFolder, kDevice, kPipe, kSocket };

// "a folder", "a device", "a pipe", "a socket", "a file"; "nothing" for what is missing.
[[nodiscard]] Text WordsFor(FileKind kind);

// Which file it is, whatever it is called: two paths lead to one file where these are equal.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  bool operator==(const FileIdentity&) const = default;
};

struct FileLook {
  FileKind kind = FileKind::kMissing;
  FileIdentity identity;    // all 0 where it is missing
  std::uint64_t names = 0;  // how many hard links it has
};

// Follows symbolic links; one that leads nowhere is missing. `/` and `\` both separate, as everywhere.
//   fails  70, 75 or 57 with the path, where the system does not tell: a folder on the way that may not be searched,
//          links in a circle
[[nodiscard]] FileLook LookAt(const Text& path);

// The path with its symbolic links followed, also the last one where that leads to a file that is not there yet. The
// folder must exist; where it does not, the path comes back as it is.
[[nodiscard]] Text ResolveLinks(const Text& path);

// Failure 75, "PATH is a device; a file is wanted", for what is there and is no regular file. What is missing passes:
// the operation that wants it tells that in words of its own.
void NeedRegularFile(const Text& path);

// Failure 70 or 57 where the folder is there and cannot be listed: whoever looks for files in it would find none.
void NeedListable(const Text& folder);

}  // namespace tallybook::application
