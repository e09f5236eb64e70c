#include "tallybook/engine/Checksums.h"

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

Digest& Digest::Add(std::int64_t number) {
  const std::size_t end = bytes_.size();
  bytes_.resize(end + sizeof number);
  std::memcpy(bytes_.data() + end, &number, sizeof number);
  return *this;
}

Digest& Digest::Add(Double number) {
  std::int64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return Add(bits);
}

Digest& Digest::Add(const Text& text) {
  return Add(std::as_bytes(std::span(text)));
}

Digest& Digest::Add(std::span<const std::byte> bytes) {
  Add(static_cast<std::int64_t>(bytes.size()));
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
  return *this;
}

Checksum Digest::Value() const {
  return ChecksumOf(bytes_, 0);
}

}  // namespace tallybook::engine
