// The command line as a whole: understands the user's words, runs the command, and tells what went wrong.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/cli/ExitStatus.h"

namespace tallybook::cli {

// Runs one command. `arguments` are the words behind the program's name. Results go to standard output, everything else
// to standard error. Never fails: whatever happens is told there and in the status.
[[nodiscard]] ExitStatus RunCommandLine(const std::vector<Text>& arguments);

}  // namespace tallybook::cli
