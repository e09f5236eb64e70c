// Splitting of text.
#pragma once

#include <vector>

#include "support/Types.h"

namespace tallybook {

enum class Compare { kBinary, kText };  // kText: without regard to case

// The pieces of `text` between delimiters. An empty text gives no pieces, a text without the delimiter one.
//   limit  the most pieces; the last takes the rest as it stands. -1 means no limit, 0 gives no pieces; below -1 is
//          failure 5
//   an empty delimiter splits nothing
[[nodiscard]] std::vector<Text> SplitText(const Text& text, const Text& delimiter, Long limit = -1,
                                          Compare compare = Compare::kBinary);

}  // namespace tallybook
