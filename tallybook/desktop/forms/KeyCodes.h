// Keys as the component knows them (forms/Keys.h) and as Qt does. One thread.
#pragma once

#include <QString>
#include <cstdint>
#include <memory>

#include "base/Types.h"

class QKeyEvent;

namespace tallybook {
struct KeyEvent;
}

namespace tallybook::desktop {

// A press as forms take it: the key's code, the states of the shift keys, and the character that it gives in the code
// page of files, 0 for none. A key without a code of its own counts as kOtherKey.
struct KeyPress {
  Integer key = 0;
  Integer shift = 0;
  Integer character = 0;
  bool is_foreign = false;  // it gives a text that the code page lacks
};

inline constexpr Integer kOtherKey = 0xFF;

// Key 0 where only a shift key was pressed.
[[nodiscard]] KeyPress ToKeyPress(const QKeyEvent& event);

// The key that gives a character in the layout that is assumed, the American one: the code in the lower byte, bit 8 for
// shift; -1 for a character that it lacks.
[[nodiscard]] Integer LayoutKeyOf(std::uint8_t character);

// The press, or release, of a key as an event for a widget, with these shift states held.
[[nodiscard]] std::unique_ptr<QKeyEvent> ToQtEvent(const KeyEvent& event, Integer shift);

}  // namespace tallybook::desktop
