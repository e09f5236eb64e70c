#include "tallybook/engine/Checksums.h"

#include <algorithm>
#include <bit>
#include <cstring>

// The library's functions become part of this source, so that nothing need be linked.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace tallybook::engine {

Checksum ChecksumOf(std::span<const std::byte> bytes, std::int64_t key) {
  return XXH3_64bits_withSeed(bytes.data(), bytes.size(), static_cast<XXH64_hash_t>(key));
}

Checksum AppendChecksum(std::vector<std::byte>& bytes, std::int64_t key) {
  const Checksum checksum = ChecksumOf(bytes, key);
  bytes.resize(bytes.size() + kChecksumSize);
  std::memcpy(bytes.data() + bytes.size() - kChecksumSize, &checksum, kChecksumSize);
  return checksum;
}

std::optional<CheckedBytes> TakeChecked(std::span<const std::byte> bytes, std::int64_t key) {
  if (bytes.size() < kChecksumSize) return std::nullopt;
  const auto checked = bytes.first(bytes.size() - kChecksumSize);
  Checksum stored = 0;
  std::memcpy(&stored, bytes.data() + checked.size(), kChecksumSize);
  if (stored != ChecksumOf(checked, key)) return std::nullopt;
  return CheckedBytes{checked, stored};
}

void Digest::Append(const void* from, std::size_t size) {
  constexpr std::size_t kFirstRoom = 256;
  if (used_ + size > bytes_.size()) bytes_.resize(std::max(kFirstRoom, 2 * (used_ + size)));
  if (size != 0) std::memcpy(bytes_.data() + used_, from, size);
  used_ += size;
}

Digest& Digest::Add(std::int64_t number) {
  Append(&number, sizeof number);
  return *this;
}

Digest& Digest::Add(Double number) {
  return Add(std::bit_cast<std::int64_t>(number));
}

Digest& Digest::Add(const Text& text) {
  return Add(std::as_bytes(std::span(text)));
}

Digest& Digest::Add(std::span<const std::byte> bytes) {
  Add(static_cast<std::int64_t>(bytes.size()));
  Append(bytes.data(), bytes.size());
  return *this;
}

Checksum Digest::Value() const {
  return ChecksumOf(std::span(bytes_).first(used_), 0);
}

}  // namespace tallybook::engine
