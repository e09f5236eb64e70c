#include <filesystem>
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
using engine::JournalKind;
using engine::JournalState;
using engine::UndoWay;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr Long kShop = 101;
constexpr Long kCafe = 205;
constexpr Integer kSales = 1;
constexpr Integer kGuests = 4;

class JournalTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    description.values = {{kShop, Day(2003, 5, 5), kSales, 1}, {kShop, Day(2004, 5, 5), kSales, 2}};
    book = CreateAndOpen(description);
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
  engine::UndoOutcome TakeBack(Long id, UndoWay way) { return Journal(*book).TakeBack({.id = id, .way = way}); }
  Long Undo() { return Journal(*book).UndoNewest().front().id; }
  Long Undo(Long id) { return Journal(*book).Undo(id).front().id; }

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
  EXPECT_EQ(Undo(), 2);
  EXPECT_EQ(FiguresOf(*book), before);
  Reopen();
  EXPECT_EQ(FiguresOf(*book), before);
  ASSERT_THAT(Entries(), SizeIs(3));
  EXPECT_EQ(Entries()[1].state, JournalState::kUndone);
  EXPECT_EQ(Entries()[1].chunks, 3);
}

TEST_F(JournalTest, NamesTheFirstFigureThatWasChangedSinceWhereNobodySaysWhatBecomesOfIt) {
  const FigureMap start = FiguresOf(*book);
  Change(Day(2003, 5, 5), 10);
  const FigureMap between = FiguresOf(*book);
  Change(Day(2003, 5, 5), 20);
  EXPECT_THAT([&] { Undo(1); },
              FailsWith(FailureNumber::kInvalidArgument,
                        "journal entry 1 cannot be undone exactly: 1 figure has been changed since (account 100, "
                        "2003-05-05, field 1, by entry 2)"));
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
  EXPECT_THAT([&] { Undo(); },
              FailsWith(FailureNumber::kInvalidArgument, "entry 3 cannot be undone: it kept no figures"));
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
  Undo(1);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 6);
}

TEST_F(JournalTest, MarksWhatIsWrittenUnderNoEntryAndCannotTakeItBack) {
  Change(Day(2003, 5, 5), 10);
  Put(*book, kShop, Day(2003, 5, 5), kSales, 6);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 6);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 6);  // changes nothing
  const FigureMap after = FiguresOf(*book);
  Reopen();
  ASSERT_THAT(Entries(), SizeIs(2));
  EXPECT_FALSE(Entries()[1].keeps_images);
  EXPECT_EQ(Entries()[1].state, JournalState::kClosed);
  EXPECT_EQ(Entries()[1].chunks, 2);
  EXPECT_EQ(Entries()[1].first, kNoDate);
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kInvalidArgument,
                                         "journal entry 2 cannot be undone: it kept no figures from before"));
  EXPECT_THAT([&] { Undo(1); },
              FailsWith(FailureNumber::kInvalidArgument, "(account 100, 2003-05-05, field 1, by entry 2)"));
  EXPECT_EQ(FiguresOf(*book), after);
}

TEST_F(JournalTest, LeavesNoEntryWhereNothingChanges) {
  Put(*book, kShop, Day(2003, 5, 5), kSales, 1);
  Reopen();
  EXPECT_THAT(Entries(), IsEmpty());
}

TEST_F(JournalTest, TakesBackAllEntriesOfTheNewestCommand) {
  Change(Day(2003, 5, 5), 10);
  const FigureMap before = FiguresOf(*book);
  book->SetOperationName("import qdx all");
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 6), 30);
  Change(Day(2003, 5, 5), 40);
  EXPECT_NE(Entries()[0].command, Entries()[1].command);
  EXPECT_EQ(Entries()[1].command, Entries()[3].command);
  const auto undone = Journal(*book).UndoNewest();
  ASSERT_THAT(undone, SizeIs(3));
  EXPECT_EQ(undone[0].id, 4);
  EXPECT_EQ(undone[2].id, 2);
  EXPECT_EQ(FiguresOf(*book), before);
  EXPECT_EQ(Undo(), 1);  // what was an undo is passed over
}

TEST_F(JournalTest, TakesBackTheRestOfACommandOfWhichOneEntryIsUndone) {
  const FigureMap before = FiguresOf(*book);
  book->SetOperationName("import qdx all");
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 6), 30);
  Undo(2);
  ASSERT_THAT(Journal(*book).UndoNewest(), SizeIs(1));
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(JournalTest, TakesBackAllEntriesOfACommandWhateverCameLater) {
  const FigureMap before = FiguresOf(*book);
  book->SetOperationName("import qdx all");
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 6), 30);
  Change(Day(2003, 5, 5), 40);
  book->SetOperationName("import csv later.csv");
  Change(Day(2003, 5, 7), 50);
  const Long command = Entries()[0].command;
  const auto outcome = Journal(*book).TakeBack({.id = {}, .command = command});
  EXPECT_TRUE(outcome.done);
  EXPECT_THAT(outcome.undone, SizeIs(3));
  FigureMap expected = before;
  expected[{kShop, Day(2003, 5, 7), kSales}] = 50;
  EXPECT_EQ(FiguresOf(*book), expected);
  EXPECT_THAT([&] { (void)Journal(*book).TakeBack({.id = {}, .command = command}); },
              FailsWith(FailureNumber::kInvalidArgument));
}

TEST_F(JournalTest, LeavesAnEntryForEachEntryThatWasTakenBack) {
  book->SetOperationName("import qdx all");
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 6), 30);
  book->SetOperation(JournalKind::kUndo, "journal undo");
  Undo();
  ASSERT_THAT(Entries(), SizeIs(4));
  const JournalEntry last = Entries()[3];
  EXPECT_EQ(last.kind, JournalKind::kUndo);
  EXPECT_EQ(last.undoes, 1);
  EXPECT_EQ(Entries()[2].undoes, 2);
  EXPECT_EQ(last.command, Entries()[2].command);
  EXPECT_EQ(last.what_ran, "journal undo");
  EXPECT_EQ(last.state, JournalState::kClosed);
  EXPECT_EQ(last.first, Day(2003, 5, 5));
  EXPECT_EQ(last.chunks, 1);
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kInvalidArgument, "nothing to undo"));
}

TEST_F(JournalTest, TakesBackAnOlderImportExactlyWhereOthersCameAfterIt) {
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 6));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 11);
  book->EndRollback();
  // The same record, another field; another record of the same chunk.
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 7));
  Put(*book, kShop, Day(2003, 5, 5), kGuests, 4);
  Put(*book, kShop, Day(2003, 5, 7), kSales, 12);
  book->EndRollback();
  Reopen();
  EXPECT_EQ(Undo(1), 1);
  EXPECT_EQ(FiguresOf(*book), (FigureMap{{{kShop, Day(2003, 5, 5), kSales}, 1},
                                         {{kShop, Day(2003, 5, 5), kGuests}, 4},
                                         {{kShop, Day(2003, 5, 7), kSales}, 12},
                                         {{kShop, Day(2004, 5, 5), kSales}, 2}}));
}

TEST_F(JournalTest, TellsEachFigureThatWasChangedSinceAndLeavesEverythingAsItIs) {
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 6));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 11);
  book->EndRollback();
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 7), 30);
  const FigureMap before = FiguresOf(*book);
  const auto outcome = TakeBack(1, UndoWay::kExact);
  EXPECT_FALSE(outcome.done);
  EXPECT_EQ(outcome.changed_since, 1);
  ASSERT_THAT(outcome.listed, SizeIs(1));
  const engine::ChangedSince& figure = outcome.listed[0];
  EXPECT_EQ(figure.entry, 1);
  EXPECT_EQ(figure.account_number, kShop);
  EXPECT_EQ(figure.date, Day(2003, 5, 5));
  EXPECT_EQ(figure.field_number, kSales);
  EXPECT_EQ(figure.before, 1);
  EXPECT_EQ(figure.left, 10);
  EXPECT_EQ(figure.now, 20);
  EXPECT_EQ(figure.later, 2);
  Reopen();
  EXPECT_EQ(FiguresOf(*book), before);
  EXPECT_THAT(Entries(), SizeIs(3));
}

TEST_F(JournalTest, LeavesAloneOrPutsBackWhatWasChangedSinceAsItIsTold) {
  const FigureMap start = FiguresOf(*book);
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 6));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 11);
  book->EndRollback();
  Change(Day(2003, 5, 5), 20);
  const auto skipped = TakeBack(1, UndoWay::kSkip);
  EXPECT_TRUE(skipped.done);
  EXPECT_EQ(skipped.changed_since, 1);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 20);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 0);
  EXPECT_EQ(Undo(3), 3);  // and the import stands again
  EXPECT_EQ(Entries()[0].state, JournalState::kClosed);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 11);
  EXPECT_TRUE(TakeBack(1, UndoWay::kForce).done);
  EXPECT_EQ(FiguresOf(*book), start);
}

TEST_F(JournalTest, TakesOutTheAmountsOfAnImportWhateverTheFiguresAreNow) {
  Change(Day(2003, 5, 5), 10);   // adds 9 to 1
  Change(Day(2003, 5, 5), 110);  // adds 100
  const auto outcome = TakeBack(1, UndoWay::kReverse);
  EXPECT_TRUE(outcome.done);
  EXPECT_EQ(outcome.changed_since, 0);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 101);
  EXPECT_TRUE(TakeBack(2, UndoWay::kReverse).done);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
}

TEST_F(JournalTest, TakesNoAmountsOutOfWhatIsNoImportOrCannotBeTold) {
  book->SetOperation(JournalKind::kSet, "set");
  Change(Day(2003, 5, 5), 10);
  EXPECT_THAT([&] { TakeBack(1, UndoWay::kReverse); },
              FailsWith(FailureNumber::kInvalidArgument, "journal entry 1 is no import"));
  book->SetOperationName("import csv");
  Change(Day(2003, 5, 6), 10);
  Put(*book, kShop, Day(2003, 5, 6), kSales, 6);  // under no entry
  EXPECT_THAT([&] { TakeBack(2, UndoWay::kReverse); },
              FailsWith(FailureNumber::kInvalidArgument,
                        "what journal entry 2 added to account 100, 2003-05-06, field 1 cannot be told: entry 3"));
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 6), kSales), 6);
}

TEST_F(JournalTest, AFigureThatOthersBroughtBackIsNotChangedSince) {
  Change(Day(2003, 5, 5), 10);
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 5), 10);
  EXPECT_EQ(Undo(1), 1);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
}

TEST_F(JournalTest, AnUndoCanBeUndoneAndWhatItTookBackStandsAgainAsItDid) {
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Reopen();  // so that it was never closed
  Undo(1);
  EXPECT_EQ(Undo(2), 2);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 10);
  EXPECT_EQ(Entries()[0].state, JournalState::kOpen);
  EXPECT_EQ(Entries()[1].state, JournalState::kUndone);
  EXPECT_EQ(Undo(3), 3);
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
  EXPECT_EQ(Entries()[0].state, JournalState::kUndone);
  EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kInvalidArgument, "nothing to undo"));
}

TEST_F(JournalTest, CountsAFigureThatSeveralFilesChangedOnce) {
  Change(Day(2003, 5, 5), 5);
  book->SetOperationName("import qdx all");
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 5), 30);
  EXPECT_TRUE(TakeBack(1, UndoWay::kForce).done);
  const auto outcome = Journal(*book).TakeBack({});
  EXPECT_FALSE(outcome.done);
  EXPECT_THAT(outcome.undone, SizeIs(2));
  EXPECT_EQ(outcome.changed_since, 1);
  EXPECT_THAT(outcome.listed, SizeIs(1));
  EXPECT_EQ(outcome.listed[0].later, 4);
}

TEST_F(JournalTest, ALookFindsOutAllAndChangesNothing) {
  Change(Day(2003, 5, 5), 20);
  const auto outcome = Journal(*book).TakeBack({.id = {}, .only_look = true});
  EXPECT_FALSE(outcome.done);
  EXPECT_EQ(outcome.figures, 1);
  ASSERT_THAT(outcome.undone, SizeIs(1));
  Reopen();
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 20);
  EXPECT_THAT(Entries(), SizeIs(1));
}

TEST_F(JournalTest, BeginsACommandWithEachOperationThatIsNamed) {
  book->SetOperationName("import csv");
  Change(Day(2003, 5, 5), 20);
  book->SetOperation(JournalKind::kSet, "set");
  Change(Day(2003, 5, 5), 30);
  EXPECT_EQ(Entries()[1].kind, JournalKind::kSet);
  EXPECT_NE(Entries()[0].command, Entries()[1].command);
  EXPECT_THAT(Journal(*book).UndoNewest(), SizeIs(1));
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 20);
}

TEST_F(JournalTest, WritesAnEntryAndItsFiguresInOneTransaction) {
  book->SetOperation(JournalKind::kSet, "set");
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  book->Abandon();
  Reopen();
  EXPECT_THAT(Entries(), IsEmpty());
  EXPECT_EQ(Get(*book, kShop, Day(2003, 5, 5), kSales), 1);
}

TEST_F(JournalTest, TellsAnEntryThatIsDamagedOrMissing) {
  Change(Day(2003, 5, 5), 20);
  Change(Day(2003, 5, 6), 30);
  book->Close();
  const std::string whole = folder.Read("North.tbk");
  Meddle("UPDATE journal SET what = 'other' WHERE id = 1");
  EXPECT_THAT([&] { static_cast<void>(Journal(*OpenToRead()).Entries()); },
              FailsWith(FailureNumber::kDeviceError, "journal entry 1 does not agree with its checksum"));
  folder.Write("North.tbk", whole);
  Meddle("DELETE FROM journal WHERE id = 2");
  EXPECT_THAT([&] { static_cast<void>(Journal(*OpenToRead()).Entries()); },
              FailsWith(FailureNumber::kDeviceError, "the journal shows 1 of 2 entries"));
}

TEST_F(JournalTest, TakesNothingBackWhereWhatItNeedsIsDamagedOrMissing) {
  book->BeginRollback(Day(2003, 5, 5), Day(2004, 5, 5));
  Put(*book, kShop, Day(2003, 5, 5), kSales, 10);
  Put(*book, kCafe, Day(2003, 5, 5), kSales, 10);
  book->EndRollback();
  const FigureMap after = FiguresOf(*book);
  book->Close();
  const std::string whole = folder.Read("North.tbk");
  for (const char* damage : {"UPDATE journal_chunk SET rows = x'01' WHERE key = 101 << 24",
                             "UPDATE journal_chunk SET image = NULL WHERE key = 101 << 24",
                             "DELETE FROM journal_chunk WHERE key = 205 << 24", "DELETE FROM image",
                             "UPDATE image SET figures = x'03' || substr(figures, 2)"}) {
    SCOPED_TRACE(damage);
    folder.Write("North.tbk", whole);
    Meddle(damage);
    Reopen();
    EXPECT_THAT([&] { Undo(); }, FailsWith(FailureNumber::kDeviceError, "the book is damaged"));
    EXPECT_EQ(FiguresOf(*book), after);
    book->Close();
  }
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
  Undo(1);
  const FigureMap figures = FiguresOf(*book);
  EXPECT_EQ(figures, (FigureMap{{{kShop, Day(2003, 5, 5), kSales}, 1},
                                {{kShop, Day(2004, 5, 5), kSales}, 2},
                                {{7, Day(2003, 5, 5), kSales}, 3}}));
}

TEST_F(JournalTest, TakesBackAnEntryThatMadeOneChunkOfAnAccountAndEmptiedAnother) {
  auto description = ShopDescription();
  description.values = {{kShop, Day(2004, 12, 30), kSales, 2}};
  book->Close();
  std::filesystem::remove(BookPath());
  book = CreateAndOpen(description);
  const FigureMap before = FiguresOf(*book);
  book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
  Put(*book, kShop, Day(2003, 1, 1), kSales, 1);
  Put(*book, kShop, Day(2004, 12, 30), kSales, 0);
  book->EndRollback();
  Reopen();
  Undo();
  EXPECT_EQ(FiguresOf(*book), before);
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
  EXPECT_THAT([&] { Journal(*reader).UndoNewest(); }, FailsWith(FailureNumber::kPermissionDenied, "read only"));
}

}  // namespace
}  // namespace tallybook::testing
