#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tallybook/engine/JournalTrim.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Journal;
using engine::JournalEntry;
using engine::JournalTrim;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class JournalTrimTest : public BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    for (int month = 1; month <= 4; ++month) {
      platform.clock.Set(Day(2004, month, 15));
      book->SetOperationName("import");
      book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
      for (int day = 0; day < 700; ++day) Put(*book, 101, Day(2003, 1, 1) + day, 1, (day + month) / 7.0);
      book->EndRollback();
    }
    figures = FiguresOf(*book);
  }

  static std::vector<Long> Ids(const std::vector<JournalEntry>& entries) {
    std::vector<Long> ids;
    for (const JournalEntry& entry : entries) ids.push_back(entry.id);
    return ids;
  }

  std::unique_ptr<engine::Book> book;
  FigureMap figures;
};

TEST_F(JournalTrimTest, TakesTheWayBackOfOlderEntriesAndKeepsThatOfOthers) {
  EXPECT_THAT(Ids(JournalTrim(*book).Before(Day(2004, 3, 1))), ElementsAre(1, 2));
  EXPECT_EQ(FiguresOf(*book), figures);
  EXPECT_THAT([&] { Journal(*book).Undo(2); },
              FailsWith(FailureNumber::kInvalidArgument, "it kept no figures from before"));
  Journal(*book).Undo(4);
  Journal(*book).Undo(3);
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 1), 1), 2 / 7.0);
}

TEST_F(JournalTrimTest, KeepsTheEntriesAndLeavesASoundBook) {
  JournalTrim(*book).Before(Day(2004, 3, 1));
  EXPECT_THAT(Journal(*book).Entries(), ::testing::SizeIs(4));
  book->Close();
  EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
}

TEST_F(JournalTrimTest, GivesBackTheRoomOnceTheBookIsCompacted) {
  book->Close();
  const auto full = engine::CompactBook(BookPath(), 0);
  book = Open();
  JournalTrim(*book).Before(Day(2004, 5, 1));
  book->Close();
  EXPECT_LT(engine::CompactBook(BookPath(), 0).after, full.after - 4 * 4000);
}

TEST_F(JournalTrimTest, KeepsTheWayBackOfEntriesOfThatDayWhereTheClockHasGoneBackSince) {
  platform.clock.Set(Day(2004, 1, 1));
  book->SetOperationName("import");
  book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
  Put(*book, 101, Day(2003, 1, 1), 1, 77);
  book->EndRollback();
  EXPECT_THAT(Ids(JournalTrim(*book).Before(Day(2004, 3, 1))), ElementsAre(1, 2));
  for (const Long id : {5, 4, 3}) Journal(*book).Undo(id);
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 1), 1), 2 / 7.0);
}

TEST_F(JournalTrimTest, DoesNothingWhereNothingIsOldEnoughOrAllIsTrimmed) {
  EXPECT_THAT(JournalTrim(*book).Before(Day(2004, 1, 1)), IsEmpty());
  EXPECT_THAT(Ids(JournalTrim(*book).Before(Day(2004, 2, 1))), ElementsAre(1));
  EXPECT_THAT(JournalTrim(*book).Before(Day(2004, 2, 1)), IsEmpty());
}

TEST_F(JournalTrimTest, LeavesChangesOfListsTheWayBack) {
  engine::BookDescription after = book->Description();
  after.fields.push_back({30, "Waste", false});
  book->Grow(after, "field add");
  JournalTrim(*book).Before(Day(2010, 1, 1));
  Journal(*book).Undo(5);
  EXPECT_EQ(book->FieldPosition(30), 0);
}

TEST_F(JournalTrimTest, IsRefusedWhereTheBookMayOnlyBeRead) {
  book->Close();
  const auto look = OpenToRead();
  EXPECT_THAT([&] { JournalTrim(*look).Before(Day(2004, 3, 1)); },
              FailsWith(FailureNumber::kPermissionDenied, "to read"));
}

}  // namespace
}  // namespace tallybook::testing
