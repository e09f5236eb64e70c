// What the operating system answers to a call that fails (errno), as the numbers and words of failures.
#pragma once

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook {

// Missing names are 53 and paths through what is no folder 76; 70 what is not permitted or in use, 61 no room, 73 what
// the file system cannot do, 75 other trouble with a path, 7 no memory, and 57 everything else.
[[nodiscard]] FailureNumber FailureNumberOf(int error);

// The system's own words.
[[nodiscard]] Text WordsOfError(int error);

}  // namespace tallybook
