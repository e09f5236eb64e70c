#include "support/ModParse.h"

#include <string>

#include "support/Failure.h"
#include "support/Utility.h"

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

}  // namespace tallybook
