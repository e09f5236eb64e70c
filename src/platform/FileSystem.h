// The files of the machine. One thread.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "base/Types.h"

namespace tallybook {

// An open file. Closed by Close, or by its end without a word about what could not be written: call Close.
// Every operation fails with a Failure: 57 device error, 61 disk full, 70 permission denied.
class OpenFile {
 public:
  virtual ~OpenFile() = default;
  // Reads up to `into.size()` bytes from `offset` and gives how many there were; fewer only at the end of the file.
  // A read that fails has moved nothing.
  [[nodiscard]] virtual std::size_t ReadAt(long long offset, std::span<std::byte> into) = 0;
  // Writes all of `from` at `offset`. A write that fails may have written a part; repeating it mends that.
  virtual void WriteAt(long long offset, std::span<const std::byte> from) = 0;
  [[nodiscard]] virtual long long Size() = 0;
  // Hands everything to the operating system and closes; afterwards nothing else may be called.
  virtual void Close() = 0;
};

// How a file is opened. `Sharing` states what others may do while it is open.
enum class Access { kRead, kWrite, kReadWrite };
enum class Sharing { kShared, kLockWrite, kLockReadWrite };
enum class Creation { kMustExist, kCreateIfMissing, kReplace };

struct FileAttributes {
  bool found = false;
  bool directory = false;
  bool sharing_violation = false;  // the system would not say because another process holds the file
};

struct FoundFile {
  Text name;      // without its folder
  Date modified;  // universal time
};

// Files. `/` and `\` both separate the parts of a path on every platform.
class FileSystem {
 public:
  virtual ~FileSystem() = default;
  // Fails with 53 file not found, 70 in use or not permitted, 75 a directory or bad path, 76 folder not found, 61, 57.
  [[nodiscard]] virtual std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                                       Creation creation) = 0;
  [[nodiscard]] virtual FileAttributes Attributes(const Text& path) = 0;
  // Fail with 53, 70 (also while this component holds the file open, here or in another process), 75.
  virtual void Delete(const Text& path) = 0;
  // Replaces nothing: a file of the new name is a failure (58 is not used; 75).
  virtual void Rename(const Text& old_path, const Text& new_path) = 0;
  // Replaces a file of the new name.
  virtual void Copy(const Text& from_path, const Text& to_path) = 0;
  // The files (no directories) that match a path whose name part may hold `*` and `?`, without regard to case, in
  // case-insensitive order of their names. `*.*` matches every name; an empty pattern and a missing folder match
  // nothing.
  [[nodiscard]] virtual std::vector<FoundFile> Find(const Text& pattern) = 0;
  // What AddBackslash appends to a path that has no separator yet.
  [[nodiscard]] virtual char Separator() const = 0;
};

}  // namespace tallybook
