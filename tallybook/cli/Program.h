// The table of the whole program: all commands of `tallybook`, with help at every level.
#pragma once

#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// Made anew at each call, with records of options that have their defaults.
[[nodiscard]] CommandTable Program();

}  // namespace tallybook::cli
