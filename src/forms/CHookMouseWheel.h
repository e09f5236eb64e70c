// Hears the mouse wheel over one window and tells it as an event; the grids and scroll bars of forms know nothing of a
// wheel by themselves. Nothing here fails or is told: a wheel is not worth a message.
#pragma once

#include "base/Types.h"
#include "forms/Event.h"
#include "forms/IHookXP.h"

namespace tallybook {

class CHookMouseWheel : public IHookXP {
 public:
  CHookMouseWheel() = default;
  ~CHookMouseWheel() override;  // lets go of its window
  CHookMouseWheel(const CHookMouseWheel&) = delete;
  CHookMouseWheel& operator=(const CHookMouseWheel&) = delete;

  // While false, messages pass unseen.
  [[nodiscard]] bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled) { enabled_ = enabled; }

  // The window listened to; 0 for none, also after that window has gone. Another one lets go of the present one first,
  // even where it is no window and none is listened to then; so it is without a wheel.
  [[nodiscard]] Long Hwnd() const { return window_; }
  void SetHwnd(Long window);

  // What the user has set for the wheel. Without one: not present, 0 lines; characters are 1 where nobody can tell.
  [[nodiscard]] static bool Present();
  [[nodiscard]] static Long ScrollChars();
  [[nodiscard]] static Long ScrollLines();

  // The upper and the lower half of a value, as signed numbers.
  [[nodiscard]] static Integer WordHi(Long value);
  [[nodiscard]] static Integer WordLo(Long value);

  // The wheel was turned, or tilted: the window under the pointer, the amount, the shift state (1 shift, 2 control,
  // 4 alt), the buttons (1 left, 2 right, 4 middle), column and row on the screen, and whether to cancel, which a
  // listener sets true to keep the message from what the window does by itself. A listener must not destroy the window.
  using WheelEvent = Event<Long, Long, Long, Long, Long, Long, bool&>;
  WheelEvent MouseWheel;
  WheelEvent MouseHWheel;

  Long Message(Long window, Long message, Long w_param, Long l_param, Long reference, bool& handled) override;

 private:
  static void Raise(const WheelEvent& event, Long w_param, Long l_param, bool& cancel);

  bool enabled_ = true;
  Long window_ = 0;
};

}  // namespace tallybook
