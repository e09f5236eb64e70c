// Man pages, made from the tables of the command line: one of the program, and one of each command and group.
#pragma once

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// What stands at the foot of each page.
struct ManEdition {
  Text version;  // "0.1.0"
  Text date;     // "2004-02-03"
};

// "tallybook-import-qdx", the page's name; its file is that with ".1" behind it.
[[nodiscard]] Text ManPageName(const CommandPath& path);

// The page, in the language of man(7).
[[nodiscard]] Text ManPage(const CommandPath& path, const ManEdition& edition);

}  // namespace tallybook::cli
