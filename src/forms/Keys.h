// Codes of the keys that controls and dialogs know by themselves, as a KeyDown event tells them, and the states of the
// shift keys, which add up.
#pragma once

#include "base/Types.h"

namespace tallybook {

inline constexpr Integer kTabKey = 9;
inline constexpr Integer kEnterKey = 13;
inline constexpr Integer kEscapeKey = 27;
inline constexpr Integer kPageUpKey = 33;
inline constexpr Integer kPageDownKey = 34;
inline constexpr Integer kEndKey = 35;
inline constexpr Integer kHomeKey = 36;
inline constexpr Integer kLeftKey = 37;
inline constexpr Integer kUpKey = 38;
inline constexpr Integer kRightKey = 39;
inline constexpr Integer kDownKey = 40;
inline constexpr Integer kDeleteKey = 46;

inline constexpr Integer kShiftState = 1;
inline constexpr Integer kControlState = 2;
inline constexpr Integer kAltState = 4;

}  // namespace tallybook
