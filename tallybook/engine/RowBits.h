// A bit for each row of a chunk, lowest bit of a byte first: which rows something was done to.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <span>
#include <vector>

namespace tallybook::engine {

using RowBits = std::vector<std::byte>;

[[nodiscard]] inline RowBits NoRowBits(std::size_t rows) {
  return RowBits((rows + 7) / 8, std::byte{0});
}
inline void SetBit(RowBits& bits, std::size_t row) {
  bits[row / 8] |= std::byte{1} << (row % 8);
}
[[nodiscard]] inline bool HasBit(std::span<const std::byte> bits, std::size_t row) {
  return row / 8 < bits.size() && (bits[row / 8] & (std::byte{1} << (row % 8))) != std::byte{0};
}
[[nodiscard]] inline bool HasAnyBit(std::span<const std::byte> bits) {
  return std::ranges::any_of(bits, [](std::byte byte) { return byte != std::byte{0}; });
}
// Calls `visit(row)` for each row with a bit, first to last.
template <typename Visit>
void ForEachBit(std::span<const std::byte> bits, Visit visit) {
  for (std::size_t index = 0; index < bits.size(); ++index) {
    for (auto left = std::to_integer<unsigned>(bits[index]); left != 0; left &= left - 1) {
      visit(index * 8 + static_cast<std::size_t>(std::countr_zero(left)));
    }
  }
}
// Whether both have some bit.
[[nodiscard]] inline bool ShareBits(std::span<const std::byte> one, std::span<const std::byte> other) {
  const std::size_t size = std::min(one.size(), other.size());
  for (std::size_t index = 0; index < size; ++index) {
    if ((one[index] & other[index]) != std::byte{0}) return true;
  }
  return false;
}
// Bits with those of another row set besides, as far as there is room for them.
[[nodiscard]] inline RowBits WithBits(RowBits bits, std::span<const std::byte> others) {
  for (std::size_t index = 0; index < std::min(bits.size(), others.size()); ++index) bits[index] |= others[index];
  return bits;
}

}  // namespace tallybook::engine
