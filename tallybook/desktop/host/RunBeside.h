// Long work on a thread of its own, so that no window stands still meanwhile.
#pragma once

#include <functional>

#include "base/Types.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::desktop {

class ProgressWindow;

// Runs `work` on a thread of its own and returns when it has ended; until then events are let in here, and `progress`
// shows that it goes on: how far it is where the work tells that, and Cancel where it asks for it. What it shares with
// other threads is the caller's to see to. Fails as the work does, with engine::WorkCancelled where the user has
// cancelled it.
using BesideWork = std::function<void(engine::WorkWatch& watch)>;
void RunBeside(ProgressWindow& progress, const Text& title, const BesideWork& work);

}  // namespace tallybook::desktop
