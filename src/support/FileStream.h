// A buffered position in an open file: what readers and writers of bytes and lines work on. It owns the file.
// One thread. A read or write that fails leaves the position and what was buffered as they were, so that repeating the
// call neither loses nor doubles a byte.
#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

#include "base/Types.h"
#include "platform/FileSystem.h"

namespace tallybook {

class FileStream {
 public:
  explicit FileStream(std::unique_ptr<OpenFile> file);
  // Drops what is still unwritten; Close writes it.
  ~FileStream();
  FileStream(const FileStream&) = delete;
  FileStream& operator=(const FileStream&) = delete;

  // Reads exactly `into.size()` bytes and moves on: true. Where fewer are left: false, `into` untouched, and the
  // position stands at the end of the file.
  [[nodiscard]] bool ReadWhole(std::span<std::byte> into) {
    if (buffered_for_reading_ && into.size() <= end_ - next_) {
      std::memcpy(into.data(), buffer_.data() + next_, into.size());
      next_ += into.size();
      return true;
    }
    return ReadWholeSlowly(into);
  }
  // The next `size` bytes in place, moving on behind them, where the buffer holds them; null, with nothing done, where
  // it does not. They stand until the next call. For items of several numbers, which are then read without a copy
  // between.
  [[nodiscard]] const std::byte* Take(std::size_t size) {
    if (!buffered_for_reading_ || size > end_ - next_) return nullptr;
    next_ += size;
    return buffer_.data() + next_ - size;
  }
  // The same for writing: room for `size` bytes, which count as written and must be filled before the next call.
  [[nodiscard]] std::byte* Claim(std::size_t size) {
    if (buffered_for_reading_ || size > buffer_.size() - end_) return nullptr;
    end_ += size;
    return buffer_.data() + end_ - size;
  }

  // Reads up to `into.size()` bytes and gives how many; 0 at the end of the file.
  [[nodiscard]] std::size_t ReadSome(std::span<std::byte> into);

  void Write(std::span<const std::byte> from) {
    if (!buffered_for_reading_ && from.size() <= buffer_.size() - end_) {
      std::memcpy(buffer_.data() + end_, from.data(), from.size());
      end_ += from.size();
      return;
    }
    WriteSlowly(from);
  }

  // Hands what is buffered to the file.
  void Flush();
  // Flushes and closes; the stream is of no use afterwards, save that closing it again does nothing. Fails where the
  // last bytes could not be written; the file is closed all the same.
  void Close();

  // In bytes from the start of the file.
  [[nodiscard]] long long Position() const {
    return start_ + static_cast<long long>(buffered_for_reading_ ? next_ : end_);
  }
  void Seek(long long position);
  [[nodiscard]] long long Size();
  // True when the position stands at the end of the file or behind it.
  [[nodiscard]] bool AtEnd();

 private:
  bool ReadWholeSlowly(std::span<std::byte> into);
  bool ReadWholeDirectly(std::span<std::byte> into);
  void StartReading();
  void WriteSlowly(std::span<const std::byte> from);
  void Fill(long long position);

  std::unique_ptr<OpenFile> file_;
  std::vector<std::byte> buffer_;
  long long start_ = 0;               // where in the file the buffer's first byte stands
  std::size_t next_ = 0;              // reading: the next byte of the buffer
  std::size_t end_ = 0;               // reading: bytes held; writing: bytes waiting
  bool buffered_for_reading_ = true;  // what the buffer holds at present
};

}  // namespace tallybook
