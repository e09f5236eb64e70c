// A look at a book: what it shows, and that it leaves nothing behind, whoever looks.

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <tuple>

#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

namespace fs = std::filesystem;

using engine::Book;
using engine::BookOptions;
using ::testing::IsEmpty;

constexpr Long kShop = 101;
constexpr Integer kSales = 1;

class BookLookTest : public BookFixture {
 protected:
  BookLookTest() {
    fs::create_directory(folder.Path("tmp"));
    chmod(folder.Path("tmp").c_str(), 01777);
    setenv("TMPDIR", folder.Path("tmp").c_str(), 1);
    fs::create_directory(folder.Path("books"));
    chmod(folder.Path().c_str(), 0755);
    Book::Create(Place(), ShopDescription());
    Write(7);
  }
  ~BookLookTest() override {
    unsetenv("TMPDIR");
    chmod(folder.Path("books").c_str(), 0755);
  }

  [[nodiscard]] Text Place(const Text& ending = "") const { return folder.Path("books/Shop.tbk" + ending); }
  std::unique_ptr<Book> OpenPlace(bool read_only) {
    BookOptions options;
    options.read_only = read_only;
    options.cache_bytes = 0;
    return Book::Open(Place(), app, options);
  }
  int Write(int figure) {
    const auto book = OpenPlace(false);
    Put(*book, kShop, Day(2003, 5, 5), kSales, figure);
    book->Close();
    return 0;
  }
  // What a writer leaves that is killed behind a commit.
  void WriteAndDie(int figure) {
    ASSERT_EQ(InAnotherProcess([&] {
                const auto book = OpenPlace(false);
                Put(*book, kShop, Day(2003, 5, 5), kSales, figure);
                book->Commit();
                _exit(0);
                return 1;
              }),
              0);
    ASSERT_GT(fs::file_size(Place("-wal")), 0U);
  }
  // The figure that a look shows.
  int Look() { return static_cast<int>(Get(*OpenPlace(true), kShop, Day(2003, 5, 5), kSales)); }
  int LookWithoutRoot() {
    return WithoutRoot([&] { return Look(); });
  }
  // Makes book and folder those of somebody who may or may not write them. Without root they are ours anyhow.
  void Give(mode_t book, mode_t books) const {
    if (geteuid() == 0) {
      for (const auto& entry : fs::directory_iterator(folder.Path("books")))
        ASSERT_EQ(chown(entry.path().c_str(), kAnotherUser, kAnotherUser), 0);
      ASSERT_EQ(chown(folder.Path("books").c_str(), kAnotherUser, kAnotherUser), 0);
    }
    ASSERT_EQ(chmod(Place().c_str(), book), 0);
    ASSERT_EQ(chmod(folder.Path("books").c_str(), books), 0);
  }
  // Each file in the book's folder with its bytes and its mode.
  [[nodiscard]] std::map<Text, std::tuple<mode_t, Text>> Files() const {
    std::map<Text, std::tuple<mode_t, Text>> files;
    for (const auto& entry : fs::directory_iterator(folder.Path("books"))) {
      struct stat status {};
      stat(entry.path().c_str(), &status);
      const Text name = entry.path().filename();
      files[name] = {status.st_mode, folder.Read("books/" + name)};
    }
    return files;
  }
  [[nodiscard]] bool HasCopies() const { return !fs::is_empty(folder.Path("tmp")); }

  std::unique_ptr<Book> kept;  // by a second process, which never closes it
};

TEST_F(BookLookTest, LeavesNothingBesideABookThatMayNotBeWritten) {
  for (const auto& [book, books] :
       {std::tuple(0444U, 0755U), std::tuple(0644U, 0555U), std::tuple(0444U, 0555U), std::tuple(0644U, 0755U)}) {
    Give(book, books);
    const auto before = Files();
    EXPECT_EQ(LookWithoutRoot(), 7) << std::oct << book << " " << books;
    EXPECT_EQ(Look(), 7);
    EXPECT_EQ(Files(), before) << std::oct << book << " " << books;
    EXPECT_FALSE(HasCopies());
  }
  EXPECT_EQ(WithoutRoot([&] { return Write(8); }), 0);
  EXPECT_EQ(LookWithoutRoot(), 8);
}

TEST_F(BookLookTest, LeavesNothingBesideABookOfAnotherUser) {
  NEEDS_ROOT();
  const auto before = Files();
  EXPECT_EQ(LookWithoutRoot(), 7);
  EXPECT_EQ(Files(), before);
  ASSERT_EQ(chmod(Place().c_str(), 0600), 0);
  EXPECT_EQ(LookWithoutRoot(), 70) << "it may not be read";
}

TEST_F(BookLookTest, PutsALogThatAKilledWriterLeftIntoTheBookWhereItMay) {
  WriteAndDie(8);
  Give(0644, 0755);
  EXPECT_EQ(LookWithoutRoot(), 8);
  EXPECT_FALSE(folder.Has("books/Shop.tbk-wal"));
  EXPECT_FALSE(folder.Has("books/Shop.tbk-shm"));
  EXPECT_EQ(LookWithoutRoot(), 8);
}

TEST_F(BookLookTest, ReadsBookAndLogFromACopyWhereItMayNotWrite) {
  WriteAndDie(8);
  for (const bool with_index : {true, false}) {
    if (!with_index) fs::remove(Place("-shm"));
    for (const auto& [book, books] : {std::tuple(0444U, 0755U), std::tuple(0644U, 0555U), std::tuple(0444U, 0555U)}) {
      Give(book, books);
      const auto before = Files();
      EXPECT_EQ(LookWithoutRoot(), 8) << std::oct << book << " " << books;
      EXPECT_EQ(Files(), before) << std::oct << book << " " << books;
      EXPECT_FALSE(HasCopies());
    }
  }
}

TEST_F(BookLookTest, HasNoCopyLeftWhenItIsKilled) {
  WriteAndDie(8);
  Give(0444, 0555);
  EXPECT_EQ(WithoutRoot([&] {
              const auto book = OpenPlace(true);
              if (HasCopies()) return 1;
              static_cast<void>(raise(SIGKILL));
              return 2;
            }),
            -1);
  EXPECT_FALSE(HasCopies());
}

TEST_F(BookLookTest, IsRefusedWhereItMayNotReadTheLog) {
  WriteAndDie(8);
  ASSERT_EQ(chmod(Place("-wal").c_str(), 0), 0);
  Give(0444, 0555);
  EXPECT_EQ(LookWithoutRoot(), 70);
  EXPECT_FALSE(HasCopies());
}

TEST_F(BookLookTest, IsRefusedWhereThereIsNoPlaceForACopy) {
  WriteAndDie(8);
  Give(0444, 0555);
  EXPECT_EQ(WithoutRoot([&] {
              setenv("TMPDIR", folder.Path("books").c_str(), 1);
              return Look();
            }),
            70);
  EXPECT_EQ(WithoutRoot([&] {
              const FileSizeLimit full_disk(4096);
              return Look();
            }),
            61);
  EXPECT_FALSE(HasCopies());
}

// Earlier versions left an index behind that nobody but its maker could use.
TEST_F(BookLookTest, IsNotKeptFromABookByAnIndexThatWasLeftBehind) {
  const auto leave = [&] {
    folder.Write("books/Shop.tbk-wal", "");
    folder.Write("books/Shop.tbk-shm", Text(32768, '\0'));
    ASSERT_EQ(chmod(Place("-wal").c_str(), 0444), 0);
    ASSERT_EQ(chmod(Place("-shm").c_str(), 0444), 0);
    Give(0644, 0755);
  };
  leave();
  EXPECT_EQ(LookWithoutRoot(), 7);
  leave();
  EXPECT_EQ(WithoutRoot([&] { return Write(8); }), 0);
  EXPECT_EQ(LookWithoutRoot(), 8);
  EXPECT_FALSE(folder.Has("books/Shop.tbk-wal"));
  EXPECT_FALSE(folder.Has("books/Shop.tbk-shm"));
}

TEST_F(BookLookTest, TakesNoIndexAwayThatSomebodyUses) {
  SecondProcess other([&] {
    kept = OpenPlace(false);
    Put(*kept, kShop, Day(2003, 5, 5), kSales, 8);
    kept->Commit();
    return 0;
  });
  Give(0644, 0755);
  other.Act();
  ASSERT_EQ(chmod(Place("-shm").c_str(), 0400), 0);
  if (geteuid() == 0) {
    ASSERT_EQ(chown(Place("-shm").c_str(), 0, 0), 0);
  }
  const auto before = Files();
  EXPECT_EQ(LookWithoutRoot(), 8);
  EXPECT_EQ(Files(), before);
  EXPECT_EQ(WithoutRoot([&] { return Write(9); }), 70);
  EXPECT_EQ(Files(), before);
}

TEST_F(BookLookTest, SeesWhatALiveWriterHasCommittedWithoutTouchingIt) {
  const auto writer = OpenPlace(false);
  Put(*writer, kShop, Day(2003, 5, 5), kSales, 8);
  writer->Commit();
  Put(*writer, kShop, Day(2003, 5, 6), kSales, 9);
  Give(0444, 0555);
  const auto before = Files();
  EXPECT_EQ(LookWithoutRoot(), 8);
  EXPECT_EQ(Files(), before);
}

TEST_F(BookLookTest, FailsWhenAWriterChangesABookThatItMayNotWrite) {
  Give(0444, 0555);
  SecondProcess look([&] {
    if (!GiveUpRoot()) return kNoRights;
    const auto book = OpenPlace(true);
    if (Get(*book, kShop, Day(2003, 5, 5), kSales) != 7) return 1;
    for (int tries = 0; tries < 100; ++tries) {
      try {
        FiguresOf(*book);
      } catch (const Failure& failure) {
        return failure.Description().find("a writer changed the book") == Text::npos ? 2 : failure.Code();
      }
      usleep(50'000);
    }
    return 3;
  });
  SecondProcess writer([&] {
    chmod(Place().c_str(), 0644);
    chmod(folder.Path("books").c_str(), 0755);
    usleep(300'000);
    return Write(8);
  });
  look.Start();
  usleep(300'000);
  writer.Act();
  EXPECT_EQ(writer.End(), 0);
  EXPECT_EQ(look.End(), 70);
}

TEST_F(BookLookTest, KeepsItsStateWhileAWriterCommitsAndCloses) {
  SecondProcess writer([&] { return Write(8); });
  const auto look = OpenPlace(true);
  writer.Act();
  EXPECT_EQ(Get(*look, kShop, Day(2003, 5, 5), kSales), 7);
  EXPECT_EQ(writer.End(), 0);
  EXPECT_EQ(FiguresOf(*look).size(), 1U);
  EXPECT_EQ(FiguresOf(*look).begin()->second, 7);
  EXPECT_EQ(Look(), 8);
}

TEST_F(BookLookTest, NeedsNoRoomOnTheDisk) {
  EXPECT_EQ(InAnotherProcess([&] {
              const FileSizeLimit full_disk(0);
              return Look();
            }),
            7);
  EXPECT_FALSE(folder.Has("books/Shop.tbk-shm"));
  EXPECT_FALSE(folder.Has("books/Shop.tbk-wal"));
}

TEST_F(BookLookTest, LeavesNothingWhenManyLookAtOnce) {
  for (int round = 0; round < 10; ++round) {
    std::vector<pid_t> children;
    for (int count = 0; count < 6; ++count) {
      const pid_t child = fork();
      if (child == 0) _exit(CodeOf([&] { return Look(); }));
      children.push_back(child);
    }
    for (const pid_t child : children) EXPECT_EQ(EndOf(child), 7);
    EXPECT_FALSE(folder.Has("books/Shop.tbk-shm")) << round;
    EXPECT_FALSE(folder.Has("books/Shop.tbk-wal")) << round;
  }
}

}  // namespace
}  // namespace tallybook::testing
