// Splitting of text.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/ByteSet.h"
#include "base/Types.h"

namespace tallybook {

enum class Compare { kBinary, kText };  // kText: without regard to case

// The pieces of `text` between delimiters. An empty text gives no pieces, a text without the delimiter one.
//   limit  the most pieces; the last takes the rest as it stands. -1 means no limit, 0 gives no pieces; below -1 is
//          failure 5
//   an empty delimiter splits nothing
[[nodiscard]] std::vector<Text> SplitText(const Text& text, const Text& delimiter, Long limit = -1,
                                          Compare compare = Compare::kBinary);

// Splits lines of fields into the entries of an array, whose size stays.
//   A double quote turns quoted text on and off and is not kept; quoted characters are kept whatever they are. A
//   stopper ends the work. A separator moves on to the next entry; where there is none, the work ends. Two separators
//   in a row make an empty field.
//   gives  the number of fields: the entries passed, plus 1 where the current one is not empty; so a last field that is
//          empty does not count
//   The characters are bytes: separators and stoppers are ASCII, and all else passes as it stands.
//   Fields are views: of the line, or where quotes were taken out, of the object. They stand until its next call.
class SplitQuoted {
 public:
  SplitQuoted(std::string_view separators, std::string_view stoppers);

  Long operator()(std::string_view line, std::span<std::string_view> fields);

 private:
  enum class Kind : unsigned char { kText, kQuote, kSeparator, kStopper };

  // The end of the line stops as a stopper does.
  [[nodiscard]] Kind KindAt(std::string_view line, std::size_t at) const {
    return at < line.size() ? kinds_[static_cast<unsigned char>(line[at])] : Kind::kStopper;
  }
  std::string_view TakeQuoted(std::string_view line, std::size_t& at, std::string_view begun);

  std::array<Kind, 256> kinds_{};
  ByteSet ends_text_{"\""};
  std::string unquoted_;  // the fields of the line with quotes, one behind the other
};

}  // namespace tallybook
