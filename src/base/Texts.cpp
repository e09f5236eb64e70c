#include "base/Texts.h"

#include <cstdint>
#include <string>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook {

namespace {

// The letters U+00C0 to U+00FE of the code page come in pairs whose code points differ by 32. In UTF-8 all of them are
// led by the byte 0xC3; the signs for multiplication and division (0xD7, 0xF7) stand among them and are no letters.
constexpr std::uint8_t kLatinLead = 0xC3;
constexpr std::uint8_t kLatinCaseBit = 0x20;

std::uint8_t ByteAt(std::string_view text, std::size_t offset) {
  return static_cast<std::uint8_t>(text[offset]);
}

bool IsLatin(std::string_view letter) {
  return letter.size() == 2 && ByteAt(letter, 0) == kLatinLead;
}

// The character behind the lead byte of a Latin letter, with its case changed.
Text OtherCase(std::string_view letter) {
  return {letter[0], static_cast<char>(ByteAt(letter, 1) ^ kLatinCaseBit)};
}

bool IsLatinCapital(std::string_view letter) {
  return IsLatin(letter) && ByteAt(letter, 1) <= 0x9E && ByteAt(letter, 1) != 0x97;
}
bool IsLatinSmall(std::string_view letter) {
  return IsLatin(letter) && ByteAt(letter, 1) >= 0xA0 && ByteAt(letter, 1) <= 0xBE && ByteAt(letter, 1) != 0xB7;
}

struct LetterPair {
  std::string_view capital;
  std::string_view small;
};
constexpr LetterPair kOtherPairs[] = {
    {"\xC5\xA0", "\xC5\xA1"},  // S with caron
    {"\xC5\x92", "\xC5\x93"},  // OE
    {"\xC5\xBD", "\xC5\xBE"},  // Z with caron
    {"\xC5\xB8", "\xC3\xBF"},  // Y with diaeresis
};

Text CapitalOf(std::string_view letter) {
  if (letter.size() == 1 && letter[0] >= 'a' && letter[0] <= 'z')
    return Text(1, static_cast<char>(letter[0] - 'a' + 'A'));
  for (const LetterPair& pair : kOtherPairs)
    if (pair.small == letter) return Text(pair.capital);
  if (IsLatinSmall(letter)) return OtherCase(letter);
  return Text(letter);
}

Text SmallOf(std::string_view letter) {
  if (letter.size() == 1 && letter[0] >= 'A' && letter[0] <= 'Z')
    return Text(1, static_cast<char>(letter[0] - 'A' + 'a'));
  for (const LetterPair& pair : kOtherPairs)
    if (pair.capital == letter) return Text(pair.small);
  if (IsLatinCapital(letter)) return OtherCase(letter);
  return Text(letter);
}

template <typename Change>
Text EachLetter(const Text& text, Change change) {
  Text changed;
  changed.reserve(text.size());
  for (std::size_t offset = 0; offset < text.size();) {
    const std::size_t length = CharacterLength(text, offset);
    changed += change(std::string_view(text).substr(offset, length));
    offset += length;
  }
  return changed;
}

// Where the character at `position` (from 0) begins, in bytes.
std::size_t OffsetOf(const Text& text, Long position) {
  std::size_t offset = 0;
  for (Long i = 0; i < position && offset < text.size(); ++i) offset += CharacterLength(text, offset);
  return offset;
}

std::size_t CheckedWidth(Long width) {
  if (width < 0) throw Failure(FailureNumber::kInvalidArgument, "A text cannot be " + std::to_string(width) + " wide");
  return static_cast<std::size_t>(width);
}

}  // namespace

std::size_t CharacterLength(std::string_view text, std::size_t offset) {
  std::size_t length = 1;
  while (offset + length < text.size() && (ByteAt(text, offset + length) & 0xC0) == 0x80) ++length;
  return length;
}

Text PadLeft(const Text& text, char pad, Long width) {
  const Text padded = Text(CheckedWidth(width), pad) + text;
  return padded.substr(OffsetOf(padded, CharacterCount(padded) - width));
}

Text PadRight(const Text& text, char pad, Long width) {
  const Text padded = text + Text(CheckedWidth(width), pad);
  return padded.substr(0, OffsetOf(padded, width));
}

Text ProperCase(const Text& text) {
  static constexpr std::string_view kCapitalFollows = " ,.:!-\t";
  bool capital_next = true;
  Text last;  // the character before, as it was put
  const auto put = [&](std::string_view letter) -> Text {
    Text changed(letter);
    if (kCapitalFollows.find(letter) != std::string_view::npos) {
      capital_next = true;
    } else if (CapitalOf(letter) != letter) {
      if (capital_next) {
        changed = CapitalOf(letter);
        capital_next = false;
      } else if (letter == "c" && last == "M") {
        capital_next = true;
      }
    }
    last = changed;
    return changed;
  };
  return EachLetter(LowerCase(text), put);
}

Text UpperCase(const Text& text) {
  return EachLetter(text, CapitalOf);
}
Text LowerCase(const Text& text) {
  return EachLetter(text, SmallOf);
}

Text TrimRight(const Text& text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

Text TrimBoth(const Text& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == Text::npos ? Text() : TrimRight(text.substr(first));
}

Integer FixYear(Integer year) {
  if (year < 80) return ToInteger(year + 2000LL);
  if (year < 100) return ToInteger(year + 1900LL);
  return year;
}

Single SmallerOf(Single a, Single b) {
  return a < b ? a : b;
}

}  // namespace tallybook
