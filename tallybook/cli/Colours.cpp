#include "tallybook/cli/Colours.h"

#include <cstdlib>

#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

// ECMA-48, 8.3.117 (SGR).
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kBoldRed = "\x1b[1;31m";
constexpr const char* kPlain = "\x1b[0m";

Text Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

bool ColourIsWanted() {
  const Text terminal = Variable("TERM");
  return Variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

Text Drawn(const char* how, const Text& text, bool on_terminal) {
  return on_terminal && ColourIsWanted() ? how + text + kPlain : text;
}

}  // namespace

Text HeadingText(const Text& text) {
  return Drawn(kBold, text, ResultsAreShownOnTerminal());
}

Text TroubleText(const Text& text) {
  return Drawn(kBoldRed, text, ErrorsAreShownOnTerminal());
}

}  // namespace tallybook::cli
