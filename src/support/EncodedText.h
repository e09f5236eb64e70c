// How the bytes of a text file become text. Files that other programs wrote are UTF-8 or in the code page: one that is
// valid UTF-8 throughout is read as such, any other through the code page. The embedding application may fix the
// choice.
#pragma once

#include <string_view>

#include "base/TextEncoding.h"
#include "base/Types.h"

namespace tallybook {

class FileStream;

// The encoding of one file. Finding it out takes reading the whole file, so that waits until something depends on it: a
// byte-order mark at the front, or a text with a byte outside ASCII.
class EncodedText {
 public:
  // `wanted` other than kDetect settles the encoding. Leaves the position at the text's start. `stream` must outlive
  // the object.
  EncodedText(FileStream& stream, TextEncoding wanted);

  // Where the text begins: behind a byte-order mark, which is passed over only where the text is read as UTF-8.
  [[nodiscard]] long long Start() const { return start_; }

  // kUtf8 or kCodePage. May read the whole file, once; the position stays.
  [[nodiscard]] TextEncoding Encoding();

  // Bytes of the file as text in memory. May read the whole file as Encoding does.
  [[nodiscard]] Text Decode(std::string_view bytes);

 private:
  FileStream& stream_;
  TextEncoding encoding_;
  long long start_ = 0;
};

}  // namespace tallybook
