#include <gtest/gtest.h>

#include "tallybook/application/Shown.h"

namespace tallybook::application {
namespace {

TEST(ShownTest, LeavesTextThatCanBeReadAsItIs) {
  for (const char* text : {"", "North Shop", "CAFÉ", "Größe 5 €", "日本", "😀", "a\\b"}) EXPECT_EQ(Shown(text), text);
}

TEST(ShownTest, ShowsControlCharactersByNameOrNumber) {
  EXPECT_EQ(Shown("a\nb\tc\rd"), "a\\nb\\tc\\rd");
  EXPECT_EQ(Shown("\x1b[2Jgone"), "\\x1b[2Jgone");
  EXPECT_EQ(Shown(Text("a\0b\x7f", 4)), "a\\x00b\\x7f");
  EXPECT_EQ(Shown("a\xC2\x9B"), "a\\x9b") << "a control of eight bits";
}

TEST(ShownTest, ShowsWhatTurnsTheDirectionOfTextRound) {
  EXPECT_EQ(Shown("a\u202Eb"), "a\\u202eb");
  EXPECT_EQ(Shown("a\u2066b\u2028c"), "a\\u2066b\\u2028c");
}

TEST(ShownTest, ShowsBytesThatAreNoCharacters) {
  EXPECT_EQ(Shown("a\xFF"), "a\\xff");
  EXPECT_EQ(Shown("\xC3"), "\\xc3") << "cut short";
  EXPECT_EQ(Shown("\xC3(\xC0\x80"), "\\xc3(\\xc0\\x80") << "too long a form";
  EXPECT_EQ(Shown("\xED\xA0\x80"), "\\xed\\xa0\\x80") << "half of a pair";
  EXPECT_EQ(Shown("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80") << "beyond the last";
}

TEST(ShownTest, ATextOfSeveralLinesFitsOnOne) {
  EXPECT_EQ(OnOneLine("first\r\nsecond\nthird\x1b"), "first second third\\x1b");
}

}  // namespace
}  // namespace tallybook::application
