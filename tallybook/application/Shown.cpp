#include "tallybook/application/Shown.h"

#include <algorithm>
#include <cstdint>
#include <fmt/format.h>

namespace tallybook::application {

namespace {

// A character of a UTF-8 text: its code point and its bytes. No bytes where it is none.
struct Character {
  char32_t code = 0;
  std::size_t bytes = 0;
};

Character CharacterAt(const Text& text, std::size_t at) {
  const auto first = static_cast<unsigned char>(text[at]);
  if (first < 0x80) return {first, 1};
  // Bytes C0, C1 and F5 on begin no character (RFC 3629, section 4).
  const std::size_t bytes = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
  if (bytes == 0 || at + bytes > text.size()) return {};
  char32_t code = first & (0x7FU >> bytes);
  for (std::size_t i = 1; i < bytes; ++i) {
    const auto next = static_cast<unsigned char>(text[at + i]);
    if ((next & 0xC0U) != 0x80U) return {};
    code = (code << 6U) | (next & 0x3FU);
  }
  const bool is_too_long = (bytes == 3 && code < 0x800) || (bytes == 4 && code < 0x10000);
  const bool is_none = (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF;
  return is_too_long || is_none ? Character{} : Character{code, bytes};
}

// Controls, the line and paragraph separators, and what turns the direction of text round.
bool IsControl(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x200E && code <= 0x200F) ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

Text Escape(char32_t code) {
  if (code == '\n') return "\\n";
  if (code == '\t') return "\\t";
  if (code == '\r') return "\\r";
  const auto number = static_cast<std::uint32_t>(code);
  return code < 0x100 ? fmt::format("\\x{:02x}", number) : fmt::format("\\u{:04x}", number);
}

bool IsPlain(const Text& text) {
  return std::all_of(text.begin(), text.end(), [](char one) { return one >= 0x20 && one < 0x7F; });
}

}  // namespace

Text Shown(const Text& text) {
  if (IsPlain(text)) return text;
  Text shown;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = CharacterAt(text, at);
    if (character.bytes == 0) {
      shown += Escape(static_cast<unsigned char>(text[at]));
      ++at;
      continue;
    }
    shown += IsControl(character.code) ? Escape(character.code) : text.substr(at, character.bytes);
    at += character.bytes;
  }
  return shown;
}

Text OnOneLine(const Text& text) {
  Text line;
  for (const char character : text) {
    if (character != '\r') line += character == '\n' ? ' ' : character;
  }
  return Shown(line);
}

}  // namespace tallybook::application
