// Checked conversions between number types: the one place where narrowing happens. A value that does not fit raises
// failure 6 (overflow) that names the value.
#pragma once

#include <string_view>

#include "base/Types.h"

namespace tallybook {

// A whole number as 16 or 32 bits.
[[nodiscard]] Integer ToInteger(long long value);
[[nodiscard]] Long ToLong(long long value);

// A fraction rounded to a whole number; ties go to the even neighbour. Not-a-number is an overflow.
[[nodiscard]] Integer RoundToInteger(Double value);
[[nodiscard]] Long RoundToLong(Double value);

// The sum of three 16-bit numbers, in 16 bits.
[[nodiscard]] Integer SumOf(Integer first, Integer second, Integer third);

// The number that `text` begins with: blanks, tabs and line ends are passed over, then sign, digits, point and exponent
// (e or E) are read as far as they make a number; 0 where there is none. Never fails; a number beyond a double's range
// is endless, or 0 where it is too small.
[[nodiscard]] Double LeadingNumber(std::string_view text);

// The same, rounded to a whole number; failure 6 where it does not fit 32 bits.
[[nodiscard]] Long LeadingLong(std::string_view text);

// A text that is a number as a whole, in the same forms; blanks around it are allowed and nothing else. Anything else
// is failure 13, told with the text; a number beyond the range is failure 6.
[[nodiscard]] Double WholeNumberText(std::string_view text);
// The same for a whole number of 32 bits: a fraction is failure 13, a number beyond 32 bits failure 6.
[[nodiscard]] Long WholeLongText(std::string_view text);

// A truth value from text: "True" and "False" in any case, or a number (zero is false). Anything else is failure 13.
[[nodiscard]] bool ToBoolean(const Text& text);

}  // namespace tallybook
