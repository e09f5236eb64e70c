// Checked conversions between number types: the one place where narrowing happens. A value that does not fit raises
// failure 6 (overflow) that names the value.
#pragma once

#include "support/Types.h"

namespace tallybook {

// A whole number as 16 or 32 bits.
[[nodiscard]] Integer ToInteger(long long value);
[[nodiscard]] Long ToLong(long long value);

// A fraction rounded to a whole number; ties go to the even neighbour. Not-a-number is an overflow.
[[nodiscard]] Integer RoundToInteger(Double value);
[[nodiscard]] Long RoundToLong(Double value);

// The sum of three 16-bit numbers, in 16 bits.
[[nodiscard]] Integer SumOf(Integer first, Integer second, Integer third);

// The number that `text` begins with: blanks are passed over, then sign, digits, point and exponent (e, E, d or D) are
// read as far as they make a number; 0 where there is none. Never fails.
[[nodiscard]] Double LeadingNumber(const Text& text);

// A truth value from text: "True" and "False" in any case, or a number (zero is false). Anything else is failure 13.
[[nodiscard]] bool ToBoolean(const Text& text);

}  // namespace tallybook
