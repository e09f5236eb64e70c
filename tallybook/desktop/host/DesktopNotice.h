// Tells the desktop of something that the user waits for and may not be looking at.
#pragma once

#include "base/Types.h"

namespace tallybook::desktop {

// Shows a notification by the desktop's service for them (freedesktop.org, "Desktop Notifications"), without
// waiting. Where there is no such service nothing happens.
void TellDesktop(const Text& title, const Text& words);

}  // namespace tallybook::desktop
