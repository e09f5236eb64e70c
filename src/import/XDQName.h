// The name that an exchange file takes once it has been imported.
#pragma once

#include "base/Types.h"

namespace tallybook {

// The file's own name with its last three characters overwritten by "XDQ", whatever they are: meant. Characters count,
// not bytes; of a name that has fewer, all go.
[[nodiscard]] Text XDQName(const Text& file);

}  // namespace tallybook
