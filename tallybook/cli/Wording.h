// Words about words: lists in a sentence, and what the user may have meant.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::cli {

// "a", "a or b", "a, b or c", with the last two joined by `last`; "a, b, c" without it.
[[nodiscard]] Text Listed(const std::vector<Text>& words, const Text& last = "");

// How many characters have to be put in, left out, changed or swapped with their neighbour to make one text of the
// other (the optimal string alignment distance). Counts bytes.
[[nodiscard]] std::size_t EditDistance(const Text& text, const Text& other);

// "did you mean 'values'?" for the words that are nearest to `word`: those that it begins, or else those that a slip or
// two would make of it. Empty where none is near. Case does not count.
[[nodiscard]] Text DidYouMean(const Text& word, const std::vector<Text>& words);

}  // namespace tallybook::cli
