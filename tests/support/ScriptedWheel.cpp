#include "tests/support/ScriptedWheel.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tallybook::testing {

namespace {

// Two 16-bit numbers in one parameter.
Long Packed(Integer high, Integer low) {
  return static_cast<Long>((std::uint32_t{static_cast<std::uint16_t>(high)} << 16U) | static_cast<std::uint16_t>(low));
}

}  // namespace

Long ScriptedWheel::Send(Long window, Long message, Long first, Long second) {
  // A hook may remove itself, or another, while it runs: the calls are those of the moment of sending.
  std::vector<WindowHook> calls;
  for (const Hook& hook : hooks_)
    if (hook.window == window) calls.push_back(hook.call);
  const std::vector<WindowHook> before = std::exchange(to_call_, std::move(calls));
  const Long answer = CallNextHook(window, message, first, second);
  to_call_ = before;
  return answer;
}

Long ScriptedWheel::Turn(Long window, Integer delta, Integer x, Integer y, Long message) {
  return Send(window, message, Packed(delta, 0), Packed(y, x));
}

std::size_t ScriptedWheel::HooksOf(Long window) const {
  return static_cast<std::size_t>(std::ranges::count(hooks_, window, &Hook::window));
}

bool ScriptedWheel::AddHook(Long window, const void* owner, WindowHook hook) {
  if (refuse_) return false;
  RemoveHook(window, owner);
  hooks_.push_back({window, owner, std::move(hook)});
  return true;
}

bool ScriptedWheel::RemoveHook(Long window, const void* owner) {
  return std::erase_if(hooks_, [&](const Hook& hook) { return hook.window == window && hook.owner == owner; }) > 0;
}

Long ScriptedWheel::CallNextHook(Long window, Long message, Long first, Long second) {
  if (to_call_.empty()) {
    reached_.push_back({window, message, first, second});
    return kWindowsAnswer;
  }
  const WindowHook next = std::move(to_call_.back());
  to_call_.pop_back();
  return next(window, message, first, second);
}

}  // namespace tallybook::testing
