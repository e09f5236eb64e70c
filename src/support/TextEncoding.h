// How the bytes of a text file become text. Files that other programs wrote are UTF-8 or in the code page: one that is
// valid UTF-8 throughout is read as such, any other through the code page. The embedding application may fix the
// choice.
#pragma once

#include <string_view>

#include "support/Types.h"

namespace tallybook {

class FileStream;

enum class TextEncoding { kDetect, kCodePage, kUtf8 };

struct EncodedText {
  TextEncoding encoding = TextEncoding::kCodePage;  // never kDetect
  long long start = 0;                              // where the text begins: behind a byte-order mark, if there is one
};

// Finds out how the file is encoded; `wanted` other than kDetect settles it. Reads the whole file where it must, and
// leaves the position at the text's start. A byte-order mark is passed over only where the text is read as UTF-8.
[[nodiscard]] EncodedText FindEncoding(FileStream& stream, TextEncoding wanted);

// Bytes of a file as text in memory.
[[nodiscard]] Text Decode(std::string_view bytes, TextEncoding encoding);

}  // namespace tallybook
