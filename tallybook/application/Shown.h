// Names as a terminal, a log or a window may show them. Names of accounts, fields, definitions and files come from
// elsewhere, and may hold characters that move the cursor, change the screen or break a line.
#pragma once

#include "base/Types.h"

namespace tallybook::application {

// The text with each control character shown as what it is: \n, \t and \r, any other as its number: \x1b, \u202e for
// one that turns the direction of the text round. A byte that is no UTF-8 is shown as its number, too.
[[nodiscard]] Text Shown(const Text& text);

// The same on one line for a text of several: its line breaks become blanks.
[[nodiscard]] Text OnOneLine(const Text& text);

}  // namespace tallybook::application
