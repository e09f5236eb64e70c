#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/application/StopText.h"

namespace tallybook::application {
namespace {

TEST(StopTextTest, TellsFilePlaceWordsAndNumber) {
  EXPECT_EQ(StopText({.file = "january.txt",
                      .place = "record 3",
                      .words = "\"x\" is not a number",
                      .number = 13,
                      .statement = 107}),
            "january.txt: record 3: \"x\" is not a number (error 13: type mismatch, statement 107)");
}

TEST(StopTextTest, LeavesOutWhatTheReasonDoesNotTell) {
  EXPECT_EQ(StopText({.words = "cancelled"}), "cancelled");
  EXPECT_EQ(StopText({.file = "a.QDX", .words = "cancelled"}), "a.QDX: cancelled");
  EXPECT_EQ(StopText({.words = "no record", .statement = 105}), "no record (statement 105)");
  EXPECT_EQ(StopText({.words = "odd", .number = 4711}), "odd (error 4711)");
}

TEST(StopTextTest, AReasonWithoutWordsSaysSo) {
  EXPECT_EQ(StopText({.file = "a.QDX"}), "a.QDX: stopped without a reason");
}

TEST(StopTextTest, EveryNumberOfAFailureHasWords) {
  for (const int number : {5, 6, 7, 9, 11, 13, 51, 52, 53, 57, 61, 62, 70, 73, 75, 76, 91, 894}) {
    EXPECT_NE(WordsOfNumber(static_cast<Integer>(number)), "") << number;
  }
  EXPECT_EQ(WordsOfNumber(0), "");
}

TEST(StopTextTest, StaysOnOneLineAndShowsControlCharacters) {
  EXPECT_EQ(StopText({.file = "a\x1B[2J.txt", .words = "first\r\nsecond\ttab"}), "a\\x1b[2J.txt: first second\\ttab");
}

TEST(StopTextTest, CutsWordsWithoutEndBetweenTwoCharacters) {
  Text words = "x";
  for (int i = 0; i < 1000; ++i) words += "é";
  const Text text = StopText({.words = words, .statement = 3});
  EXPECT_LT(text.size(), 450U);
  EXPECT_THAT(text, ::testing::EndsWith("é... (statement 3)"));
}

}  // namespace
}  // namespace tallybook::application
