#include <filesystem>
#include <gtest/gtest.h>

#include "tallybook/files/FileNames.h"
#include "tests/support/TempFolder.h"

namespace tallybook::files {
namespace {

class FileNamesTest : public ::testing::Test {
 protected:
  std::error_code Rename(const Text& from, const Text& to) {
    return RenameToFreeName(folder_.Path(from), folder_.Path(to));
  }

  testing::TempFolder folder_;
};

TEST_F(FileNamesTest, AFileGetsAFreeName) {
  folder_.Write("work", "figures");
  EXPECT_FALSE(Rename("work", "place"));
  EXPECT_EQ(folder_.Read("place"), "figures");
  EXPECT_FALSE(folder_.Has("work"));
  EXPECT_EQ(std::filesystem::hard_link_count(folder_.Path("place")), 1U);
}

TEST_F(FileNamesTest, WhatHasTheNameStays) {
  folder_.Write("work", "figures");
  folder_.Write("place", "a letter");
  std::filesystem::create_symlink("nowhere", folder_.Path("link"));
  EXPECT_EQ(Rename("work", "place"), std::errc::file_exists);
  EXPECT_EQ(Rename("work", "link"), std::errc::file_exists);
  EXPECT_EQ(folder_.Read("place"), "a letter");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("link")));
  EXPECT_EQ(folder_.Read("work"), "figures");
}

TEST_F(FileNamesTest, WhatIsMissingIsTold) {
  EXPECT_EQ(Rename("work", "place"), std::errc::no_such_file_or_directory);
  folder_.Write("work", "figures");
  EXPECT_EQ(Rename("work", "none/place"), std::errc::no_such_file_or_directory);
}

TEST_F(FileNamesTest, AFolderThatIsNotThereIsPassedOver) {
  StoreFolder(folder_.Path());
  StoreFolder(folder_.Path("none"));
}

}  // namespace
}  // namespace tallybook::files
