// Byte order: the one unit that knows how numbers lie in an exchange file. Little-endian two's complement and IEEE 754.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "support/Types.h"

namespace tallybook {

// The unsigned whole number of the same width as a number type.
template <typename Number>
using BitsOf = std::conditional_t<sizeof(Number) == 2, std::uint16_t,
                                  std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>>;

template <typename Number>
[[nodiscard]] std::array<std::byte, sizeof(Number)> ToBytes(Number value) {
  const auto bits = std::bit_cast<BitsOf<Number>>(value);
  std::array<std::byte, sizeof(Number)> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(bits >> (8 * i));
  return bytes;
}

template <typename Number>
[[nodiscard]] Number FromBytes(const std::byte* bytes) {
  BitsOf<Number> bits = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i)
    bits = static_cast<BitsOf<Number>>(bits |
                                       static_cast<BitsOf<Number>>(static_cast<BitsOf<Number>>(bytes[i]) << (8 * i)));
  return std::bit_cast<Number>(bits);
}

}  // namespace tallybook
