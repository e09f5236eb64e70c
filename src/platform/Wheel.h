// The mouse wheel: what the user has set for it, and hooks that hear a window's messages before the window does. One
// thread: hooks run on that of their window.
#pragma once

#include <functional>
#include <optional>

#include "base/Types.h"

namespace tallybook {

// The messages that matter here, by the system's numbers.
inline constexpr Long kWindowDestroyed = 0x82;
inline constexpr Long kWheelTurned = 0x20A;
inline constexpr Long kWheelTilted = 0x20E;  // sideways

// What Wheel::ScrollLines gives where a turn is to scroll by a page.
inline constexpr Long kScrollPage = -1;

// A message with its two parameters as they came; gives the answer to it.
using WindowHook = std::function<Long(Long window, Long message, Long first, Long second)>;

class Wheel {
 public:
  virtual ~Wheel() = default;
  [[nodiscard]] virtual bool IsPresent() = 0;
  // How many lines a turn by one notch scrolls, or kScrollPage; how many characters a tilt does, nothing where the
  // system cannot tell.
  [[nodiscard]] virtual Long ScrollLines() = 0;
  [[nodiscard]] virtual std::optional<Long> ScrollCharacters() = 0;

  // Lets `hook` hear the window's messages. `owner` tells the hooks of one window apart and is the key to remove one;
  // it is not looked into. False where that cannot be done. A hook may be removed while it runs.
  [[nodiscard]] virtual bool AddHook(Long window, const void* owner, WindowHook hook) = 0;
  virtual bool RemoveHook(Long window, const void* owner) = 0;
  // Hands a message on from within a hook: to the hook before it, or to the window itself.
  virtual Long CallNextHook(Long window, Long message, Long first, Long second) = 0;
};

}  // namespace tallybook
