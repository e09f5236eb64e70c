// What completes a command line of the program in bash, zsh and fish, made from the tables of the command line.
// Commands, options and choices stand in the scripts; what a book holds is asked of the hidden command `complete`.
#pragma once

#include "base/Types.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// Each is a whole file as the shell loads it: `tallybook` of bash-completion, `_tallybook` of zsh, `tallybook.fish`.
[[nodiscard]] Text BashCompletion(const CommandTable& program);
[[nodiscard]] Text ZshCompletion(const CommandTable& program);
[[nodiscard]] Text FishCompletion(const CommandTable& program);

// The word by which the scripts ask the hidden command for values of a kind: "account", "field", "definition",
// "journal", "account-pair", "field-pair" or "command". Empty for a kind that no book holds. For a pair they hand over
// the word under way, too, since only a pair that is begun says which half is wanted.
[[nodiscard]] Text AskedKind(ArgumentKind kind);

}  // namespace tallybook::cli
