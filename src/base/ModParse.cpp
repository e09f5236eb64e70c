#include "base/ModParse.h"

#include <algorithm>
#include <string>

#include "base/Failure.h"
#include "base/Texts.h"

namespace tallybook {

std::vector<Text> SplitText(const Text& text, const Text& delimiter, Long limit, Compare compare) {
  if (limit < -1)
    throw Failure(FailureNumber::kInvalidArgument, "A text cannot be split into " + std::to_string(limit) + " pieces");
  if (text.empty() || limit == 0) return {};
  // Case does not change how many bytes a letter of the code page takes, so places in the copy are places in the text.
  const bool ignores_case = compare == Compare::kText;
  const Text haystack = ignores_case ? LowerCase(text) : text;
  const Text needle = ignores_case ? LowerCase(delimiter) : delimiter;

  std::vector<Text> pieces;
  std::size_t start = 0;
  while (!needle.empty() && (limit == -1 || static_cast<Long>(pieces.size()) < limit - 1)) {
    const std::size_t found = haystack.find(needle, start);
    if (found == Text::npos) break;
    pieces.push_back(text.substr(start, found - start));
    start = found + needle.size();
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

SplitQuoted::SplitQuoted(std::string_view separators, std::string_view stoppers) {
  const auto set = [&](char c, Kind kind) { kinds_[static_cast<unsigned char>(c)] = kind; };
  for (const char c : separators) set(c, Kind::kSeparator);
  for (const char c : stoppers) set(c, Kind::kStopper);
  set('"', Kind::kQuote);
  ends_text_ = ByteSet((std::string(separators) += stoppers) += '"');
}

Long SplitQuoted::operator()(std::string_view line, std::span<std::string_view> fields) {
  std::fill(fields.begin(), fields.end(), std::string_view());
  if (fields.empty()) return 0;
  unquoted_.clear();
  std::size_t current = 0;
  ByteSet::Walk ends(ends_text_, line);
  for (std::size_t at = 0;; ++current) {
    const std::size_t begin = at;
    at = ends.Next();
    fields[current] = std::string_view(line.data() + begin, at - begin);
    Kind kind = KindAt(line, at);
    if (kind == Kind::kQuote) {
      fields[current] = TakeQuoted(line, at, fields[current]);
      ends.GoOnAt(std::min(at + 1, line.size()));
      kind = KindAt(line, at);
    }
    if (kind == Kind::kStopper || current + 1 == fields.size()) break;
    ++at;
  }
  return static_cast<Long>(current + (fields[current].empty() ? 0 : 1));
}

// Puts a field with quotes together: what stood before the first one, what they enclose and what stands between them.
// Moves on to the separator or stopper behind the field.
std::string_view SplitQuoted::TakeQuoted(std::string_view line, std::size_t& at, std::string_view begun) {
  // Room for all of the line, so that fields put together before stay where they are.
  if (unquoted_.empty()) unquoted_.reserve(line.size());
  const std::size_t begin = unquoted_.size();
  unquoted_ += begun;
  while (KindAt(line, at) == Kind::kQuote) {
    const std::size_t quoted = at + 1;
    const std::size_t close = std::min(line.find('"', quoted), line.size());
    unquoted_ += line.substr(quoted, close - quoted);
    const std::size_t behind = std::min(close + 1, line.size());
    at = ends_text_.FindIn(line, behind);
    unquoted_ += line.substr(behind, at - behind);
  }
  return std::string_view(unquoted_).substr(begin);
}

}  // namespace tallybook
