// A book of an older format is read as it is, and brought to the present one by the first change.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <vector>

#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookOptions;
using engine::Journal;
using engine::JournalState;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class BookUpgradeTest : public BookFixture {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), BookPath());
    options.notice = [this](const Text& line) { notices.push_back(line); };
  }

  static void ChangeOneFigure(Book& book) { Put(book, 101, Day(2003, 1, 1), 1, 12345); }

  [[nodiscard]] Text Backup() const { return BookPath() + "-v1"; }
  std::int64_t FormatOfFile() {
    engine::Database database(BookPath(), engine::Database::Mode::kReadOnly);
    return database.Number("PRAGMA user_version");
  }

  BookOptions options;
  std::vector<Text> notices;
};

TEST_F(BookUpgradeTest, LeavesTheFileAsItIsWhereNothingIsWritten) {
  const std::string before = folder.Read("North.tbk");
  FiguresOf(*OpenToRead());
  {
    const auto book = Open(options);
    FiguresOf(*book);
    EXPECT_EQ(Journal(*book).Entries().size(), 4U);
    EXPECT_THAT([&] { Journal(*book).Undo(99); }, FailsWith(FailureNumber::kInvalidArgument, "no entry 99"));
    ASSERT_TRUE(book->ReadRecord(101, Day(2003, 1, 1)));
    book->SetFieldValue(1, 5);
  }
  EXPECT_EQ(folder.Read("North.tbk"), before);
  EXPECT_THAT(notices, IsEmpty());
  EXPECT_FALSE(folder.Has("North.tbk-v1"));
}

TEST_F(BookUpgradeTest, KeepsEveryFigureAndSaysWhereTheBackupIs) {
  FigureMap figures = FiguresOf(*OpenToRead());
  ChangeOneFigure(*Open(options));
  figures[{101, Day(2003, 1, 1), 1}] = 12345;
  EXPECT_THAT(notices,
              ElementsAre(BookPath() + ": the book is brought from format 1 to 4; as it was it stands in " + Backup()));
  EXPECT_EQ(FormatOfFile(), 4);
  EXPECT_EQ(FiguresOf(*OpenToRead()), figures);
  notices.clear();
  ChangeOneFigure(*Open(options));
  EXPECT_THAT(notices, IsEmpty());
}

TEST_F(BookUpgradeTest, LeavesABackupThatReadsAsTheBookDid) {
  const FigureMap figures = FiguresOf(*OpenToRead());
  const mode_t mode = S_IRUSR | S_IWUSR;
  ASSERT_EQ(chmod(BookPath().c_str(), mode), 0);
  ChangeOneFigure(*Open(options));
  struct stat about {};
  ASSERT_EQ(stat(Backup().c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 07777, mode);
  EXPECT_EQ(about.st_nlink, 1U);
  std::filesystem::copy_file(Backup(), BookPath(), std::filesystem::copy_options::overwrite_existing);
  EXPECT_EQ(FormatOfFile(), 1);
  EXPECT_EQ(FiguresOf(*OpenToRead()), figures);
}

TEST_F(BookUpgradeTest, NeverWritesOverABackup) {
  folder.Write("North.tbk-v1", "an older backup");
  ChangeOneFigure(*Open(options));
  EXPECT_EQ(folder.Read("North.tbk-v1"), "an older backup");
  EXPECT_TRUE(folder.Has("North.tbk-v1-2"));
  EXPECT_THAT(notices, ElementsAre(HasSubstr("North.tbk-v1-2")));
}

TEST_F(BookUpgradeTest, KeepsTheWayBackOfEntriesFromBefore) {
  const auto book = Open(options);
  const auto undone = Journal(*book).UndoNewest();
  ASSERT_EQ(undone.size(), 1U);
  EXPECT_EQ(undone[0].id, 4);
  EXPECT_EQ(Journal(*book).UndoNewest()[0].id, 3);
  EXPECT_EQ(Journal(*book).UndoNewest()[0].id, 1);
  const auto entries = Journal(*book).Entries();
  ASSERT_EQ(entries.size(), 7U);
  EXPECT_EQ(entries[1].state, JournalState::kUndone);
  EXPECT_EQ(entries[1].what_ran, "import csv");
  EXPECT_EQ(entries[1].chunks, 1);
  for (const auto& [key, value] : FiguresOf(*book)) {
    const auto& [account, date, field] = key;
    ASSERT_NE(account, 512);
    ASSERT_TRUE(account != 340 || date < Day(2003, 1, 1) + 400) << DateText(date);
  }
}

TEST_F(BookUpgradeTest, GivesNoChecksumToWhatIsDamaged) {
  Meddle("UPDATE chunk SET figures = x'0900000000' WHERE key = 205 << 24");
  const std::string before = folder.Read("North.tbk");
  {
    const auto book = Open(options);
    ChangeOneFigure(*book);
    EXPECT_THAT([&] { book->Commit(); }, FailsWith(FailureNumber::kDeviceError, "account number 205"));
    book->Abandon();
  }
  EXPECT_EQ(folder.Read("North.tbk"), before);
  EXPECT_FALSE(folder.Has("North.tbk-v1"));
}

TEST_F(BookUpgradeTest, LeavesTheBookAndNoBackupWhereThereIsNoRoom) {
  const FigureMap figures = FiguresOf(*OpenToRead());
  {
    const auto book = Open(options);
    ChangeOneFigure(*book);
    {
      constexpr std::size_t kLessThanTheBook = 100'000;
      const FileSizeLimit limit(kLessThanTheBook);
      EXPECT_THROW(book->Commit(), Failure);
    }
    book->Abandon();
  }
  EXPECT_EQ(FormatOfFile(), 1);
  EXPECT_EQ(FiguresOf(*OpenToRead()), figures);
  EXPECT_FALSE(folder.Has("North.tbk-v1"));
  EXPECT_FALSE(folder.Has("North.tbk-backup-new"));
}

}  // namespace
}  // namespace tallybook::testing
