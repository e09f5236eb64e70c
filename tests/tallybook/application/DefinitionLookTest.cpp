// Definitions looked at before they are loaded, as the store would find them on the machine.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tallybook/application/DefinitionLook.h"
#include "tallybook/application/WholeFiles.h"
#include "tests/support/FailsWith.h"
#include "tests/support/InChild.h"
#include "tests/support/OtherProcess.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using ::testing::ElementsAre;
using testing::FailsWith;
using ::testing::HasSubstr;

class DefinitionLookTest : public ::testing::Test {
 protected:
  DefinitionLookTest() { ThePlatform().files = &files_; }

  void Define(const Text& name, const Text& title = "North") const {
    folder_.Write(name, "\"" + title + "\",\"in/*.QDX\",1,1,1\r\n0,0\r\n0\r\n");
  }
  [[nodiscard]] std::vector<SeenDefinition> Look() { return LookAtDefinitions(files_, folder_.Path(), "shop"); }
  // The reason why the only definition cannot be read.
  [[nodiscard]] Text Trouble() {
    const auto seen = Look();
    return seen.size() == 1 ? seen.front().trouble : "there are " + std::to_string(seen.size());
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  WholeFiles files_{platform_.files};
};

TEST_F(DefinitionLookTest, SeesTheDefinitionsOfTheBookByNumber) {
  Define("TBQDX10.shop", "Ten");
  Define("TBQDX2.shop", "Two");
  Define("TBQDX3.other");
  Define("TBQDX4.my.shop");
  Define("TBQDBU1.shop");
  for (const char* name : {"TBQDX02.shop", "TBQDX0.shop", "TBQDX99999.shop", "tbqdx5.shop", "TBQDX.shop"}) Define(name);
  const auto seen = Look();
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].title, "Two");
  EXPECT_EQ(seen[1].number, 10);
  EXPECT_EQ(seen[1].exchange_files, "in/*.QDX");
  EXPECT_EQ(seen[1].path, folder_.Path("TBQDX10.shop"));
  NeedReadableDefinitions(seen);
}

TEST_F(DefinitionLookTest, EveryCutOfADefinitionIsTroubleButForItsLastItem) {
  Define("TBQDX1.shop");
  const std::string whole = folder_.Read("TBQDX1.shop");
  for (std::size_t size = 0; size < whole.size(); ++size) {
    folder_.Write("TBQDX1.shop", whole.substr(0, size));
    files_.Show(folder_.Path("TBQDX1.shop"), folder_.Read("TBQDX1.shop"));
    // The carriage return alone ends a line, and so does what stands before the last item, which older ones lack.
    const bool sound = size == whole.size() - 1 || size == whole.size() - 3 || size == whole.size() - 4;
    EXPECT_EQ(Trouble().empty(), sound) << size;
  }
}

TEST_F(DefinitionLookTest, WhatIsNoFileIsTrouble) {
  std::filesystem::create_directory(folder_.Path("TBQDX1.shop"));
  EXPECT_EQ(Trouble(), "it is a folder");
  std::filesystem::remove(folder_.Path("TBQDX1.shop"));
  ASSERT_EQ(::mkfifo(folder_.Path("TBQDX1.shop").c_str(), 0600), 0);
  EXPECT_EQ(Trouble(), "it is a pipe");
  std::filesystem::remove(folder_.Path("TBQDX1.shop"));
  std::filesystem::create_symlink("nowhere", folder_.Path("TBQDX1.shop"));
  EXPECT_EQ(Trouble(), "it is a link that leads nowhere");
}

TEST_F(DefinitionLookTest, ADefinitionThatMayNotBeReadIsTroubleAtOnce) {
  Define("TBQDX1.shop");
  ::chmod(folder_.Path().c_str(), 0777);
  ::chmod(folder_.Path("TBQDX1.shop").c_str(), 0);
  EXPECT_THAT(testing::InChild([&] {
                testing::BecomeNobody();
                NeedReadableDefinitions(Look());
              }),
              HasSubstr("exchange definition 1 (" + folder_.Path("TBQDX1.shop") + ") cannot be read: "));
  EXPECT_EQ(platform_.clock.Slept(), 0);
}

TEST_F(DefinitionLookTest, ADefinitionThatAnotherProcessHoldsIsWaitedForAndThenTrouble) {
  Define("TBQDX1.shop");
  const testing::OtherProcess other("BL", folder_.Path("TBQDX1.shop"));
  ASSERT_TRUE(other.Holds());
  EXPECT_THAT(Trouble(), HasSubstr("it is in use"));
  EXPECT_NEAR(platform_.clock.Slept(), 3, 0.5);
}

TEST_F(DefinitionLookTest, EveryTroubleIsToldByNumber) {
  folder_.Write("TBQDX1.shop", "");
  Define("TBQDX2.shop");
  folder_.Write("TBQDX3.shop", "x");
  EXPECT_THAT([&] { NeedReadableDefinitions(Look()); },
              FailsWith(FailureNumber::kPathOrAccess, "exchange definition 1 (" + folder_.Path("TBQDX1.shop") +
                                                          ") cannot be read: it is cut short; exchange definition 3"));
}

TEST_F(DefinitionLookTest, WhatWasSeenIsWhatIsReadAfterwardsUntilItIsWritten) {
  Define("TBQDX1.shop");
  const Text path = folder_.Path("TBQDX1.shop");
  const std::string whole = folder_.Read("TBQDX1.shop");
  (void)Look();
  folder_.Write("TBQDX1.shop", "cut");
  Text bytes(1000, '\0');
  const auto file = files_.Open(path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  bytes.resize(file->ReadAt(0, std::as_writable_bytes(std::span(bytes))));
  EXPECT_EQ(bytes, whole);
  EXPECT_EQ(file->ReadAt(file->Size(), std::as_writable_bytes(std::span(bytes))), 0U);
  files_.Open(path, Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace)->Close();
  EXPECT_EQ(files_.Open(path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist)->Size(), 0);
}

TEST_F(DefinitionLookTest, ADefinitionWhoseReadFailsIsTrouble) {
  Define("TBQDX1.shop");
  platform_.files.FailNth(testing::FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_FALSE(Trouble().empty());
}

TEST_F(DefinitionLookTest, AFolderThatCannotBeListedIsNoEmptyOne) {
  std::filesystem::create_directory(folder_.Path("closed"));
  ::chmod(folder_.Path().c_str(), 0777);
  ::chmod(folder_.Path("closed").c_str(), 0311);
  const auto refused = HasSubstr("cannot be listed: Permission denied");
  EXPECT_THAT(testing::InChild([&] {
                testing::BecomeNobody();
                (void)LookAtDefinitions(files_, folder_.Path("closed/"), "shop");
              }),
              refused);
  EXPECT_THAT(testing::InChild([&] {
                testing::BecomeNobody();
                NeedRegularExchangeFiles(folder_.Path("closed/*.QDX"));
              }),
              refused);
}

TEST_F(DefinitionLookTest, ExchangeFilesThatAreNoFilesAreRefusedByTheirKind) {
  folder_.Write("a.QDX", "x");
  std::filesystem::create_directory(folder_.Path("b.QDX"));
  NeedRegularExchangeFiles(folder_.Path("*.QDX"));
  NeedRegularExchangeFiles(folder_.Path("missing.QDX"));
  EXPECT_THAT([&] { NeedRegularExchangeFiles(folder_.Path("b.QDX")); },
              FailsWith(FailureNumber::kPathOrAccess, "b.QDX is a folder"));
  ASSERT_EQ(::mkfifo(folder_.Path("c.QDX").c_str(), 0600), 0);
  EXPECT_THAT([&] { NeedRegularExchangeFiles(folder_.Path("*.QDX")); },
              FailsWith(FailureNumber::kPathOrAccess, "c.QDX is a pipe"));
  EXPECT_THAT(ExchangeFilesOf(folder_.Path("a.*")), ElementsAre(folder_.Path("a.QDX")));
}

}  // namespace
}  // namespace tallybook::application
