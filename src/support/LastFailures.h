// Why an operation on files that answers with no more than a Boolean gave false last, for whoever has to tell it.
// LastOpenFailure of support/Utility.h is the same for opens.
#pragma once

#include <optional>

#include "base/Failure.h"

namespace tallybook {

// What the last KillFile or RenameFile (support/Utility.h) that gave false met; nothing before the first.
[[nodiscard]] const std::optional<Failure>& LastChangeFailure();

}  // namespace tallybook
