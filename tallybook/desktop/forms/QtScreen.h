// The screen on Qt: the pointer, the windows of forms, and those of the host, which are known by handle as well, so
// that a dialog can stand over them.
//
//   QtScreen screen;
//   const Long main = screen.HandleOf(main_window);      // from here on the component may be given it as an owner
//   ShowLikeModal(dialog, main);
//
// One thread. Needs an application object. The windows of forms are the screen's own; those of the host stay the
// host's, and the handle of one that is gone stands for nothing.
#pragma once

#include <functional>
#include <memory>

#include "platform/Screen.h"
#include "tallybook/desktop/forms/FormAddition.h"

class QWidget;

namespace tallybook::views {
struct FormView;
}

namespace tallybook::desktop {

class FormWindow;
class Handles;

class QtScreen : public Screen {
 public:
  // Tells the view of a form by its name, or fails.
  using ViewSource = std::function<const views::FormView&(const Text& form)>;

  QtScreen();  // with the views of the component's own forms
  explicit QtScreen(ViewSource views);
  ~QtScreen() override;
  QtScreen(const QtScreen&) = delete;
  QtScreen& operator=(const QtScreen&) = delete;

  // Asked for each window of a form that is made from here on; empty for no additions.
  using Additions = std::function<FormAddition(const Form& form)>;
  void SetAdditions(Additions additions);

  // The handle of a window of the host, or of any widget; made on the first call.
  [[nodiscard]] Long HandleOf(QWidget& widget);
  // The widget of a handle; null where there is none, or none any more.
  [[nodiscard]] QWidget* WidgetOf(Long window) const;
  // The window of a form that is loaded; null for one that is not.
  [[nodiscard]] FormWindow* WindowOf(const Form& form) const;

  void SetPointer(Pointer pointer) override;
  // Fails with 5 for a form without a view.
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
  // 0 where another program's window is active, and where one of ours is that has no handle, as a message box.
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
  [[nodiscard]] FormWindow* FormWindowOf(Long window) const;

  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace tallybook::desktop
