// What the command says to people. Every line of this folder goes through here on its way to standard output or
// standard error, so that no name in it can move the cursor, change the screen or make a line of its own
// (application/Shown.h), and errors look alike; tests/rules sees to it that nothing else writes to the two streams.
//
// A line is one line: a line break in it is shown as "\n". Texts of several lines are told line by line.
#pragma once

#include "base/Types.h"

namespace tallybook::cli {

// A line on standard output.
void PrintLine(const Text& line);
// One that stands above others: in colour on a terminal.
void PrintHeading(const Text& line);
// On standard output as it stands: what other programs read, and texts that were made for the terminal.
void PrintAsItStands(const Text& text);

// A line on standard error, behind all that standard output was told before.
void TellLine(const Text& line);
// One about what went wrong: "tallybook: LINE". The name is in colour on a terminal.
void Warn(const Text& line);
// A line under another name, in colour where it is about an error.
void TellUnder(const Text& name, const Text& line, bool is_error);
// A question on standard error, without a line end.
void Prompt(const Text& text);

}  // namespace tallybook::cli
