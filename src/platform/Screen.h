// The pointer and the windows. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

enum class Pointer { kDefault, kBusy };

class Form;

// A place on the screen, in the screen's units.
struct Place {
  Long left = 0;
  Long top = 0;
  Long width = 0;
  Long height = 0;
  bool operator==(const Place&) const = default;
};

// The screen: the pointer's shape, and windows. A window is known by its handle, a number that is never 0. Handles may
// also be those of windows that the host has made; an operation on a handle that no window has does nothing and answers
// with nothing.
class Screen {
 public:
  virtual ~Screen() = default;
  virtual void SetPointer(Pointer pointer) = 0;

  // Makes a hidden window that shows `form`, and gives its handle. The form outlives the window.
  [[nodiscard]] virtual Long CreateWindow(Form& form) = 0;
  virtual void DestroyWindow(Long window) = 0;
  virtual void ShowWindow(Long window) = 0;
  virtual void HideWindow(Long window) = 0;
  // Whether the window itself is shown: not hidden by HideWindow or by its host. One whose owner is hidden is shown all
  // the same. False on a screen without windows.
  [[nodiscard]] virtual bool IsVisible(Long window) = 0;
  // Whether a window, of a form, a control or the host, has this handle now.
  [[nodiscard]] virtual bool IsWindow(Long window) = 0;
  // The window at a point of the screen, the innermost of the foremost one that is shown; 0 where there is none.
  [[nodiscard]] virtual Long WindowAt(Long left, Long top) = 0;
  // While a window is frozen it looks as it did; what changed is drawn when it is thawed.
  virtual void FreezeWindow(Long window, bool frozen) = 0;
  // Draws at once what waits to be drawn in a window, before anything else happens.
  virtual void RefreshWindow(Long window) = 0;
  virtual void EnableWindow(Long window, bool enabled) = 0;
  // The window that has the input; bring one to the front.
  [[nodiscard]] virtual Long ActiveWindow() = 0;
  virtual void ActivateWindow(Long window) = 0;
  // The kind of a window; that of the component's own windows holds "Thunder".
  [[nodiscard]] virtual Text ClassName(Long window) = 0;
  // Makes `owner` the window's parent and gives the parent before.
  virtual Long SetParent(Long window, Long owner) = 0;
  [[nodiscard]] virtual Place WindowPlace(Long window) = 0;
  virtual void SetWindowPlace(Long window, const Place& place) = 0;
  // 0 normal, 1 minimised, 2 maximised; both bits at once are 3.
  [[nodiscard]] virtual Integer WindowState(Long window) = 0;
  virtual void SetWindowState(Long window, Integer state) = 0;
  // The desktop without bars and docks.
  [[nodiscard]] virtual Place WorkArea() = 0;
  // The width of the system's vertical scroll bar.
  [[nodiscard]] virtual Long ScrollBarWidth() = 0;
};

// A screen that has no windows, for platforms without one: a form that is shown there stays unseen.
class ScreenWithoutWindows : public Screen {
 public:
  void SetPointer(Pointer pointer) override;
  [[nodiscard]] Long CreateWindow(Form& form) override;
  void DestroyWindow(Long window) override;
  void ShowWindow(Long window) override;
  void HideWindow(Long window) override;
  [[nodiscard]] bool IsVisible(Long window) override;
  [[nodiscard]] bool IsWindow(Long window) override;
  [[nodiscard]] Long WindowAt(Long left, Long top) override;
  void FreezeWindow(Long window, bool frozen) override;
  void RefreshWindow(Long window) override;
  void EnableWindow(Long window, bool enabled) override;
  [[nodiscard]] Long ActiveWindow() override;
  void ActivateWindow(Long window) override;
  [[nodiscard]] Text ClassName(Long window) override;
  Long SetParent(Long window, Long owner) override;
  [[nodiscard]] Place WindowPlace(Long window) override;
  void SetWindowPlace(Long window, const Place& place) override;
  [[nodiscard]] Integer WindowState(Long window) override;
  void SetWindowState(Long window, Integer state) override;
  [[nodiscard]] Place WorkArea() override;
  [[nodiscard]] Long ScrollBarWidth() override;

 private:
  Long last_window_ = 0;
};

}  // namespace tallybook
