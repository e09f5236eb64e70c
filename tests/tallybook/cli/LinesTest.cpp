#include <functional>
#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

#include "tallybook/cli/Lines.h"

namespace tallybook::cli {
namespace {

constexpr const char* kName = "a\x1b[2J\nb";

// What `act` writes to a stream.
Text Written(std::ostream& stream, const std::function<void()>& act) {
  std::ostringstream kept;
  std::streambuf* const before = stream.rdbuf(kept.rdbuf());
  act();
  stream.rdbuf(before);
  return kept.str();
}

Text Printed(const std::function<void()>& act) {
  return Written(std::cout, act);
}
Text Told(const std::function<void()>& act) {
  return Written(std::cerr, act);
}

TEST(LinesTest, EveryLineShowsControlCharactersAsWhatTheyAre) {
  EXPECT_EQ(Printed([] { PrintLine(kName); }), "a\\x1b[2J\\nb\n");
  EXPECT_EQ(Printed([] { PrintHeading(kName); }), "a\\x1b[2J\\nb\n");
  EXPECT_EQ(Told([] { TellLine(kName); }), "a\\x1b[2J\\nb\n");
  EXPECT_EQ(Told([] { Warn(kName); }), "tallybook: a\\x1b[2J\\nb\n");
  EXPECT_EQ(Told([] { TellUnder(kName, kName, true); }), "a\\x1b[2J\\nb: a\\x1b[2J\\nb\n");
  EXPECT_EQ(Told([] { Prompt(kName); }), "a\\x1b[2J\\nb");
}

TEST(LinesTest, WhatProgramsReadStandsAsItIs) {
  EXPECT_EQ(Printed([] { PrintAsItStands("a\tb\n"); }), "a\tb\n");
}

TEST(LinesTest, WhatIsToldStandsBehindWhatWasPrintedBefore) {
  std::ostringstream both;
  std::streambuf* const output = std::cout.rdbuf(both.rdbuf());
  std::streambuf* const errors = std::cerr.rdbuf(both.rdbuf());
  PrintLine("first");
  Warn("second");
  std::cout.rdbuf(output);
  std::cerr.rdbuf(errors);
  EXPECT_EQ(both.str(), "first\ntallybook: second\n");
}

}  // namespace
}  // namespace tallybook::cli
