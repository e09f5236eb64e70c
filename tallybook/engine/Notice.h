#pragma once

#include <functional>

#include "base/Types.h"

namespace tallybook::engine {

// Takes a line that the user should see while the work goes on.
using Notice = std::function<void(const Text& line)>;

}  // namespace tallybook::engine
