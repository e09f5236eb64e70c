#include "forms/PlainControls.h"

#include <algorithm>

namespace tallybook {

bool CommandButton::UserClick() {
  if (!UserFocus()) return false;
  Click.Raise();
  return true;
}

bool CheckBox::UserClick() {
  if (!UserFocus()) return false;
  SetChecked(!checked_);
  return true;
}

void ScrollBar::SetValue(Long value) {
  if (Set(value_, std::clamp(value, std::min(min_, max_), std::max(min_, max_)))) Change.Raise();
}

bool ScrollBar::UserScroll(Long value) {
  if (!IsReachable()) return false;
  SetValue(value);
  return true;
}

bool MenuItem::UserClick() {
  if (!IsReachable()) return false;
  Click.Raise();
  return true;
}

}  // namespace tallybook
