// A few bytes that are looked for in texts: separators, line ends, quotes. Plain data, to be read from any thread.
#pragma once

#include <algorithm>
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
    for (; text.size() - from >= kStep; from += kStep) {
      const std::uint64_t found = FoundIn(text.data() + from, kStep);
      if (found != 0) return from + PlaceIn(found);
    }
    while (from < text.size() && !Has(text[from])) ++from;
    return from;
  }

  // Goes from one of the bytes in a text to the next. Both the set and the text outlive it.
  class Walk {
   public:
    Walk(const ByteSet& set, std::string_view text) : set_(set), text_(text) { GoOnAt(0); }

    // The place of the next; the text's size behind the last.
    [[nodiscard]] std::size_t Next() {
      while (found_ == 0) {
        if (text_.size() - step_ <= kStep) return text_.size();
        GoOnAt(step_ + kStep);
      }
      const std::size_t place = step_ + PlaceIn(found_);
      found_ &= found_ - 1;
      return place;
    }
    // The next one is the first at or behind this place, which is in the text or at its end.
    void GoOnAt(std::size_t place) {
      step_ = place;
      found_ = set_.FoundIn(text_.data() + place, std::min(text_.size() - place, kStep));
    }

   private:
    const ByteSet& set_;
    std::string_view text_;
    std::size_t step_ = 0;  // where the bytes under way begin
    std::uint64_t found_ = 0;
  };

 private:
  static constexpr std::size_t kFew = 4;
  static constexpr std::size_t kStep = sizeof(std::uint64_t);
  static constexpr std::uint64_t kOnes = 0x0101010101010101U;
  static constexpr std::uint64_t kHighs = kOnes << 7;

  // A byte's place among those of a step, from the lowest bit that was found.
  [[nodiscard]] static constexpr std::size_t PlaceIn(std::uint64_t found) {
    return static_cast<std::size_t>(std::countr_zero(found)) / 8;
  }

  // The highest bit of each byte that is not zero, and lower bits of no meaning.
  [[nodiscard]] static constexpr std::uint64_t NotZeros(std::uint64_t word) {
    return ((word & ~kHighs) + ~kHighs) | word;
  }

  // Of up to kStep bytes: the highest bit of eight for each that is in the set, those of the first byte lowest.
  [[nodiscard]] std::uint64_t FoundIn(const char* bytes, std::size_t count) const {
    if (few_ && std::endian::native == std::endian::little) {
      std::uint64_t word = 0;
      if (count == kStep) {
        std::memcpy(&word, bytes, kStep);
        return Found(word);
      }
      // Bytes that the text does not have may be told as found, and are cut off.
      for (std::size_t place = 0; place < count; ++place) {
        word |= std::uint64_t{static_cast<unsigned char>(bytes[place])} << (8 * place);
      }
      return Found(word) & ((std::uint64_t{1} << (8 * count)) - 1);
    }
    std::uint64_t found = 0;
    for (std::size_t place = 0; place < count; ++place) {
      if (Has(bytes[place])) found |= std::uint64_t{0x80} << (8 * place);
    }
    return found;
  }
  [[nodiscard]] constexpr std::uint64_t Found(std::uint64_t word) const {
    return ~(NotZeros(word ^ repeated_[0]) & NotZeros(word ^ repeated_[1]) & NotZeros(word ^ repeated_[2]) &
             NotZeros(word ^ repeated_[3])) &
           kHighs;
  }

  std::array<bool, 256> has_{};
  std::array<std::uint64_t, kFew> repeated_{};  // each byte eight times
  bool few_;
};

}  // namespace tallybook
