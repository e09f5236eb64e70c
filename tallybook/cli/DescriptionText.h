// The file that a command reads a book's description from.
#pragma once

#include "base/Types.h"

namespace tallybook::cli {

struct DescriptionText {
  Text json;
  Text source;  // how refusals call it
};

// Reads a file whole; "-" is standard input. Fails as opening and reading a file does.
[[nodiscard]] DescriptionText ReadDescriptionText(const Text& path);

}  // namespace tallybook::cli
