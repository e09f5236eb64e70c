#include "tallybook/inspect/Troubles.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <functional>
#include <limits>
#include <vector>

#include "base/CodePage.h"
#include "base/Dates.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "host/Masterfile.h"
#include "import/TextImport.h"
#include "support/EncodedText.h"
#include "tallybook/inspect/BookTables.h"

namespace tallybook::inspect {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

std::size_t DigitsAt(std::string_view text, std::size_t at) {
  std::size_t end = at;
  while (end < text.size() && IsDigit(text[end])) ++end;
  return end - at;
}

// The length of what LeadingNumber reads of a text, blanks in front included; 0 where it reads no number.
std::size_t LeadingLength(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && IsBlank(text[at])) ++at;
  if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
  const std::size_t whole = DigitsAt(text, at);
  at += whole;
  std::size_t part = 0;
  if (at < text.size() && text[at] == '.') {
    part = DigitsAt(text, at + 1);
    if (whole + part > 0) at += 1 + part;
  }
  if (whole + part == 0) return 0;
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    std::size_t exponent = at + 1;
    if (exponent < text.size() && (text[exponent] == '+' || text[exponent] == '-')) ++exponent;
    const std::size_t digits = DigitsAt(text, exponent);
    if (digits > 0) at = exponent + digits;
  }
  return at;
}

bool IsAllBlank(std::string_view text) {
  return std::ranges::all_of(text, IsBlank);
}

Text WriteWords(const std::vector<Text>& numbers, const Text& otherwise) {
  if (numbers.empty()) return otherwise;
  return "write " + numbers.front() + (numbers.size() > 1 ? " or " + numbers[1] : "");
}

// Digits with the marks between them, of a number that people wrote; everything around it is taken off. `negative`
// where a minus or brackets stood there.
Text CoreOf(Text text, bool& negative) {
  // The blanks that typesetters put between thousands, and currencies' signs, each as one plain blank.
  for (const char* sign : {"\xC2\xA0", "\xE2\x80\xAF", "\xE2\x80\x89", "\xE2\x82\xAC", "\xC2\xA3", "\xC2\xA5"}) {
    for (std::size_t at = text.find(sign); at != Text::npos; at = text.find(sign)) {
      text.replace(at, std::string_view(sign).size(), " ");
    }
  }
  const auto first = std::ranges::find_if(text, IsDigit);
  const auto last = std::find_if(text.rbegin(), text.rend(), IsDigit).base();
  if (first == text.end()) return {};
  const Text front(text.begin(), first);
  const Text behind(last, text.end());
  const bool minus = front.find('-') != Text::npos || behind.find('-') != Text::npos;
  const bool brackets = front.find('(') != Text::npos && behind.find(')') != Text::npos;
  negative = minus || brackets;
  // A point or comma that begins the number belongs to it.
  const bool begins_with_mark = !front.empty() && (front.back() == '.' || front.back() == ',');
  return (begins_with_mark ? Text(1, front.back()) : Text()) + Text(first, last);
}

// Whether digits stand in groups of three between marks, the first group of one to three.
bool InThousands(std::string_view core, char mark) {
  std::size_t at = DigitsAt(core, 0);
  if (at < 1 || at > 3 || at == core.size()) return false;
  while (at < core.size()) {
    if (core[at] != mark || DigitsAt(core, at + 1) != 3) return false;
    at += 4;
  }
  return true;
}

Text Without(Text text, char mark) {
  std::erase(text, mark);
  return text;
}

// What a core that holds marks of one kind was meant for.
std::vector<Text> MeantByOneMark(const Text& core, char mark) {
  const bool once = std::ranges::count(core, mark) == 1;
  const bool thousands = InThousands(core, mark);
  const bool decimal = once && (mark == '.' || mark == ',');
  std::vector<Text> meant;
  if (thousands) meant.push_back(Without(core, mark));
  if (decimal) {
    Text number = core;
    number[core.find(mark)] = '.';
    meant.push_back(number);
  }
  return meant;
}

std::vector<Text> MeantByCore(const Text& core) {
  Text marks;
  for (const char c : core) {
    if (IsDigit(c)) continue;
    if (marks.find(c) == Text::npos) marks += c;
  }
  if (marks.empty()) return {core};
  if (marks.find_first_not_of(",.' ") != Text::npos || marks.size() > 2) return {};
  if (marks.size() == 1) return MeantByOneMark(core, marks.front());
  // The second kind is the decimal mark, and stands once.
  const std::size_t at = core.find(marks[1]);
  if ((marks[1] != ',' && marks[1] != '.') || core.find(marks[1], at + 1) != Text::npos) return {};
  if (!InThousands(core.substr(0, at), marks[0])) return {};
  return {Without(core.substr(0, at), marks[0]) + "." + core.substr(at + 1)};
}

// What is wrong with a text behind the number that it begins with.
std::optional<Trouble> RestTrouble(const Text& text) {
  const std::size_t length = LeadingLength(text);
  if (IsAllBlank(std::string_view(text).substr(length))) return std::nullopt;
  const Text help = WriteWords(MeantNumbers(text), "write a number and nothing else");
  if (length == 0) return Trouble{Effect::kSilent, "is read as 0: it does not begin with a number", help};
  return Trouble{Effect::kSilent,
                 fmt::format("is read as {}: what stands behind the number is passed over", LeadingNumber(text)), help};
}

std::optional<Trouble> StrictTrouble(const Text& text, const std::function<void()>& read) {
  try {
    read();
    return std::nullopt;
  } catch (const Failure& failure) {
    return Trouble{Effect::kStop, failure.Description(), WriteWords(MeantNumbers(text), "")};
  }
}

const char* NameOf(TextEncoding encoding) {
  return encoding == TextEncoding::kUtf8 ? "UTF-8" : "Windows-1252";
}

// The same bytes in the encoding that the file is not taken to have; nothing where they are none of it.
std::optional<Text> OtherReading(TextEncoding encoding, std::string_view bytes) {
  if (encoding == TextEncoding::kUtf8) return FromCodePage(bytes);
  return IsUtf8(bytes) ? std::optional(Text(bytes)) : std::nullopt;
}

// Of a code that both encodings can read, where the other reading is an account of the book.
std::optional<Trouble> EncodingTrouble(const BookTables& tables, EncodedText& encoding, std::string_view bytes,
                                       bool is_known) {
  const TextEncoding taken = encoding.Encoding();
  const TextEncoding other = taken == TextEncoding::kUtf8 ? TextEncoding::kCodePage : TextEncoding::kUtf8;
  const auto reading = OtherReading(taken, bytes);
  if (!reading || tables.AccountOfCode(CutCode(*reading)) == 0) return std::nullopt;
  const Text as_other = fmt::format("as {} it is the account \"{}\"", NameOf(other), TrimBoth(*reading));
  if (is_known) {
    return Trouble{Effect::kSilent, fmt::format("is read as {}, which is an account; {}", NameOf(taken), as_other),
                   "say which encoding the file has"};
  }
  return Trouble{Effect::kAudit,
                 fmt::format("is read as {}, which is no account of the book; {}", NameOf(taken), as_other),
                 fmt::format("have the file read as {}", NameOf(other))};
}

}  // namespace

std::vector<Text> MeantNumbers(const Text& text) {
  bool negative = false;
  const Text core = CoreOf(text, negative);
  std::vector<Text> numbers = MeantByCore(core);
  if (core.empty()) return {};
  for (Text& number : numbers) {
    if (negative) number.insert(0, 1, '-');
  }
  return numbers;
}

std::optional<Trouble> LooseNumberTrouble(const Text& text) {
  if (!std::isfinite(LeadingNumber(text))) return Trouble{Effect::kStop, "is too large for a number", ""};
  return RestTrouble(text);
}

std::optional<Trouble> LooseWholeTrouble(const Text& text, long long lowest, long long highest) {
  const Double number = LeadingNumber(text);
  const Double rounded = std::nearbyint(number);
  if (!(rounded >= static_cast<Double>(lowest) && rounded <= static_cast<Double>(highest))) {
    return Trouble{Effect::kStop, fmt::format("is beyond {} to {}", lowest, highest), ""};
  }
  if (auto trouble = RestTrouble(text)) return trouble;
  if (number == rounded) return std::nullopt;
  return Trouble{Effect::kSilent, fmt::format("is rounded to {}", rounded), "write a whole number"};
}

std::optional<Trouble> StrictNumberTrouble(const Text& text) {
  return StrictTrouble(text, [&] { static_cast<void>(WholeNumberText(text)); });
}

std::optional<Trouble> StrictWholeTrouble(const Text& text) {
  return StrictTrouble(text, [&] { static_cast<void>(WholeLongText(text)); });
}

bool CanBeWritten(Date date) {
  return date >= DateFromParts(1, 1, 1) && date < DateFromParts(10'000, 1, 1);
}

std::optional<Trouble> DateTrouble(const Masterfile& masterfile, int year, int month, int day) {
  const Text written = fmt::format("{}-{}-{}", year, month, day);
  const Date date = DateFromParts(year, month, day);
  const bool can_be_written = CanBeWritten(date);
  const DateParts parts = can_be_written ? PartsOf(date) : DateParts{};
  const bool exists = parts.year == year && parts.month == month && parts.day == day;
  Text reading = exists ? DateText(date) : written;
  if (can_be_written && !exists) reading += fmt::format(", read as {},", DateText(date));
  if (!masterfile.DateValid(date)) {
    return Trouble{Effect::kAudit,
                   fmt::format("{} is no date of the book, which has {} to {}", reading,
                               DateText(masterfile.FirstDate()), DateText(masterfile.LastDate())),
                   ""};
  }
  if (exists) return std::nullopt;
  return Trouble{Effect::kSilent, fmt::format("{} is in no calendar and is read as {}", written, DateText(date)),
                 "write a date that exists"};
}

std::optional<Trouble> CodeTrouble(const BookTables& tables, EncodedText& encoding, bool found_out,
                                   std::string_view bytes) {
  const Text code = TrimBoth(encoding.Decode(bytes));
  const bool is_known = tables.AccountOfCode(CutCode(code)) != 0;
  if (found_out && !IsAscii(bytes)) {
    if (auto trouble = EncodingTrouble(tables, encoding, bytes, is_known)) return trouble;
  }
  if (!is_known) return Trouble{Effect::kAudit, "is no account code of the book", ""};
  if (CharacterCount(code) <= kCodeWidth) return std::nullopt;
  return Trouble{
      Effect::kStop,
      fmt::format("has more than {} characters, which the audit cuts off and the import ends at", kCodeWidth),
      "write " + TrimBoth(CutCode(code))};
}

std::optional<Trouble> SumTrouble(Double number) {
  if (!std::isfinite(number) || std::abs(number) <= std::numeric_limits<Double>::max() / 2) return std::nullopt;
  return Trouble{Effect::kSilent, "is so large that its sum with another may be no number, which ends the import",
                 "look whether it is meant"};
}

Text NamedBefore(eMath math) {
  const Text before = "the file names this figure before: ";
  if (math == eMath::mAdd) return before + "both are added";
  if (math == eMath::mSubtract) return before + "both are subtracted";
  return before + "only the last one counts";
}

std::optional<Trouble> FieldTrouble(const BookTables& tables, Long number, bool with_system_fields) {
  if (tables.FieldPosition(number) == 0) return Trouble{Effect::kAudit, "is no field number of the book", ""};
  if (with_system_fields || !tables.IsSystemField(number)) return std::nullopt;
  return Trouble{Effect::kAudit, "is a field that the system keeps by itself",
                 "leave it out, or import system fields, too"};
}

}  // namespace tallybook::inspect
