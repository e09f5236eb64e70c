#include "support/ModParse.h"

#include <algorithm>
#include <string>

#include "support/Failure.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

// The sets are of a few characters: comparing beats searching.
bool Holds(std::string_view set, char c) {
  for (const char held : set) {
    if (held == c) return true;
  }
  return false;
}

}  // namespace

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

Long SplitQuoted(std::string_view line, std::string_view separators, std::string_view stoppers,
                 std::span<std::string> fields) {
  for (std::string& field : fields) field.clear();
  if (fields.empty()) return 0;
  const auto ends_run = [&](char c) { return c == '"' || Holds(separators, c) || Holds(stoppers, c); };
  std::size_t current = 0;
  for (std::size_t i = 0; i < line.size();) {
    const std::size_t run = i;
    while (i < line.size() && !ends_run(line[i])) ++i;
    fields[current].append(line, run, i - run);
    if (i == line.size()) break;
    const char c = line[i++];
    if (c == '"') {
      const std::size_t quoted = i;
      i = std::min(line.find('"', quoted), line.size());
      fields[current].append(line, quoted, i - quoted);
      if (i < line.size()) ++i;
    } else if (Holds(stoppers, c) || current + 1 == fields.size()) {
      break;
    } else {
      ++current;
    }
  }
  return static_cast<Long>(current + (fields[current].empty() ? 0 : 1));
}

}  // namespace tallybook
