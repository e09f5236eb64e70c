// Help as text, made from the tables of the command line.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// Arguments under one heading, in the order in which help shows them: positional ones first, the command's options,
// then those under headings of their own.
struct HelpSection {
  Text heading;
  std::vector<const Argument*> arguments;
};
[[nodiscard]] std::vector<HelpSection> HelpSections(const CommandTable& command);

// "tallybook import qdx BOOK (--definition N | --all) [OPTIONS]".
[[nodiscard]] Text UsageText(const CommandPath& path);
// "-y, --yes" or "--from DATE".
[[nodiscard]] Text ArgumentText(const Argument& argument);
// What the argument is for, with what it does not go together with.
[[nodiscard]] Text AboutText(const CommandTable& command, const Argument& argument);

// The whole help of a command or a group, in lines of at most 80 characters but for examples. `heading` draws a
// heading.
[[nodiscard]] Text HelpText(const CommandPath& path, Text (*heading)(const Text&));

}  // namespace tallybook::cli
