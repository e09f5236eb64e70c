// Files on POSIX systems: `/` and `\` both separate, names are UTF-8 and are looked up as they stand (only a search
// with wildcards is without regard to case).
//
// Sharing. The system's own locks are advisory, so what a mode forbids others binds this component: two handles of one
// process and handles of two processes really exclude each other, and programs that do not know the rule are not kept
// out. Each open file holds shared open-file-description locks on up to four bytes near the greatest offset, far behind
// any data; each byte stands for one statement: "I read", "I write", "I deny reading", "I deny writing". An open takes
// its own first and then looks whether another holder contradicts. Of two that race, both may be refused; never are
// both let in. Locks go with the file, also when the process dies. A file system without such locks is failure 73.
#pragma once

#include "platform/FileSystem.h"

namespace tallybook {

class PosixFileSystem : public FileSystem {
 public:
  [[nodiscard]] std::unique_ptr<OpenFile> Open(const Text& path, Access access, Sharing sharing,
                                               Creation creation) override;
  // `sharing_violation` is never set: here the system tells of a file whoever holds it.
  [[nodiscard]] FileAttributes Attributes(const Text& path) override;
  void Delete(const Text& path) override;
  void Rename(const Text& old_path, const Text& new_path) override;
  // A copy that fails on the way leaves no file of the new name.
  void Copy(const Text& from_path, const Text& to_path) override;
  [[nodiscard]] std::vector<FoundFile> Find(const Text& pattern) override;
  [[nodiscard]] char Separator() const override { return '/'; }
};

}  // namespace tallybook
