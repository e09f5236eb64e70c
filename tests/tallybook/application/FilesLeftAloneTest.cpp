#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/Platform.h"
#include "tallybook/application/FilesLeftAlone.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

class FilesLeftAloneTest : public ::testing::Test {
 protected:
  void SetUp() override {
    folder_.Write("a.QDX", "a");
    folder_.Write("b.QDX", "b");
  }

  std::vector<Text> Found() {
    std::vector<Text> names;
    for (const FoundFile& found : ThePlatform().files->Find(folder_.Path("*.QDX"))) names.push_back(found.name);
    return names;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
};

TEST_F(FilesLeftAloneTest, AreNeitherFoundNorOpenedWhileItLives) {
  {
    const FilesLeftAlone left({{.definition = 1, .path = folder_.Path("a.QDX")}}, [] { return Integer{1}; });
    EXPECT_THAT(Found(), ::testing::ElementsAre("b.QDX"));
    EXPECT_FALSE(ThePlatform().files->Attributes(folder_.Path("a.QDX")).found);
    EXPECT_TRUE(ThePlatform().files->Attributes(folder_.Path("b.QDX")).found);
    EXPECT_THAT(
        [&] {
          (void)ThePlatform().files->Open(folder_.Path("a.QDX"), Access::kRead, Sharing::kShared, Creation::kMustExist);
        },
        testing::FailsWith(FailureNumber::kFileNotFound, "left alone"));
  }
  EXPECT_THAT(Found(), ::testing::ElementsAre("a.QDX", "b.QDX"));
  EXPECT_EQ(folder_.Read("a.QDX"), "a");
}

TEST_F(FilesLeftAloneTest, OfOneDefinitionAreThereForEveryOther) {
  Integer definition = 2;
  const FilesLeftAlone left({{.definition = 1, .path = folder_.Path("a.QDX")},
                             {.definition = 2, .path = folder_.Path("b.QDX")},
                             {.definition = 3, .path = folder_.Path("a.QDX")},
                             {.definition = 3, .path = folder_.Path("b.QDX")}},
                            [&] { return definition; });
  EXPECT_THAT(Found(), ::testing::ElementsAre("a.QDX"));
  EXPECT_TRUE(ThePlatform().files->Attributes(folder_.Path("a.QDX")).found);
  EXPECT_FALSE(ThePlatform().files->Attributes(folder_.Path("b.QDX")).found);
  definition = 1;
  EXPECT_THAT(Found(), ::testing::ElementsAre("b.QDX"));
  definition = 3;
  EXPECT_THAT(Found(), ::testing::IsEmpty());
  definition = 4;
  EXPECT_THAT(Found(), ::testing::ElementsAre("a.QDX", "b.QDX"));
}

TEST_F(FilesLeftAloneTest, AreKnownHoweverTheirPathIsSpelled) {
  Text path = folder_.Path("a.QDX");
  path.replace(path.rfind('/'), 1, "\\");
  const FilesLeftAlone left({{.definition = 1, .path = path}}, [] { return Integer{1}; });
  EXPECT_THAT(Found(), ::testing::ElementsAre("b.QDX"));
}

}  // namespace
}  // namespace tallybook::application
