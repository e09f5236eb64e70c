// The FILE of commands that ask for it where it is left out.
#pragma once

#include <optional>

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

struct FileQuestion {
  bool save = false;  // a file to be written, whose replacement is asked about; otherwise one that must exist
  Text title;
  Text filter;         // pairs of text and pattern, separated by "|"
  Text extension;      // of a name without one; empty for none
  Text proposed_name;  // may be empty
};

// The positional FILE, which may be left out.
void AddFile(CommandTable& command, Text& file, const Text& what);

// To be called before anything else is done: WrongUse where no file was given and there is no terminal to ask on.
void NeedFileOrTerminal(const Text& given);

// The file that was given, or else the whole path of the one that the user names in the platform's file dialog; nothing
// where the user cancels. Needs an installed platform.
[[nodiscard]] std::optional<Text> FileOrAnswer(const Text& given, const FileQuestion& question);

}  // namespace tallybook::cli
