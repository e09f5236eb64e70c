// Parts of the program that stand in modules of their own: the libraries that they need take longer to load than most
// commands take to run, so they are loaded when they are asked for, and stay until the program ends.
#pragma once

#include "base/Types.h"

namespace tallybook::files {

// A function that a module exports, by its name there. The module is looked for where the program's run path points to.
//   fails  73 where the module, a library that it needs or the function cannot be loaded, with the reason behind
//          `trouble`, from `source`
[[nodiscard]] void* FunctionOfModule(const char* module, const char* function, const Text& trouble, const char* source);

}  // namespace tallybook::files
