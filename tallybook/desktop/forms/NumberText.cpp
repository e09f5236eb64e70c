#include "tallybook/desktop/forms/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

namespace tallybook::desktop {

namespace {

constexpr const char* kMinus = "\u2212";
// From here on a double has no room for a decimal; the digits would pretend to be exact.
constexpr Double kFirstTooLong = 1e15;
// What adding up some thousand figures of two decimals leaves behind them is far below this share of the sum.
constexpr Double kNoise = 1e-11;

void ReplaceAll(Text& text, const Text& from, const Text& to) {
  if (from.empty()) return;
  for (auto at = text.find(from); at != Text::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
}

Text ShortestDigits(Double value) {
  std::array<char, 400> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value).ptr;
  return {text.begin(), end};
}

Text FixedDigits(Double value, int decimals) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals).ptr;
  return {text.begin(), end};
}

Text Grouped(const Text& digits, const Text& group) {
  Text grouped;
  for (std::size_t index = 0; index < digits.size(); ++index) {
    if (index > 0 && (digits.size() - index) % 3 == 0) grouped += group;
    grouped += digits[index];
  }
  return grouped;
}

// Without a sign.
Text Magnitude(Double value, int decimals, const NumberStyle& style) {
  Text digits = value < kFirstTooLong ? FixedDigits(value, decimals) : ShortestDigits(value);
  const bool has_exponent = digits.find('e') != Text::npos;
  const auto point = digits.find('.');
  const Text whole = digits.substr(0, point);
  const Text rest = point == Text::npos ? "" : style.decimal + digits.substr(point + 1);
  return (has_exponent ? whole : Grouped(whole, style.group)) + rest;
}

// --- Reading ---------------------------------------------------------------------------------------------------------

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

bool IsBlank(char character) {
  return character == ' ' || character == '\t' || character == '\r' || character == '\n';
}

// Typed dashes, blanks and apostrophes of any kind as plain ones.
Text PlainMarks(Text text) {
  for (const char* dash : {"\u2212", "\u2013", "\u2012", "\u2014", "\u2010", "\u2011"}) ReplaceAll(text, dash, "-");
  for (const char* blank : {"\u00a0", "\u202f", "\u2009", "\u2007"}) ReplaceAll(text, blank, " ");
  ReplaceAll(text, "\u2019", "'");
  while (!text.empty() && IsBlank(text.back())) text.pop_back();
  while (!text.empty() && IsBlank(text.front())) text.erase(text.begin());
  return text;
}

Text WordOf(const Text& mark) {
  if (mark == ".") return "a point";
  if (mark == ",") return "a comma";
  if (mark == "'") return "an apostrophe";
  if (mark == " ") return "a blank";
  return "\"" + mark + "\"";
}

class FigureParser {
 public:
  FigureParser(const Text& typed, const NumberStyle& style)
      : typed_(typed), decimal_(style.decimal), group_(PlainGroup(style.group)), text_(PlainMarks(typed)) {}

  ReadFigure Read() {
    TakeSign();
    if (text_.empty() || !why_.empty()) return why_.empty() ? ReadFigure{0.0, {}} : Refused(why_);
    SplitExponent();
    SplitDecimals();
    Ungroup();
    if (why_.empty() && whole_.empty() && decimals_.empty()) Refuse("it has no digits");
    return why_.empty() ? Value() : Refused(why_);
  }

 private:
  static Text PlainGroup(const Text& group) {
    Text plain = group;
    for (const char* blank : {"\u00a0", "\u202f", "\u2009", "\u2007"}) ReplaceAll(plain, blank, " ");
    ReplaceAll(plain, "\u2019", "'");
    return plain;
  }

  void Refuse(const Text& why) {
    if (why_.empty()) why_ = why;
  }
  [[nodiscard]] ReadFigure Refused(const Text& why) const {
    return {std::nullopt, "\"" + typed_ + "\" is no figure: " + why};
  }

  void TakeSign() {
    int signs = 0;
    const auto take = [&](bool at_front) {
      negative_ = negative_ || (at_front ? text_.front() : text_.back()) == '-';
      at_front ? static_cast<void>(text_.erase(text_.begin())) : text_.pop_back();
      text_ = PlainMarks(text_);
      ++signs;
    };
    if (text_.size() > 1 && text_.front() == '(' && text_.back() == ')') {
      text_ = PlainMarks(text_.substr(1, text_.size() - 2));
      negative_ = true;
      ++signs;
    }
    while (!text_.empty() && (text_.front() == '-' || text_.front() == '+')) take(true);
    while (!text_.empty() && text_.back() == '-') take(false);
    if (signs > 1) Refuse("it has more than one sign");
  }

  void SplitExponent() {
    const auto at = text_.find_first_of("eE");
    if (at == Text::npos || at == 0) return;
    exponent_ = text_.substr(at + 1);
    const std::size_t first_digit = exponent_.starts_with('-') || exponent_.starts_with('+') ? 1 : 0;
    const bool is_power =
        exponent_.size() > first_digit && exponent_.size() < first_digit + 4 &&
        std::all_of(exponent_.begin() + static_cast<std::ptrdiff_t>(first_digit), exponent_.end(), IsDigit);
    if (!is_power) {
      exponent_.clear();
      return;  // told as a letter among the digits
    }
    if (exponent_.front() == '+') exponent_.erase(exponent_.begin());
    text_.resize(at);
  }

  void SplitDecimals() {
    const auto at = text_.find(decimal_);
    whole_ = text_.substr(0, at);
    if (at == Text::npos) return;
    decimals_ = text_.substr(at + decimal_.size());
    if (decimals_.find(decimal_) != Text::npos) Refuse("the decimals begin twice");
    for (const char character : decimals_) {
      if (!IsDigit(character)) RefuseCharacter(character, decimals_);
    }
  }

  // The thousands' marks, which must all be the same and stand where such marks stand. Groups of two are taken before
  // the last one: some countries write so.
  void Ungroup() {
    Text mark;
    std::vector<Text> groups(1);
    for (const char character : whole_) {
      if (IsDigit(character)) {
        groups.back() += character;
        continue;
      }
      const Text found(1, character);
      const bool groups_here = found == group_ || found == " " || found == "'";
      if (!groups_here) return RefuseCharacter(character, whole_);
      if (!mark.empty() && mark != found) return Refuse("its thousands are grouped by two kinds of marks");
      mark = found;
      groups.emplace_back();
    }
    if (groups.size() > 1 && !StandRightly(groups)) {
      const Text advice =
          mark == "." || mark == "," ? "; the decimals stand behind " + WordOf(decimal_) + " here" : Text();
      return Refuse(WordOf(mark) + " groups thousands and does not stand at one" + advice);
    }
    whole_.clear();
    for (const Text& digits : groups) whole_ += digits;
  }

  static bool StandRightly(const std::vector<Text>& groups) {
    if (groups.front().empty() || groups.front().size() > 3 || groups.back().size() != 3) return false;
    return std::all_of(groups.begin() + 1, groups.end() - 1,
                       [](const Text& digits) { return digits.size() == 3 || digits.size() == 2; });
  }

  void RefuseCharacter(char character, const Text& where) {
    const bool other_mark = character == '.' || character == ',';
    if (other_mark) return Refuse("the decimals stand behind " + WordOf(decimal_) + " here");
    if (character == '%') return Refuse("write a share as a plain number");
    const auto at = where.find(character);
    std::size_t length = 1;
    while (at + length < where.size() && (static_cast<unsigned char>(where[at + length]) & 0xC0U) == 0x80U) ++length;
    Refuse("\"" + where.substr(at, length) + "\" is no part of a number");
  }

  [[nodiscard]] ReadFigure Value() const {
    const Text digits = (whole_.empty() ? "0" : whole_) + (decimals_.empty() ? "" : "." + decimals_) +
                        (exponent_.empty() ? "" : "e" + exponent_);
    Double value = 0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (result.ec == std::errc::result_out_of_range || !std::isfinite(value)) {
      return Refused("it is larger, or nearer to zero, than a book can hold");
    }
    return {negative_ ? 0.0 - value : value, {}};
  }

  Text typed_;
  Text decimal_;
  Text group_;
  Text text_;
  bool negative_ = false;
  Text whole_;
  Text decimals_;
  Text exponent_;
  Text why_;
};

}  // namespace

int DecimalsNeeded(Double value) {
  const Double size = std::abs(value);
  if (!(size < kFirstTooLong)) return 0;
  Double power = 1;
  for (int decimals = 0; decimals < kMostDecimals; ++decimals, power *= 10) {
    if (std::abs(std::round(size * power) / power - size) <= size * kNoise) return decimals;
  }
  return kMostDecimals;
}

Text NumberText(Double value, int decimals, const NumberStyle& style) {
  if (value == 0) return kZeroText;
  return (value < 0 ? kMinus : "") + Magnitude(std::abs(value), decimals, style);
}

Text CopiedText(Double value, int decimals, const NumberStyle& style) {
  return (value < 0 ? "-" : "") + Magnitude(std::abs(value), decimals, style);
}

Text TypedText(Double value, const NumberStyle& style) {
  if (value == 0) return "";
  Text digits = ShortestDigits(value);
  ReplaceAll(digits, ".", style.decimal);
  return digits;
}

ReadFigure ParseFigure(const Text& typed, const NumberStyle& style) {
  return FigureParser(typed, style).Read();
}

}  // namespace tallybook::desktop
