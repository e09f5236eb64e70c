#include "tallybook/cli/Wording.h"

#include <algorithm>
#include <limits>
#include <numeric>

#include "base/Texts.h"

namespace tallybook::cli {

namespace {

// A word may differ from what was meant by one slip in three characters.
constexpr std::size_t kCharactersPerSlip = 3;
// Fewer characters than that begin too much.
constexpr std::size_t kShortestStart = 2;

std::vector<Text> BegunBy(const Text& word, const std::vector<Text>& words) {
  std::vector<Text> begun;
  if (word.size() < kShortestStart || word == "--") return begun;
  std::copy_if(words.begin(), words.end(), std::back_inserter(begun),
               [&](const Text& other) { return LowerCase(other).starts_with(word); });
  return begun;
}

std::vector<Text> Nearest(const Text& word, const std::vector<Text>& words) {
  std::vector<Text> nearest;
  std::size_t least = std::max<std::size_t>(1, word.size() / kCharactersPerSlip);
  for (const Text& other : words) {
    const std::size_t distance = EditDistance(word, LowerCase(other));
    if (distance < least) nearest.clear();
    if (distance <= least) nearest.push_back(other);
    least = std::min(least, distance);
  }
  return nearest;
}

Text Quoted(const Text& word) {
  return "'" + word + "'";
}

}  // namespace

Text Listed(const std::vector<Text>& words, const Text& last) {
  Text list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const bool before_last = i + 1 == words.size() && !last.empty();
    if (i > 0) list += before_last ? " " + last + " " : ", ";
    list += words[i];
  }
  return list;
}

std::size_t EditDistance(const Text& text, const Text& other) {
  // A row of the table for each prefix of `text`; the swap looks back two rows.
  std::vector<std::vector<std::size_t>> rows(text.size() + 1, std::vector<std::size_t>(other.size() + 1));
  std::iota(rows[0].begin(), rows[0].end(), std::size_t{0});
  for (std::size_t i = 1; i <= text.size(); ++i) {
    rows[i][0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t change = text[i - 1] == other[j - 1] ? 0 : 1;
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + change});
      const bool swapped = i > 1 && j > 1 && text[i - 1] == other[j - 2] && text[i - 2] == other[j - 1];
      if (swapped) rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
    }
  }
  return rows[text.size()][other.size()];
}

Text DidYouMean(const Text& word, const std::vector<Text>& words) {
  // Longer words are no slip of anything here, and the table of the distances grows with them.
  constexpr std::size_t kLongest = 64;
  if (word.empty() || word.size() > kLongest) return "";
  const Text plain = LowerCase(word);
  std::vector<Text> meant = BegunBy(plain, words);
  if (meant.empty()) meant = Nearest(plain, words);
  if (meant.empty()) return "";
  std::transform(meant.begin(), meant.end(), meant.begin(), Quoted);
  return "did you mean " + Listed(meant, "or") + "?";
}

}  // namespace tallybook::cli
