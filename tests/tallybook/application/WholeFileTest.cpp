// Outputs that are written whole, on the files of the machine: links, modes, other users, other processes, kills.
#include <csignal>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/PosixFileSystem.h"
#include "tallybook/application/WholeFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/InChild.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

using testing::FailsWith;
using ::testing::HasSubstr;
using testing::InChild;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

class WholeFileTest : public ::testing::Test {
 protected:
  WholeFileTest() { ::chmod(folder_.Path().c_str(), 0777); }

  [[nodiscard]] WholeFile File(const Text& name = "out") { return {files_, folder_.Path(name)}; }
  static void Put(WholeFile& file, const std::string& bytes) {
    std::ofstream(file.Begin(), std::ios::binary | std::ios::trunc) << bytes;
  }
  void Write(const Text& name, const std::string& bytes) {
    WholeFile file = File(name);
    Put(file, bytes);
    EXPECT_TRUE(file.Keep());
  }
  [[nodiscard]] std::vector<Text> Names() const {
    std::vector<Text> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path()))
      names.push_back(entry.path().filename().string());
    return names;
  }
  [[nodiscard]] struct stat StatusOf(const Text& name) const {
    struct stat status {};
    EXPECT_EQ(::stat(folder_.Path(name).c_str(), &status), 0) << name;
    return status;
  }
  // Another process begins the output and is killed before it is kept.
  void BeginAndDie() {
    EXPECT_EQ(InChild([&] {
                WholeFile file = File();
                Put(file, "half");
                ::raise(SIGKILL);
              }),
              "killed");
  }

  testing::TempFolder folder_;
  PosixFileSystem files_;
};

TEST_F(WholeFileTest, TheOldFileStandsUntilTheNewOneIsKept) {
  folder_.Write("out", "old");
  WholeFile file = File();
  Put(file, "new");
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_TRUE(file.Keep());
  EXPECT_EQ(folder_.Read("out"), "new");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, WhatIsNotKeptIsTakenAway) {
  folder_.Write("out", "old");
  {
    WholeFile file = File();
    Put(file, "new");
  }
  WholeFile dropped = File("other");
  Put(dropped, "new");
  EXPECT_TRUE(dropped.Drop());
  EXPECT_FALSE(dropped.Drop());
  EXPECT_FALSE(dropped.Keep());
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, ABrokenOneIsNotKept) {
  folder_.Write("out", "old");
  WholeFile file = File();
  Put(file, "new");
  file.SetBroken(true);
  EXPECT_FALSE(file.Keep());
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, AKilledWriterLeavesTheOldFileAndTheNextClearsUp) {
  folder_.Write("out", "old");
  BeginAndDie();
  EXPECT_EQ(folder_.Read("out"), "old");
  EXPECT_EQ(Names().size(), 2U);
  Write("out", "new");
  EXPECT_EQ(folder_.Read("out"), "new");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, OnlyLeftoversOfItsOwnNameAreCleared) {
  BeginAndDie();
  Write("out2", "new");
  EXPECT_EQ(Names().size(), 2U);
  folder_.Write(".out.part-short", "of somebody");
  Write("out", "new");
  EXPECT_THAT(Names(), UnorderedElementsAre("out", "out2", ".out.part-short"));
}

TEST_F(WholeFileTest, TwoWritersOfOneNameDoNotMeet) {
  WholeFile first = File();
  Put(first, "first");
  EXPECT_THAT(InChild([&] { (void)File().Begin(); }), HasSubstr("another process is writing it"));
  EXPECT_TRUE(first.Keep());
  EXPECT_EQ(folder_.Read("out"), "first");
}

TEST_F(WholeFileTest, ALinkStaysALinkAndItsTargetIsReplaced) {
  std::filesystem::create_directory(folder_.Path("deep"));
  folder_.Write("deep/target", "old");
  std::filesystem::create_symlink("deep/target", folder_.Path("out"));
  Write("out", "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("out")));
  EXPECT_EQ(folder_.Read("deep/target"), "new");
}

TEST_F(WholeFileTest, ALinkThatLeadsNowhereGetsItsTarget) {
  std::filesystem::create_symlink("target", folder_.Path("out"));
  Write("out", "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("out")));
  EXPECT_EQ(folder_.Read("target"), "new");
}

TEST_F(WholeFileTest, ALinkIntoNoFolderIsRefusedAndStays) {
  std::filesystem::create_symlink("none/target", folder_.Path("out"));
  EXPECT_THAT([&] { Write("out", "new"); },
              testing::FailsWith(FailureNumber::kPathNotFound, "out: it is a link into a folder that does not exist"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.Path("out")));
}

TEST_F(WholeFileTest, TheOtherNameOfAFileKeepsTheOldContents) {
  folder_.Write("other", "old");
  std::filesystem::create_hard_link(folder_.Path("other"), folder_.Path("out"));
  Write("out", "new");
  EXPECT_EQ(folder_.Read("other"), "old");
}

TEST_F(WholeFileTest, KeepsTheModeOfTheOldFile) {
  folder_.Write("out", "old");
  ASSERT_EQ(::chmod(folder_.Path("out").c_str(), 0640), 0);
  Write("out", "new");
  EXPECT_EQ(StatusOf("out").st_mode & 07777U, 0640U);
}

TEST_F(WholeFileTest, ANewFileHasTheUsualMode) {
  const mode_t before = ::umask(027);
  Write("out", "new");
  ::umask(before);
  EXPECT_EQ(StatusOf("out").st_mode & 07777U, 0640U);
}

TEST_F(WholeFileTest, KeepsTheOwnerOfTheOldFile) {
  NEEDS_ROOT();
  folder_.Write("out", "old");
  ASSERT_EQ(::chown(folder_.Path("out").c_str(), 1234, 4321), 0);
  Write("out", "new");
  EXPECT_EQ(StatusOf("out").st_uid, 1234U);
  EXPECT_EQ(StatusOf("out").st_gid, 4321U);
}

TEST_F(WholeFileTest, AnotherUsersFileThatCouldNotStayTheirsIsRefused) {
  NEEDS_ROOT();
  folder_.Write("out", "old");
  ASSERT_EQ(::chmod(folder_.Path("out").c_str(), 0666), 0);
  EXPECT_THAT(InChild([&] {
                testing::BecomeNobody();
                (void)File().Begin();
              }),
              HasSubstr("belongs to another user"));
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, AFileThatMayNotBeWrittenIsRefused) {
  EXPECT_THAT(InChild([&] {
                testing::BecomeNobody();
                folder_.Write("out", "old");
                ::chmod(folder_.Path("out").c_str(), 0444);
                (void)File().Begin();
              }),
              HasSubstr("the old file may not be written"));
  EXPECT_EQ(folder_.Read("out"), "old");
}

TEST_F(WholeFileTest, AFolderThatTakesNoNewFileIsRefused) {
  std::filesystem::create_directory(folder_.Path("folder"));
  folder_.Write("folder/out", "old");
  ASSERT_EQ(::chmod(folder_.Path("folder/out").c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder_.Path("folder").c_str(), 0555), 0);
  for (const char* name : {"folder/out", "folder/new"}) {
    EXPECT_THAT(InChild([&] {
                  testing::BecomeNobody();
                  (void)File(name).Begin();
                }),
                StartsWith("70 "));
  }
  EXPECT_EQ(folder_.Read("folder/out"), "old");
  ::chmod(folder_.Path("folder").c_str(), 0777);
}

TEST_F(WholeFileTest, AMissingFolderIsToldAsEver) {
  EXPECT_THAT([&] { (void)File("missing/out").Begin(); },
              FailsWith(FailureNumber::kPathNotFound, "its folder does not exist"));
}

TEST_F(WholeFileTest, AFileThatIsHeldIsRefused) {
  folder_.Write("out", "old");
  const auto held = files_.Open(folder_.Path("out"), Access::kRead, Sharing::kShared, Creation::kMustExist);
  EXPECT_THAT([&] { File().NeedReplaceable(); }, FailsWith(FailureNumber::kPermissionDenied, "it is in use"));
  held->Close();
  File().NeedReplaceable();
}

TEST_F(WholeFileTest, WhatIsNoFileIsRefused) {
  std::filesystem::create_directory(folder_.Path("out"));
  EXPECT_THAT([&] { (void)File().Begin(); }, FailsWith(FailureNumber::kPathOrAccess, "it is a folder"));
}

TEST_F(WholeFileTest, WhatOthersPutThereMeanwhileStays) {
  WholeFile file = File();
  Put(file, "new");
  folder_.Write("out", "of another program");
  EXPECT_THAT([&] { file.Keep(); }, FailsWith(FailureNumber::kPathOrAccess, "another program has put a file there"));
  EXPECT_EQ(folder_.Read("out"), "of another program");
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, AnUnfinishedFileThatWasTakenAwayIsTold) {
  WholeFile file = File();
  Put(file, "new");
  std::filesystem::remove(file.WorkPath());
  EXPECT_THAT([&] { file.Keep(); }, FailsWith(FailureNumber::kPathOrAccess, "taken away by another program"));
}

TEST_F(WholeFileTest, TheLogOfAnOldDatabaseDoesNotBecomeTheNewOnes) {
  folder_.Write("out", "old");
  folder_.Write("out-wal", "log");
  folder_.Write("out-journal", "journal");
  Write("out", "no database");
  EXPECT_TRUE(folder_.Has("out-wal"));
  Write("out", std::string("SQLite format 3\0 and more", 25));
  EXPECT_THAT(Names(), UnorderedElementsAre("out"));
}

TEST_F(WholeFileTest, ALongNameFindsRoom) {
  const Text name(255, 'n');
  Write(name, "new");
  EXPECT_EQ(folder_.Read(name), "new");
}

}  // namespace
}  // namespace tallybook::application
