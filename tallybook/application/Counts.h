// Counts as the host's lines tell them.
#pragma once

#include "base/Types.h"

namespace tallybook::application {

// A count with a comma between thousands.
[[nodiscard]] Text WithCommas(long long count);
// "1 account", "2 accounts".
[[nodiscard]] Text Counted(long long count, const Text& noun);

}  // namespace tallybook::application
