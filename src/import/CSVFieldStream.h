// The fields of a comma-separated file, one after the other, whatever lines they stand on (docs/formats.md,
// "Comma-separated import"). Reads through a buffer that stays small; owns no file.
//
//   A field ends at a comma, a carriage return, a line feed, or the pair of these; so an empty line is an empty field.
//   Blanks around a field are dropped. A field that begins with a double quote runs to the next one, commas and line
//   ends included, and without a next one to the end of the file; the quotes are dropped. What follows a closing quote
//   before the next separator is a field of its own.
#pragma once

#include <string>
#include <string_view>

#include "base/Types.h"
#include "support/EncodedText.h"
#include "support/FileStream.h"

namespace tallybook {

class CSVFieldStream {
 public:
  // `source` must outlive the stream. Finds out the encoding, and stands at the first field.
  CSVFieldStream(FileStream& source, TextEncoding wanted);

  // Goes back to the first field.
  void Rewind();

  // The next field's bytes, valid until the next call; Encoding makes text of them. Failure 62 at the end of the file.
  [[nodiscard]] std::string_view Next();
  // The same as the number that it begins with: 0 for an empty field. A number that does not fit its width is failure
  // 6; fractions are rounded to whole numbers, ties to the even one.
  [[nodiscard]] Integer NextInteger();
  [[nodiscard]] Long NextLong();
  [[nodiscard]] Double NextDouble();
  // Passes over the next field. Fails where NextDouble would.
  void PassDouble();

  // How the bytes of fields become text.
  [[nodiscard]] EncodedText& Encoding() { return encoding_; }

  // True where no field is left.
  [[nodiscard]] bool AtEnd() { return next_ == end_ && !ReadMore(); }
  // In bytes from the start of the file.
  [[nodiscard]] long long Position() const { return buffer_start_ + static_cast<long long>(next_); }
  [[nodiscard]] long long Size() const { return size_; }

 private:
  static constexpr int kNone = -1;

  [[noreturn]] void FailTooLarge(std::string_view field);
  bool TakeFromBuffer(std::string_view& field);
  std::string_view TakeSlowly();
  // Makes at least one byte more stand behind those from `next_` on. False at the end of the file.
  bool ReadMore();
  // The character `offset` places behind the position; kNone at the end of the file.
  int Peek(std::size_t offset) {
    while (next_ + offset >= end_) {
      if (!ReadMore()) return kNone;
    }
    return static_cast<unsigned char>(buffer_[next_ + offset]);
  }
  [[nodiscard]] std::size_t FindFrom(std::size_t offset, bool quote);
  void SkipBlanks();
  // The length of the comma or line end that stands `offset` places behind the position; 0 where none does.
  std::size_t SeparatorAt(std::size_t offset);

  FileStream& source_;
  EncodedText encoding_;
  long long size_;
  std::string buffer_;
  std::size_t end_ = 0;         // bytes of the buffer that are in use
  long long buffer_start_ = 0;  // where in the file the buffer's first byte stands
  std::size_t next_ = 0;        // the position, in the buffer
};

}  // namespace tallybook
