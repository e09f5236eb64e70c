#include "base/CodePage.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook {

namespace {

// The characters of bytes 0x80 to 0x9F; all other bytes are their own code points.
constexpr std::array<char32_t, 32> kUpperControls{0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                  0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                  0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                  0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

constexpr char32_t kNoCharacter = 0xFFFFFFFF;

std::uint8_t ByteAt(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint8_t>(bytes[offset]);
}

// How many bytes from the start are ASCII. Eight are looked at together: most files are ASCII throughout.
std::size_t AsciiLength(std::string_view bytes) {
  constexpr std::uint64_t kHighBits = 0x8080808080808080U;
  std::size_t length = 0;
  for (; bytes.size() - length >= sizeof(kHighBits); length += sizeof(kHighBits)) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes.data() + length, sizeof(word));
    if ((word & kHighBits) != 0) break;
  }
  while (length < bytes.size() && ByteAt(bytes, length) < 0x80) ++length;
  return length;
}

void AppendUtf8(char32_t character, Text& text) {
  const auto put = [&](char32_t value) { text += static_cast<char>(static_cast<std::uint8_t>(value)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | (character >> 6));
    put(0x80 | (character & 0x3F));
  } else if (character < 0x10000) {
    put(0xE0 | (character >> 12));
    put(0x80 | ((character >> 6) & 0x3F));
    put(0x80 | (character & 0x3F));
  } else {
    put(0xF0 | (character >> 18));
    put(0x80 | ((character >> 12) & 0x3F));
    put(0x80 | ((character >> 6) & 0x3F));
    put(0x80 | (character & 0x3F));
  }
}

// Takes the character at `offset` and moves on behind it; kNoCharacter, with `offset` where it was, for bytes that are
// not valid UTF-8 (RFC 3629 section 4).
char32_t TakeCharacter(std::string_view text, std::size_t& offset) {
  const std::uint8_t lead = ByteAt(text, offset);
  if (lead < 0x80) {
    ++offset;
    return lead;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() - offset < length) return kNoCharacter;
  char32_t character = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const std::uint8_t next = ByteAt(text, offset + i);
    if ((next & 0xC0) != 0x80) return kNoCharacter;
    character = (character << 6) | (next & 0x3FU);
  }
  const bool overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  if (overlong || surrogate || character > 0x10FFFF) return kNoCharacter;
  offset += length;
  return character;
}

// Characters above U+FFFF are pairs of units in UTF-16: the higher ten bits behind the first mark, the lower behind the
// second (RFC 2781, section 2).
constexpr char32_t kFirstOfPairs = 0x10000;
constexpr char16_t kHighMark = 0xD800;
constexpr char16_t kLowMark = 0xDC00;
constexpr char16_t kMarkMask = 0xFC00;
constexpr char32_t kHalfMask = 0x3FF;
constexpr char32_t kReplacement = 0xFFFD;

// Takes the character at `index` and moves on behind it.
char32_t TakeUnits(std::u16string_view units, std::size_t& index) {
  const char16_t unit = units[index++];
  const int mark = unit & kMarkMask;
  if (mark != kHighMark && mark != kLowMark) return unit;
  if (mark == kLowMark || index == units.size() || (units[index] & kMarkMask) != kLowMark) return kReplacement;
  return kFirstOfPairs + ((unit & kHalfMask) << 10) + (units[index++] & kHalfMask);
}

// The byte of a character, or -1 where the code page lacks it.
int ByteOf(char32_t character) {
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) return static_cast<int>(character);
  const auto found = std::find(kUpperControls.begin(), kUpperControls.end(), character);
  return found == kUpperControls.end() ? -1 : 0x80 + static_cast<int>(found - kUpperControls.begin());
}

// The text as a message may show it: bytes that are no UTF-8 in hexadecimal.
Text Shown(std::string_view text) {
  Text shown;
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t start = offset;
    if (TakeCharacter(text, offset) != kNoCharacter) {
      shown.append(text.substr(start, offset - start));
      continue;
    }
    std::array<char, 8> hex{};
    std::snprintf(hex.data(), hex.size(), "\\x%02X", ByteAt(text, offset));
    shown += hex.data();
    ++offset;
  }
  return shown;
}

[[noreturn]] void FailWithText(std::string_view text, std::size_t offset, char32_t character) {
  std::array<char, 16> code{};
  std::snprintf(code.data(), code.size(), "U+%04X", static_cast<unsigned>(character));
  const Text place =
      "character " + std::to_string(CharacterCount(text.substr(0, offset)) + 1) + " of \"" + Shown(text) + "\"";
  throw Failure(FailureNumber::kInvalidArgument,
                character == kNoCharacter
                    ? "Not valid UTF-8: " + place
                    : Text(code.data()) + " is not in the files' code page (Windows-1252): " + place);
}

}  // namespace

Text FromCodePage(std::string_view bytes) {
  Text text(bytes.substr(0, AsciiLength(bytes)));
  if (text.size() == bytes.size()) return text;
  text.reserve(bytes.size() * 2);
  for (std::size_t i = text.size(); i < bytes.size(); ++i) {
    const std::uint8_t byte = ByteAt(bytes, i);
    AppendUtf8(byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80U] : byte, text);
  }
  return text;
}

std::string ToCodePage(std::string_view text) {
  std::string bytes(text.substr(0, AsciiLength(text)));
  for (std::size_t offset = bytes.size(); offset < text.size();) {
    const std::size_t start = offset;
    const char32_t character = TakeCharacter(text, offset);
    const int byte = ByteOf(character);
    if (byte < 0) FailWithText(text, start, character);
    bytes += static_cast<char>(static_cast<std::uint8_t>(byte));
  }
  return bytes;
}

std::u16string ToUtf16(std::string_view text) {
  std::u16string units;
  units.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t start = offset;
    const char32_t character = TakeCharacter(text, offset);
    if (character == kNoCharacter) FailWithText(text, start, character);
    if (character < kFirstOfPairs) {
      units += static_cast<char16_t>(character);
    } else {
      units += static_cast<char16_t>(kHighMark | ((character - kFirstOfPairs) >> 10));
      units += static_cast<char16_t>(kLowMark | (character & kHalfMask));
    }
  }
  return units;
}

Text FromUtf16(std::u16string_view units) {
  Text text;
  for (std::size_t index = 0; index < units.size();) AppendUtf8(TakeUnits(units, index), text);
  return text;
}

Long CharacterCount(std::string_view text) {
  return ToLong(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<std::uint8_t>(c) & 0xC0) != 0x80; }));
}

bool IsAscii(std::string_view bytes) {
  return AsciiLength(bytes) == bytes.size();
}

bool IsUtf8(std::string_view bytes) {
  for (std::size_t offset = AsciiLength(bytes); offset < bytes.size();)
    if (TakeCharacter(bytes, offset) == kNoCharacter) return false;
  return true;
}

}  // namespace tallybook
