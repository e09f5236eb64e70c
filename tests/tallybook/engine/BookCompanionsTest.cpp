#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFormat.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

namespace fs = std::filesystem;

using engine::Book;
using engine::BookOptions;
using engine::CopyOlderCompanions;
using engine::HasOlderCompanions;
using engine::HasTakenItsName;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class BookCompanionsTest : public BookFixture {
 protected:
  // A book of format 1.
  void PutOlderBook(const Text& name) const {
    fs::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), folder.Path(name));
    fs::permissions(folder.Path(name), fs::perms::owner_all);
  }
  void PutCompanionsOfShop() const {
    folder.Write("TBQDX1.shop", "one");
    folder.Write("TBQDX20.shop", "twenty");
    folder.Write("TBQDBU1.shop", "archive");
    folder.Write("shop.ini", "[Files]\n");
  }
  std::unique_ptr<Book> OpenNamed(const Text& name, bool read_only) {
    BookOptions options;
    options.read_only = read_only;
    options.notice = [this](const Text& line) { notices.push_back(line); };
    return Book::Open(folder.Path(name), app, options);
  }

  std::vector<Text> notices;
};

TEST_F(BookCompanionsTest, CopiesThemOnceWhenABookOfBeforeIsOpenedToBeChanged) {
  PutOlderBook("shop.2024");
  PutCompanionsOfShop();
  EXPECT_EQ(OpenNamed("shop.2024", false)->FileExtension(), "shop.2024");
  EXPECT_THAT(notices, ElementsAre(HasSubstr("copied for it: TBQDBU1.shop, TBQDX1.shop, TBQDX20.shop, shop.ini")));
  EXPECT_EQ(folder.Read("TBQDX20.shop.2024"), "twenty");
  EXPECT_EQ(folder.Read("TBQDBU1.shop.2024"), "archive");
  EXPECT_EQ(folder.Read("shop.2024.ini"), "[Files]\n");
  EXPECT_EQ(folder.Read("TBQDX1.shop"), "one");

  fs::remove(folder.Path("TBQDX1.shop.2024"));
  notices.clear();
  EXPECT_EQ(OpenNamed("shop.2024", false)->FileExtension(), "shop.2024");
  EXPECT_FALSE(folder.Has("TBQDX1.shop.2024"));
  EXPECT_THAT(notices, IsEmpty());
}

TEST_F(BookCompanionsTest, ShowsALookThoseOfBeforeUntilTheyAreCopied) {
  PutOlderBook("shop.2024");
  PutCompanionsOfShop();
  EXPECT_EQ(OpenNamed("shop.2024", true)->FileExtension(), "shop");
  EXPECT_FALSE(folder.Has("TBQDX1.shop.2024"));
  OpenNamed("shop.2024", false)->Close();
  EXPECT_EQ(OpenNamed("shop.2024", true)->FileExtension(), "shop.2024");
}

TEST_F(BookCompanionsTest, GivesEachBookThatSharedThemItsOwn) {
  PutCompanionsOfShop();
  PutOlderBook("shop.tbk");
  PutOlderBook("shop.2024");
  PutOlderBook("shop.2025");
  for (const char* name : {"shop.2024", "shop.2025", "shop.tbk"}) OpenNamed(name, false)->Close();
  for (const char* name : {"TBQDX1.shop", "TBQDX1.shop.2024", "TBQDX1.shop.2025"}) EXPECT_EQ(folder.Read(name), "one");
  EXPECT_EQ(notices.size(), 2U);
}

TEST_F(BookCompanionsTest, TakesNoneThatAreNotItsOwn) {
  PutOlderBook("shop.2024");
  for (const char* name : {"TBQDX1.SHOP", "TBQDXa.shop", "TBQDX1.old.shop", "tbqdx1.shop", "Shop.ini"})
    folder.Write(name, "");
  EXPECT_FALSE(HasOlderCompanions(folder.Path("shop.2024")));
}

TEST_F(BookCompanionsTest, RemembersThatItCopiedWhereThereWereNoSettings) {
  folder.Write("TBQDX1.shop", "one");
  folder.Write("TBQDX2.shop", "two");
  folder.Write("TBQDX2.shop.2024", "own");
  EXPECT_THAT(CopyOlderCompanions(folder.Path("shop.2024")), ElementsAre("TBQDX1.shop"));
  EXPECT_EQ(folder.Read("TBQDX2.shop.2024"), "own");
  EXPECT_TRUE(folder.Has("shop.2024.ini"));
  EXPECT_TRUE(HasTakenItsName(folder.Path("shop.2024")));
}

TEST_F(BookCompanionsTest, TakesNoneThatCameToTheOlderNameLater) {
  PutOlderBook("shop.2024");
  OpenNamed("shop.2024", false)->Close();
  PutCompanionsOfShop();
  for (const bool read_only : {true, false}) EXPECT_EQ(OpenNamed("shop.2024", read_only)->FileExtension(), "shop.2024");
  EXPECT_FALSE(folder.Has("TBQDX1.shop.2024"));
  EXPECT_THAT(notices, IsEmpty());
}

TEST_F(BookCompanionsTest, IsRefusedWhereTheyCannotBeCopied) {
  PutCompanionsOfShop();
  chmod(folder.Path().c_str(), 0555);
  EXPECT_EQ(WithoutRoot([&] {
              static_cast<void>(CopyOlderCompanions(folder.Path("shop.2024")));
              return 0;
            }),
            70);
  chmod(folder.Path().c_str(), 0755);
  EXPECT_FALSE(folder.Has("TBQDX1.shop.2024"));
}

TEST_F(BookCompanionsTest, LeavesThoseOfABookThatNeverHadTheOlderName) {
  PutCompanionsOfShop();
  Book::Create(folder.Path("shop.2024"), ShopDescription());
  EXPECT_EQ(OpenNamed("shop.2024", false)->FileExtension(), "shop.2024");
  EXPECT_FALSE(folder.Has("TBQDX1.shop.2024"));
  EXPECT_THAT(notices, IsEmpty());
}

// It would be taken in by whoever opens the new book first.
TEST_F(BookCompanionsTest, ANewBookIsRefusedWhereTheLogOfAnotherWasLeft) {
  for (const char* log : {"shop.tbk-wal", "shop.tbk-journal"}) {
    folder.Write(log, "pages of a book that is gone");
    EXPECT_THAT([&] { Book::Create(folder.Path("shop.tbk"), ShopDescription()); },
                FailsWith(FailureNumber::kPathOrAccess, "there is no book, but"));
    EXPECT_EQ(folder.Read(log), "pages of a book that is gone");
    EXPECT_FALSE(folder.Has("shop.tbk"));
    folder.Write(log, "");
    Book::Create(folder.Path("shop.tbk"), ShopDescription());
    fs::remove(folder.Path("shop.tbk"));
    fs::remove(folder.Path(log));
  }
}

// Opening a pipe waits for a writer, and a device may have no end.
TEST_F(BookCompanionsTest, AreReadWhereTheyAreRegularFilesAlone) {
  ASSERT_EQ(::mkfifo(folder.Path("TBQDX1.shop").c_str(), 0600), 0);
  const auto read = [&] { static_cast<void>(engine::ReadCompanions(folder.Path("") + "/", "shop")); };
  EXPECT_THAT(read, FailsWith(FailureNumber::kPathOrAccess, "TBQDX1.shop: this companion file of the book is no file"));
  fs::remove(folder.Path("TBQDX1.shop"));
  fs::create_symlink("/dev/zero", folder.Path("shop.ini"));
  EXPECT_THAT(read, FailsWith(FailureNumber::kPathOrAccess, "shop.ini: this companion file of the book is no file"));
}

}  // namespace
}  // namespace tallybook::testing
