#include "forms/Control.h"

#include "base/Failure.h"
#include "forms/Form.h"

namespace tallybook {

Control::Control(Form& form, Text name, Integer index) : form_(form), name_(std::move(name)), index_(index) {
  form_.Register(*this);
}

Control::~Control() {
  form_.Unregister(*this);
}

void Control::SetFont(const Text& name, Single size) {
  const bool name_changed = Set(font_name_, name);
  const bool size_changed = Set(font_size_, size);
  (void)name_changed;
  (void)size_changed;
}

void Control::SetPlace(const tallybook::Place& place) {
  if (Set(place_, place, {Change::Kind::kPlace})) Moved.Raise();
}

void Control::SetFocus() {
  if (!IsReachable()) {
    throw Failure(FailureNumber::kInvalidArgument, name_ + " cannot take the focus: it is disabled or hidden");
  }
  form_.MoveFocus(this);
}

bool Control::HasFocus() const {
  return form_.ActiveControl() == this;
}

bool Control::IsReachable() const {
  for (const Control* control = this; control != nullptr; control = control->container_) {
    if (!control->enabled_ || !control->visible_) return false;
  }
  return form_.Enabled() && form_.Visible();
}

bool Control::UserFocus() {
  if (!IsReachable()) return false;
  form_.MoveFocus(this);
  return true;
}

bool Control::UserKeyDown(Integer key, Integer shift) {
  if (!IsReachable()) return false;
  form_.KeyDown.Raise(key, shift);
  if (key == 0) return false;
  KeyDown.Raise(key, shift);
  if (key == 0) return false;
  PressOwnKey(key, shift);
  return true;
}

bool Control::UserKeyPress(Integer character_code) {
  if (!IsReachable()) return false;
  KeyPress.Raise(character_code);
  return character_code != 0;
}

void Control::PressOwnKey(Integer /*key*/, Integer /*shift*/) {}

}  // namespace tallybook
