// Small helpers for texts: padding, case, blanks. Widths and positions count characters, not bytes.
#pragma once

#include <cstddef>
#include <string_view>

#include "base/Types.h"

namespace tallybook {

// The right-most `width` characters of `width` pad characters and the text; the left-most `width` characters of the
// text and `width` pad characters. So both also cut. A width below 0 is failure 5. `pad` is an ASCII character.
[[nodiscard]] Text PadLeft(const Text& text, char pad, Long width);
[[nodiscard]] Text PadRight(const Text& text, char pad, Long width);

// Capital letters at the start and behind a blank, a tab and each of ,.:!- and behind a "Mc"; all others small.
[[nodiscard]] Text ProperCase(const Text& text);
// Upper and lower case of the letters of the code page; other characters stay.
[[nodiscard]] Text UpperCase(const Text& text);
[[nodiscard]] Text LowerCase(const Text& text);

// Without the blanks at the end, or at both ends. Blanks only, no other white space.
[[nodiscard]] Text TrimRight(const Text& text);
[[nodiscard]] Text TrimBoth(const Text& text);

// A two-digit year as four: below 80 plus 2000, from 80 to 99 plus 1900; 100 and up unchanged.
[[nodiscard]] Integer FixYear(Integer year);

// The smaller of two; equals give `b`.
[[nodiscard]] Single SmallerOf(Single a, Single b);

// The bytes of the character that begins at `offset`, which must lie in the text.
[[nodiscard]] std::size_t CharacterLength(std::string_view text, std::size_t offset);

}  // namespace tallybook
