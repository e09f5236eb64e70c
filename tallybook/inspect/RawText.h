// The bytes of a text file from its first to its last, beside a reader that takes it apart: what exactly stood where a
// field or a line was read, and on which line. Lines end in CR, LF or the pair of them, whatever the reader's rules
// say.
#pragma once

#include <string>
#include <string_view>

#include "base/Types.h"
#include "support/FileStream.h"

namespace tallybook::inspect {

class RawText {
 public:
  // Opens the file once more. Fails with the path: 53, 70, 75, 76.
  explicit RawText(const Text& path);

  // The bytes from where the last call ended up to an offset, counted from the start of the file. They stand until the
  // next call.
  [[nodiscard]] std::string_view TakeTo(long long offset);
  // The bytes up to and with the next line end, or up to the end of the file; empty there.
  [[nodiscard]] std::string_view TakeLine();

  // The number, from 1, of the line that the next byte stands on.
  [[nodiscard]] long long Line() const { return line_; }

 private:
  bool ReadMore();
  std::string_view Take(std::size_t count);
  [[nodiscard]] std::size_t LineLength();

  FileStream stream_;
  std::string buffer_;
  std::size_t next_ = 0;
  long long position_ = 0;  // of the next byte in the file
  long long line_ = 1;
  bool behind_return_ = false;  // a line feed would belong to the line before
};

}  // namespace tallybook::inspect
