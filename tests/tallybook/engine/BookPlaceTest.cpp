#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tallybook/engine/BookPlace.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::BookFolder;
using engine::BookName;
using engine::CheckIsBookFile;
using engine::NameTroubles;
using engine::OlderBookName;
using engine::ResolvedBookPath;

class BookPlaceTest : public ::testing::Test {
 protected:
  void Link(const Text& name, const Text& target) const { std::filesystem::create_symlink(target, folder.Path(name)); }

  TempFolder folder;
};

TEST_F(BookPlaceTest, LeavesAPathWithoutALinkAsItIs) {
  EXPECT_EQ(ResolvedBookPath("shop.tbk"), "shop.tbk");
  EXPECT_EQ(ResolvedBookPath("none\\shop.tbk"), "none/shop.tbk");
  EXPECT_EQ(ResolvedBookPath(folder.Path("shop.tbk")), folder.Path("shop.tbk"));
}

TEST_F(BookPlaceTest, FollowsAChainOfLinksToTheFile) {
  std::filesystem::create_directory(folder.Path("books"));
  folder.Write("books/shop.tbk", "");
  Link("books/second.tbk", "shop.tbk");
  Link("first.tbk", "books/second.tbk");
  Link("far.tbk", folder.Path("first.tbk"));
  EXPECT_EQ(ResolvedBookPath(folder.Path("far.tbk")), folder.Path("books/shop.tbk"));
}

TEST_F(BookPlaceTest, NamesWhatALinkThatLeadsNowhereNames) {
  Link("gone.tbk", "nobody.tbk");
  EXPECT_EQ(ResolvedBookPath(folder.Path("gone.tbk")), folder.Path("nobody.tbk"));
}

TEST_F(BookPlaceTest, RefusesLinksThatLeadInACircle) {
  Link("one.tbk", "two.tbk");
  Link("two.tbk", "one.tbk");
  EXPECT_THAT([&] { static_cast<void>(ResolvedBookPath(folder.Path("one.tbk"))); },
              FailsWith(FailureNumber::kPathOrAccess, "one.tbk: this link leads in a circle"));
}

TEST_F(BookPlaceTest, RefusesWhatIsNoFileByItsKind) {
  const auto check = [&](const Text& path) { return [path] { CheckIsBookFile(path); }; };
  EXPECT_THAT(check(folder.Path("none/shop.tbk")),
              FailsWith(FailureNumber::kPathNotFound, "the folder does not exist"));
  EXPECT_THAT(check(folder.Path("none.tbk")), FailsWith(FailureNumber::kFileNotFound, "there is no such file"));
  EXPECT_THAT(check(folder.Path()), FailsWith(FailureNumber::kPathOrAccess, "this is a folder, not a book"));
  EXPECT_THAT(check("/dev/null"), FailsWith(FailureNumber::kPathOrAccess, "this is a device, not a book"));
  ASSERT_EQ(mkfifo(folder.Path("pipe").c_str(), 0666), 0);
  EXPECT_THAT(check(folder.Path("pipe")), FailsWith(FailureNumber::kPathOrAccess, "this is a pipe, not a book"));
}

TEST_F(BookPlaceTest, TellsWhyAFolderCannotBeSearched) {
  Text path = folder.Path();
  for (int i = 0; i < 2100; ++i) path += "/.";
  EXPECT_THAT([&] { CheckIsBookFile(path + "/shop.tbk"); },
              FailsWith(FailureNumber::kPathOrAccess, "the folder cannot be looked at: File name too long"));
}

TEST_F(BookPlaceTest, RefusesAFileWithASecondName) {
  folder.Write("shop.tbk", "");
  std::filesystem::create_hard_link(folder.Path("shop.tbk"), folder.Path("other.tbk"));
  EXPECT_THAT([&] { CheckIsBookFile(folder.Path("shop.tbk")); },
              FailsWith(FailureNumber::kPathOrAccess, "shop.tbk: the file has 2 names (hard links)"));
  std::filesystem::remove(folder.Path("other.tbk"));
  CheckIsBookFile(folder.Path("shop.tbk"));
}

TEST_F(BookPlaceTest, TellsFolderAndName) {
  EXPECT_EQ(BookFolder("a/b/shop.tbk"), "a/b/");
  EXPECT_EQ(BookFolder("shop.tbk"), "./");
  EXPECT_EQ(BookName("a.b/shop.tbk"), "shop");
  EXPECT_EQ(BookName("shop.2024.tbk"), "shop.2024");
  EXPECT_EQ(BookName("a/shop.2024"), "shop.2024");
  EXPECT_EQ(BookName("shop"), "shop");
  EXPECT_EQ(BookName("shop.TBK"), "shop.TBK");
  EXPECT_EQ(BookName(".tbk"), ".tbk");
  EXPECT_EQ(OlderBookName("a/shop.2024"), "shop");
  EXPECT_EQ(OlderBookName("shop.2024.tbk"), "shop.2024");
  EXPECT_EQ(OlderBookName(".shop"), ".shop");
}

class BookNameTest : public BookFixture {
 protected:
  void Make(const Text& name) { engine::Book::Create(folder.Path(name), ShopDescription()); }
};

TEST_F(BookNameTest, IsRefusedForANewBookWhereItDiffersOnlyInCaseFromAnother) {
  Make("Shop.tbk");
  EXPECT_THAT([&] { Make("shop.tbk"); },
              FailsWith(FailureNumber::kPathOrAccess,
                        "\"shop\", differs only in case from that of the book Shop.tbk beside it"));
  EXPECT_THAT([&] { Make("SHOP"); }, FailsWith(FailureNumber::kPathOrAccess, "differs only in case"));
  EXPECT_THAT([&] { Make("Shop"); }, FailsWith(FailureNumber::kPathOrAccess, "\"Shop\", is that of the book Shop.tbk"));
  for (const char* name : {"shop.tbk", "SHOP", "Shop"}) EXPECT_FALSE(folder.Has(name));
  Make("shops.tbk");
}

TEST_F(BookNameTest, IsRefusedForANewBookWhereItHoldsAWildcard) {
  for (const char* name : {"sh*p.tbk", "sho?"}) {
    EXPECT_THAT([&] { Make(name); }, FailsWith(FailureNumber::kPathOrAccess, "holds * or ?"));
    EXPECT_FALSE(folder.Has(name));
  }
}

// A new book there would be deleted as the log of the other, or be read as its settings or a definition of it.
TEST_F(BookNameTest, IsRefusedForANewBookWhereItIsThatOfWhatLiesBesideAnother) {
  Make("Shop.tbk");
  Make("shop.2024");
  for (const char* name :
       {"Shop.tbk-wal", "Shop.tbk-shm", "Shop.tbk-journal", "Shop.tbk-lock", "Shop.ini", "TBQDX1.Shop", "TBQDBU12.Shop",
        "KVQDX3.Shop", "shop.2024-wal", "shop.2024.ini", "TBQDX1.shop.2024"}) {
    std::filesystem::remove(folder.Path(name));  // a lock that is there already
    EXPECT_THAT([&] { Make(name); }, FailsWith(FailureNumber::kPathOrAccess, "would be taken for a file of the book"))
        << name;
    EXPECT_FALSE(folder.Has(name));
  }
  for (const char* name : {"Other.tbk-wal", "TBQDX1.Other", "TBQDX.Shop", "Other.ini"}) Make(name);
}

TEST_F(BookNameTest, TellsWhatIsWrongWithTheNameOfABook) {
  Make("Shop.tbk");
  folder.Write("SHOP.tbk", "a letter");
  EXPECT_THAT(NameTroubles(folder.Path("Shop.tbk")), ::testing::IsEmpty());
  std::filesystem::copy_file(folder.Path("Shop.tbk"), folder.Path("sHop.tbk"));
  std::filesystem::copy_file(folder.Path("Shop.tbk"), folder.Path("sh*p.tbk"));
  EXPECT_EQ(NameTroubles(folder.Path("Shop.tbk")).size(), 1U);
  EXPECT_EQ(NameTroubles(folder.Path("sh*p.tbk")).size(), 1U);
}

}  // namespace
}  // namespace tallybook::testing
