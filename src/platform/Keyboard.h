// The keyboard: what its layout has for a character, presses that a program hands to the system as if they were the
// user's, and the keys that are held now. One thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/Types.h"

namespace tallybook {

// Keys whose state is asked for or that are pressed by name; the codes are the system's.
inline constexpr Integer kLeftButton = 0x01;
inline constexpr Integer kRightButton = 0x02;
inline constexpr Integer kMiddleButton = 0x04;
inline constexpr Integer kShiftKey = 0x10;
inline constexpr Integer kControlKey = 0x11;
inline constexpr Integer kAltKey = 0x12;

// The flags of a press, which add up.
inline constexpr Long kExtendedKey = 1;
inline constexpr Long kReleasedKey = 2;  // the key goes up; without it, down
inline constexpr Long kCharacterKey = 4;

// A press or a release. A character event has no key: the character, a unit of UTF-16, stands in `scan`.
struct KeyEvent {
  std::uint16_t key = 0;
  std::uint16_t scan = 0;
  Long flags = 0;
  bool operator==(const KeyEvent&) const = default;
};

// The record of a key event as the system's input call reads it, little-endian:
//
//   offset  bytes  what
//   0       4      type: 1, a key
//   4       2      key
//   6       2      scan
//   8       4      flags
//   12      16     time, extra and padding: 0
inline constexpr std::size_t kKeyRecordSize = 28;
using KeyRecord = std::array<std::byte, kKeyRecordSize>;

[[nodiscard]] KeyRecord ToKeyRecord(const KeyEvent& event);
// For platforms that have a call of another kind.
[[nodiscard]] KeyEvent FromKeyRecord(const KeyRecord& record);

class Keyboard {
 public:
  virtual ~Keyboard() = default;
  // The key that gives a character from 0 to 255 in the layout that is in force: its code in the lower byte and the
  // keys to be held with it in the upper one, bit 0 for shift; -1 for a character that the layout lacks.
  [[nodiscard]] virtual Integer LayoutKey(std::uint8_t character) = 0;
  // Hands all records to the system at once, so that no other input falls between them. They are queued: what they do
  // happens when the user interface runs. A batch that the system rejects is lost without a word.
  virtual void Deliver(std::span<const KeyRecord> records) = 0;
  // The older call, for one event of a key. Queued as well.
  virtual void Press(Integer key, Long flags) = 0;
  // Whether a key or a mouse button is down at this moment, whatever input still waits.
  [[nodiscard]] virtual bool IsDown(Integer key) = 0;
};

}  // namespace tallybook
