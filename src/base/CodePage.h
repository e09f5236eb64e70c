// The 8-bit code page of files on disk, Windows-1252, and the way between it and UTF-8. The five bytes that have no
// character of their own (0x81, 0x8D, 0x8F, 0x90, 0x9D) keep the code point of the same value, so that every byte
// survives a round trip. Public standard: WHATWG Encoding, "windows-1252".
#pragma once

#include <string>
#include <string_view>

#include "base/Types.h"

namespace tallybook {

// Bytes of a file as text in memory. Never fails.
[[nodiscard]] Text FromCodePage(std::string_view bytes);

// Text in memory as bytes of a file: one byte for each character. A character that the code page lacks, or bytes that
// are not valid UTF-8, are failure 5, told with the text; nothing is ever replaced in silence.
[[nodiscard]] std::string ToCodePage(std::string_view text);

// Text in memory as units of UTF-16, and back. Bytes that are not valid UTF-8 are failure 5; half of a pair of units is
// the replacement character U+FFFD.
[[nodiscard]] std::u16string ToUtf16(std::string_view text);
[[nodiscard]] Text FromUtf16(std::u16string_view units);

// How many characters a UTF-8 text has.
[[nodiscard]] Long CharacterCount(std::string_view text);

// True for bytes below 0x80 only: the same text in every encoding known here.
[[nodiscard]] bool IsAscii(std::string_view bytes);

// True for bytes that are valid UTF-8 throughout (RFC 3629: no overlong forms, no surrogates).
[[nodiscard]] bool IsUtf8(std::string_view bytes);

}  // namespace tallybook
