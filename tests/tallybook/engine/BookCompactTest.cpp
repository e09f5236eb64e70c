#include <filesystem>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::CompactBook;
using engine::CompactResult;
using ::testing::IsEmpty;

class BookCompactTest : public BookFixture {
 protected:
  // A book in which much has come and gone.
  void SetUp() override {
    const auto book = CreateAndOpen();
    for (const Double value : {1.25, 0.0}) {
      for (int day = 0; day < 700; ++day) {
        for (const Long account : {Long{101}, Long{205}, Long{7}}) {
          Put(*book, account, Day(2003, 1, 1) + day, 1, value * day / 7);
          Put(*book, account, Day(2003, 1, 1) + day, 4, value * day * 1e9 / 13);
        }
      }
      book->Commit();
    }
    Put(*book, 205, Day(2004, 3, 1), 1, 3.5);
  }

  std::vector<Text> Entries() {
    std::vector<Text> entries;
    for (const auto& entry : engine::Journal(*OpenToRead()).Entries()) entries.push_back(entry.what_ran);
    return entries;
  }
};

TEST_F(BookCompactTest, GivesRoomBackAndKeepsFiguresAndJournal) {
  const FigureMap figures = FiguresOf(*OpenToRead());
  const auto entries = Entries();
  const CompactResult result = CompactBook(BookPath(), 0);
  EXPECT_LT(result.after, result.before);
  EXPECT_EQ(result.after, static_cast<std::int64_t>(folder.Read("North.tbk").size()));
  EXPECT_EQ(FiguresOf(*OpenToRead()), figures);
  EXPECT_EQ(Entries(), entries);
  EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
  EXPECT_FALSE(std::filesystem::exists(BookPath() + "-wal"));
}

TEST_F(BookCompactTest, LetsTheJournalTakeBackWhatItDidBefore) {
  {
    const auto book = Open();
    book->BeginRollback(Day(2003, 1, 5), Day(2003, 1, 5));
    Put(*book, 101, Day(2003, 1, 5), 1, 4711);
    book->EndRollback();
  }
  CompactBook(BookPath(), 0);
  engine::Journal(*Open()).UndoNewest();
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 5), 1), 0);
}

TEST_F(BookCompactTest, LeavesADamagedBookAsItIs) {
  Meddle("UPDATE property SET value = 'South' WHERE name = 'system_name'");
  const std::string before = folder.Read("North.tbk");
  EXPECT_THAT([&] { CompactBook(BookPath(), 0); }, FailsWith(FailureNumber::kDeviceError, "is damaged"));
  EXPECT_EQ(folder.Read("North.tbk"), before);
}

TEST_F(BookCompactTest, LeavesABookThatIsInUseAsItIs) {
  const auto writer = Open();
  EXPECT_THAT([&] { CompactBook(BookPath(), 0); }, FailsWith(FailureNumber::kPermissionDenied, "open for writing"));
}

TEST_F(BookCompactTest, LeavesABookOfTheFirstFormatInItsFormat) {
  std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), BookPath(),
                             std::filesystem::copy_options::overwrite_existing);
  CompactBook(BookPath(), 0);
  EXPECT_EQ(engine::CheckBook(BookPath(), true).format, 1);
}

}  // namespace
}  // namespace tallybook::testing
