#include "base/Narrow.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

#include "base/Failure.h"
#include "base/Texts.h"

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
  // Whole numbers, by far the most, need no rounding.
  if (value >= std::numeric_limits<Number>::min() && value <= std::numeric_limits<Number>::max()) {
    const auto whole = static_cast<Number>(value);
    if (static_cast<Double>(whole) == value) return whole;
  }
  const Double rounded = TiesToEven(value);
  // Asked this way round so that not-a-number, which is neither more nor less than anything, overflows too.
  const bool fits = rounded >= std::numeric_limits<Number>::min() && rounded <= std::numeric_limits<Number>::max();
  if (!fits) FailOverflow(std::to_string(value), std::numeric_limits<Number>::digits + 1);
  return static_cast<Number>(rounded);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// What a plain number is when it lies outside the range of a double: 0 where it is too small, endless where too large.
// Told apart by the place of the first digit that counts.
Double BeyondRange(std::string_view number) {
  const std::size_t exponent_at = number.find_first_of("eE");
  const std::string_view mantissa = number.substr(0, exponent_at);
  const std::size_t first = mantissa.find_first_of("123456789");
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const bool exponent_is_negative = exponent_at != std::string_view::npos && number[exponent_at + 1] == '-';
  const bool small = exponent_at == std::string_view::npos ? first > point : exponent_is_negative;
  return small ? 0.0 : std::numeric_limits<Double>::infinity();
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool BeginsNumber(std::string_view text) {
  return !text.empty() && (IsDigit(text.front()) || text.front() == '.');
}

// The same for a short plain decimal, the form of nearly every figure: up to 15 digits and no exponent. Digits and
// power of ten are then exact as doubles, so that one division gives the nearest double, as the general way does.
bool ShortDecimal(std::string_view text, Double& value, std::size_t& length) {
  constexpr std::size_t kExactDigits = 15;
  static constexpr std::array<Double, kExactDigits + 1> kPowers = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                                   1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  std::uint64_t digits = 0;  // of more than are exact, some number
  const auto take_digits = [&](std::size_t from) {
    std::size_t at = from;
    for (; at < text.size() && IsDigit(text[at]); ++at) digits = digits * 10 + static_cast<unsigned>(text[at] - '0');
    return at;
  };
  const std::size_t whole = take_digits(0);
  const bool has_point = whole < text.size() && text[whole] == '.';
  const std::size_t end = has_point ? take_digits(whole + 1) : whole;
  const std::size_t decimals = has_point ? end - whole - 1 : 0;
  const std::size_t count = whole + decimals;
  const bool exponent_may_follow = end < text.size() && (text[end] == 'e' || text[end] == 'E');
  if (count == 0 || count > kExactDigits || exponent_may_follow) return false;
  value = static_cast<Double>(digits);
  if (decimals != 0) value /= kPowers[decimals];
  length = end;
  return true;
}

// The number without a sign that `text` begins with; false where it begins with none. `length` is how much of the text
// it takes.
bool PlainNumber(std::string_view text, Double& value, std::size_t& length) {
  if (!BeginsNumber(text)) return false;
  if (ShortDecimal(text, value, length)) return true;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::invalid_argument) return false;
  length = static_cast<std::size_t>(result.ptr - text.data());
  if (result.ec == std::errc::result_out_of_range) value = BeyondRange(text.substr(0, length));
  return true;
}

// A whole number in its plainest form, digits alone and few enough for 32 bits, which nearly all are. False for any
// other text.
bool FewDigits(std::string_view text, Long& value) {
  constexpr std::size_t kMost = 9;
  if (text.empty() || text.size() > kMost) return false;
  value = 0;
  for (const char digit : text) {
    if (!IsDigit(digit)) return false;
    value = value * 10 + (digit - '0');
  }
  return true;
}

// Takes a sign off the front; true for a minus.
bool TakeSign(std::string_view& text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+')) text.remove_prefix(1);
  return negative;
}

std::string_view WithoutOuterBlanks(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
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

Double LeadingNumber(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  const bool negative = TakeSign(text);
  Double value = 0;
  std::size_t length = 0;
  if (!PlainNumber(text, value, length)) return 0;
  return negative ? -value : value;
}

Long LeadingLong(std::string_view text) {
  Long whole = 0;
  return FewDigits(text, whole) ? whole : RoundToLong(LeadingNumber(text));
}

Double WholeNumberText(std::string_view text) {
  Double value = 0;
  std::size_t length = 0;
  if (ShortDecimal(text, value, length) && length == text.size()) return value;
  std::string_view rest = WithoutOuterBlanks(text);
  const bool negative = TakeSign(rest);
  if (!PlainNumber(rest, value, length) || length != rest.size())
    throw Failure(FailureNumber::kTypeMismatch, "\"" + Text(text) + "\" is not a number");
  if (!std::isfinite(value)) throw Failure(FailureNumber::kOverflow, Text(text) + " is too large for a number");
  return negative ? -value : value;
}

Long WholeLongText(std::string_view text) {
  Long whole = 0;
  if (FewDigits(text, whole)) return whole;
  const Double value = WholeNumberText(text);
  if (value != std::trunc(value))
    throw Failure(FailureNumber::kTypeMismatch, "\"" + Text(text) + "\" is not a whole number");
  return RoundToLong(value);
}

bool ToBoolean(const Text& text) {
  const Text word = LowerCase(TrimBoth(text));
  if (word == "true") return true;
  if (word == "false") return false;
  std::string_view number = word;
  TakeSign(number);
  Double value = 0;
  std::size_t length = 0;
  if (!PlainNumber(number, value, length) || length != number.size())
    throw Failure(FailureNumber::kTypeMismatch, "\"" + text + "\" is neither a truth value nor a number");
  return value != 0;
}

}  // namespace tallybook
