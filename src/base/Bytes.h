// Byte order: the one unit that knows how numbers lie in an exchange file. Little-endian two's complement and IEEE 754.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/Types.h"

namespace tallybook {

// The unsigned whole number of the same width as a number type.
template <typename Number>
using BitsOf = std::conditional_t<sizeof(Number) == 2, std::uint16_t,
                                  std::conditional_t<sizeof(Number) == 4, std::uint32_t, std::uint64_t>>;

template <typename Number>
[[nodiscard]] std::array<std::byte, sizeof(Number)> ToBytes(Number value) {
  // The machine's own order, where it is the file's, is a plain copy: compilers do not see that in the general form.
  if constexpr (std::endian::native == std::endian::little) {
    return std::bit_cast<std::array<std::byte, sizeof(Number)>>(value);
  }
  const auto bits = std::bit_cast<BitsOf<Number>>(value);
  std::array<std::byte, sizeof(Number)> bytes{};
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::byte>(bits >> (8 * i));
  return bytes;
}

template <typename Number>
[[nodiscard]] Number FromBytes(const std::byte* bytes) {
  if constexpr (std::endian::native == std::endian::little) {
    Number value{};
    std::memcpy(&value, bytes, sizeof(value));
    return value;
  }
  BitsOf<Number> bits = 0;
  for (std::size_t i = 0; i < sizeof(Number); ++i)
    bits = static_cast<BitsOf<Number>>(bits |
                                       static_cast<BitsOf<Number>>(static_cast<BitsOf<Number>>(bytes[i]) << (8 * i)));
  return std::bit_cast<Number>(bits);
}

}  // namespace tallybook
