// Who may read a file that is made of another.
#pragma once

#include <system_error>

#include "base/Types.h"

namespace tallybook::files {

// Takes from everybody but the owner of the file at `path` the rights on it that they do not have on the one at `than`.
// To be done before anything is written that was read there.
[[nodiscard]] std::error_code MakeNoMoreReadable(const Text& path, const Text& than);

}  // namespace tallybook::files
