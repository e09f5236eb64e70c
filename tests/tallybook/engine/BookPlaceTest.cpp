#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tallybook/engine/BookPlace.h"
#include "tests/support/FailsWith.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

using engine::BookFolder;
using engine::BookName;
using engine::CheckIsBookFile;
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
}

}  // namespace
}  // namespace tallybook::testing
