#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tallybook/settings/SettingsFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace tallybook::settings {
namespace {

using testing::FailsWith;
using testing::FileSizeLimit;

class SettingsFileTest : public ::testing::Test {
 protected:
  SettingsFileTest() {
    file_.SetFileName(folder_.Path("book.ini"));
    file_.SetSection("CSV");
  }

  testing::TempFolder folder_;
  SettingsFile file_;
};

TEST_F(SettingsFileTest, GivesTheDefaultForAMissingFile) {
  EXPECT_EQ(file_.ReadValue("ImportFile", "Import.csv"), "Import.csv");
  EXPECT_FALSE(folder_.Has("book.ini"));
}

TEST_F(SettingsFileTest, GivesTheDefaultWithoutAFileName) {
  EXPECT_EQ(SettingsFile().ReadValue("k", "d"), "d");
}

// Nobody writes into the pipe, so that whoever opened it would wait for ever.
TEST_F(SettingsFileTest, RefusesWhatIsNoRegularFile) {
  ASSERT_EQ(::mkfifo(folder_.Path("book.ini").c_str(), 0600), 0);
  EXPECT_THAT([&] { static_cast<void>(file_.ReadValue("k", "d")); },
              FailsWith(FailureNumber::kPathOrAccess, "book.ini cannot be read: it is no regular file"));
  file_.SetFileName("/dev/zero");
  EXPECT_THAT([&] { static_cast<void>(file_.ReadValue("k", "d")); },
              FailsWith(FailureNumber::kPathOrAccess, "/dev/zero cannot be read: it is no regular file"));
}

TEST_F(SettingsFileTest, ReadsBackWhatAnotherObjectWrote) {
  file_.WriteValue("ImportFile", "/in/Zürich.csv");
  SettingsFile other(folder_.Path("book.ini"));
  other.SetSection("csv");
  EXPECT_EQ(other.ReadValue("importfile", ""), "/in/Zürich.csv");
}

TEST_F(SettingsFileTest, KeepsTheOtherSettingsAndTheComments) {
  folder_.Write("book.ini", "; mine\n[QDX]\nExt=CSV\n; the end\n");
  file_.WriteValue("ImportFile", "a.csv");
  EXPECT_EQ(folder_.Read("book.ini"), "; mine\n[QDX]\nExt=CSV\n; the end\n\n[CSV]\nImportFile=a.csv\n");
}

TEST_F(SettingsFileTest, LeavesNoOtherFileBehind) {
  file_.WriteValue("a", "1");
  file_.WriteValue("b", "2");
  const std::filesystem::directory_iterator files(folder_.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

TEST_F(SettingsFileTest, KeepsThePermissionsOfTheFile) {
  folder_.Write("book.ini", "");
  ASSERT_EQ(::chmod(folder_.Path("book.ini").c_str(), 0600), 0);
  file_.WriteValue("a", "1");
  struct stat now {};
  ASSERT_EQ(::stat(folder_.Path("book.ini").c_str(), &now), 0);
  EXPECT_EQ(now.st_mode & 0777U, 0600U);
}

TEST_F(SettingsFileTest, WritesThroughASymbolicLink) {
  folder_.Write("real.ini", "[A]\nx=1\n");
  std::filesystem::create_symlink("real.ini", folder_.Path("book.ini"));
  file_.WriteValue("a", "1");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("book.ini")));
  EXPECT_EQ(folder_.Read("real.ini"), "[A]\nx=1\n\n[CSV]\na=1\n");
}

TEST_F(SettingsFileTest, FailsWithThePathWhereTheFolderIsMissing) {
  file_.SetFileName(folder_.Path("none/book.ini"));
  EXPECT_THAT([&] { file_.WriteValue("a", "1"); },
              FailsWith(FailureNumber::kPathNotFound, folder_.Path("none/book.ini")));
}

TEST_F(SettingsFileTest, FailsOnAFolderInsteadOfReadingItAsEmpty) {
  file_.SetFileName(folder_.Path());
  EXPECT_THAT([&] { (void)file_.ReadValue("a", "1"); }, FailsWith(FailureNumber::kPathOrAccess, folder_.Path()));
}

TEST_F(SettingsFileTest, LeavesTheOldFileAsItWasOnAFullDisk) {
  folder_.Write("book.ini", "[CSV]\na=1\n");
  {
    const FileSizeLimit limit(16);
    EXPECT_THAT([&] { file_.WriteValue("b", "a value that is longer than the disk"); },
                FailsWith(FailureNumber::kDiskFull, folder_.Path("book.ini")));
  }
  EXPECT_EQ(folder_.Read("book.ini"), "[CSV]\na=1\n");
  const std::filesystem::directory_iterator files(folder_.Path());
  EXPECT_EQ(std::distance(begin(files), end(files)), 1);
}

}  // namespace
}  // namespace tallybook::settings
