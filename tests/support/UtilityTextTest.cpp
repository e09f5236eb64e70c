// Texts, paths, waiting and pending input.
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/Utility.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

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

// --- Paths -----------------------------------------------------------------------------------------------------------

TEST(PathTest, ExtensionFollowsTheLastPoint) {
  EXPECT_EQ(FileExtension("a.b.txt"), "txt");
  EXPECT_EQ(FileExtension("name"), "");
  EXPECT_EQ(FileExtension("name."), "");
  EXPECT_EQ(FileExtension(""), "");
}

TEST(PathTest, ExtensionTakesAPointOfTheFolderToo) {  // meant: it looks at the text, not at its parts
  EXPECT_EQ(FileExtension("C:\\d.x\\name"), "x\\name");
}

TEST(PathTest, BaseNameFollowsTheLastSeparator) {
  EXPECT_EQ(FileBaseName("C:\\data\\x.txt"), "x.txt");
  EXPECT_EQ(FileBaseName("/data/x.txt"), "x.txt");
  EXPECT_EQ(FileBaseName("/data\\x"), "x");
  EXPECT_EQ(FileBaseName("x.txt"), "x.txt");
  EXPECT_EQ(FileBaseName("C:x"), "C:x");
  EXPECT_EQ(FileBaseName("data/"), "");
}

TEST(PathTest, FilePathEndsWithTheLastSeparator) {
  EXPECT_EQ(FilePath("C:\\data\\x.txt"), "C:\\data\\");
  EXPECT_EQ(FilePath("/data/x.txt"), "/data/");
  EXPECT_EQ(FilePath("x.txt"), "");
  EXPECT_EQ(FilePath(""), "");
}

TEST(PathTest, FilePathLooksOnlyBeforeTheFirstCarriageReturn) {
  EXPECT_EQ(FilePath("C:\\a\\b\rC:\\c\\d"), "C:\\a\\");
  EXPECT_EQ(FilePath("b\r\\c"), "");
}

TEST(PathTest, FilePathOfADriveAloneIsTheDrive) {
  EXPECT_EQ(FilePath("C:x"), "C:");
  EXPECT_EQ(FilePath("C:"), "C:");
  EXPECT_EQ(FilePath(":"), "");
  EXPECT_EQ(FilePath("ab:"), "");
}

TEST(PathTest, FilePathCountsCharactersAndNotBytes) {
  EXPECT_EQ(FilePath("\xC3\xA9:x"), "\xC3\xA9:");
  EXPECT_EQ(FilePath("\xC3\xA9:"), "\xC3\xA9:");
  EXPECT_EQ(FilePath("\xC3\xA9"), "");
  EXPECT_EQ(FilePath("a\xC3\xA9:x"), "");
}

TEST(PathTest, AddBackslashLeavesWhatNeedsNone) {
  ScriptedPlatform platform;
  EXPECT_EQ(AddBackslash(""), "");
  EXPECT_EQ(AddBackslash("C:"), "C:");
  EXPECT_EQ(AddBackslash("C:\\"), "C:\\");
  EXPECT_EQ(AddBackslash("/data/"), "/data/");
}

TEST(PathTest, AddBackslashAppendsTheSeparatorThatTheTextUsesLast) {
  ScriptedPlatform platform;
  EXPECT_EQ(AddBackslash("C:\\data"), "C:\\data\\");
  EXPECT_EQ(AddBackslash("/data"), "/data/");
  EXPECT_EQ(AddBackslash("/data\\x"), "/data\\x\\");
  EXPECT_EQ(AddBackslash("data"), Text("data") + platform.files.Separator());
}

TEST(PathTest, MapRemoteDriveMakesALocalName) {
  Text name = "\\\\tsclient\\C\\data\\x";
  EXPECT_TRUE(MapRemoteDrive(name));
  EXPECT_EQ(name, "C:\\data\\x");
  name = "\\\\TSClient\\d\\X";
  EXPECT_TRUE(MapRemoteDrive(name));
  EXPECT_EQ(name, "d:\\X");
}

TEST(PathTest, MapRemoteDriveLeavesOtherNames) {
  for (const char* const other : {"", "C:\\data\\x", "\\\\tsclient", "\\\\server\\C\\x", "x\\\\tsclient\\C"}) {
    Text name = other;
    EXPECT_FALSE(MapRemoteDrive(name)) << other;
    EXPECT_EQ(name, other);
  }
}

// --- Waiting and input -----------------------------------------------------------------------------------------------

TEST(WaitSecondsTest, WaitsForWholeSecondsByTheClock) {
  ScriptedPlatform platform;
  WaitSeconds(3);
  EXPECT_NEAR(platform.clock.Slept(), 3, 0.06);
}

TEST(WaitSecondsTest, BegunSecondIsWaitedOut) {
  ScriptedPlatform platform;
  WaitSeconds(1.5F);
  EXPECT_NEAR(platform.clock.Slept(), 2, 0.06);
}

TEST(WaitSecondsTest, DoesNotWaitForNothing) {
  ScriptedPlatform platform;
  WaitSeconds(0);
  EXPECT_EQ(platform.clock.Slept(), 0);
}

TEST(WaitSecondsTest, HandlesPendingInputAllTheWhile) {
  ScriptedPlatform platform;
  platform.input.SetPending(5);
  WaitSeconds(1);
  EXPECT_EQ(platform.input.Runs(), 5);
  EXPECT_GT(platform.input.Looks(), 5);
}

TEST(WaitSecondsTest, EndsUnderAClockThatIsSetBack) {
  ScriptedPlatform platform;
  const Date start = platform.clock.Now();
  platform.input.SetPending(1000);
  platform.input.OnRun([&] { platform.clock.Set(start - 1); });
  WaitSeconds(1);
  EXPECT_NEAR(platform.clock.Slept(), 2, 0.06);
}

TEST(HandlePendingInputTest, AsksForKeyboardMouseButtonPaintAndHotKeyWork) {
  ScriptedPlatform platform;
  HandlePendingInput();
  EXPECT_EQ(platform.input.Looks(), 1);
  EXPECT_EQ(platform.input.LastMask(), 0xA5);
  EXPECT_EQ(platform.input.Runs(), 0);
}

TEST(HandlePendingInputTest, RunsOnceForEachKindOfWorkThatMatters) {
  for (const Long kind : {0x01, 0x04, 0x20, 0x80}) {
    ScriptedPlatform platform;
    platform.input.SetPending(3, kind);
    HandlePendingInput();
    EXPECT_EQ(platform.input.Runs(), 1) << kind;
  }
}

TEST(HandlePendingInputTest, LeavesOtherWorkAlone) {
  for (const Long kind : {0x02, 0x08, 0x10, 0x40}) {
    ScriptedPlatform platform;
    platform.input.SetPending(3, kind);
    HandlePendingInput();
    EXPECT_EQ(platform.input.Runs(), 0) << kind;
  }
}

}  // namespace
}  // namespace tallybook::testing
