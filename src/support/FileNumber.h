// A file number with an owner: the file is closed on every way out, unless the number was handed on before.
#pragma once

#include "base/Types.h"
#include "support/Utility.h"

namespace tallybook {

class FileNumber {
 public:
  FileNumber() = default;
  ~FileNumber() { Close(); }
  FileNumber(const FileNumber&) = delete;
  FileNumber& operator=(const FileNumber&) = delete;

  // The number itself, for OpenFileEx; 0 while no file is open.
  Integer& Value() { return value_; }
  [[nodiscard]] FileStream& Stream() const { return FileOf(value_); }
  // Closes without a word. Who must know that the last bytes were written calls Stream().Flush() first.
  void Close() noexcept {
    try {
      CloseFileEx(value_);
    } catch (...) {
      value_ = 0;  // meant: nothing that closes a file on the way out may fail
    }
  }

 private:
  Integer value_ = 0;
};

}  // namespace tallybook
