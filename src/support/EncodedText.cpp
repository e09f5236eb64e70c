#include "support/EncodedText.h"

#include <cstddef>
#include <span>
#include <string>

#include "base/CodePage.h"
#include "support/FileStream.h"

namespace tallybook {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kBlock = 64 * 1024;

// Where the last character of `bytes` begins if it may go on in the next block; otherwise the end.
std::size_t WholeCharacters(std::string_view bytes) {
  constexpr std::size_t kLongestCharacter = 4;
  for (std::size_t back = 1; back < kLongestCharacter && back <= bytes.size(); ++back) {
    const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
    if (byte < 0x80) break;
    if (byte >= 0xC0) return bytes.size() - back;
  }
  return bytes.size();
}

bool IsUtf8Throughout(FileStream& stream) {
  std::string bytes;
  for (;;) {
    const std::size_t kept = bytes.size();
    bytes.resize(kept + kBlock);
    const std::size_t count = stream.ReadSome(std::as_writable_bytes(std::span(bytes).subspan(kept)));
    bytes.resize(kept + count);
    if (count == 0) return IsUtf8(bytes);
    const std::size_t whole = WholeCharacters(bytes);
    if (!IsUtf8(std::string_view(bytes).substr(0, whole))) return false;
    bytes.erase(0, whole);
  }
}

bool BeginsWithMark(FileStream& stream) {
  std::string bytes(kByteOrderMark.size(), '\0');
  return stream.ReadWhole(std::as_writable_bytes(std::span(bytes))) && bytes == kByteOrderMark;
}

}  // namespace

EncodedText::EncodedText(FileStream& stream, TextEncoding wanted) : stream_(stream), encoding_(wanted) {
  stream.Seek(0);
  if (BeginsWithMark(stream) && Encoding() == TextEncoding::kUtf8) {
    start_ = static_cast<long long>(kByteOrderMark.size());
  }
  stream.Seek(start_);
}

TextEncoding EncodedText::Encoding() {
  if (encoding_ != TextEncoding::kDetect) return encoding_;
  const long long position = stream_.Position();
  stream_.Seek(0);
  const bool utf8 = IsUtf8Throughout(stream_);
  stream_.Seek(position);
  encoding_ = utf8 ? TextEncoding::kUtf8 : TextEncoding::kCodePage;
  return encoding_;
}

Text EncodedText::Decode(std::string_view bytes) {
  if (IsAscii(bytes)) return Text(bytes);
  return Encoding() == TextEncoding::kUtf8 ? Text(bytes) : FromCodePage(bytes);
}

}  // namespace tallybook
