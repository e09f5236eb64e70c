// Figures as texts and back, in the form that a table shows: thousands grouped, a true minus sign, as many decimals as
// the column needs. Plain data; the marks come from the user's locale (LocaleStyle.h).
#pragma once

#include <optional>

#include "base/Types.h"

namespace tallybook::desktop {

struct NumberStyle {
  Text decimal = ".";
  Text group = ",";  // may be a blank of any width; empty: thousands are not grouped
  bool operator==(const NumberStyle&) const = default;
};

// No column shows more decimals. A figure that has more of them shows them all while it is typed.
inline constexpr int kMostDecimals = 6;
// What a table shows for zero: an empty day reads as empty.
inline constexpr const char* kZeroText = "\u2013";

// How many decimals show the figure whole, 0 to kMostDecimals. What adding up leaves in the last binary digits is none.
[[nodiscard]] int DecimalsNeeded(Double value);

// "−1,234.50", and kZeroText for what shows as zero because it is zero.
[[nodiscard]] Text NumberText(Double value, int decimals, const NumberStyle& style);
// The same for other programs: a plain hyphen as minus, and zero as a number.
[[nodiscard]] Text CopiedText(Double value, int decimals, const NumberStyle& style);
// All digits, ungrouped, for changing them: the shortest text that reads back to the same figure; empty for zero.
[[nodiscard]] Text TypedText(Double value, const NumberStyle& style);

// What was typed or pasted, read.
struct ReadFigure {
  std::optional<Double> value;  // none: it cannot be read
  Text why;                     // in words then, with what was typed
};

// Nothing, and a dash alone, are zero. Takes any dash as minus, before or behind the digits, brackets for a negative
// amount, a power of ten ("1.5E+03"), and thousands grouped in the style's way, by blanks or by apostrophes, where they
// stand rightly. A mark that the style gives another meaning is never guessed at: in a locale of decimal commas "12.5"
// is refused, because nobody would see that "1.234" was taken for a thousand.
[[nodiscard]] ReadFigure ParseFigure(const Text& typed, const NumberStyle& style);

}  // namespace tallybook::desktop
