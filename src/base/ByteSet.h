// A few bytes that are looked for in texts: separators, line ends, quotes. Plain data, to be read from any thread.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tallybook {

class ByteSet {
 public:
  constexpr explicit ByteSet(std::string_view bytes) : few_(!bytes.empty() && bytes.size() <= kFew) {
    for (const char byte : bytes) has_[static_cast<unsigned char>(byte)] = true;
    for (std::size_t place = 0; few_ && place < kFew; ++place) {
      repeated_[place] = kOnes * static_cast<unsigned char>(bytes[place < bytes.size() ? place : 0]);
    }
  }

  [[nodiscard]] constexpr bool Has(char byte) const { return has_[static_cast<unsigned char>(byte)]; }

  // The place of the first of the bytes at or behind `from`, which is in the text or at its end; the text's size where
  // there is none.
  [[nodiscard]] std::size_t FindIn(std::string_view text, std::size_t from) const {
    if constexpr (std::endian::native == std::endian::little) {
      for (; few_ && text.size() - from >= sizeof(std::uint64_t); from += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + from, sizeof word);
        const std::uint64_t found = Found(word);
        if (found != 0) return from + static_cast<std::size_t>(std::countr_zero(found)) / 8;
      }
    }
    while (from < text.size() && !Has(text[from])) ++from;
    return from;
  }

 private:
  static constexpr std::size_t kFew = 4;
  static constexpr std::uint64_t kOnes = 0x0101010101010101U;
  static constexpr std::uint64_t kHighs = kOnes << 7;

  // The highest bit of each byte that is zero. Bytes above one that is zero may be told, too: the lowest is always
  // right.
  [[nodiscard]] static constexpr std::uint64_t Zeros(std::uint64_t word) { return (word - kOnes) & ~word & kHighs; }
  [[nodiscard]] constexpr std::uint64_t Found(std::uint64_t word) const {
    return Zeros(word ^ repeated_[0]) | Zeros(word ^ repeated_[1]) | Zeros(word ^ repeated_[2]) |
           Zeros(word ^ repeated_[3]);
  }

  std::array<bool, 256> has_{};
  std::array<std::uint64_t, kFew> repeated_{};  // each byte eight times
  bool few_;
};

}  // namespace tallybook
