// All or nothing: what is written between BeginWhole and KeepWhole, figures and journal, is there together or not at
// all.

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <utility>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/Journal.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookOptions;
using engine::Journal;
using engine::JournalEntry;
using engine::JournalState;
using ::testing::IsEmpty;
using ::testing::SizeIs;

void ImportOne(Book& book, Long account, Date date, Double value) {
  book.BeginRollback(date, date);
  Put(book, account, date, 1, value);
  book.EndRollback();
}

class BookWholeTest : public BookFixture {
 protected:
  void SetUp() override {
    book = CreateAndOpen();
    ImportOne(*book, 101, Day(2003, 5, 5), 7);
    book->Commit();
    before = FiguresOf(*book);
  }

  void ImportTwo() {
    book->SetOperationName("import");
    book->BeginWhole();
    ImportOne(*book, 101, Day(2003, 5, 5), 8);
    ImportOne(*book, 205, Day(2003, 6, 6), 9);
  }
  [[nodiscard]] std::vector<JournalEntry> Entries() const { return Journal(*book).Entries(); }
  void ExpectAsBefore() {
    EXPECT_EQ(FiguresOf(*book), before);
    EXPECT_THAT(Entries(), SizeIs(1));
    book->Close();
    EXPECT_THAT(engine::CheckBook(BookPath(), true).findings, IsEmpty());
    book = Open();
    EXPECT_EQ(FiguresOf(*book), before);
  }

  std::unique_ptr<Book> book;
  FigureMap before;
};

TEST_F(BookWholeTest, IsSeenByItselfAndByNobodyElseUntilItIsKept) {
  ImportTwo();
  book->Commit();
  EXPECT_EQ(FiguresOf(*book), (FigureMap{{{101, Day(2003, 5, 5), 1}, 8}, {{205, Day(2003, 6, 6), 1}, 9}}));
  EXPECT_THAT(Entries(), SizeIs(3));
  EXPECT_EQ(FiguresOf(*OpenToRead()), before);
  book->KeepWhole();
  EXPECT_EQ(FiguresOf(*OpenToRead()), FiguresOf(*book));
  EXPECT_NE(FiguresOf(*book), before);
}

TEST_F(BookWholeTest, IsOneCommandThatAnUndoTakesBack) {
  ImportTwo();
  book->KeepWhole();
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(3));
  EXPECT_EQ(entries[1].command, entries[2].command);
  EXPECT_EQ(entries[2].state, JournalState::kClosed);
  EXPECT_THAT(Journal(*book).UndoNewest(), SizeIs(2));
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(BookWholeTest, LeavesNothingWhenItIsDropped) {
  ImportTwo();
  book->Commit();
  book->DropWhole();
  ExpectAsBefore();
}

TEST_F(BookWholeTest, LeavesNothingWhenTheBookIsClosedMeanwhile) {
  ImportTwo();
  book->Close();
  book = Open();
  ExpectAsBefore();
}

TEST_F(BookWholeTest, LeavesNothingOfAnEntryThatIsOpenOrTheBooksOwn) {
  book->BeginWhole();
  Put(*book, 101, Day(2003, 7, 7), 1, 3);
  book->DropWhole();
  book->BeginWhole();
  book->BeginRollback(Day(2003, 5, 5), Day(2003, 5, 5));
  Put(*book, 101, Day(2003, 5, 5), 1, 3);
  book->DropWhole();
  ExpectAsBefore();
}

TEST_F(BookWholeTest, WithNothingInItLeavesTheFileAsItWas) {
  book->BeginWhole();
  book->KeepWhole();
  book->BeginWhole();
  book->DropWhole();
  ExpectAsBefore();
}

TEST_F(BookWholeTest, LetsTheBookBeWrittenAsEverAfterwards) {
  ImportTwo();
  book->DropWhole();
  ImportOne(*book, 101, Day(2003, 5, 5), 10);
  ASSERT_THAT(Entries(), SizeIs(2));
  EXPECT_EQ(Entries()[1].id, 2);
  ImportTwo();
  book->KeepWhole();
  ImportOne(*book, 7, Day(2004, 5, 5), 11);
  book->Close();
  book = Open();
  EXPECT_EQ(Get(*book, 101, Day(2003, 5, 5), 1), 8);
  EXPECT_EQ(Get(*book, 7, Day(2004, 5, 5), 1), 11);
  for (int command = 0; command < 2; ++command) Journal(*book).UndoNewest();
  EXPECT_EQ(FiguresOf(*book), before);
}

TEST_F(BookWholeTest, KeepsNotesWithIt) {
  ImportTwo();
  engine::JournalNotes(*book).Save(3, {.files = {}, .facts = "facts"});
  engine::JournalNotes(*book).SaveDue(3, "due");
  EXPECT_THAT(engine::JournalNotes(*OpenToRead()).Due(), IsEmpty());
  book->KeepWhole();
  EXPECT_THAT(engine::JournalNotes(*OpenToRead()).Due(), ::testing::ElementsAre(std::pair{3, "due"}));
  EXPECT_EQ(engine::JournalNotes(*book).Entries()[2].notes.facts, "facts");
}

TEST_F(BookWholeTest, IsSpoiledByAPartThatCannotBeWritten) {
  book->Close();
  Meddle("CREATE TRIGGER refuse BEFORE INSERT ON chunk BEGIN SELECT RAISE(FAIL, 'refused'); END");
  book = Open();
  EXPECT_THAT([&] { ImportTwo(); }, FailsWith(FailureNumber::kDeviceError, "refused"));
  EXPECT_THAT(
      [&] {
        Put(*book, 101, Day(2003, 5, 5), 1, 6);
        book->Commit();
      },
      FailsWith(FailureNumber::kDeviceError, "nothing of it is kept"));
  EXPECT_THAT([&] { book->KeepWhole(); }, FailsWith(FailureNumber::kDeviceError, "nothing of it is kept"));
  book->DropWhole();
  EXPECT_EQ(FiguresOf(*book), before);
  ImportOne(*book, 101, Day(2003, 5, 5), 10);
  EXPECT_EQ(Get(*book, 101, Day(2003, 5, 5), 1), 10);
}

TEST_F(BookWholeTest, CannotBeBegunInABookThatIsOpenToRead) {
  book->Close();
  const auto look = OpenToRead();
  EXPECT_THAT([&] { look->BeginWhole(); }, FailsWith(FailureNumber::kPermissionDenied, "to read"));
}

TEST_F(BookWholeTest, CannotHoldAnother) {
  ImportTwo();
  EXPECT_THAT([&] { book->BeginWhole(); }, FailsWith(FailureNumber::kInternal, "at once"));
  book->DropWhole();
  ExpectAsBefore();
}

TEST_F(BookWholeTest, OfAnOlderBookBringsItUpToDateAndNoMore) {
  book->Close();
  std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), BookPath(),
                             std::filesystem::copy_options::overwrite_existing);
  book = Open();
  before = FiguresOf(*book);
  const auto entries = Entries();
  const auto [account, date, field] = before.begin()->first;
  book->BeginWhole();
  book->BeginRollback(date, date);
  Put(*book, account, date, field, 4711);
  book->EndRollback();
  book->DropWhole();
  EXPECT_EQ(FiguresOf(*book), before);
  EXPECT_THAT(Entries(), SizeIs(entries.size()));
  book->BeginWhole();
  Put(*book, account, date, field, 4711);
  book->KeepWhole();
  EXPECT_EQ(Get(*book, account, date, field), 4711);
}

// Wholes that are kept and dropped, and single imports between them, against a plain map; the cache holds next to
// nothing.
class BookWholeModelTest : public BookFixture {
 protected:
  enum class Way { kKept, kDropped, kPlain };

  void SetUp() override {
    options.cache_bytes = 1;
    options.commit_seconds = 0;
  }

  void Start() {
    book.reset();
    for (const char* ending : {"", "-wal", "-shm"}) std::filesystem::remove(BookPath() + ending);
    Create(ShopDescription());
    book = Open(options);
    model.clear();
    states = {model};
  }

  // A few files, each an entry. Gives the figures as they are then.
  FigureMap Import() {
    FigureMap changed = model;
    for (int file = *rc::gen::inRange(1, 4); file > 0; --file) {
      book->BeginRollback(book->FirstDate(), book->LastDate());
      for (int count = *rc::gen::inRange(0, 12); count > 0; --count) {
        const Long account = *rc::gen::element<Long>(101, 205, 7);
        const Date date = Day(2003, 1, 1) + *rc::gen::inRange(0, 730);
        const auto value = static_cast<Double>(*rc::gen::inRange(0, 4));
        Put(*book, account, date, 4, value);
        changed[{account, date, 4}] = value;
      }
      book->EndRollback();
    }
    std::erase_if(changed, [](const auto& figure) { return figure.second == 0; });
    return changed;
  }

  void Do(Way way) {
    book->SetOperationName("import");
    if (way != Way::kPlain) book->BeginWhole();
    const FigureMap changed = Import();
    RC_ASSERT(FiguresOf(*book) == changed);
    if (way == Way::kKept) book->KeepWhole();
    if (way == Way::kDropped) {
      book->DropWhole();
    } else {
      model = changed;
      states.push_back(model);
    }
    RC_ASSERT(FiguresOf(*book) == model);
    RC_ASSERT(FiguresOf(*OpenToRead()) == model);
  }

  void UndoAll() {
    for (; states.size() > 1; states.pop_back()) {
      RC_ASSERT(FiguresOf(*book) == states.back());
      Journal(*book).UndoNewest();
    }
    RC_ASSERT(FiguresOf(*book).empty());
  }

  BookOptions options;
  std::unique_ptr<Book> book;
  FigureMap model;
  std::vector<FigureMap> states;  // behind each command that stays
};

TEST_F(BookWholeModelTest, AgreesWithAModelWhateverIsKeptAndDropped) {
  EXPECT_TRUE(rc::check([this] {
    Start();
    for (int step = *rc::gen::inRange(1, 6); step > 0; --step) {
      Do(*rc::gen::element(Way::kKept, Way::kDropped, Way::kPlain));
    }
    book->Close();
    RC_ASSERT(engine::CheckBook(BookPath(), true).findings.empty());
    book = Open(options);
    UndoAll();
  }));
}

}  // namespace
}  // namespace tallybook::testing
