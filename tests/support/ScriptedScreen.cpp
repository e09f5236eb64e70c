#include "tests/support/ScriptedScreen.h"

#include <algorithm>

#include "forms/Form.h"

namespace tallybook::testing {

ScriptedScreen::Window* ScriptedScreen::FindOne(Long window) {
  const auto found = std::ranges::find(windows_, window, &Window::handle);
  return found == windows_.end() ? nullptr : &*found;
}

const ScriptedScreen::Window* ScriptedScreen::Find(Long window) const {
  const auto found = std::ranges::find(windows_, window, &Window::handle);
  return found == windows_.end() ? nullptr : &*found;
}

Long ScriptedScreen::AddHostWindow(Long handle, const Place& place) {
  const Long taken = handle == 0 ? ++last_handle_ : handle;
  windows_.push_back({taken, nullptr, kHostClass, true, true, 0, place, 0});
  active_ = taken;
  return taken;
}

Long ScriptedScreen::AddControlWindow(Long form_window, const Place& place) {
  Window window{++last_handle_, nullptr, kControlClass, true, true, form_window, place, 0};
  window.inside = true;
  // Never the foremost: the active window is that of a form.
  windows_.insert(windows_.begin(), window);
  return last_handle_;
}

void ScriptedScreen::UserActivates(Long window) {
  ActivateWindow(window);
  const Window* const activated = Find(window);
  if (activated != nullptr && active_ == window && activated->form != nullptr) activated->form->UserActivate();
}

Long ScriptedScreen::CreateWindow(Form& form) {
  windows_.push_back({++last_handle_, &form, kFormClass, false, form.Enabled(), 0, kFormPlace, 0});
  return last_handle_;
}

void ScriptedScreen::DestroyWindow(Long window) {
  std::erase_if(windows_,
                [&](const Window& one) { return one.handle == window || (one.inside && one.parent == window); });
  if (active_ == window) ActivateForemost();
}

void ScriptedScreen::ShowWindow(Long window) {
  if (Window* const shown = FindOne(window)) shown->visible = true;
  ActivateWindow(window);
}

void ScriptedScreen::HideWindow(Long window) {
  if (Window* const hidden = FindOne(window)) hidden->visible = false;
  if (active_ == window) ActivateForemost();
}

bool ScriptedScreen::IsVisible(Long window) {
  const Window* const one = Find(window);
  return one != nullptr && one->visible;
}

Long ScriptedScreen::WindowAt(Long left, Long top) {
  const auto is_hit = [&](const Window& window) {
    const Place& place = window.place;
    return window.visible && left >= place.left && left < place.left + place.width && top >= place.top &&
           top < place.top + place.height;
  };
  const auto outer = std::find_if(windows_.rbegin(), windows_.rend(),
                                  [&](const Window& window) { return !window.inside && is_hit(window); });
  if (outer == windows_.rend()) return 0;
  const auto inner = std::ranges::find_if(windows_, [&](const Window& window) {
    return window.inside && window.parent == outer->handle && is_hit(window);
  });
  return inner == windows_.end() ? outer->handle : inner->handle;
}

void ScriptedScreen::RefreshWindow(Long window) {
  if (Window* const one = FindOne(window)) ++one->refreshes;
}

void ScriptedScreen::FreezeWindow(Long window, bool frozen) {
  Window* const one = FindOne(window);
  if (one == nullptr || one->frozen == frozen) return;
  one->frozen = frozen;
  if (frozen) ++one->freezes;
}

void ScriptedScreen::EnableWindow(Long window, bool enabled) {
  if (Window* const one = FindOne(window)) one->enabled = enabled;
}

void ScriptedScreen::ActivateWindow(Long window) {
  const auto found = std::ranges::find(windows_, window, &Window::handle);
  if (found == windows_.end() || !found->visible || !found->enabled) return;
  std::rotate(found, found + 1, windows_.end());
  active_ = window;
}

Text ScriptedScreen::ClassName(Long window) {
  const Window* const one = Find(window);
  return one == nullptr ? Text() : one->class_name;
}

Long ScriptedScreen::SetParent(Long window, Long owner) {
  Window* const one = FindOne(window);
  if (one == nullptr) return 0;
  const Long before = one->parent;
  one->parent = owner;
  return before;
}

Place ScriptedScreen::WindowPlace(Long window) {
  const Window* const one = Find(window);
  return one == nullptr ? Place() : one->place;
}

void ScriptedScreen::SetWindowPlace(Long window, const Place& place) {
  if (Window* const one = FindOne(window)) one->place = place;
}

Integer ScriptedScreen::WindowState(Long window) {
  const Window* const one = Find(window);
  return one == nullptr ? Integer{0} : one->state;
}

void ScriptedScreen::SetWindowState(Long window, Integer state) {
  if (Window* const one = FindOne(window)) one->state = state;
}

void ScriptedScreen::ActivateForemost() {
  const auto usable = [](const Window& window) { return window.visible && window.enabled && !window.inside; };
  const auto found = std::find_if(windows_.rbegin(), windows_.rend(), usable);
  active_ = found == windows_.rend() ? 0 : found->handle;
}

}  // namespace tallybook::testing
