#include "forms/Form.h"

#include <algorithm>
#include <utility>

#include "base/Raised.h"
#include "forms/Control.h"
#include "platform/Platform.h"
#include "platform/Screen.h"

namespace tallybook {

namespace {

std::vector<Form*>& FormList() {
  static std::vector<Form*> forms;
  return forms;
}

Screen& TheScreen() {
  return *ThePlatform().screen;
}

}  // namespace

const std::vector<Form*>& OpenForms() {
  return FormList();
}

Form::Form(Text name) : name_(std::move(name)) {}

Form::~Form() {
  // Not Unload: listeners may belong to a dialog that is already gone.
  // Nor is there a screen any more where a form outlives the platform, as those of the process may.
  if (IsLoaded() && IsPlatformInstalled()) TheScreen().DestroyWindow(window_);
  std::erase(FormList(), this);
}

void Form::SetCaption(const Text& caption) {
  if (caption_ == caption) return;
  caption_ = caption;
  Changed.Raise();
}

void Form::SetEnabled(bool enabled) {
  if (enabled_ == enabled) return;
  enabled_ = enabled;
  if (IsLoaded()) TheScreen().EnableWindow(window_, enabled);
  Changed.Raise();
}

void Form::SetFont(const Text& name, Single size) {
  font_name_ = name;
  font_size_ = size;
  Changed.Raise();
}

Integer Form::WindowState() const {
  return IsLoaded() ? TheScreen().WindowState(window_) : kNormalWindow;
}

void Form::SetWindowState(Integer state) {
  if (IsLoaded()) TheScreen().SetWindowState(window_, state);
}

void Form::Load() {
  if (IsLoaded()) return;
  window_ = TheScreen().CreateWindow(*this);
  FormList().push_back(this);
  Loading.Raise();
}

void Form::Show() {
  Load();
  visible_ = true;
  TheScreen().ShowWindow(window_);
  Changed.Raise();
  Activate.Raise();
}

void Form::Hide() {
  if (!visible_) return;
  visible_ = false;
  if (IsLoaded()) TheScreen().HideWindow(window_);
  Changed.Raise();
}

void Form::Unload() {
  if (!IsLoaded() || unloading_) return;
  {
    const Raised unloading(unloading_);
    Unloading.Raise();
  }
  Hide();
  TheScreen().DestroyWindow(std::exchange(window_, 0));
  std::erase(FormList(), this);
  active_control_ = nullptr;
}

Control* Form::Find(const Text& name, Integer index) const {
  const auto found = std::find_if(controls_.begin(), controls_.end(), [&](const Control* control) {
    return control->Name() == name && control->Index() == index;
  });
  return found == controls_.end() ? nullptr : *found;
}

void Form::OnCloseBox(std::function<void()> cancel) {
  QueryClose.Connect([cancel = std::move(cancel)](bool& refused) {
    refused = true;
    cancel();
  });
}

void Form::OnF1(std::function<void()> help) {
  KeyDown.Connect([help = std::move(help)](Integer& key, Integer /*shift*/) {
    if (key != kF1Key) return;
    key = 0;
    help();
  });
}

bool Form::UserClose() {
  if (!visible_ || !enabled_) return false;
  bool refused = false;
  QueryClose.Raise(refused);
  if (refused) return false;
  Unload();
  return true;
}

bool Form::UserKey(Integer key, Integer shift, Integer character_code) {
  if (!visible_ || !enabled_) return false;
  if (key == kTabKey && (shift == 0 || shift == kShiftState)) return UserTab(shift == kShiftState);
  Control* const control = active_control_;
  if (control == nullptr || !control->UserKeyDown(key, shift)) return false;
  return character_code == 0 || control->UserKeyPress(character_code);
}

bool Form::UserTab(bool backwards) {
  std::vector<Control*> order = controls_;
  if (backwards) std::reverse(order.begin(), order.end());
  // The one with the focus comes last, so that the walk begins behind it.
  const auto active = std::find(order.begin(), order.end(), active_control_);
  if (active != order.end()) std::rotate(order.begin(), active + 1, order.end());
  const auto stops = [](const Control* control) {
    return control->TakesFocus() && control->TabStop() && control->IsReachable();
  };
  const auto next = std::find_if(order.begin(), order.end(), stops);
  return next != order.end() && (*next)->UserFocus();
}

void Form::Register(Control& control) {
  controls_.push_back(&control);
}

void Form::Unregister(Control& control) {
  if (active_control_ == &control) active_control_ = nullptr;
  std::erase(controls_, &control);
}

void Form::Register(Timer& timer) {
  timers_.push_back(&timer);
}

void Form::Unregister(Timer& timer) {
  std::erase(timers_, &timer);
}

void Form::MoveFocus(Control* control) {
  if (active_control_ == control) return;
  if (Control* const before = std::exchange(active_control_, control)) before->LostFocus.Raise();
  if (control != nullptr) control->GotFocus.Raise();
}

Timer::Timer(Form& form, Text name) : form_(form), name_(std::move(name)) {
  form_.Register(*this);
}

Timer::~Timer() {
  form_.Unregister(*this);
}

void Timer::Elapse() const {
  if (enabled_ && form_.IsLoaded()) Tick.Raise();
}

}  // namespace tallybook
