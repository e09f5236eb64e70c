// How the bytes of a text file are to be read: found out from the file, through the code page, or as UTF-8.
#pragma once

namespace tallybook {

enum class TextEncoding { kDetect, kCodePage, kUtf8 };

}  // namespace tallybook
