// The folder browser, beside the file dialogs of CCommonDialog.
#pragma once

#include "base/Types.h"

namespace tallybook {

// The flags of the folder dialog: folders of the file system and the system's new style; with a box to type a path in.
inline constexpr Long kBrowseFlags = 0xC8;
inline constexpr Long kBrowseFlagsWithEdit = 0x40D8;
// The length of the path's buffer, in characters.
inline constexpr Long kLongestFolder = 260;

// Asks the user for a folder over the window `owner` and gives its path; empty where the user cancelled.
//   needs   `title` above the tree; `initial` is selected when the dialog starts, where it is not empty
//   meant   the folder in force before is in force again afterwards, on every way out
//   fails   73 on a platform without these dialogs; 75 for a path that is longer than the buffer, told with the path;
//           whatever the dialog raises
[[nodiscard]] Text BrowseForFolder(Long owner, const Text& title, const Text& initial, bool show_edit);

}  // namespace tallybook
