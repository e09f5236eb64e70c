// The lines of a text file around one of them, for whoever shows where a finding stands. Lines end in CR, LF or the
// pair of them, as findings count them. Where lines begin is remembered every now and then, so that a large file is
// gone through once. One thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "support/EncodedText.h"
#include "support/FileStream.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook::inspect {

class FileLines {
 public:
  // So many bytes of a line are given; of a longer one the rest is cut off.
  static constexpr std::size_t kMostBytes = 8192;

  // Fails with the path: 53, 70, 75, 76.
  FileLines(const Text& path, TextEncoding encoding);

  struct Line {
    long long number = 0;  // from 1
    Text text;
    Text end;             // as it stands; empty at the end of the file, and where the line is cut
    bool is_cut = false;  // the line goes on
  };
  // Up to `count` lines from the line `first` on; fewer at the end of the file. Fails with 57 where it cannot be read.
  [[nodiscard]] std::vector<Line> From(long long first, int count);

 private:
  static constexpr long long kRememberEvery = 4096;  // lines

  void GoTo(long long line);
  void StandAt(long long offset, long long line);
  [[nodiscard]] long long Offset() const { return behind_block_ - static_cast<long long>(block_.size() - next_); }
  [[nodiscard]] bool ReadBlock();
  // The next byte, which stays the next; nothing at the end of the file.
  [[nodiscard]] std::optional<char> Ahead();
  [[nodiscard]] bool TakeLine(std::string* bytes, std::string* end);

  FileStream stream_;
  std::string block_;
  std::size_t next_ = 0;        // unread byte of the block
  long long behind_block_ = 0;  // offset of the byte behind it
  FileStream whole_;            // that the encoding is found out from
  EncodedText encoding_;
  std::vector<long long> begins_ = {0};  // of the lines 1, 1 + kRememberEvery, ...
  long long line_ = 1;                   // at which the stream stands
};

// Where in its line the text of a finding stands, in bytes: in the field that it names, or else where it is found
// first; the field itself where it has no text. Nothing where the line does not have it, or where all of the line is
// meant.
//   separators  between the fields of a line
struct TextSpan {
  std::size_t begin = 0;
  std::size_t size = 0;
  bool operator==(const TextSpan&) const = default;
};
[[nodiscard]] std::optional<TextSpan> SpanOf(const Finding& finding, const Text& line, const Text& separators);

}  // namespace tallybook::inspect
