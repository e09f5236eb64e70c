#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

#include "tallybook/engine/PrivateCopy.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

namespace fs = std::filesystem;

using engine::BookHold;
using engine::PrivateCopy;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A book with a log, and a folder for temporary files of the test's own.
class PrivateCopyTest : public BookFixture {
 protected:
  PrivateCopyTest() {
    fs::create_directory(folder.Path("tmp"));
    ::setenv("TMPDIR", folder.Path("tmp").c_str(), 1);
    folder.Write("North.tbk", std::string(100'000, 'b'));
    folder.Write("North.tbk-wal", std::string(5'000, 'l'));
  }
  ~PrivateCopyTest() override { ::unsetenv("TMPDIR"); }

  [[nodiscard]] std::set<Text> Names() const {
    std::set<Text> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path("tmp"))) {
      names.insert(fs::relative(entry.path(), folder.Path("tmp")).string());
    }
    return names;
  }
  static std::string BytesAt(const Text& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
  // What a process left that was killed; as if an hour ago where it is `old`.
  void Leave(const Text& name, bool with_copy, bool old) const {
    fs::create_directory(folder.Path("tmp/" + name));
    if (with_copy) folder.Write("tmp/" + name + "/copy.tbk", "half a book");
    if (!old) return;
    fs::last_write_time(folder.Path("tmp/" + name), fs::file_time_type::clock::now() - std::chrono::hours(1));
  }
};

constexpr bool kWithCopy = true;
constexpr bool kOld = true;

TEST_F(PrivateCopyTest, HasTheBytesOfBookAndLogUntilTheirNamesGo) {
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  PrivateCopy copy(hold);
  EXPECT_EQ(BytesAt(copy.Path()), folder.Read("North.tbk"));
  EXPECT_EQ(BytesAt(copy.Path() + "-wal"), folder.Read("North.tbk-wal"));
  struct stat status {};
  ASSERT_EQ(::stat(copy.Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600U);
  copy.Remove();
  EXPECT_THAT(Names(), IsEmpty());
  char byte = 0;
  ASSERT_EQ(::pread(copy.Descriptor(), &byte, 1, 99'999), 1);
  EXPECT_EQ(byte, 'b');
}

TEST_F(PrivateCopyTest, TriesItsFolderOnceMoreAtItsEnd) {
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  {
    PrivateCopy copy(hold);
    const fs::path foreign = fs::path(copy.Path()).parent_path() / "another's";
    std::ofstream(foreign) << "in the way";
    copy.Remove();
    EXPECT_FALSE(fs::exists(copy.Path()));
    EXPECT_TRUE(fs::exists(foreign));
    fs::remove(foreign);
    EXPECT_EQ(Names().size(), 1U);
  }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(PrivateCopyTest, HasNoLogWhereTheBookHasNone) {
  fs::remove(BookPath() + "-wal");
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  const PrivateCopy copy(hold);
  EXPECT_EQ(BytesAt(copy.Path()), folder.Read("North.tbk"));
  EXPECT_FALSE(fs::exists(copy.Path() + "-wal"));
}

TEST_F(PrivateCopyTest, TakesAwayWhatOthersLeftThatWereKilled) {
  Leave("tallybook-look-abcdef", kWithCopy, !kOld);
  Leave("tallybook-look-ghijkl", !kWithCopy, kOld);
  Leave("tallybook-look-mnopqr", !kWithCopy, !kOld);  // of one that is about to begin, for all that can be told
  Leave("another's", kWithCopy, kOld);
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  { const PrivateCopy copy(hold); }
  EXPECT_THAT(Names(), ElementsAre("another's", "another's/copy.tbk", "tallybook-look-mnopqr"));
}

TEST_F(PrivateCopyTest, LeavesACopyAloneThatAnotherIsAboutToOpen) {
  SecondProcess other([&] {
    static const auto* hold = new BookHold(BookPath(), BookHold::Purpose::kLeaveAlone);
    static const auto* copy = new PrivateCopy(*hold);
    return copy->Descriptor() >= 0 ? 0 : 1;
  });
  other.Act();
  const auto before = Names();
  ASSERT_EQ(before.size(), 3U);
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  { const PrivateCopy copy(hold); }
  EXPECT_EQ(Names(), before);
  EXPECT_EQ(other.End(), 0);
  { const PrivateCopy copy(hold); }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(PrivateCopyTest, LeavesNothingWhereThereIsNoRoom) {
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  {
    const FileSizeLimit full_disk(20'000);
    EXPECT_THAT([&] { const PrivateCopy copy(hold); },
                FailsWith(FailureNumber::kDiskFull, "the two cannot be copied to be read"));
  }
  EXPECT_THAT(Names(), IsEmpty());
}

TEST_F(PrivateCopyTest, SaysThatThereIsNoPlaceForIt) {
  const BookHold hold(BookPath(), BookHold::Purpose::kLeaveAlone);
  ::setenv("TMPDIR", "/proc", 1);
  EXPECT_THAT([&] { const PrivateCopy copy(hold); },
              ::testing::Throws<Failure>(::testing::Property(
                  &Failure::Description, ::testing::HasSubstr("a folder for a copy cannot be made"))));
}

}  // namespace
}  // namespace tallybook::testing
