// Whether the window that is active now was activated from another program, or from none of ours at least. One thread.
#pragma once

namespace tallybook::desktop {

// Begins to watch; once for the process, when there is an application object.
void WatchProgramFocus();
[[nodiscard]] bool CameFromOtherProgram();

}  // namespace tallybook::desktop
