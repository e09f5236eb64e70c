// Paths, waiting and pending input.
#include <gmock/gmock.h>

#include "support/Utility.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

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
