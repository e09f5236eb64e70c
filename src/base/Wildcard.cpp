#include "base/Wildcard.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "base/Texts.h"

namespace tallybook {

namespace {

// The bytes of the character at `offset`.
std::size_t CharacterLength(std::string_view text, std::size_t offset) {
  std::size_t length = 1;
  while (offset + length < text.size() && (static_cast<std::uint8_t>(text[offset + length]) & 0xC0) == 0x80) ++length;
  return length;
}

// Goes through both once; where they part behind a `*`, the star takes one character more. Only the last star need ever
// be reconsidered, so that the work is bounded by the product of the lengths.
bool Matches(std::string_view name, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t in_pattern = 0;
  std::size_t star = std::string_view::npos;
  std::size_t star_took_up_to = 0;
  while (at < name.size()) {
    const std::size_t length = CharacterLength(name, at);
    if (in_pattern < pattern.size() && pattern[in_pattern] == '*') {
      star = in_pattern++;
      star_took_up_to = at;
    } else if (in_pattern < pattern.size() && pattern[in_pattern] == '?') {
      ++in_pattern;
      at += length;
    } else if (name.substr(at, length) == pattern.substr(std::min(in_pattern, pattern.size()), length)) {
      in_pattern += length;
      at += length;
    } else if (star != std::string_view::npos) {
      star_took_up_to += CharacterLength(name, star_took_up_to);
      at = star_took_up_to;
      in_pattern = star + 1;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', in_pattern) == std::string_view::npos;
}

}  // namespace

bool MatchesWildcard(const Text& name, const Text& pattern) {
  if (pattern.empty()) return false;
  return pattern == "*.*" || Matches(LowerCase(name), LowerCase(pattern));
}

bool ComesBefore(const Text& name, const Text& other) {
  const Text lower = LowerCase(name);
  const Text other_lower = LowerCase(other);
  return lower == other_lower ? name < other : lower < other_lower;
}

}  // namespace tallybook
