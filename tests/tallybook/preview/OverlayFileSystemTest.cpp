// A file system that notes what is done to files and does none of it.
#include <filesystem>
#include <gmock/gmock.h>

#include "support/LastFailures.h"
#include "support/Utility.h"
#include "tallybook/preview/OverlayFileSystem.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::preview {
namespace {

using ::testing::ElementsAre;
using testing::FailsWith;

class OverlayFileSystemTest : public ::testing::Test {
 protected:
  OverlayFileSystemTest() : files_(platform_.files, [this](const Text& path) { Asked(path); }) {
    ThePlatform().files = &files_;
    folder_.Write("a.QDX", "one");
    folder_.Write("b.QDX", "two");
  }

  void Asked(const Text& path) {
    asked_.push_back(path);
    if (refuses_) throw Failure(FailureNumber::kPermissionDenied, "held");
  }
  [[nodiscard]] std::vector<Text> Names(const Text& pattern) {
    std::vector<Text> names;
    for (const FoundFile& file : files_.Find(folder_.Path(pattern))) names.push_back(file.name);
    return names;
  }
  [[nodiscard]] Text Read(const Text& path) {
    const auto file = files_.Open(path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
    Text text(static_cast<std::size_t>(file->Size()), '\0');
    EXPECT_EQ(file->ReadAt(0, std::as_writable_bytes(std::span(text))), text.size());
    return text;
  }
  void Write(const Text& path, Creation creation, long long offset, const Text& text) {
    const auto file = files_.Open(path, Access::kReadWrite, Sharing::kLockReadWrite, creation);
    file->WriteAt(offset, std::as_bytes(std::span(text)));
    file->Close();
  }
  [[nodiscard]] std::vector<Text> Deeds() const {
    const std::vector<Text> words = {"deleted", "renamed", "written"};
    std::vector<Text> deeds;
    for (const FileDeed& deed : files_.Deeds()) {
      deeds.push_back(FileBaseName(deed.path) + " " + words[static_cast<std::size_t>(deed.kind)] +
                      (deed.new_path.empty() ? "" : " " + FileBaseName(deed.new_path)));
    }
    return deeds;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  OverlayFileSystem files_;
  std::vector<Text> asked_;
  bool refuses_ = false;
};

TEST_F(OverlayFileSystemTest, ADeletedFileIsGoneAndStandsBelow) {
  ASSERT_TRUE(KillFile(folder_.Path("a.QDX")));
  EXPECT_FALSE(FileExists(folder_.Path("a.QDX")));
  EXPECT_THAT(Names("*.QDX"), ElementsAre("b.QDX"));
  EXPECT_THAT([&] { (void)Read(folder_.Path("a.QDX")); }, FailsWith(FailureNumber::kFileNotFound));
  EXPECT_EQ(folder_.Read("a.QDX"), "one");
  EXPECT_THAT(Deeds(), ElementsAre("a.QDX deleted"));
}

TEST_F(OverlayFileSystemTest, ARenamedFileStandsUnderItsNewNameAlone) {
  const Date modified = files_.Find(folder_.Path("a.QDX")).at(0).modified;
  ASSERT_TRUE(RenameFile(folder_.Path("a.QDX"), folder_.Path("a.XDQ")));
  EXPECT_THAT(Names("*.QDX"), ElementsAre("b.QDX"));
  EXPECT_THAT(Names("*.*"), ElementsAre("a.XDQ", "b.QDX"));
  EXPECT_EQ(files_.Find(folder_.Path("a.XDQ")).at(0).modified, modified);
  EXPECT_EQ(Read(folder_.Path("a.XDQ")), "one");
  EXPECT_TRUE(folder_.Has("a.QDX"));
  EXPECT_FALSE(folder_.Has("a.XDQ"));
  ASSERT_TRUE(RenameFile(folder_.Path("a.XDQ"), folder_.Path("c.QDX")));
  EXPECT_THAT(Names("*.*"), ElementsAre("b.QDX", "c.QDX"));
  EXPECT_THAT(asked_, ElementsAre(folder_.Path("a.QDX")));
}

TEST_F(OverlayFileSystemTest, ARenamedFileTakesThePlaceOfAnOlderOne) {
  folder_.Write("a.XDQ", "old");
  ASSERT_TRUE(RenameFile(folder_.Path("a.QDX"), folder_.Path("a.XDQ")));
  EXPECT_EQ(Read(folder_.Path("a.XDQ")), "one");
  EXPECT_EQ(folder_.Read("a.XDQ"), "old");
  EXPECT_THAT(Deeds(), ElementsAre("a.XDQ deleted", "a.QDX renamed a.XDQ"));
}

TEST_F(OverlayFileSystemTest, RenamingReplacesNothing) {
  EXPECT_THAT([&] { files_.Rename(folder_.Path("a.QDX"), folder_.Path("b.QDX")); },
              FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_THAT([&] { files_.Rename(folder_.Path("no"), folder_.Path("c")); }, FailsWith(FailureNumber::kFileNotFound));
  EXPECT_THAT([&] { files_.Delete(folder_.Path("")); }, FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_TRUE(Deeds().empty());
}

TEST_F(OverlayFileSystemTest, WhatTheSystemWouldRefuseIsRefused) {
  refuses_ = true;
  EXPECT_FALSE(KillFile(folder_.Path("a.QDX")));
  EXPECT_TRUE(FileExists(folder_.Path("a.QDX")));
  EXPECT_EQ(LastChangeFailure()->Description(), "held");
  EXPECT_TRUE(Deeds().empty());
}

TEST_F(OverlayFileSystemTest, WhatIsWrittenIsReadAgainAndStaysHere) {
  Write(folder_.Path("new"), Creation::kCreateIfMissing, 2, "x");
  EXPECT_EQ(Read(folder_.Path("new")), Text("\0\0x", 3));
  EXPECT_THAT(Names("n*"), ElementsAre("new"));
  Write(folder_.Path("a.QDX"), Creation::kMustExist, 1, "N");
  EXPECT_EQ(Read(folder_.Path("a.QDX")), "oNe");
  Write(folder_.Path("a.QDX"), Creation::kReplace, 0, "z");
  EXPECT_EQ(Read(folder_.Path("a.QDX")), "z");
  EXPECT_EQ(folder_.Read("a.QDX"), "one");
  EXPECT_FALSE(folder_.Has("new"));
}

TEST_F(OverlayFileSystemTest, ACopyIsAFileOfItsOwn) {
  files_.Copy(folder_.Path("a.QDX"), folder_.Path("copy"));
  ASSERT_TRUE(KillFile(folder_.Path("a.QDX")));
  EXPECT_EQ(Read(folder_.Path("copy")), "one");
  EXPECT_FALSE(folder_.Has("copy"));
}

TEST_F(OverlayFileSystemTest, AFileIsOneUnderEveryPathToItsFolder) {
  std::filesystem::create_directory(folder_.Path("in"));
  std::filesystem::create_directory_symlink(folder_.Path("in"), folder_.Path("link"));
  folder_.Write("in/c", "three");
  ASSERT_TRUE(KillFile(folder_.Path("in/c")));
  EXPECT_FALSE(FileExists(folder_.Path("link/c")));
  EXPECT_FALSE(FileExists(folder_.Path("in/../link\\c")));
  EXPECT_TRUE(files_.Find(folder_.Path("link/*")).empty());
}

TEST_F(OverlayFileSystemTest, NoFileIsMadeWhereThereIsNoFolder) {
  EXPECT_THAT([&] { Write(folder_.Path("no/file"), Creation::kCreateIfMissing, 0, "x"); },
              FailsWith(FailureNumber::kPathNotFound));
  EXPECT_FALSE(FileExists(folder_.Path("no/file")));
}

TEST_F(OverlayFileSystemTest, AFileThatWasDeletedCanBeMadeAnew) {
  ASSERT_TRUE(KillFile(folder_.Path("a.QDX")));
  Write(folder_.Path("a.QDX"), Creation::kCreateIfMissing, 0, "again");
  EXPECT_EQ(Read(folder_.Path("a.QDX")), "again");
  EXPECT_THAT(Names("*.QDX"), ElementsAre("a.QDX", "b.QDX"));
}

}  // namespace
}  // namespace tallybook::preview
