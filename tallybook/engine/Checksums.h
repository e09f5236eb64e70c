// The checksums of a book's file (docs/book-file.md, "Checksums"): XXH3 of 64 bits. They tell damage, not forgery.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

using Checksum = std::uint64_t;

// What a checksum takes at the end of bytes; little-endian.
inline constexpr std::size_t kChecksumSize = sizeof(Checksum);

// The checksum of bytes that stand under a key: the same bytes under another key have another one.
[[nodiscard]] Checksum ChecksumOf(std::span<const std::byte> bytes, std::int64_t key);

// Puts the checksum of the bytes at their end, and gives it.
Checksum AppendChecksum(std::vector<std::byte>& bytes, std::int64_t key);

// The bytes before the checksum at their end, and that checksum; none where it is not theirs under this key.
struct CheckedBytes {
  std::span<const std::byte> bytes;
  Checksum checksum = 0;
};
[[nodiscard]] std::optional<CheckedBytes> TakeChecked(std::span<const std::byte> bytes, std::int64_t key);

// The checksum of single items one after another. An item is kept apart from the next, so that text that moves from one
// to the other is seen.
class Digest {
 public:
  Digest& Add(std::int64_t number);
  Digest& Add(Double number);
  Digest& Add(const Text& text);
  Digest& Add(std::span<const std::byte> bytes);
  [[nodiscard]] Checksum Value() const;

 private:
  void Append(const void* from, std::size_t size);

  std::vector<std::byte> bytes_;  // room; the first `used_` of it count
  std::size_t used_ = 0;
};

// A checksum as SQLite keeps it in a column, and back.
[[nodiscard]] inline std::int64_t ToColumn(Checksum checksum) {
  return static_cast<std::int64_t>(checksum);
}
[[nodiscard]] inline Checksum FromColumn(std::int64_t column) {
  return static_cast<Checksum>(column);
}

}  // namespace tallybook::engine
