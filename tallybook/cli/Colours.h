// Colour for headings and for what went wrong, on a terminal and nowhere else: a stream that is no terminal, a terminal
// that has none (TERM is "dumb" or not set) and a user who wants none (NO_COLOR is set, see no-color.org) get plain
// text.
#pragma once

#include "base/Types.h"

namespace tallybook::cli {

// A heading on standard output.
[[nodiscard]] Text HeadingText(const Text& text);

// The name that begins a line about what went wrong, on standard error.
[[nodiscard]] Text TroubleText(const Text& text);

}  // namespace tallybook::cli
