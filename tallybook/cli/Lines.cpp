#include "tallybook/cli/Lines.h"

#include <iostream>

#include "tallybook/application/Shown.h"
#include "tallybook/cli/Colours.h"

namespace tallybook::cli {

namespace {

void WriteToErrors(const Text& text) {
  std::cout.flush();
  std::cerr << text << std::flush;
}

}  // namespace

void PrintLine(const Text& line) {
  std::cout << application::Shown(line) << '\n';
}

void PrintHeading(const Text& line) {
  PrintAsItStands(HeadingText(application::Shown(line)) + '\n');
}

void PrintAsItStands(const Text& text) {
  std::cout << text;
}

void TellLine(const Text& line) {
  WriteToErrors(application::Shown(line) + '\n');
}

void Warn(const Text& line) {
  const bool is_error = true;
  TellUnder("tallybook", line, is_error);
}

void TellUnder(const Text& name, const Text& line, bool is_error) {
  const Text head = application::Shown(name) + ":";
  WriteToErrors((is_error ? TroubleText(head) : head) + ' ' + application::Shown(line) + '\n');
}

void Prompt(const Text& text) {
  WriteToErrors(application::Shown(text));
}

}  // namespace tallybook::cli
