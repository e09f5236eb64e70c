#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <vector>

#include "tallybook/engine/Journal.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookOptions;
using engine::Journal;
using engine::JournalEntry;
using engine::JournalState;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr Long kShop = 101;
constexpr Long kCafe = 205;
constexpr Integer kSales = 1;

class JournalTest : public BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
    Put(*book, kShop, Day(2004, 5, 5), kSales, 2);
  }

  // One operation under the journal that gives a record a new figure.
  void Change(Date date, Double value) {
    book->BeginRollback(date, date);
    Put(*book, kShop, date, kSales, value);
    book->EndRollback();
  }

  void Reopen() {
    book.reset();
    book = Open();
  }

  std::vector<JournalEntry> Entries() { return Journal(*book).Entries(); }
  Long Undo(Long id = 0) { return Journal(*book).Undo(id); }

  std::unique_ptr<Book> book;
};

TEST_F(JournalTest, StartsEmptyAndHasNothingToUndo) {
  EXPECT_THAT(Entries(), IsEmpty());
  EXPECT_THAT([&] { Undo(); },
              FailsWith(FailureNumber::kInvalidArgument, BookPath() + ": the journal has nothing to undo"));
  EXPECT_THAT([&] { Undo(1); }, FailsWith(FailureNumber::kInvalidArgument, "the journal has no entry 1"));
}

TEST_F(JournalTest, TellsWhatRanWhenAndOverWhichDates) {
  platform.clock.Set(Day(2004, 2, 3) + 0.5);
  book->BeginProgress("Importing");
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 6, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 3);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 3);
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_EQ(Entries()[0].state, JournalState::kOpen);
  book->EndRollback();
  book->EndProgress();
  book->SetOperationName("import qdx");
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  book->EndRollback();
  ASSERT_THAT(Entries(), SizeIs(2));
  const JournalEntry first = Entries()[0];
  EXPECT_EQ(first.id, 1);
  EXPECT_EQ(first.time, Day(2004, 2, 3) + 0.5);
  EXPECT_EQ(first.first, Day(2003, 5, 5));
  EXPECT_EQ(first.last, Day(2003, 6, 5));
  EXPECT_EQ(first.what_ran, "Importing");
  EXPECT_EQ(first.state, JournalState::kClosed);
  EXPECT_EQ(first.chunks, 2);
  EXPECT_EQ(Entries()[1].what_ran, "import qdx");
  EXPECT_EQ(Entries()[1].chunks, 0);
}

TEST_F(JournalTest, RestoresExactlyWhatWasThereBefore) {
  Put(*book, kCafe, Day(2003, 1, 1), kSales, 0.1 + 0.2);
  const FigureMap before = FiguresOf(*book);
  book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 0);  // a figure that goes
  Put(*book, kShop, Day(2004, 5, 5), kSales, 7);  // one that changes
  Put(*book, 7, Day(2004, 12, 31), 9, 8);         // a chunk that was not there
  Put(*book, kCafe, Day(2003, 1, 1), kSales, 0);  // a chunk that goes
  book->EndRollback();
  EXPECT_NE(FiguresOf(*book), before);
  EXPECT_EQ(Undo(), 1);
  EXPECT_EQ(FiguresOf(*book), before);
  Reopen();
  EXPECT_EQ(FiguresOf(*book), before);
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_EQ(Entries()[0].state, JournalState::kUndone);
  EXPECT_EQ(Entries()[0].chunks, 3);
}

TEST_F(JournalTest, UndoesNewestFirst) {
  const FigureMap start = FiguresOf(*book);
  Change(Day(2003, 5, 5), 10);
  const FigureMap between = FiguresOf(*book);
  Change(Day(2003, 5, 5), 20);
  EXPECT_THAT([&] { Undo(1); },
              FailsWith(FailureNumber::kInvalidArgument, "entry 1 cannot be undone while entry 2 stands on it"));
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 20);
  EXPECT_EQ(Undo(2), 2);
  EXPECT_EQ(FiguresOf(*book), between);
  EXPECT_THAT([&] { Undo(2); }, FailsWith(FailureNumber::kInvalidArgument, "entry 2 has been undone already"));
  EXPECT_EQ(Undo(1), 1);
  EXPECT_EQ(FiguresOf(*book), start);
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kInvalidArgument, "nothing to undo"));
}

TEST_F(JournalTest, UndoesAnEntryThatWasNeverClosed) {
  const FigureMap before = FiguresOf(*book);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Reopen();
  ASSERT_THAT(Entries(), SizeIs(1));
  EXPECT_EQ(Entries()[0].state, JournalState::kOpen);
  EXPECT_EQ(Entries()[0].chunks, 1);
  EXPECT_EQ(Undo(), 1);
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(JournalTest, UndoesAnEntryWhileItIsOpen) {
  const FigureMap before = FiguresOf(*book);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  EXPECT_EQ(Undo(), 1);
  EXPECT_EQ(FiguresOf(*book), before);
  book->EndRollback();
  EXPECT_EQ(Entries()[0].state, JournalState::kUndone);
  Put(*book, kShop, Day(2003, 5, 5), kSales, 11);  // no entry is open any more
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kInvalidArgument, "nothing to undo"));
}

TEST_F(JournalTest, EndsAnOpenEntryAsUnclosedWhenAnotherBegins) {
  const FigureMap start = FiguresOf(*book);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  const FigureMap between = FiguresOf(*book);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 20);
  book->EndRollback();
  book->EndRollback();
  ASSERT_THAT(Entries(), SizeIs(2));
  EXPECT_EQ(Entries()[0].state, JournalState::kOpen);
  EXPECT_EQ(Entries()[1].state, JournalState::kClosed);
  Undo();
  EXPECT_EQ(FiguresOf(*book), between);
  Undo();
  EXPECT_EQ(FiguresOf(*book), start);
}

TEST_F(JournalTest, LeavesRecordsAloneThatWereNotWrittenUnderTheEntry) {
  Change(Day(2003, 5, 5), 10);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 6);  // the same chunk, later and under no entry
  Undo();
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 6);
}

TEST_F(JournalTest, KeepsTheImageFromBeforeTheFirstChange) {
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  for (int value = 10; value < 15; ++value) {
    Put(*book, kShop, Day(2003, 5, 5), kSales, value);
    Put(*book, kShop, Day(2003, 6, value), kSales, value);
    book->Commit();
  }
  book->EndRollback();
  EXPECT_EQ(Entries()[0].chunks, 1);
  Undo();
  EXPECT_EQ(FiguresOf(*book),
            (FigureMap{{{kShop, Day(2003, 5, 5), kSales}, 1}, {{kShop, Day(2004, 5, 5), kSales}, 2}}));
}

TEST_F(JournalTest, KeepsImagesOfChunksThatLeaveTheCacheAndComeBack) {
  book.reset();
  BookOptions options;
  options.cache_bytes = 1;
  book = Open(options);
  const FigureMap before = FiguresOf(*book);
  book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
  for (int round = 1; round <= 3; ++round) {
    for (const Long account : {kShop, kCafe, Long{7}}) {
      Put(*book, account, Day(2003, 5, 4) + round, kSales, 100 * round);
      Put(*book, account, Day(2004, 12, 1) + round, kSales, 100 * round);
    }
  }
  book->EndRollback();
  Undo();
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(JournalTest, BringsFiguresBackIntoABookThatHasNone) {
  book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 0);
  Put(*book, kShop, Day(2004, 5, 5), kSales, 0);
  book->EndRollback();
  Reopen();
  EXPECT_THAT(FiguresOf(*book), IsEmpty());
  Undo();
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
  EXPECT_EQ(Get(*book, kShop, Day(2004, 5, 5), kSales), 2);
}

TEST_F(JournalTest, AnUndoThatMeetsDamageChangesNothingAndTheBookGoesOn) {
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 20);
  book->EndRollback();
  book->Close();
  // The shop's chunks are restored before the café's is read.
  Meddle("CREATE TABLE sound AS SELECT key, figures FROM chunk");
  Meddle("UPDATE chunk SET figures = x'0900000000' WHERE key = 205 << 24");
  Reopen();
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kDeviceError, "account number 205"));
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 10);
  EXPECT_EQ(Get(*book, kShop, Day(2004, 5, 5), kSales), 2);
  EXPECT_EQ(Get(*book, 7, Day(2003, 5, 5), kSales), 0);
  Put(*book, 7, Day(2003, 5, 5), kSales, 3);
  book->Close();
  Meddle("UPDATE chunk SET figures = (SELECT figures FROM sound WHERE sound.key = chunk.key) WHERE key = 205 << 24");
  Reopen();
  Undo();
  const FigureMap figures = FiguresOf(*book);
  EXPECT_EQ(figures, (FigureMap{{{kShop, Day(2003, 5, 5), kSales}, 1},
                                {{kShop, Day(2004, 5, 5), kSales}, 2},
                                {{7, Day(2003, 5, 5), kSales}, 3}}));
}

TEST_F(JournalTest, LeavesNoRecordCurrent) {
  Change(Day(2003, 5, 5), 10);
  ASSERT_TRUE(book->ReadRecord(kShop, Day(2003, 5, 5)));
  Undo();
  EXPECT_THAT([&] { static_cast<void>(book->FieldValue(kSales)); },
              FailsWith(FailureNumber::kInvalidArgument, "no record is current"));
}

TEST_F(JournalTest, UndoesNothingInABookThatIsOpenToRead) {
  Change(Day(2003, 5, 5), 10);
  const auto reader = OpenToRead();
  EXPECT_EQ(Journal(*reader).Entries().size(), 1U);
  EXPECT_THAT([&] { Journal(*reader).Undo(); }, FailsWith(FailureNumber::kPermissionDenied, "read only"));
}

}  // namespace
}  // namespace tallybook::testing
