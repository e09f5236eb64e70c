// Cuts a file into lines at carriage returns, block by block (docs/formats.md, "Delimited import"). Owns no file.
//
//   A line feed is no line end: it stays at the start of the next line, but for one that begins a block of 32,767
//   bytes, which is dropped. A file with line feeds alone is one long line. Empty lines are passed over. What is left
//   behind the last carriage return is a line too, unless it is one single character: that disposes of a last line
//   feed.
#pragma once

#include <string>
#include <string_view>

#include "base/Types.h"
#include "support/FileStream.h"

namespace tallybook {

class LineReader {
 public:
  // Bytes read from the file at once. The rule about a block's first line feed rests on it.
  static constexpr long long kBlock = 32'767;

  // Reads `source` from `start` on; the source must outlive the reader.
  LineReader(FileStream& source, long long start);

  // Goes back to the start.
  void Rewind();

  // The next line's bytes, valid until the next call. False at the end of the file.
  [[nodiscard]] bool Next(std::string_view& line);

  // How far the file has been read, and how long it is, in bytes.
  [[nodiscard]] long long Position() const { return source_.Position(); }
  [[nodiscard]] long long Size() const { return size_; }

 private:
  // Puts the next block behind what is unread. False at the end of the file.
  bool ReadBlock();

  FileStream& source_;
  long long start_;
  long long size_;
  std::string buffer_;
  std::size_t next_ = 0;      // the first unread character of the buffer
  std::size_t searched_ = 0;  // up to here there is no carriage return
};

}  // namespace tallybook
