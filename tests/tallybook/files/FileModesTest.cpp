#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/files/FileModes.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using files::MakeNoMoreReadable;

class FileModesTest : public ::testing::Test {
 protected:
  void Make(const Text& name, mode_t mode) const {
    folder.Write(name, "x");
    ASSERT_EQ(::chmod(folder.Path(name).c_str(), mode), 0);
  }
  [[nodiscard]] mode_t ModeOf(const Text& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(folder.Path(name).c_str(), &status), 0);
    return status.st_mode & 0777U;
  }

  TempFolder folder;
};

TEST_F(FileModesTest, TakesRightsFromOthersThatTheyDoNotHaveOnTheOtherFile) {
  Make("new", 0664);
  Make("book", 0640);
  EXPECT_FALSE(MakeNoMoreReadable(folder.Path("new"), folder.Path("book")));
  EXPECT_EQ(ModeOf("new"), 0640U);
  Make("book", 0400);
  EXPECT_FALSE(MakeNoMoreReadable(folder.Path("new"), folder.Path("book")));
  EXPECT_EQ(ModeOf("new"), 0600U);
}

TEST_F(FileModesTest, GivesNobodyMoreRights) {
  Make("new", 0600);
  Make("book", 0666);
  EXPECT_FALSE(MakeNoMoreReadable(folder.Path("new"), folder.Path("book")));
  EXPECT_EQ(ModeOf("new"), 0600U);
}

TEST_F(FileModesTest, TellsWhereEitherFileIsMissing) {
  Make("new", 0644);
  EXPECT_EQ(MakeNoMoreReadable(folder.Path("new"), folder.Path("none")), std::errc::no_such_file_or_directory);
  EXPECT_EQ(MakeNoMoreReadable(folder.Path("none"), folder.Path("new")), std::errc::no_such_file_or_directory);
}

}  // namespace
}  // namespace tallybook::testing
