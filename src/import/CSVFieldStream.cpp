#include "import/CSVFieldStream.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "base/ByteSet.h"
#include "base/Failure.h"
#include "base/Narrow.h"

namespace tallybook {

namespace {

constexpr std::size_t kBlock = 64 * 1024;

constexpr ByteSet kEndsField(",\r\n");  // that has no quotes
constexpr ByteSet kEndsQuoted("\"");

std::string_view WithoutTrailingBlanks(std::string_view field) {
  while (!field.empty() && field.back() == ' ') field.remove_suffix(1);
  return field;
}

// The first and the last so many bytes of a field that has as many, those bits of them that letters have and nothing
// that a plain number is made of.
template <typename Word>
bool HasLettersAtItsEnds(std::string_view field) {
  constexpr Word kBitsOfLetters = static_cast<Word>(0xC0C0C0C0C0C0C0C0U);
  Word first = 0;
  Word last = 0;
  std::memcpy(&first, field.data(), sizeof first);
  std::memcpy(&last, field.data() + field.size() - sizeof last, sizeof last);
  return ((first | last) & kBitsOfLetters) != 0;
}

// False for nearly every field, at the cost of a few instructions: no number of fewer characters than 1e309 is beyond a
// double's range, and no short one without the letter of an exponent.
bool MayBeTooLarge(std::string_view field) {
  if (field.size() < std::string_view("1e309").size()) return false;
  if (field.size() <= 2 * sizeof(std::uint32_t)) return HasLettersAtItsEnds<std::uint32_t>(field);
  if (field.size() <= 2 * sizeof(std::uint64_t)) return HasLettersAtItsEnds<std::uint64_t>(field);
  return true;
}

}  // namespace

CSVFieldStream::CSVFieldStream(FileStream& source, TextEncoding wanted)
    : source_(source), encoding_(source, wanted), size_(source.Size()) {
  Rewind();
}

void CSVFieldStream::Rewind() {
  source_.Seek(encoding_.Start());
  end_ = 0;
  buffer_start_ = encoding_.Start();
  next_ = 0;
}

bool CSVFieldStream::ReadMore() {
  end_ -= next_;
  std::memmove(buffer_.data(), buffer_.data() + next_, end_);
  buffer_start_ += static_cast<long long>(next_);
  next_ = 0;
  // A field longer than the buffer doubles it, so that its cost stays in step with its length.
  if (end_ + kBlock > buffer_.size()) buffer_.resize(std::max(end_ + kBlock, 2 * buffer_.size()));
  const std::size_t count = source_.ReadSome(std::as_writable_bytes(std::span(buffer_).subspan(end_)));
  end_ += count;
  return count > 0;
}

// The place, counted from the position, of the closing quote or of the separator at or behind `offset`; the end of the
// file where there is none.
std::size_t CSVFieldStream::FindFrom(std::size_t offset, bool quote) {
  const ByteSet& ends = quote ? kEndsQuoted : kEndsField;
  for (;;) {
    offset = ends.FindIn(std::string_view(buffer_).substr(next_, end_ - next_), offset);
    if (next_ + offset < end_ || !ReadMore()) return offset;
  }
}

void CSVFieldStream::SkipBlanks() {
  while (Peek(0) == ' ') ++next_;
}

std::size_t CSVFieldStream::SeparatorAt(std::size_t offset) {
  const int c = Peek(offset);
  if (c == '\r') return Peek(offset + 1) == '\n' ? 2 : 1;
  return c == ',' || c == '\n' ? 1 : 0;
}

std::string_view CSVFieldStream::Next() {
  std::string_view field;
  return TakeFromBuffer(field) ? field : TakeSlowly();
}

// Nearly every field: no quote, no blank in front, and the buffer holds it with its whole separator, which may be two
// characters.
bool CSVFieldStream::TakeFromBuffer(std::string_view& field) {
  const std::string_view held(buffer_.data() + next_, end_ - next_);
  if (held.empty() || held.front() == ' ' || held.front() == '"') return false;
  const std::size_t end = kEndsField.FindIn(held, 0);
  if (held.size() - end < 2) return false;
  field = WithoutTrailingBlanks(held.substr(0, end));
  const bool pair = held[end] == '\r' && held[end + 1] == '\n';
  next_ += end + (pair ? 2 : 1);
  return true;
}

std::string_view CSVFieldStream::TakeSlowly() {
  if (AtEnd()) {
    throw Failure(FailureNumber::kReadPastEnd,
                  "The file ends at byte " + std::to_string(Position()) + ", where another field was to stand");
  }
  SkipBlanks();
  const bool quoted = Peek(0) == '"';
  const std::size_t begin = quoted ? 1 : 0;
  const std::size_t end = FindFrom(begin, quoted);
  std::size_t behind = end;
  if (quoted && Peek(behind) == '"') ++behind;
  while (quoted && Peek(behind) == ' ') ++behind;
  behind += SeparatorAt(behind);
  // Nothing is read from here on: reading would move the buffer under the field.
  const auto field = std::string_view(buffer_).substr(next_ + begin, end - begin);
  next_ += behind;
  return quoted ? field : WithoutTrailingBlanks(field);
}

Integer CSVFieldStream::NextInteger() {
  return RoundToInteger(LeadingNumber(Next()));
}

Long CSVFieldStream::NextLong() {
  return LeadingLong(Next());
}

Double CSVFieldStream::NextDouble() {
  const std::string_view field = Next();
  const Double value = LeadingNumber(field);
  if (!std::isfinite(value)) FailTooLarge(field);
  return value;
}

void CSVFieldStream::PassDouble() {
  const std::string_view field = Next();
  if (MayBeTooLarge(field) && !std::isfinite(LeadingNumber(field))) FailTooLarge(field);
}

void CSVFieldStream::FailTooLarge(std::string_view field) {
  throw Failure(FailureNumber::kOverflow, "\"" + encoding_.Decode(field) + "\" is too large for a number");
}

}  // namespace tallybook
