// By what a file is known again: its size and two sums over its bytes. They are made on a thread of their own, beside
// whatever else reads the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::application {

struct FileFingerprint {
  std::int64_t size = 0;          // in bytes
  std::vector<std::byte> xxh3;    // XXH3 of 128 bits, 16 bytes, highest first
  std::vector<std::byte> sha256;  // 32 bytes

  bool operator==(const FileFingerprint&) const = default;
};

// Two digits a byte, in lower case.
[[nodiscard]] Text HexText(const std::vector<std::byte>& bytes);

// Holds the file of its making open, so that it is read to its end whatever is renamed or deleted meanwhile; what it
// holds keeps nobody else from opening, renaming or deleting it. A file that cannot be opened, and one that is no
// regular file, has no fingerprint. One thread uses this object.
class FingerprintReader {
 public:
  // Begins at once.
  explicit FingerprintReader(const Text& path);
  // Ends the reading where it has not come to its end.
  ~FingerprintReader();
  FingerprintReader(const FingerprintReader&) = delete;
  FingerprintReader& operator=(const FingerprintReader&) = delete;

  // How large the file was when it was opened.
  [[nodiscard]] std::optional<std::int64_t> Size() const;
  // Waits for the end. Nothing, too, for a file that was changed while it was read, or cannot be read.
  [[nodiscard]] std::optional<FileFingerprint> Take();

 private:
  class Reading;
  std::unique_ptr<Reading> reading_;
};

// The first of the sums alone, on the caller's thread: enough to know a file again, and ten times as fast. Nothing
// where there would be no fingerprint.
[[nodiscard]] std::optional<std::vector<std::byte>> Xxh3Of(const Text& path);
// The size alone; nothing where there is no such regular file.
[[nodiscard]] std::optional<std::int64_t> SizeOfFile(const Text& path);

}  // namespace tallybook::application
