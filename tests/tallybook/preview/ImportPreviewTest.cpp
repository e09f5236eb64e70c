// A whole preview: files one after the other, their changes, and what becomes of them.
#include <gmock/gmock.h>
#include <map>
#include <rapidcheck.h>

#include "base/Dates.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/preview/ImportPreview.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::preview {
namespace {

using ::testing::ElementsAre;

constexpr std::size_t kTinyCache = 300;

class ImportPreviewTest : public ::testing::Test {
 protected:
  ImportPreviewTest()
      : host_(testing::SmallBook()),
        preview_(std::make_unique<ImportPreview>(ImportPreview::Means{
            .book = host_->book, .factory = host_->factory, .app = host_->app, .cache_bytes = kTinyCache})) {}

  void Write(Long account, int day, Integer field, Double value) {
    ASSERT_TRUE(preview_->Book().ReadRecord(account, host_->book.FirstDate() + day));
    preview_->Book().SetFieldValue(field, value);
    ASSERT_TRUE(preview_->Book().WriteRecord());
  }
  std::vector<Text> Changes() {
    std::vector<Text> told;
    preview_->VisitChanges([&](std::size_t file, const FigureChange& change) {
      told.push_back(preview_->Files()[file].name + " " + std::to_string(change.account_number) + " " +
                     std::to_string(static_cast<Long>(change.before)) + " -> " +
                     std::to_string(static_cast<Long>(change.after)));
      return true;
    });
    return told;
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
  std::unique_ptr<testing::MemoryHost> host_;
  std::unique_ptr<ImportPreview> preview_;
};

TEST_F(ImportPreviewTest, ListsWhatEachFileDoesToWhatTheOneBeforeLeft) {
  preview_->BeginFile("a");
  Write(101, 0, 2, 8);
  preview_->BeginFile("empty");
  preview_->BeginFile("b");
  Write(101, 0, 2, 3);
  Write(205, 0, 1, 4);
  preview_->BeginFile("last");
  preview_->End();
  EXPECT_THAT(Changes(), ElementsAre("a 101 3 -> 8", "b 101 8 -> 3", "b 205 0 -> 4"));
  EXPECT_EQ(preview_->Files()[2].figures, 2);
  EXPECT_EQ(preview_->Files()[3].figures, 0);
  EXPECT_EQ(preview_->Records().changed, 1);
  EXPECT_EQ(preview_->Records().same, 1);
}

TEST_F(ImportPreviewTest, TotalsGoFromTheBookToWhatItWouldBe) {
  preview_->BeginFile("a");
  Write(101, 0, 2, 8);
  Write(205, 3, 2, 1);
  preview_->BeginFile("b");
  Write(101, 0, 2, 10);
  preview_->End();
  const std::vector<ChangeTotal> totals = preview_->FieldTotals();
  ASSERT_EQ(totals.size(), 1);
  EXPECT_EQ(totals[0].field_number, 2);
  EXPECT_EQ(totals[0].figures, 2);
  EXPECT_EQ(totals[0].before, 3);
  EXPECT_EQ(totals[0].after, 11);
  std::vector<std::pair<Long, Double>> of_accounts;
  preview_->VisitAccountTotals([&](const ChangeTotal& total) {
    of_accounts.emplace_back(total.account_number, total.after - total.before);
    return true;
  });
  EXPECT_THAT(of_accounts, ElementsAre(std::pair(101, 7.0), std::pair(205, 1.0)));
}

TEST_F(ImportPreviewTest, TellsWhatBecomesOfFilesAndLeavesThem) {
  folder_.Write("a.QDX", "one");
  folder_.Write("a.XDQ", "older");
  folder_.Write("b.QDX", "two");
  ASSERT_TRUE(RenameFile(folder_.Path("a.QDX"), folder_.Path("a.XDQ")));
  ASSERT_TRUE(KillFile(folder_.Path("b.QDX")));
  preview_->End();
  EXPECT_TRUE(FileExists(folder_.Path("b.QDX")));
  EXPECT_EQ(folder_.Read("a.XDQ"), "older");
  const FileFate renamed = preview_->FateOf(folder_.Path("a.QDX"));
  EXPECT_EQ(renamed.kind, FileFate::Kind::kRenamed);
  EXPECT_EQ(renamed.new_path, folder_.Path("a.XDQ"));
  EXPECT_TRUE(renamed.replaces);
  EXPECT_EQ(preview_->FateOf(folder_.Path("b.QDX")).kind, FileFate::Kind::kDeleted);
  EXPECT_EQ(preview_->FateOf(folder_.Path("c.QDX")).kind, FileFate::Kind::kKept);
}

TEST_F(ImportPreviewTest, GivesThePlatformItsFilesBack) {
  EXPECT_NE(ThePlatform().files, &platform_.files);
  preview_.reset();
  EXPECT_EQ(ThePlatform().files, &platform_.files);
}

TEST_F(ImportPreviewTest, KeepsTheChangesOfManyFilesOutOfMemoryAndInOrder) {
  EXPECT_TRUE(rc::check([&] {
    ImportPreview preview({.book = host_->book, .factory = host_->factory, .app = host_->app, .cache_bytes = 1});
    std::map<std::pair<int, Long>, Double> expected;
    const int files = *rc::gen::inRange(1, 30);
    for (int file = 0; file < files; ++file) {
      preview.BeginFile(std::to_string(file));
      for (const Long account : {101, 102, 205}) {
        const Double value = *rc::gen::inRange(1, 9);
        RC_ASSERT(preview.Book().ReadRecord(account, host_->book.FirstDate() + 5));
        if (preview.Book().FieldValue(7) != value) expected[{file, account}] = value;
        preview.Book().SetFieldValue(7, value);
        RC_ASSERT(preview.Book().WriteRecord());
      }
    }
    preview.End();
    std::vector<std::pair<std::pair<int, Long>, Double>> told;
    preview.VisitChanges([&](std::size_t file, const FigureChange& change) {
      told.push_back({{static_cast<int>(file), change.account_number}, change.after});
      return true;
    });
    const std::vector<std::pair<std::pair<int, Long>, Double>> wanted(expected.begin(), expected.end());
    RC_ASSERT(told == wanted);
  }));
}

}  // namespace
}  // namespace tallybook::preview
