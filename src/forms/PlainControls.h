// The controls that hold next to nothing of their own: label, frame, picture, button, check box, scroll bar, menu
// entry.
#pragma once

#include "forms/Control.h"

namespace tallybook {

class Label : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool TakesFocus() const override { return false; }
};

// A box around other controls, with its caption on the edge. Hiding it hides them.
class Frame : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool TakesFocus() const override { return false; }
};

// A place for an icon of the system's stock, named by its number there; 0 for none.
class Picture : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool TakesFocus() const override { return false; }
  [[nodiscard]] Long StandardIcon() const { return icon_; }
  void SetStandardIcon(Long icon) { Set(icon_, icon); }
  Event<> Paint;  // it is about to be drawn

 private:
  Long icon_ = 0;
};

class CommandButton : public Control {
 public:
  using Control::Control;
  Event<> Click;
  bool UserClick();
};

// On or off. Click is raised by every change, also by program.
class CheckBox : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool Checked() const { return checked_; }
  void SetChecked(bool checked) {
    if (Set(checked_, checked)) Click.Raise();
  }
  Event<> Click;
  bool UserClick();

 private:
  bool checked_ = false;
};

class ScrollBar : public Control {
 public:
  using Control::Control;
  [[nodiscard]] Long Value() const { return value_; }
  [[nodiscard]] Long Min() const { return min_; }
  [[nodiscard]] Long Max() const { return max_; }
  // The steps of the arrows at the bar's ends, and of a click beside its thumb.
  [[nodiscard]] Long SmallChange() const { return small_change_; }
  [[nodiscard]] Long LargeChange() const { return large_change_; }
  void SetMin(Long min) { Set(min_, min); }
  void SetMax(Long max) { Set(max_, max); }
  void SetSmallChange(Long step) { Set(small_change_, step); }
  void SetLargeChange(Long step) { Set(large_change_, step); }
  // Held to the limits. Raises Change where it changes, also by program.
  void SetValue(Long value);
  Event<> Change;
  bool UserScroll(Long value);

 private:
  Long value_ = 0;
  Long min_ = 0;
  Long max_ = 32'767;
  Long small_change_ = 1;
  Long large_change_ = 1;
};

// An entry of a form's menu.
class MenuItem : public Control {
 public:
  using Control::Control;
  [[nodiscard]] bool TakesFocus() const override { return false; }
  [[nodiscard]] bool Checked() const { return checked_; }
  void SetChecked(bool checked) { Set(checked_, checked); }
  Event<> Click;
  bool UserClick();

 private:
  bool checked_ = false;
};

}  // namespace tallybook
