// Where Qt calls into the component: what the user does is carried out here. No exception may pass through Qt, so a
// failure stops here and is raised again by the input queue (QtInputQueue::RunOnce), where whoever runs the input
// expects it. One thread.
#pragma once

#include <exception>
#include <utility>

namespace tallybook::desktop {

// The first failure that was kept is the one that is raised; later ones are lost.
void KeepFailure(std::exception_ptr failure) noexcept;
// Raises what was kept, if there is something, and forgets it.
void RaiseKeptFailure();

template <typename Act>
void CarryOut(Act&& act) noexcept {
  try {
    std::forward<Act>(act)();
  } catch (...) {
    KeepFailure(std::current_exception());
  }
}

}  // namespace tallybook::desktop
