#include "forms/CHookMouseWheel.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "forms/MHookXP.h"
#include "forms/Quietly.h"
#include "platform/Keyboard.h"
#include "platform/Platform.h"
#include "platform/Screen.h"
#include "platform/Wheel.h"

namespace tallybook {

namespace {

Wheel* TheWheel() {
  return ThePlatform().wheel;
}

struct StateBit {
  Integer key;
  Long bit;
};
constexpr StateBit kShiftStates[] = {{kShiftKey, 1}, {kControlKey, 2}, {kAltKey, 4}};
constexpr StateBit kButtonStates[] = {{kLeftButton, 1}, {kRightButton, 2}, {kMiddleButton, 4}};

template <std::size_t kCount>
Long StateOf(const StateBit (&keys)[kCount]) {
  Keyboard* const keyboard = ThePlatform().keyboard;
  if (keyboard == nullptr) return 0;
  Long state = 0;
  for (const StateBit& key : keys)
    if (keyboard->IsDown(key.key)) state |= key.bit;
  return state;
}

}  // namespace

CHookMouseWheel::~CHookMouseWheel() {
  if (window_ != 0) RemoveHook(window_, *this);
}

void CHookMouseWheel::SetHwnd(Long window) {
  if (const Long before = std::exchange(window_, 0); before != 0) RemoveHook(before, *this);
  const bool listens =
      Present() && Quietly([&] { return ThePlatform().screen->IsWindow(window); }) && AddHook(window, *this);
  if (listens) window_ = window;
}

bool CHookMouseWheel::Present() {
  return Quietly([] { return TheWheel() != nullptr && TheWheel()->IsPresent(); });
}

Long CHookMouseWheel::ScrollChars() {
  const auto characters = Quietly([] { return TheWheel() == nullptr ? std::nullopt : TheWheel()->ScrollCharacters(); });
  return characters.value_or(1);
}

Long CHookMouseWheel::ScrollLines() {
  return Quietly([] { return TheWheel() == nullptr ? 0 : TheWheel()->ScrollLines(); });
}

Integer CHookMouseWheel::WordHi(Long value) {
  return static_cast<Integer>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(value) >> 16U));
}

Integer CHookMouseWheel::WordLo(Long value) {
  return static_cast<Integer>(static_cast<std::uint16_t>(value));
}

void CHookMouseWheel::Raise(const WheelEvent& event, Long w_param, Long l_param, bool& cancel) {
  const Long buttons = StateOf(kButtonStates);
  const Long shift = StateOf(kShiftStates);
  const Long column = WordLo(l_param);
  const Long row = WordHi(l_param);
  event.Raise(ThePlatform().screen->WindowAt(column, row), WordHi(w_param), shift, buttons, column, row, cancel);
}

Long CHookMouseWheel::Message(Long window, Long message, Long w_param, Long l_param, Long /*reference*/,
                              bool& handled) {
  handled = enabled_ && (message == kWheelTurned || message == kWheelTilted);
  if (!handled) {
    if (message == kWindowDestroyed) SetHwnd(0);
    return CallNextHook(window, message, w_param, l_param);
  }
  bool cancel = false;
  Quietly([&] { Raise(message == kWheelTurned ? MouseWheel : MouseHWheel, w_param, l_param, cancel); });
  if (!cancel) CallNextHook(window, message, w_param, l_param);
  return 1;
}

}  // namespace tallybook
