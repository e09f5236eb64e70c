// Understands the user's words by the tables of the command line.
#pragma once

#include <vector>

#include "support/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// Reads the words behind the program's name into the records that the arguments of `program` are bound to.
//   gives  the command that the words name; nothing where they ask for help or the version, which has been printed
//   fails  WrongUse, with the reason and where to read on
[[nodiscard]] const CommandTable* ParseArguments(const CommandTable& program, const Text& version, const Text& footer,
                                                 const std::vector<Text>& words);

}  // namespace tallybook::cli
