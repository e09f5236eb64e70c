// Long work that says nothing of itself, on a thread of its own, so that no window stands still meanwhile.
#pragma once

#include <functional>

#include "base/Types.h"

namespace tallybook::desktop {

class ProgressWindow;

// Runs `work` on a thread of its own and returns when it has ended; until then events are let in here, and `progress`
// shows that it goes on. What it shares with other threads is the caller's to see to. Fails as the work does.
void RunBeside(ProgressWindow& progress, const Text& title, const std::function<void()>& work);

}  // namespace tallybook::desktop
