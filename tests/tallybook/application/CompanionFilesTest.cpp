#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/posix/PosixFileSystem.h"
#include "tallybook/application/CompanionFiles.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using application::CompanionFiles;
using ::testing::ElementsAre;

class CompanionFilesTest : public ::testing::Test {
 protected:
  CompanionFilesTest() {
    for (const char* name :
         {"TBQDX1.shop", "TBQDX12.shop", "TBQDX2.SHOP", "tbqdx3.shop", "TBQDX4.old.shop", "TBQDXa.shop", "TBQDX5.sh*p",
          "TBQDX6.shoop", "KVQDX1.shop", "KVQDX2.Shop", "week1.QDX", "WEEK2.qdx"}) {
      folder.Write(name, "");
    }
  }
  std::vector<Text> Find(const Text& pattern) {
    std::vector<Text> names;
    for (const FoundFile& file : files.Find(folder.Path(pattern))) names.push_back(file.name);
    return names;
  }

  TempFolder folder;
  PosixFileSystem disk;
  CompanionFiles files{disk};
};

TEST_F(CompanionFilesTest, FindsTheDefinitionsOfExactlyOneBook) {
  EXPECT_THAT(Find("TBQDX*.shop"), ElementsAre("TBQDX1.shop", "TBQDX12.shop"));
  EXPECT_THAT(Find("TBQDX*.SHOP"), ElementsAre("TBQDX2.SHOP"));
  EXPECT_THAT(Find("KVQDX*.shop"), ElementsAre("KVQDX1.shop"));
  EXPECT_THAT(Find("TBQDX*.old.shop"), ElementsAre("TBQDX4.old.shop"));
}

TEST_F(CompanionFilesTest, LeavesOutNumbersThatNoDefinitionHas) {
  for (const char* name : {"TBQDX01.shop", "TBQDX0.shop", "TBQDX32768.shop", "TBQDX99999.shop", "TBQDX-1.shop"})
    folder.Write(name, "");
  folder.Write("TBQDX32767.shop", "");
  EXPECT_THAT(Find("TBQDX*.shop"), ElementsAre("TBQDX1.shop", "TBQDX12.shop", "TBQDX32767.shop"));
}

TEST_F(CompanionFilesTest, TakesWildcardsInTheNameOfABookAsTheyStand) {
  EXPECT_THAT(Find("TBQDX*.sh*p"), ElementsAre("TBQDX5.sh*p"));
  EXPECT_THAT(Find("TBQDX*.sh??p"), ElementsAre());
}

TEST_F(CompanionFilesTest, LeavesEveryOtherSearchAlone) {
  EXPECT_THAT(Find("week*.qdx"), ElementsAre("week1.QDX", "WEEK2.qdx"));
  EXPECT_THAT(Find("TBQDX?.shop"), ElementsAre("TBQDX1.shop", "TBQDX2.SHOP", "tbqdx3.shop", "TBQDXa.shop"));
}

}  // namespace
}  // namespace tallybook::testing
