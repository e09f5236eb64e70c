#include <gmock/gmock.h>

#include "platform/Keyboard.h"

namespace tallybook::testing {
namespace {

TEST(KeyRecordTest, HasTheFieldsAtTheirPlacesAndZeroElsewhere) {
  const KeyRecord record = ToKeyRecord({.key = 0x1234, .scan = 0x20AC, .flags = 6});
  KeyRecord wanted{};
  wanted[0] = std::byte{1};
  wanted[4] = std::byte{0x34};
  wanted[5] = std::byte{0x12};
  wanted[6] = std::byte{0xAC};
  wanted[7] = std::byte{0x20};
  wanted[8] = std::byte{6};
  EXPECT_EQ(record.size(), 28U);
  EXPECT_EQ(record, wanted);
}

TEST(KeyRecordTest, ComesBackAsItWas) {
  const KeyEvent event{.key = 0x90, .scan = 0xFFFF, .flags = kExtendedKey | kReleasedKey};
  EXPECT_EQ(FromKeyRecord(ToKeyRecord(event)), event);
}

}  // namespace
}  // namespace tallybook::testing
