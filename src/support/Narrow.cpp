#include "support/Narrow.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "support/Failure.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

[[noreturn]] void FailOverflow(const std::string& value, int bits) {
  throw Failure(FailureNumber::kOverflow, value + " does not fit a whole number of " + std::to_string(bits) + " bits");
}

template <typename Number>
Number Whole(long long value) {
  if (value < std::numeric_limits<Number>::min() || value > std::numeric_limits<Number>::max())
    FailOverflow(std::to_string(value), std::numeric_limits<Number>::digits + 1);
  return static_cast<Number>(value);
}

// Rounds without asking the processor's rounding mode, which belongs to the application.
Double TiesToEven(Double value) {
  const Double below = std::floor(value);
  const Double rest = value - below;
  if (rest < 0.5) return below;
  if (rest > 0.5) return below + 1;
  return std::fmod(below, 2.0) == 0.0 ? below : below + 1;
}

template <typename Number>
Number Rounded(Double value) {
  const Double rounded = TiesToEven(value);
  // Asked this way round so that not-a-number, which is neither more nor less than anything, overflows too.
  const bool fits = rounded >= std::numeric_limits<Number>::min() && rounded <= std::numeric_limits<Number>::max();
  if (!fits) FailOverflow(std::to_string(value), std::numeric_limits<Number>::digits + 1);
  return static_cast<Number>(rounded);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The digits at the start of `rest`, moved to the end of `into`.
std::size_t TakeDigits(std::string_view& rest, std::string& into) {
  std::size_t count = 0;
  while (count < rest.size() && IsDigit(rest[count])) ++count;
  into.append(rest.substr(0, count));
  rest.remove_prefix(count);
  return count;
}

void TakeExponent(std::string_view rest, std::string& into) {
  if (rest.empty() || std::string_view("eEdD").find(rest.front()) == std::string_view::npos) return;
  rest.remove_prefix(1);
  std::string exponent = "e";
  if (!rest.empty() && (rest.front() == '+' || rest.front() == '-')) {
    exponent += rest.front();
    rest.remove_prefix(1);
  }
  if (TakeDigits(rest, exponent) > 0) into += exponent;
}

// What a plain number is when it lies outside the range of a double: 0 where it is too small, endless where too large.
// Told apart by the place of the first digit that counts.
Double BeyondRange(const std::string& number) {
  const std::size_t exponent_at = number.find('e');
  const std::string mantissa = number.substr(0, exponent_at);
  const std::size_t first = mantissa.find_first_of("123456789");
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const bool exponent_is_negative = exponent_at != std::string::npos && number[exponent_at + 1] == '-';
  const bool small = exponent_at == std::string::npos ? first > point : exponent_is_negative;
  return small ? 0.0 : std::numeric_limits<Double>::infinity();
}

Double ValueOf(const std::string& number) {
  Double value = 0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  return result.ec == std::errc::result_out_of_range ? BeyondRange(number) : value;
}

}  // namespace

Integer ToInteger(long long value) {
  return Whole<Integer>(value);
}
Long ToLong(long long value) {
  return Whole<Long>(value);
}

Integer RoundToInteger(Double value) {
  return Rounded<Integer>(value);
}
Long RoundToLong(Double value) {
  return Rounded<Long>(value);
}

Integer SumOf(Integer first, Integer second, Integer third) {
  return ToInteger(static_cast<long long>(first) + second + third);
}

Double LeadingNumber(const Text& text) {
  std::string_view rest = text;
  while (!rest.empty() && rest.front() == ' ') rest.remove_prefix(1);
  const bool negative = !rest.empty() && rest.front() == '-';
  if (!rest.empty() && (rest.front() == '-' || rest.front() == '+')) rest.remove_prefix(1);

  std::string number;
  std::size_t digits = TakeDigits(rest, number);
  if (!rest.empty() && rest.front() == '.') {
    number += '.';
    rest.remove_prefix(1);
    digits += TakeDigits(rest, number);
  }
  if (digits == 0) return 0;
  TakeExponent(rest, number);
  const Double value = ValueOf(number);
  return negative ? -value : value;
}

bool ToBoolean(const Text& text) {
  const Text word = LowerCase(TrimBoth(text));
  if (word == "true") return true;
  if (word == "false") return false;
  const bool has_sign = !word.empty() && (word.front() == '+' || word.front() == '-');
  const char* const begin = word.data() + (has_sign ? 1 : 0);
  const char* const end = word.data() + word.size();
  Double value = 0;
  const bool begins_as_number = begin != end && (IsDigit(*begin) || *begin == '.');
  const auto result = begins_as_number ? std::from_chars(begin, end, value)
                                       : std::from_chars_result{begin, std::errc::invalid_argument};
  if (result.ec != std::errc{} || result.ptr != end)
    throw Failure(FailureNumber::kTypeMismatch, "\"" + text + "\" is neither a truth value nor a number");
  return value != 0;
}

}  // namespace tallybook
