// Who may write a book: one at a time, whatever path leads to it, and whatever else this process does with its file.

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tallybook/engine/BookHold.h"
#include "tests/support/OtherProcess.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

namespace fs = std::filesystem;

using engine::Book;
using engine::BookHold;
using engine::BookOptions;

constexpr Long kShop = 101;
constexpr Integer kSales = 1;

class BookHoldTest : public BookFixture {
 protected:
  int OpenToWrite(const Text& name) {
    static_cast<void>(Book::Open(folder.Path(name), app));
    return 0;
  }
  std::unique_ptr<Book> OpenNamed(const Text& name, const BookOptions& options = {}) {
    return Book::Open(folder.Path(name), app, options);
  }
  // Opens the book in the process that calls, and leaves it open.
  int KeepOpen(const BookOptions& options = {}) {
    kept = Open(options);
    return 0;
  }
  [[nodiscard]] mode_t ModeOf(const Text& name) const {
    struct stat status {};
    EXPECT_EQ(stat(folder.Path(name).c_str(), &status), 0);
    return status.st_mode & 0777U;
  }

  std::unique_ptr<Book> kept;
};

TEST_F(BookHoldTest, LetsOneWriterInWhateverLinkLeadsToTheBook) {
  Create(ShopDescription());
  fs::create_directory(folder.Path("links"));
  fs::create_symlink("../North.tbk", folder.Path("links/same.tbk"));
  const auto book = OpenNamed("links/same.tbk");
  EXPECT_EQ(InAnotherProcess([&] { return OpenToWrite("North.tbk"); }), 70);
  EXPECT_EQ(InAnotherProcess([&] { return OpenToWrite("links/same.tbk"); }), 70);
  EXPECT_THAT([&] { OpenToWrite("North.tbk"); }, FailsWith(FailureNumber::kPermissionDenied));
  EXPECT_EQ(book->Path(), folder.Path("links/../North.tbk"));
  EXPECT_EQ(book->FileExtension(), "North");
  EXPECT_TRUE(folder.Has("North.tbk-lock"));
  EXPECT_FALSE(folder.Has("links/same.tbk-lock"));
}

TEST_F(BookHoldTest, RefusesABookWithASecondNameToWriteAndToLook) {
  Create(ShopDescription());
  fs::create_hard_link(BookPath(), folder.Path("Second.tbk"));
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kPathOrAccess, "2 names (hard links)"));
  EXPECT_THAT([&] { OpenToRead(); }, FailsWith(FailureNumber::kPathOrAccess, "2 names (hard links)"));
}

TEST_F(BookHoldTest, KeepsASecondWriterOutWhenTheLockFileIsDeleted) {
  const auto book = CreateAndOpen();
  fs::remove(folder.Path("North.tbk-lock"));
  EXPECT_EQ(InAnotherProcess([&] { return OpenToWrite("North.tbk"); }), 70);
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kPermissionDenied, "open for writing elsewhere"));
}

TEST_F(BookHoldTest, StaysOutWhereAnEarlierProgramHasItsLock) {
  Create(ShopDescription());
  Open()->Close();
  const OtherProcess earlier("BL", folder.Path("North.tbk-lock"));
  ASSERT_TRUE(earlier.Holds());
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kPermissionDenied, "open for writing elsewhere"));
}

TEST_F(BookHoldTest, RefusesALockThatIsNoFile) {
  Create(ShopDescription());
  fs::create_symlink("elsewhere", folder.Path("North.tbk-lock"));
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kPathOrAccess, "taken by something that is no file"));
  EXPECT_FALSE(folder.Has("elsewhere"));
}

TEST_F(BookHoldTest, GivesTheLockTheModeOfTheBook) {
  Create(ShopDescription());
  ASSERT_EQ(chmod(BookPath().c_str(), 0664), 0);
  Open()->Close();
  EXPECT_EQ(ModeOf("North.tbk-lock"), 0664U);
}

TEST_F(BookHoldTest, LetsTheOwnerWriteAfterRootHasWritten) {
  NEEDS_ROOT();
  Create(ShopDescription());
  for (const Text& path : {folder.Path(), BookPath()}) ASSERT_EQ(chown(path.c_str(), kAnotherUser, kAnotherUser), 0);
  Put(*Open(), kShop, Day(2003, 5, 5), kSales, 1);
  EXPECT_EQ(WithoutRoot([&] {
              Put(*Open(), kShop, Day(2003, 5, 5), kSales, 2);
              return static_cast<int>(Get(*Open(), kShop, Day(2003, 5, 5), kSales));
            }),
            2);
}

TEST_F(BookHoldTest, LocksByAFileOfAnotherUserThatItMayOnlyRead) {
  NEEDS_ROOT();
  Create(ShopDescription());
  folder.Write("North.tbk-lock", "");
  for (const Text& path : {folder.Path(), BookPath()}) ASSERT_EQ(chown(path.c_str(), kAnotherUser, kAnotherUser), 0);
  EXPECT_EQ(WithoutRoot([&] { return OpenToWrite("North.tbk"); }), 0);
}

TEST_F(BookHoldTest, TellsWhichProcessHasTheBook) {
  Create(ShopDescription());
  SecondProcess other([&] { return KeepOpen(); });
  other.Act();
  EXPECT_THAT([&] { Open(); },
              FailsWith(FailureNumber::kPermissionDenied, "the book is open for writing elsewhere (process "));
  EXPECT_EQ(other.End(), 0);
  EXPECT_EQ(OpenToWrite("North.tbk"), 0);
}

TEST_F(BookHoldTest, KnowsTheFailuresThatWaitingMayMend) {
  Create(ShopDescription());
  const auto in_use = [&](const Text& path) {
    try {
      (void)Book::Open(path, app);
    } catch (const Failure& failure) {
      return engine::IsInUse(failure);
    }
    ADD_FAILURE() << path << " could be opened";
    return false;
  };
  const auto writer = Open();
  EXPECT_TRUE(in_use(BookPath()));
  EXPECT_FALSE(in_use(folder.Path("none.tbk")));
  EXPECT_FALSE(engine::IsInUse(Failure(FailureNumber::kPermissionDenied, "the book is open for writing elsewhere")))
      << "words alone, of another source";
}

TEST_F(BookHoldTest, WaitsForAWriterAsLongAsItIsTold) {
  Create(ShopDescription());
  const auto open_for_a_while = [&] {
    const auto book = Open();
    usleep(400'000);
    book->Close();
    return 0;
  };
  SecondProcess other(open_for_a_while);
  other.Start();
  usleep(150'000);
  BookOptions options;
  options.wait_seconds = 0.05;
  EXPECT_THAT([&] { Open(options); }, FailsWith(FailureNumber::kPermissionDenied, "open for writing elsewhere"));
  options.wait_seconds = 30;
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_NE(Open(options), nullptr);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

// Closing any descriptor of a file drops the locks that this process has on it, also those of other connections.
TEST_F(BookHoldTest, KeepsAReadersLocksWhenAWriterOfTheSameProcessCloses) {
  Create(ShopDescription());
  const auto reader = OpenToRead();
  Open()->Close();
  EXPECT_THAT([&] { static_cast<void>(Book::Open(folder.Path("North.tbk-lock"), app)); },
              FailsWith(FailureNumber::kPathOrAccess, "not a book"));
  const auto is_locked = [&] {
    const int file = open(BookPath().c_str(), O_RDWR | O_CLOEXEC);
    struct flock lock {};
    lock.l_type = F_WRLCK;
    lock.l_start = 0x40000000 + 2;  // the bytes that a connection of SQLite shares while it reads
    lock.l_len = 510;
    if (file < 0 || fcntl(file, F_GETLK, &lock) != 0) return 2;
    return lock.l_type == F_UNLCK ? 0 : 1;
  };
  EXPECT_EQ(InAnotherProcess(is_locked), 1);
  reader->Close();
  EXPECT_EQ(InAnotherProcess(is_locked), 0);
}

TEST_F(BookHoldTest, LeavesAReaderItsStateWhenAnotherProcessWritesBehindAWriterOfItsOwn) {
  Create(ShopDescription());
  const auto rewrite = [&] {
    const auto book = Open();
    for (int day = 0; day < 700; ++day) Put(*book, kShop, Day(2003, 1, 1) + day, kSales, 9);
    book->Close();
    return folder.Has("North.tbk-wal") ? 0 : 1;  // the last to close takes the log away
  };
  SecondProcess other(rewrite);
  {
    const auto book = Open();
    for (int day = 0; day < 700; ++day) Put(*book, kShop, Day(2003, 1, 1) + day, kSales, 1);
  }
  BookOptions options;
  options.read_only = true;
  options.cache_bytes = 0;
  const auto reader = Open(options);
  EXPECT_EQ(Get(*reader, kShop, Day(2003, 1, 1), kSales), 1);
  Open()->Close();  // its descriptor must not take the reader's locks along
  other.Act();
  for (int day = 0; day < 700; ++day) ASSERT_EQ(Get(*reader, kShop, Day(2003, 1, 1) + day, kSales), 1) << day;
  EXPECT_EQ(other.End(), 0);
}

TEST_F(BookHoldTest, CommitsNothingIntoABookThatWasReplaced) {
  Create(ShopDescription());
  Book::Create(folder.Path("Other.tbk"), ShopDescription());
  const auto book = Open();
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  book->Commit();
  fs::rename(folder.Path("Other.tbk"), BookPath());
  EXPECT_THAT(
      [&] {
        Put(*book, kShop, Day(2003, 5, 6), kSales, 2);
        book->Close();
      },
      FailsWith(FailureNumber::kPermissionDenied, "another file has been put in the place of the book"));
}

TEST_F(BookHoldTest, CommitsNothingIntoABookThatWasMovedOrDeleted) {
  Create(ShopDescription());
  const auto book = Open();
  fs::rename(BookPath(), folder.Path("Moved.tbk"));
  EXPECT_THAT(
      [&] {
        Put(*book, kShop, Day(2003, 5, 6), kSales, 2);
        book->Close();
      },
      FailsWith(FailureNumber::kPermissionDenied, "the book has been moved or deleted"));
  fs::rename(folder.Path("Moved.tbk"), BookPath());
  book->Close();
  EXPECT_EQ(FiguresOf(*OpenToRead()).size(), 1U);
}

TEST_F(BookHoldTest, NoticesAFileThatWasReplacedSinceItWasHeld) {
  Create(ShopDescription());
  Book::Create(folder.Path("Other.tbk"), ShopDescription());
  const BookHold hold(BookPath(), BookHold::Purpose::kLook);
  hold.CheckInPlace();
  fs::rename(folder.Path("Other.tbk"), BookPath());
  EXPECT_THAT([&] { hold.CheckInPlace(); }, FailsWith(FailureNumber::kPermissionDenied, "another file"));
  EXPECT_EQ(OpenToWrite("North.tbk"), 0) << "the new file is another book";
}

}  // namespace
}  // namespace tallybook::testing
