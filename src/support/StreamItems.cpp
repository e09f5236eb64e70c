#include "support/StreamItems.h"

#include <span>
#include <string>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "base/Narrow.h"
#include "base/Texts.h"
#include "support/Utility.h"

namespace tallybook {

namespace {

bool GetBytes(FileStream& stream, Integer count, std::string& bytes) {
  std::string read(static_cast<std::size_t>(count), '\0');
  if (!stream.ReadWhole(std::as_writable_bytes(std::span(read)))) return false;
  bytes.swap(read);
  return true;
}

Integer GetLength(FileStream& stream, bool& whole) {
  Integer length = 0;
  whole = Get(stream, length);
  if (length >= 0) return length;
  throw Failure(FailureNumber::kInvalidArgument, "A counted text has the length " + std::to_string(length) +
                                                     " at byte " + std::to_string(stream.Position() - 2));
}

}  // namespace

bool GetFixed(FileStream& stream, Integer width, Text& value) {
  std::string bytes;
  if (!GetBytes(stream, width, bytes)) return false;
  value = FromCodePage(bytes);
  return true;
}

void PutFixed(FileStream& stream, Integer width, const Text& value) {
  const std::string bytes = ToCodePage(value);
  if (bytes.size() != static_cast<std::size_t>(width)) {
    throw Failure(FailureNumber::kInvalidArgument,
                  "The text \"" + value + "\" is not " + std::to_string(width) + " characters wide");
  }
  stream.Write(std::as_bytes(std::span(bytes)));
}

bool GetCounted(FileStream& stream, Text& value) {
  const long long start = stream.Position();
  try {
    bool whole = false;
    const Integer length = GetLength(stream, whole);
    std::string bytes;
    if (!whole || !GetBytes(stream, length, bytes)) return false;
    value = FromCodePage(bytes);
    return true;
  } catch (...) {
    stream.Seek(start);
    throw;
  }
}

void PutCounted(FileStream& stream, const Text& value) {
  const std::string bytes = ToCodePage(TrimRight(value));
  const auto length = ToBytes(ToInteger(static_cast<long long>(bytes.size())));
  std::string item(reinterpret_cast<const char*>(length.data()), length.size());
  item += bytes;
  stream.Write(std::as_bytes(std::span(item)));
}

}  // namespace tallybook
