// A window manager in memory: windows with a place, a state, a parent and an order, of which the foremost that is shown
// and enabled is active. Windows of forms have the class name kFormClass; a test adds windows of the host, with handles
// that it may choose.
//
//   const Long list = platform.screen.AddHostWindow();
//   ShowLikeModal(dialog, list);
#pragma once

#include <vector>

#include "platform/Screen.h"

namespace tallybook::testing {

class ScriptedScreen : public Screen {
 public:
  static constexpr const char* kFormClass = "ThunderFormDC";
  static constexpr const char* kHostClass = "HostFrame";
  static constexpr const char* kControlClass = "ControlWindow";
  static constexpr Place kWorkArea{0, 0, 1600, 1160};
  static constexpr Place kFormPlace{0, 0, 400, 300};
  static constexpr Long kScrollBarWidth = 17;

  struct Window {
    Long handle = 0;
    Form* form = nullptr;  // null for a window of the host
    Text class_name;
    bool visible = false;
    bool enabled = true;
    Long parent = 0;
    Place place;
    Integer state = 0;
    bool frozen = false;
    int freezes = 0;      // how often it was frozen
    int refreshes = 0;    // how often it was drawn at once
    bool inside = false;  // the window of a control, inside that of its form, its parent
  };

  // Every shape that the pointer was given, in order.
  [[nodiscard]] const std::vector<Pointer>& Pointers() const { return pointers_; }

  // Adds a window of the host that is shown and active. A handle of 0 takes the next free one.
  Long AddHostWindow(Long handle = 0, const Place& place = {100, 100, 800, 600});
  // Makes the window of a control inside that of its form, at a place of the screen. It is there as long as the form's.
  Long AddControlWindow(Long form_window, const Place& place);
  // The user, or the host, brings a window to the front, hides or shows it, or switches to another program (no window
  // is active then). Hiding and showing are ShowWindow and HideWindow.
  void UserActivates(Long window);
  void LeaveProgram() { active_ = 0; }

  // What there is, the foremost last; null for a handle that no window has.
  [[nodiscard]] const std::vector<Window>& Windows() const { return windows_; }
  [[nodiscard]] const Window* Find(Long window) const;

  void SetPointer(Pointer pointer) override { pointers_.push_back(pointer); }
  [[nodiscard]] Long CreateWindow(Form& form) override;
  void DestroyWindow(Long window) override;
  void ShowWindow(Long window) override;
  void HideWindow(Long window) override;
  [[nodiscard]] bool IsVisible(Long window) override;
  [[nodiscard]] bool IsWindow(Long window) override { return Find(window) != nullptr; }
  [[nodiscard]] Long WindowAt(Long left, Long top) override;
  void FreezeWindow(Long window, bool frozen) override;
  void RefreshWindow(Long window) override;
  void EnableWindow(Long window, bool enabled) override;
  [[nodiscard]] Long ActiveWindow() override { return active_; }
  // Does nothing for a window that is hidden, disabled or gone.
  void ActivateWindow(Long window) override;
  [[nodiscard]] Text ClassName(Long window) override;
  Long SetParent(Long window, Long owner) override;
  [[nodiscard]] Place WindowPlace(Long window) override;
  void SetWindowPlace(Long window, const Place& place) override;
  [[nodiscard]] Integer WindowState(Long window) override;
  void SetWindowState(Long window, Integer state) override;
  [[nodiscard]] Place WorkArea() override { return kWorkArea; }
  [[nodiscard]] Long ScrollBarWidth() override { return kScrollBarWidth; }

 private:
  [[nodiscard]] Window* FindOne(Long window);
  void ActivateForemost();

  std::vector<Pointer> pointers_;
  std::vector<Window> windows_;
  Long last_handle_ = 1000;
  Long active_ = 0;
};

}  // namespace tallybook::testing
