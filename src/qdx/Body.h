// The body of an exchange file: its items, each described once and both written and read by that description. The bytes
// and the rules are told in docs/exchange-file.md ("Body"). Owns no file; errors are those of the stream.
//
// An item is read whole or not at all: where the file ends within it, the get gives false, the item stays as it was and
// the position is the end of the file.
#pragma once

#include <array>
#include <cstddef>
#include <cstring>
#include <span>

#include "base/Bytes.h"
#include "base/Types.h"
#include "support/FileStream.h"

namespace tallybook {

// A date as the body holds it. A sum of the three that is 0 or less ends the account's dates: the writer's end mark is
// three zeros.
struct BodyDate {
  Integer month = 0;
  Integer day = 0;
  Integer year = 0;
};

// The start of an account's block: the account's position in the header's account table.
struct BodyAccount {
  Integer account_index = 0;
};

// An account and the first date, or end mark, behind it: the reader takes the two at once.
struct BodyBlockStart {
  BodyAccount account;
  BodyDate date;
};

// How many values follow a date; at least 1 as written.
struct BodyCount {
  Integer values = 0;
};

// One value: the field's position in the header's field table, never its number, and a figure other than 0 as written.
struct BodyValue {
  Integer field_index = 0;
  Double value = 0;
};

// The one description of each item: its numbers in file order.
template <typename Visit>
constexpr void VisitNumbers(auto& item, Visit visit) requires requires {
  item.month;
}
{
  visit(item.month);
  visit(item.day);
  visit(item.year);
}
template <typename Visit>
constexpr void VisitNumbers(auto& item, Visit visit) requires requires {
  item.account_index;
}
{ visit(item.account_index); }
template <typename Visit>
constexpr void VisitNumbers(auto& item, Visit visit) requires requires {
  item.account;
}
{
  VisitNumbers(item.account, visit);
  VisitNumbers(item.date, visit);
}
template <typename Visit>
constexpr void VisitNumbers(auto& item, Visit visit) requires requires {
  item.values;
}
{ visit(item.values); }
template <typename Visit>
constexpr void VisitNumbers(auto& item, Visit visit) requires requires {
  item.field_index;
}
{
  visit(item.field_index);
  visit(item.value);
}

// How many bytes an item takes.
template <typename Item>
constexpr std::size_t BytesOf() {
  Item item;
  std::size_t size = 0;
  VisitNumbers(item, [&](auto& number) { size += sizeof(number); });
  return size;
}

// Puts an item's bytes there, BytesOf of them. Gives the place behind.
template <typename Item>
std::byte* Fill(std::byte* bytes, const Item& item) {
  VisitNumbers(item, [&](const auto& number) {
    const auto part = ToBytes(number);
    std::memcpy(bytes, part.data(), part.size());
    bytes += part.size();
  });
  return bytes;
}

template <typename Item>
void PutItem(FileStream& stream, const Item& item) {
  if (std::byte* const place = stream.Claim(BytesOf<Item>())) {
    Fill(place, item);
    return;
  }
  std::array<std::byte, BytesOf<Item>()> bytes{};
  Fill(bytes.data(), item);
  stream.Write(bytes);
}

// The same for many at a time, which cost little more than their bytes where the stream's buffer has room for all.
template <typename Item>
void PutItems(FileStream& stream, std::span<const Item> items) {
  std::byte* place = stream.Claim(BytesOf<Item>() * items.size());
  for (const Item& item : items) {
    if (place != nullptr) {
      place = Fill(place, item);
    } else {
      PutItem(stream, item);
    }
  }
}

// Reads an item from its bytes, BytesOf of them. Gives the place behind.
template <typename Item>
const std::byte* Scan(const std::byte* bytes, Item& item) {
  VisitNumbers(item, [&]<typename Number>(Number& number) {
    number = FromBytes<Number>(bytes);
    bytes += sizeof(Number);
  });
  return bytes;
}

template <typename Item>
[[nodiscard]] bool GetItem(FileStream& stream, Item& item) {
  if (const std::byte* const place = stream.Take(BytesOf<Item>())) {
    Scan(place, item);
    return true;
  }
  std::array<std::byte, BytesOf<Item>()> bytes{};
  if (!stream.ReadWhole(bytes)) return false;
  Scan(bytes.data(), item);
  return true;
}

// The writer's marks: behind the last date of an account, and behind the last account.
void PutBlockEnd(FileStream& stream);
void PutBodyEnd(FileStream& stream);

}  // namespace tallybook
