// Who runs this process.
#pragma once

#include "base/Types.h"

namespace tallybook::engine {

// The login name of the user whose rights the process has; "user 1000" where the system knows no name for the number.
[[nodiscard]] Text LoginName();

}  // namespace tallybook::engine
