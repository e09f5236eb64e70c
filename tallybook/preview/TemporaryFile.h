// A file for what does not fit into memory. It has no name, so that nothing of it is left whatever ends the process,
// and it is made with the first byte that is written. One thread.
#pragma once

#include <cstddef>
#include <span>

#include "base/Types.h"

namespace tallybook::preview {

class TemporaryFile {
 public:
  TemporaryFile() = default;
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  // Both name the folder that the file is in when they fail: Failure 61 no room, 70 not permitted, 57 all else. A write
  // that fails may have written a part. Bytes that were never written must not be read (57).
  void WriteAt(long long offset, std::span<const std::byte> from);
  void ReadAt(long long offset, std::span<std::byte> into) const;

  // What has been written, in bytes: up to the last.
  [[nodiscard]] long long Size() const { return size_; }

 private:
  void Make();

  int file_ = -1;
  Text folder_;
  long long size_ = 0;
};

}  // namespace tallybook::preview
