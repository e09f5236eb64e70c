#include "platform/Keyboard.h"

#include <algorithm>

#include "base/Bytes.h"

namespace tallybook {

namespace {

constexpr Long kKeyboardType = 1;
constexpr std::size_t kKeyOffset = 4;
constexpr std::size_t kScanOffset = 6;
constexpr std::size_t kFlagsOffset = 8;

template <typename Number>
void Put(KeyRecord& record, std::size_t offset, Number value) {
  std::ranges::copy(ToBytes(value), record.begin() + static_cast<std::ptrdiff_t>(offset));
}

}  // namespace

KeyRecord ToKeyRecord(const KeyEvent& event) {
  KeyRecord record{};
  Put(record, 0, kKeyboardType);
  Put(record, kKeyOffset, event.key);
  Put(record, kScanOffset, event.scan);
  Put(record, kFlagsOffset, event.flags);
  return record;
}

KeyEvent FromKeyRecord(const KeyRecord& record) {
  return {.key = FromBytes<std::uint16_t>(&record[kKeyOffset]),
          .scan = FromBytes<std::uint16_t>(&record[kScanOffset]),
          .flags = FromBytes<Long>(&record[kFlagsOffset])};
}

}  // namespace tallybook
