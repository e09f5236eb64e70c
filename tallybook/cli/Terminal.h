// What the command knows of the terminal that it runs on: whether there is one, its width, a line typed at a prompt,
// other programs on it, and Ctrl-C as the user's cancel. POSIX calls of this folder stand in Terminal.cpp alone.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::cli {

// True where a question can be shown on standard error and answered on standard input.
[[nodiscard]] bool CanAsk();
// True where standard output and standard error are terminals.
[[nodiscard]] bool ResultsAreShownOnTerminal();
[[nodiscard]] bool ErrorsAreShownOnTerminal();
// Characters a line of that terminal; 80 where it does not say.
[[nodiscard]] int TerminalWidth();

// A line that the user types, without its end. Nothing at the end of the input, and when Ctrl-C comes meanwhile.
[[nodiscard]] std::optional<Text> ReadTypedLine();

// Runs a program, found on the path, with this terminal, and gives its exit status once it has ended: that of the
// shell's custom, 128 and the signal's number, where a signal ended it. Nothing where there is no such program.
[[nodiscard]] std::optional<int> RunProgram(const Text& program, const std::vector<Text>& arguments);

// Ctrl-C is a request to cancel while one of these lives, however often it is pressed; afterwards it is what it was.
// Requests are kept process-wide. Commands that poll for a request own one; in all others Ctrl-C ends the process.
class CancelKey {
 public:
  CancelKey();
  ~CancelKey();
  CancelKey(const CancelKey&) = delete;
  CancelKey& operator=(const CancelKey&) = delete;

  // A request is waiting. Cheap enough for an inner loop.
  [[nodiscard]] static bool Pressed();
  // The request has been followed.
  static void Forget();
};

}  // namespace tallybook::cli
