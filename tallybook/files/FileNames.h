// How a file that was made beside its place gets its name: at once, and so that it lasts.
#pragma once

#include <system_error>

#include "base/Types.h"

namespace tallybook::files {

// Gives a file another name in its file system, where nothing has that name. Replaces nothing: what has the name stays,
// also a link that leads nowhere, and the error is std::errc::file_exists. At every moment the file has just one of the
// two names, save in a file system that cannot refuse by itself to replace a file: there it has both for an instant.
[[nodiscard]] std::error_code RenameToFreeName(const Text& from, const Text& to);

// Makes the names in a folder last through a loss of power. Where a folder cannot be told so, they last by the system's
// own time.
void StoreFolder(const Text& folder);

}  // namespace tallybook::files
