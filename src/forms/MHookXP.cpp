#include "forms/MHookXP.h"

#include "forms/IHookXP.h"
#include "forms/Quietly.h"
#include "platform/Platform.h"
#include "platform/Wheel.h"

namespace tallybook {

namespace {

Wheel* TheWheel() {
  return IsPlatformInstalled() ? ThePlatform().wheel : nullptr;
}

// What a hooked window calls: the listener hears of everything, and of a window that goes the hook lets go.
Long Subclass(IHookXP& listener, Long window, Long message, Long w_param, Long l_param) {
  bool handled = false;
  const Long result = listener.Message(window, message, w_param, l_param, 0, handled);
  if (message == kWindowDestroyed) RemoveHook(window, listener);
  return result;
}

}  // namespace

bool AddHook(Long window, IHookXP& listener) {
  Wheel* const wheel = TheWheel();
  if (wheel == nullptr) return false;
  return Quietly([&] {
    return wheel->AddHook(window, &listener, [&listener](Long hooked, Long message, Long w_param, Long l_param) {
      return Subclass(listener, hooked, message, w_param, l_param);
    });
  });
}

bool RemoveHook(Long window, const IHookXP& listener) {
  Wheel* const wheel = TheWheel();
  return wheel != nullptr && Quietly([&] { return wheel->RemoveHook(window, &listener); });
}

Long CallNextHook(Long window, Long message, Long w_param, Long l_param) {
  Wheel* const wheel = TheWheel();
  return wheel == nullptr ? 0 : Quietly([&] { return wheel->CallNextHook(window, message, w_param, l_param); });
}

}  // namespace tallybook
