// The items that exchange files are made of, at a stream's position: numbers (base/Bytes.h), fixed texts and counted
// texts in the code page. A counted text is a 16-bit length and so many bytes.
//
// A get gives true where the item stood whole in the file. Where it did not, the value stays as it was and the position
// is the end of the file; that is no failure. A get that fails has not moved.
#pragma once

#include "base/Bytes.h"
#include "base/Types.h"
#include "support/FileStream.h"

namespace tallybook {

template <typename Number>
bool Get(FileStream& stream, Number& value) {
  std::array<std::byte, sizeof(Number)> bytes{};
  if (!stream.ReadWhole(bytes)) return false;
  value = FromBytes<Number>(bytes.data());
  return true;
}

template <typename Number>
void Put(FileStream& stream, Number value) {
  stream.Write(ToBytes(value));
}

// A text of `width` bytes.
bool GetFixed(FileStream& stream, Integer width, Text& value);
// Failure 5 where the text is not `width` characters wide.
void PutFixed(FileStream& stream, Integer width, const Text& value);

// A negative length is failure 5.
bool GetCounted(FileStream& stream, Text& value);
// Trailing blanks are removed first. A text of more than 32,767 characters is failure 6.
void PutCounted(FileStream& stream, const Text& value);

}  // namespace tallybook
