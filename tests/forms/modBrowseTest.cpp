#include <gmock/gmock.h>

#include "forms/modBrowse.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

class BrowseForFolderTest : public ::testing::Test {
 protected:
  ScriptedPlatform platform_{FilesIn::kMemory};
  ScriptedFileDialogs& dialogs_ = platform_.file_dialogs;
};

TEST_F(BrowseForFolderTest, GivesTheFolderThatTheUserChose) {
  dialogs_.Choose("/import/2004");
  EXPECT_EQ(BrowseForFolder(77, "Where from?", "/import", false), "/import/2004");
  const FolderDialogRequest& asked = dialogs_.FolderRequests().back();
  EXPECT_EQ(asked.owner, 77);
  EXPECT_EQ(asked.title, "Where from?");
  EXPECT_EQ(asked.initial_folder, "/import");
  EXPECT_EQ(asked.flags, 0xC8);
}

TEST_F(BrowseForFolderTest, ABoxToTypeInHasFlagsOfItsOwn) {
  dialogs_.Choose("/import");
  EXPECT_EQ(BrowseForFolder(0, "", "", true), "/import");
  EXPECT_EQ(dialogs_.FolderRequests().back().flags, 0x40D8);
}

TEST_F(BrowseForFolderTest, ACancelGivesAnEmptyText) {
  dialogs_.Cancel();
  EXPECT_EQ(BrowseForFolder(0, "", "/import", false), "");
}

TEST_F(BrowseForFolderTest, ThePathEndsAtItsFirstZeroCharacter) {
  dialogs_.Choose(Text("/import\0rest", 12));
  EXPECT_EQ(BrowseForFolder(0, "", "", false), "/import");
}

TEST_F(BrowseForFolderTest, APathThatIsLongerThanTheBufferIsAFailureAndNeverCut) {
  const Text longest = "/" + Text(259, 'x');
  dialogs_.Choose(longest);
  EXPECT_EQ(BrowseForFolder(0, "", "", false), longest);
  dialogs_.Choose(longest + "y");
  EXPECT_THAT([] { (void)BrowseForFolder(0, "", "", false); }, FailsWith(FailureNumber::kPathOrAccess, "261"));
}

TEST_F(BrowseForFolderTest, TheFolderInForceIsTheSameOnEveryWayOut) {
  dialogs_.Choose("/import");
  EXPECT_EQ(BrowseForFolder(0, "", "", false), "/import");
  EXPECT_EQ(platform_.shell.current_folder, "/here/");
  dialogs_.Cancel();
  EXPECT_EQ(BrowseForFolder(0, "", "", false), "");
  EXPECT_EQ(platform_.shell.current_folder, "/here/");
  dialogs_.Fail(FailureNumber::kDeviceError, "broken");
  EXPECT_THAT([] { (void)BrowseForFolder(0, "", "", false); }, FailsWith(FailureNumber::kDeviceError));
  EXPECT_EQ(platform_.shell.current_folder, "/here/");
}

TEST_F(BrowseForFolderTest, WithoutDialogsItFailsAndWithoutAShellThereIsNoFolderToKeep) {
  ThePlatform().shell = nullptr;
  dialogs_.Choose("/import");
  EXPECT_EQ(BrowseForFolder(0, "", "", false), "/import");
  ThePlatform().file_dialogs = nullptr;
  EXPECT_THAT([] { (void)BrowseForFolder(0, "", "", false); }, FailsWith(FailureNumber::kFeatureUnavailable));
}

}  // namespace
}  // namespace tallybook::testing
