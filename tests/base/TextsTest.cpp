#include <cmath>
#include <gmock/gmock.h>

#include "base/Texts.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

constexpr const char* kAUmlaut = "\xC3\xA4";
constexpr const char* kCapitalAUmlaut = "\xC3\x84";

// --- Padding and trimming --------------------------------------------------------------------------------------------

TEST(PaddingTest, PadLeftKeepsTheRightMostCharacters) {
  EXPECT_EQ(PadLeft("7", '0', 3), "007");
  EXPECT_EQ(PadLeft("12345", '0', 3), "345");
  EXPECT_EQ(PadLeft("", ' ', 2), "  ");
  EXPECT_EQ(PadLeft("123", '0', 3), "123");
  EXPECT_EQ(PadLeft("123", '0', 0), "");
}

TEST(PaddingTest, PadRightKeepsTheLeftMostCharacters) {
  EXPECT_EQ(PadRight("7", '0', 3), "700");
  EXPECT_EQ(PadRight("12345", '0', 3), "123");
  EXPECT_EQ(PadRight("", ' ', 2), "  ");
  EXPECT_EQ(PadRight("123", '0', 0), "");
}

TEST(PaddingTest, WidthIsCountedInCharactersNotInBytes) {
  const Text word = Text("x") + kAUmlaut + "y";
  EXPECT_EQ(PadLeft(word, '.', 5), ".." + word);
  EXPECT_EQ(PadLeft(word, '.', 2), Text(kAUmlaut) + "y");
  EXPECT_EQ(PadRight(word, '.', 5), word + "..");
  EXPECT_EQ(PadRight(word, '.', 2), Text("x") + kAUmlaut);
}

TEST(PaddingTest, NegativeWidthIsAnInvalidArgument) {
  EXPECT_THAT([] { (void)PadLeft("x", ' ', -1); }, FailsWith(FailureNumber::kInvalidArgument, "-1"));
  EXPECT_THAT([] { (void)PadRight("x", ' ', -1); }, FailsWith(FailureNumber::kInvalidArgument, "-1"));
}

TEST(TrimTest, TakesBlanksAndNoOtherWhiteSpace) {
  EXPECT_EQ(TrimRight("  a b  "), "  a b");
  EXPECT_EQ(TrimBoth("  a b  "), "a b");
  EXPECT_EQ(TrimRight("a\t "), "a\t");
  EXPECT_EQ(TrimBoth(" \ta\n "), "\ta\n");
}

TEST(TrimTest, BlanksAloneAndNothingGiveNothing) {
  EXPECT_EQ(TrimRight("   "), "");
  EXPECT_EQ(TrimBoth("   "), "");
  EXPECT_EQ(TrimRight(""), "");
  EXPECT_EQ(TrimBoth(""), "");
}

// --- Case ------------------------------------------------------------------------------------------------------------

TEST(ProperCaseTest, CapitalisesADoubleNameWithAHyphen) {
  EXPECT_EQ(ProperCase("smith-jones"), "Smith-Jones");
  EXPECT_EQ(ProperCase("SMITH-JONES"), "Smith-Jones");
}

TEST(ProperCaseTest, CapitalisesBehindALeadingMc) {
  EXPECT_EQ(ProperCase("mcdonald"), "McDonald");
  EXPECT_EQ(ProperCase("old mcdonald-mcleod"), "Old McDonald-McLeod");
  EXPECT_EQ(ProperCase("macdonald"), "Macdonald");
}

TEST(ProperCaseTest, McInsideAWordIsNoBeginning) {
  EXPECT_EQ(ProperCase("dumcke"), "Dumcke");
  EXPECT_EQ(ProperCase("mccc"), "McCc");
}

TEST(ProperCaseTest, CapitalisesBehindEverySeparator) {
  EXPECT_EQ(ProperCase("a b,c.d:e!f-g\th"), "A B,C.D:E!F-G\tH");
  EXPECT_EQ(ProperCase("o'neil; x/y"), "O'neil; X/y");
}

TEST(ProperCaseTest, CharacterWithoutCaseLeavesTheCapitalToTheNextLetter) {
  EXPECT_EQ(ProperCase("3rd floor"), "3Rd Floor");
  EXPECT_EQ(ProperCase("(east)"), "(East)");
}

TEST(ProperCaseTest, KnowsTheLettersOfTheCodePage) {
  EXPECT_EQ(ProperCase(Text(kAUmlaut) + "RGER"), Text(kCapitalAUmlaut) + "rger");
  EXPECT_EQ(ProperCase(Text("B") + kCapitalAUmlaut + "R"), Text("B") + kAUmlaut + "r");
}

TEST(ProperCaseTest, KeepsTheBlanksThatWereThere) {
  EXPECT_EQ(ProperCase(""), "");
  EXPECT_EQ(ProperCase(" "), " ");
  EXPECT_EQ(ProperCase("x  "), "X  ");
}

TEST(CaseTest, ChangesAsciiLettersOnly) {
  EXPECT_EQ(UpperCase("azAZ09@[`{"), "AZAZ09@[`{");
  EXPECT_EQ(LowerCase("azAZ09@[`{"), "azaz09@[`{");
}

TEST(CaseTest, ChangesTheLettersOfTheCodePage) {
  // a with grave, thorn, s with caron, oe, z with caron, y with diaeresis
  const Text small = "\xC3\xA0\xC3\xBE\xC5\xA1\xC5\x93\xC5\xBE\xC3\xBF";
  const Text capital = "\xC3\x80\xC3\x9E\xC5\xA0\xC5\x92\xC5\xBD\xC5\xB8";
  EXPECT_EQ(UpperCase(small), capital);
  EXPECT_EQ(LowerCase(capital), small);
}

TEST(CaseTest, LeavesSignsAndLettersWithoutAPair) {
  // multiplication, division, sharp s, micro, euro, f with hook
  const Text signs = "\xC3\x97\xC3\xB7\xC3\x9F\xC2\xB5\xE2\x82\xAC\xC6\x92";
  EXPECT_EQ(UpperCase(signs), signs);
  EXPECT_EQ(LowerCase(signs), signs);
}

// --- Numbers ---------------------------------------------------------------------------------------------------------

TEST(FixYearTest, TurnsTwoDigitsIntoFourAroundEighty) {
  EXPECT_EQ(FixYear(0), 2000);
  EXPECT_EQ(FixYear(79), 2079);
  EXPECT_EQ(FixYear(80), 1980);
  EXPECT_EQ(FixYear(99), 1999);
}

TEST(FixYearTest, LeavesAHundredAndMore) {
  EXPECT_EQ(FixYear(100), 100);
  EXPECT_EQ(FixYear(2004), 2004);
  EXPECT_EQ(FixYear(32767), 32767);
}

TEST(SmallerOfTest, GivesTheSmallerAndOfEqualsTheSecond) {
  EXPECT_EQ(SmallerOf(1.5F, 2.5F), 1.5F);
  EXPECT_EQ(SmallerOf(2.5F, -1.5F), -1.5F);
  // Only the sign tells the two zeros apart.
  EXPECT_FALSE(std::signbit(SmallerOf(-0.0F, 0.0F)));
  EXPECT_TRUE(std::signbit(SmallerOf(0.0F, -0.0F)));
}

}  // namespace
}  // namespace tallybook::testing
