// Understands the user's words by the tables of the command line.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// What the words ask for.
struct UnderstoodLine {
  CommandPath path;            // the command that the words lead to; where help is asked for it may be a group
  bool wants_help = false;     // then nothing was read
  bool wants_version = false;  // then nothing was read
};

// Reads the words behind the program's name into the records that the arguments of `program` are bound to.
//   fails  WrongUse with the reason, and with the help to read in a line of its own
[[nodiscard]] UnderstoodLine UnderstandLine(const CommandTable& program, const std::vector<Text>& words);

// The command or group that these names lead to, from the program down. WrongUse with the reason where they lead
// nowhere.
[[nodiscard]] CommandPath FindCommand(const CommandTable& program, const std::vector<Text>& names);

// What the words, which may stop half way, give for the first argument of this kind that their command has. Nothing is
// judged, and nothing is read into a record.
[[nodiscard]] std::vector<Text> GivenTexts(const CommandTable& program, const std::vector<Text>& words,
                                           ArgumentKind kind);

// "See: tallybook import qdx --help".
[[nodiscard]] Text SeeText(const CommandPath& path);

}  // namespace tallybook::cli
