// Files of the machine: searching, sharing between handles and processes, and the number of each failure.
#include <fcntl.h>
#include <functional>
#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "base/Dates.h"
#include "platform/posix/PosixFileSystem.h"
#include "tests/support/FailsWith.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TimeZone.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::span<const std::byte> BytesOf(const std::string& text) {
  return std::as_bytes(std::span(text));
}

std::string ReadFrom(OpenFile& file, long long offset, std::size_t size) {
  std::string into(size, '?');
  into.resize(file.ReadAt(offset, std::as_writable_bytes(std::span(into))));
  return into;
}

// The number that an act fails with; 0 where it passes.
int NumberOfFailure(const std::function<void()>& act) {
  try {
    act();
    return 0;
  } catch (const Failure& failure) {
    return failure.Code();
  }
}

// Does an act in a process of its own and gives the number it fails with.
int NumberInChild(const std::function<void()>& act) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(NumberOfFailure(act));
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

// Becomes a user whom permissions bind: the superuser may do everything.
void GiveUpRights() {
  constexpr unsigned kNobody = 65534;
  if (::geteuid() != 0) return;
  if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
    throw Failure(FailureNumber::kInternal, "Cannot become another user");
}

class PosixFileSystemTest : public ::testing::Test {
 protected:
  std::unique_ptr<OpenFile> Open(const Text& name, Access access = Access::kRead, Sharing sharing = Sharing::kShared,
                                 Creation creation = Creation::kMustExist) {
    return files_.Open(folder_.Path(name), access, sharing, creation);
  }
  std::vector<Text> FindNames(const Text& pattern) {
    std::vector<Text> names;
    for (const FoundFile& file : files_.Find(folder_.Path(pattern))) names.push_back(file.name);
    return names;
  }
  void MakeFolder(const Text& name) { std::filesystem::create_directory(folder_.Path(name)); }

  TempFolder folder_;
  PosixFileSystem files_;
};

// --- Searching -------------------------------------------------------------------------------------------------------

TEST_F(PosixFileSystemTest, FindsByWildcardsWithoutRegardToCase) {
  for (const char* const name : {"a1.txt", "A2.TXT", "b1.txt", "a10.txt", "a1.csv", "plain"}) folder_.Write(name, "");
  EXPECT_THAT(FindNames("a?.txt"), ElementsAre("a1.txt", "A2.TXT"));
  EXPECT_THAT(FindNames("A*.TXT"), ElementsAre("a1.txt", "a10.txt", "A2.TXT"));
  EXPECT_THAT(FindNames("*1.*"), ElementsAre("a1.csv", "a1.txt", "b1.txt"));
  EXPECT_THAT(FindNames("B1.TXT"), ElementsAre("b1.txt"));
  EXPECT_THAT(FindNames("c*"), IsEmpty());
}

TEST_F(PosixFileSystemTest, StarPointStarMatchesEveryNameAndFoldersAreLeftOut) {
  for (const char* const name : {"plain", "b.txt", "C.x.y"}) folder_.Write(name, "");
  MakeFolder("a.txt");
  EXPECT_THAT(FindNames("*.*"), ElementsAre("b.txt", "C.x.y", "plain"));
  EXPECT_THAT(FindNames("*"), ElementsAre("b.txt", "C.x.y", "plain"));
}

TEST_F(PosixFileSystemTest, GivesNamesInOrderWithoutRegardToCase) {
  for (const char* const name : {"beta", "Alpha", "alpha", "GAMMA", "delta"}) folder_.Write(name, "");
  EXPECT_THAT(FindNames("*"), ElementsAre("Alpha", "alpha", "beta", "delta", "GAMMA"));
}

TEST_F(PosixFileSystemTest, EmptyPatternAndMissingFolderMatchNothing) {
  folder_.Write("a", "");
  EXPECT_THAT(files_.Find(""), IsEmpty());
  EXPECT_THAT(FindNames(""), IsEmpty());
  EXPECT_THAT(FindNames("missing/*"), IsEmpty());
}

// The moment at which a file was changed, as a search tells it.
Date ModifiedAt(const TempFolder& folder, std::time_t moment) {
  folder.Write("a", "");
  const timespec times[] = {{moment, 0}, {moment, 0}};
  EXPECT_EQ(::utimensat(AT_FDCWD, folder.Path("a").c_str(), times, 0), 0);
  const std::vector<FoundFile> found = PosixFileSystem().Find(folder.Path("a"));
  return found.size() == 1 ? found.front().modified : 0;
}

TEST_F(PosixFileSystemTest, FoundFileTellsWhenItWasChangedInUniversalTime) {
  const TimeZone zone("EAST-5:30");
  EXPECT_EQ(DateTimeText(ModifiedAt(folder_, 1075817109)), "2004-02-03 14:05:09");
}

TEST_F(PosixFileSystemTest, TheFileWrittenFirstIsTheOlderInTheHourWhenClocksGoBack) {
  const TimeZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  constexpr std::time_t kHalfPastTwoInSummer = 1099182600;  // 2004-10-31 00:30 universal time
  constexpr std::time_t kTenPastTwoInWinter = kHalfPastTwoInSummer + 40 * 60;
  EXPECT_LT(ModifiedAt(folder_, kHalfPastTwoInSummer), ModifiedAt(folder_, kTenPastTwoInWinter));
}

TEST_F(PosixFileSystemTest, BothSeparatorsLeadToTheSameFile) {
  MakeFolder("sub");
  folder_.Write("sub/a.txt", "abc");
  EXPECT_TRUE(files_.Attributes(folder_.Path("sub\\a.txt")).found);
  EXPECT_EQ(ReadFrom(*Open("sub\\a.txt"), 0, 9), "abc");
  EXPECT_THAT(FindNames("sub\\*.txt"), ElementsAre("a.txt"));
  files_.Rename(folder_.Path("sub\\a.txt"), folder_.Path("sub\\b.txt"));
  files_.Copy(folder_.Path("sub\\b.txt"), folder_.Path("sub\\c.txt"));
  files_.Delete(folder_.Path("sub\\b.txt"));
  EXPECT_FALSE(folder_.Has("sub/b.txt"));
  EXPECT_EQ(folder_.Read("sub/c.txt"), "abc");
}

TEST_F(PosixFileSystemTest, AttributesTellFileFolderAndNothingApart) {
  folder_.Write("a", "");
  MakeFolder("sub");
  const FileAttributes file = files_.Attributes(folder_.Path("a"));
  const FileAttributes sub = files_.Attributes(folder_.Path("sub"));
  const FileAttributes none = files_.Attributes(folder_.Path("missing"));
  EXPECT_TRUE(file.found && !file.directory);
  EXPECT_TRUE(sub.found && sub.directory);
  EXPECT_TRUE(!none.found && !none.directory);
}

TEST_F(PosixFileSystemTest, AttributesOfAHeldFileAreTold) {
  folder_.Write("a", "");
  const auto held = Open("a", Access::kReadWrite, Sharing::kLockReadWrite);
  const FileAttributes attributes = files_.Attributes(folder_.Path("a"));
  EXPECT_TRUE(attributes.found);
  EXPECT_FALSE(attributes.sharing_violation);
}

// --- Open files ------------------------------------------------------------------------------------------------------

TEST_F(PosixFileSystemTest, WritesAndReadsAtAnyPlace) {
  const auto file = Open("a", Access::kReadWrite, Sharing::kShared, Creation::kCreateIfMissing);
  file->WriteAt(5, BytesOf("xyz"));
  file->WriteAt(0, BytesOf("abc"));
  EXPECT_EQ(file->Size(), 8);
  EXPECT_EQ(ReadFrom(*file, 0, 100), std::string("abc\0\0xyz", 8));
  EXPECT_EQ(ReadFrom(*file, 6, 1), "y");
  EXPECT_EQ(ReadFrom(*file, 8, 1), "");
  EXPECT_EQ(ReadFrom(*file, 100, 1), "");
  file->Close();
}

TEST_F(PosixFileSystemTest, CreationDecidesWhatBecomesOfTheFile) {
  folder_.Write("a", "abc");
  EXPECT_EQ(Open("a", Access::kWrite, Sharing::kShared, Creation::kCreateIfMissing)->Size(), 3);
  EXPECT_EQ(Open("a", Access::kWrite, Sharing::kShared, Creation::kMustExist)->Size(), 3);
  EXPECT_EQ(Open("a", Access::kWrite, Sharing::kShared, Creation::kReplace)->Size(), 0);
  EXPECT_EQ(Open("new", Access::kWrite, Sharing::kShared, Creation::kReplace)->Size(), 0);
  EXPECT_TRUE(folder_.Has("new"));
}

TEST_F(PosixFileSystemTest, AccessThatWasNotAskedForIsRefused) {
  folder_.Write("a", "abc");
  EXPECT_THAT([&] { Open("a", Access::kRead)->WriteAt(0, BytesOf("x")); }, FailsWith(FailureNumber::kPermissionDenied));
  EXPECT_THAT([&] { (void)ReadFrom(*Open("a", Access::kWrite), 0, 1); }, FailsWith(FailureNumber::kPermissionDenied));
  EXPECT_EQ(folder_.Read("a"), "abc");
}

TEST_F(PosixFileSystemTest, FileThatIsRefusedIsNotEmptied) {
  folder_.Write("a", "abc");
  const auto held = Open("a", Access::kRead, Sharing::kLockWrite);
  EXPECT_THAT([&] { (void)Open("a", Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace); },
              FailsWith(FailureNumber::kPermissionDenied, "in use"));
  EXPECT_EQ(folder_.Read("a"), "abc");
}

TEST_F(PosixFileSystemTest, HoldEndsWithTheHandle) {
  folder_.Write("a", "abc");
  Open("a", Access::kReadWrite, Sharing::kLockReadWrite)->Close();
  { const auto dropped = Open("a", Access::kReadWrite, Sharing::kLockReadWrite); }
  EXPECT_EQ(Open("a", Access::kReadWrite, Sharing::kLockReadWrite)->Size(), 3);
}

TEST_F(PosixFileSystemTest, RefusedOpenLeavesNoHoldBehind) {
  folder_.Write("a", "abc");
  {
    const auto reader = Open("a");
    EXPECT_EQ(NumberOfFailure([&] { (void)Open("a", Access::kReadWrite, Sharing::kLockReadWrite); }), 70);
    EXPECT_EQ(Open("a")->Size(), 3);
  }
  EXPECT_EQ(Open("a", Access::kReadWrite, Sharing::kLockReadWrite)->Size(), 3);
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(PosixFileSystemTest, MissingFileIs53) {
  EXPECT_THAT([&] { (void)Open("missing"); }, FailsWith(FailureNumber::kFileNotFound, "missing"));
  EXPECT_THAT([&] { files_.Delete(folder_.Path("missing")); }, FailsWith(FailureNumber::kFileNotFound, "missing"));
  EXPECT_THAT([&] { files_.Rename(folder_.Path("missing"), folder_.Path("b")); },
              FailsWith(FailureNumber::kFileNotFound, "missing"));
  EXPECT_THAT([&] { files_.Copy(folder_.Path("missing"), folder_.Path("b")); },
              FailsWith(FailureNumber::kFileNotFound, "missing"));
  EXPECT_FALSE(folder_.Has("b"));
}

TEST_F(PosixFileSystemTest, MissingFolderIs76) {
  folder_.Write("a", "abc");
  EXPECT_THAT([&] { (void)Open("no/a"); }, FailsWith(FailureNumber::kPathNotFound, "no/a"));
  EXPECT_THAT([&] { (void)Open("no/a", Access::kWrite, Sharing::kShared, Creation::kReplace); },
              FailsWith(FailureNumber::kPathNotFound, "no/a"));
  EXPECT_THAT([&] { files_.Delete(folder_.Path("no/a")); }, FailsWith(FailureNumber::kPathNotFound, "no/a"));
  EXPECT_THAT([&] { files_.Rename(folder_.Path("a"), folder_.Path("no/a")); },
              FailsWith(FailureNumber::kPathNotFound, "no/a"));
  EXPECT_THAT([&] { files_.Copy(folder_.Path("a"), folder_.Path("no/a")); },
              FailsWith(FailureNumber::kPathNotFound, "no/a"));
  EXPECT_EQ(folder_.Read("a"), "abc");
}

TEST_F(PosixFileSystemTest, FileInTheFoldersPlaceIs76) {
  folder_.Write("a", "abc");
  EXPECT_THAT([&] { (void)Open("a/b"); }, FailsWith(FailureNumber::kPathNotFound, "a/b"));
}

TEST_F(PosixFileSystemTest, FolderInTheFilesPlaceIs75) {
  MakeFolder("sub");
  folder_.Write("a", "abc");
  EXPECT_THAT([&] { (void)Open("sub"); }, FailsWith(FailureNumber::kPathOrAccess, "sub"));
  EXPECT_THAT([&] { (void)Open("sub", Access::kWrite, Sharing::kShared, Creation::kReplace); },
              FailsWith(FailureNumber::kPathOrAccess, "sub"));
  EXPECT_THAT([&] { files_.Delete(folder_.Path("sub")); }, FailsWith(FailureNumber::kPathOrAccess, "sub"));
  EXPECT_THAT([&] { files_.Rename(folder_.Path("a"), folder_.Path("sub")); },
              FailsWith(FailureNumber::kPathOrAccess, "sub"));
  EXPECT_THAT([&] { files_.Copy(folder_.Path("a"), folder_.Path("sub")); },
              FailsWith(FailureNumber::kPathOrAccess, "sub"));
  EXPECT_TRUE(folder_.Has("sub"));
  EXPECT_EQ(folder_.Read("a"), "abc");
}

TEST_F(PosixFileSystemTest, NameTooLongIs75) {
  EXPECT_THAT([&] { (void)Open(Text(300, 'x'), Access::kWrite, Sharing::kShared, Creation::kReplace); },
              FailsWith(FailureNumber::kPathOrAccess));
}

TEST_F(PosixFileSystemTest, MissingPermissionIs70) {
  folder_.Write("secret", "abc");
  folder_.Write("fixed", "abc");
  ASSERT_EQ(::chmod(folder_.Path("secret").c_str(), 0), 0);
  ASSERT_EQ(::chmod(folder_.Path("fixed").c_str(), 0444), 0);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0555), 0);
  const auto as_another = [&](const std::function<void()>& act) {
    return NumberInChild([&] {
      GiveUpRights();
      act();
    });
  };
  EXPECT_EQ(as_another([&] { (void)Open("secret"); }), 70);
  EXPECT_EQ(as_another([&] { (void)Open("fixed", Access::kReadWrite); }), 70);
  EXPECT_EQ(as_another([&] { (void)Open("fixed"); }), 0);
  EXPECT_EQ(as_another([&] { (void)Open("new", Access::kWrite, Sharing::kShared, Creation::kReplace); }), 70);
  EXPECT_EQ(as_another([&] { files_.Delete(folder_.Path("fixed")); }), 70);
  EXPECT_EQ(as_another([&] { files_.Rename(folder_.Path("fixed"), folder_.Path("b")); }), 70);
  ASSERT_EQ(::chmod(folder_.Path().c_str(), 0755), 0);
  EXPECT_EQ(folder_.Read("fixed"), "abc");
}

// --- Delete, rename, copy --------------------------------------------------------------------------------------------

TEST_F(PosixFileSystemTest, HeldFileIsNeitherDeletedNorRenamed) {
  folder_.Write("a", "abc");
  const auto held = Open("a");
  EXPECT_THAT([&] { files_.Delete(folder_.Path("a")); }, FailsWith(FailureNumber::kPermissionDenied, "in use"));
  EXPECT_THAT([&] { files_.Rename(folder_.Path("a"), folder_.Path("b")); },
              FailsWith(FailureNumber::kPermissionDenied, "in use"));
  EXPECT_EQ(NumberInChild([&] { files_.Delete(folder_.Path("a")); }), 70);
  EXPECT_EQ(NumberInChild([&] { files_.Rename(folder_.Path("a"), folder_.Path("b")); }), 70);
  EXPECT_EQ(folder_.Read("a"), "abc");
  EXPECT_FALSE(folder_.Has("b"));
}

TEST_F(PosixFileSystemTest, RenameMovesTheFile) {
  folder_.Write("a", "abc");
  files_.Rename(folder_.Path("a"), folder_.Path("b"));
  EXPECT_FALSE(folder_.Has("a"));
  EXPECT_EQ(folder_.Read("b"), "abc");
}

TEST_F(PosixFileSystemTest, RenameReplacesNothing) {
  folder_.Write("a", "abc");
  folder_.Write("b", "old");
  EXPECT_THAT([&] { files_.Rename(folder_.Path("a"), folder_.Path("b")); }, FailsWith(FailureNumber::kPathOrAccess));
  EXPECT_EQ(folder_.Read("a"), "abc");
  EXPECT_EQ(folder_.Read("b"), "old");
}

TEST_F(PosixFileSystemTest, DeleteTakesTheFileAway) {
  folder_.Write("a", "abc");
  files_.Delete(folder_.Path("a"));
  EXPECT_FALSE(folder_.Has("a"));
}

TEST_F(PosixFileSystemTest, CopyReplacesTheWholeOfTheOldFile) {
  const std::string large(200'000, 'x');
  folder_.Write("a", large);
  folder_.Write("b", large + "longer");
  files_.Copy(folder_.Path("a"), folder_.Path("b"));
  EXPECT_EQ(folder_.Read("b"), large);
  EXPECT_EQ(folder_.Read("a"), large);
}

TEST_F(PosixFileSystemTest, CopyNeedsBothFilesFree) {
  folder_.Write("a", "abc");
  folder_.Write("b", "old");
  const auto copy = [&](const Text& from, const Text& to) {
    return NumberOfFailure([&] { files_.Copy(folder_.Path(from), folder_.Path(to)); });
  };
  {
    const auto writer = Open("a", Access::kWrite);
    EXPECT_EQ(copy("a", "b"), 70);
  }
  {
    const auto reader = Open("b");
    EXPECT_EQ(copy("a", "b"), 70);
  }
  EXPECT_EQ(copy("a", "a"), 70);
  EXPECT_EQ(folder_.Read("a"), "abc");
  EXPECT_EQ(folder_.Read("b"), "old");
}

// --- Full disk -------------------------------------------------------------------------------------------------------

TEST_F(PosixFileSystemTest, WriteThatFindsNoRoomIs61) {
  const int number = NumberInChild([&] {
    const FileSizeLimit limit(1000);
    const auto file = Open("a", Access::kWrite, Sharing::kShared, Creation::kReplace);
    file->WriteAt(0, BytesOf(std::string(1000, 'x')));
    file->WriteAt(1000, BytesOf("y"));
  });
  EXPECT_EQ(number, 61);
  EXPECT_EQ(folder_.Read("a"), std::string(1000, 'x'));
}

TEST_F(PosixFileSystemTest, CopyThatFindsNoRoomIs61AndLeavesNoFile) {
  folder_.Write("a", std::string(100'000, 'x'));
  const int number = NumberInChild([&] {
    const FileSizeLimit limit(70'000);
    files_.Copy(folder_.Path("a"), folder_.Path("b"));
  });
  EXPECT_EQ(number, 61);
  EXPECT_FALSE(folder_.Has("b"));
  EXPECT_EQ(folder_.Read("a").size(), 100'000U);
}

}  // namespace
}  // namespace tallybook::testing
