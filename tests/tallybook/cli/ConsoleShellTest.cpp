#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/cli/ConsoleShell.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::cli {
namespace {

using tallybook::testing::FailsWith;
using tallybook::testing::TempFolder;

// The path leads to a folder of the test's own, and the folder in force is put back.
class ConsoleShellTest : public ::testing::Test {
 protected:
  ConsoleShellTest() : path_(std::getenv("PATH")), before_(std::filesystem::current_path()) {
    ::setenv("PATH", folder.Path().c_str(), 1);
  }
  ~ConsoleShellTest() override {
    ::setenv("PATH", path_.c_str(), 1);
    std::filesystem::current_path(before_);
  }

  // A desktop whose program for opening does this.
  void Desktop(const Text& script) {
    folder.Write("xdg-open", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(folder.Path("xdg-open"), std::filesystem::perms::owner_all);
  }

  TempFolder folder;
  ConsoleShell shell;

 private:
  Text path_;
  std::filesystem::path before_;
};

TEST_F(ConsoleShellTest, OpensAFileWithTheDesktopsApplication) {
  Desktop("printf '%s|' \"$@\" > " + folder.Path("opened"));
  EXPECT_GT(shell.Open("a file's name.csv", 0), 32);
  EXPECT_EQ(folder.Read("opened"), "a file's name.csv|");
}

TEST_F(ConsoleShellTest, TellsNoApplicationFromOtherTrouble) {
  EXPECT_EQ(shell.Open("a.csv", 0), kNoAssociation) << "without a desktop";
  Desktop("exit 3");
  EXPECT_EQ(shell.Open("a.csv", 0), kNoAssociation);
  for (const char* trouble : {"exit 2", "exit 4", "kill -9 $$"}) {
    Desktop(trouble);
    EXPECT_LE(shell.Open("a.csv", 0), 32) << trouble;
    EXPECT_NE(shell.Open("a.csv", 0), kNoAssociation) << trouble;
  }
}

TEST_F(ConsoleShellTest, MovesTheFolderInForce) {
  shell.SetCurrentFolder(folder.Path());
  EXPECT_TRUE(std::filesystem::equivalent(shell.CurrentFolder(), folder.Path()));
  EXPECT_NE(shell.CurrentFolder().back(), '/');
  EXPECT_THAT([&] { shell.SetCurrentFolder(folder.Path("nowhere")); },
              FailsWith(FailureNumber::kPathNotFound, folder.Path("nowhere")));
  EXPECT_TRUE(std::filesystem::equivalent(shell.CurrentFolder(), folder.Path()));
}

TEST_F(ConsoleShellTest, AFolderThatWasTakenAwayCannotBeTold) {
  std::filesystem::create_directory(folder.Path("gone"));
  shell.SetCurrentFolder(folder.Path("gone"));
  std::filesystem::remove(folder.Path("gone"));
  EXPECT_THAT([&] { static_cast<void>(shell.CurrentFolder()); }, FailsWith(FailureNumber::kPathNotFound));
}

TEST_F(ConsoleShellTest, HasNoFoldersOfTheSystemAndStartsNothing) {
  EXPECT_EQ(shell.SystemFolder(), "");
  EXPECT_EQ(shell.WindowsFolder(), "");
  EXPECT_NE(shell.PlatformId(), 2);
  EXPECT_THAT([&] { shell.Run("RUNDLL32.EXE", "a.csv", ""); },
              FailsWith(FailureNumber::kFeatureUnavailable, "RUNDLL32.EXE a.csv"));
}

}  // namespace
}  // namespace tallybook::cli
