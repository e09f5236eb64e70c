// A book that grows from few fields to many: its chunks are stored anew with fewer rows each, and what the journal keeps
// from before still takes figures back.
#include <filesystem>
#include <gmock/gmock.h>

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompact.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookSalvage.h"
#include "tallybook/engine/Journal.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/OtherProcesses.h"

namespace tallybook::testing {
namespace {

using engine::Book;
using engine::BookDescription;
using engine::Journal;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr Integer kFirstNew = 20;

class BookLayoutTest : public BookFixture {
 protected:
  // Two chunks of account 101 and one of 205, all of them imported.
  void SetUp() override {
    book = CreateAndOpen();
    empty = FiguresOf(*book);
    Import(1);
  }

  // Figures over both years, in three fields.
  void Import(int factor, int step = 5) {
    book->SetOperation(engine::JournalKind::kImport, "import");
    book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
    for (int day = 0; day < 731; day += step) {
      const auto& fields = book->Description().fields;
      Put(*book, 101, Day(2003, 1, 1) + day, fields[static_cast<std::size_t>(day) % fields.size()].number,
          factor * (day + 1) / 4.0);
      if (day < 100) Put(*book, 205, Day(2003, 1, 1) + day, 4, factor * day + 1);
    }
    book->EndRollback();
  }
  // To so many fields.
  void GrowTo(Integer count) {
    BookDescription after = book->Description();
    for (auto number = static_cast<Integer>(after.fields.size()); number < count; ++number) {
      after.fields.push_back({static_cast<Integer>(kFirstNew + number), "", false});
    }
    book->Grow(after, "grow");
  }
  void Reopen() {
    book.reset();
    book = Open();
  }
  void Undo() { Journal(*book).UndoNewest(); }
  [[nodiscard]] std::size_t Rows() const { return book->Stored().rows_of_chunk; }
  // Of the largest chunk, with the book closed.
  std::int64_t LargestChunk() {
    book.reset();
    engine::Database database(BookPath(), engine::Database::Mode::kReadWrite);
    return database.Number("SELECT max(length(figures)) FROM chunk");
  }
  void ExpectSound() {
    book.reset();
    const auto findings = engine::CheckBook(BookPath(), true).findings;
    EXPECT_THAT(findings, IsEmpty()) << findings.front().what;
    book = Open();
  }

  std::unique_ptr<Book> book;
  FigureMap empty;
};

TEST_F(BookLayoutTest, KeepsItsChunksWhileRowsAreNoMoreThanTwiceAsLong) {
  const std::size_t rows = Rows();
  GrowTo(6);
  EXPECT_EQ(Rows(), rows);
  EXPECT_THAT(book->Stored().former_layouts, IsEmpty());
}

TEST_F(BookLayoutTest, GetsTheChunksThatANewBookOfSuchRowsHas) {
  const FigureMap figures = FiguresOf(*book);
  GrowTo(60);
  EXPECT_EQ(Rows(), engine::ChooseRowsOfChunk(book->Description()));
  EXPECT_EQ(FiguresOf(*book), figures);
  ExpectSound();
  EXPECT_EQ(FiguresOf(*book), figures);
  Import(3, 1);
  EXPECT_LE(LargestChunk(), static_cast<std::int64_t>(engine::kLargestChunkRoom + 13));
  ExpectSound();
}

TEST_F(BookLayoutTest, TakesBackAnImportFromBeforeAsItWas) {
  Import(2, 3);
  const FigureMap second = FiguresOf(*book);
  Import(3, 7);
  GrowTo(60);
  Reopen();
  Journal journal(*book);
  journal.Undo(3);
  EXPECT_EQ(FiguresOf(*book), second);
  ExpectSound();
  Journal(*book).Undo(2);
  Journal(*book).Undo(1);
  EXPECT_EQ(FiguresOf(*book), empty);
  ExpectSound();
}

TEST_F(BookLayoutTest, TakesBackTheGrowthAndWhatCameBeforeAndBehindIt) {
  const FigureMap first = FiguresOf(*book);
  GrowTo(60);
  const std::size_t rows = Rows();
  Import(2, 2);
  Undo();
  EXPECT_EQ(FiguresOf(*book), first);
  Undo();
  EXPECT_EQ(book->Description().fields, ShopDescription().fields);
  EXPECT_EQ(Rows(), rows);
  EXPECT_EQ(FiguresOf(*book), first);
  Undo();
  EXPECT_EQ(FiguresOf(*book), empty);
  ExpectSound();
}

TEST_F(BookLayoutTest, KnowsWhichChunksEachEntryWasMadeWithWhenItGrewMoreThanOnce) {
  std::vector<FigureMap> before = {empty};
  for (const Integer count : {Integer{20}, Integer{90}, Integer{400}}) {
    before.push_back(FiguresOf(*book));
    GrowTo(count);
    Import(count, count / 10);
  }
  EXPECT_THAT(book->Stored().former_layouts, SizeIs(3));
  ExpectSound();
  for (const Long entry : {Long{7}, Long{5}, Long{3}, Long{1}}) {
    Journal(*book).Undo(entry);
    EXPECT_EQ(FiguresOf(*book), before.back()) << entry;
    before.pop_back();
    ExpectSound();
  }
}

TEST_F(BookLayoutTest, KnowsWhichRecordsTwoEntriesShareWhoseChunksDiffer) {
  // One that keeps no images marks what it wrote.
  GrowTo(60);
  Put(*book, 101, Day(2003, 1, 1) + 502, 1, 7);
  book->Commit();
  Journal(*book).Undo(1);
  Put(*book, 205, Day(2003, 1, 1), 1, 7);
  book->Commit();
  ExpectSound();
}

TEST_F(BookLayoutTest, RefusesToTakeBackBelowWhatKeepsNoImagesOfTheSameRecord) {
  GrowTo(60);
  Put(*book, 101, Day(2003, 1, 1) + 500, 1, 7);
  book->Commit();
  const FigureMap figures = FiguresOf(*book);
  EXPECT_THAT([&] { Journal(*book).Undo(1); }, FailsWith(FailureNumber::kInvalidArgument));
  EXPECT_EQ(FiguresOf(*book), figures);
}

TEST_F(BookLayoutTest, IsSavedWithAllThatItsJournalCanTakeBack) {
  const FigureMap figures = FiguresOf(*book);
  GrowTo(60);
  book.reset();
  EXPECT_THAT(engine::SalvageBook(BookPath(), folder.Path("Saved.tbk"), false).lost, IsEmpty());
  const auto saved = Book::Open(folder.Path("Saved.tbk"), app);
  EXPECT_EQ(FiguresOf(*saved), figures);
  Journal(*saved).Undo(1);
  EXPECT_EQ(FiguresOf(*saved), empty);
}

TEST_F(BookLayoutTest, TakesBackWhatItDidWhenItIsCompact) {
  GrowTo(60);
  book.reset();
  engine::CompactBook(BookPath(), 0);
  book = Open();
  Journal(*book).Undo(1);
  EXPECT_EQ(FiguresOf(*book), empty);
}

TEST_F(BookLayoutTest, IsAsItWasWhereAGrowthFindsNoRoom) {
  const FigureMap figures = FiguresOf(*book);
  book.reset();
  EXPECT_THAT(InAnotherProcess([&] {
                book = Open();
                const FileSizeLimit full_disk(200'000);
                GrowTo(300);
                return 0;
              }),
              ::testing::AnyOf(57, 61));
  book = Open();
  EXPECT_EQ(FiguresOf(*book), figures);
  EXPECT_EQ(book->Description().fields.size(), 3U);
  EXPECT_THAT(book->Stored().former_layouts, IsEmpty());
  ExpectSound();
}

TEST_F(BookLayoutTest, IsNotStoredAnewOverDamage) {
  book.reset();
  Meddle("UPDATE chunk SET figures = x'0102030405060708090A' WHERE key = (101 << 24) + 1");
  book = Open();
  EXPECT_THAT([&] { GrowTo(60); }, FailsWith(FailureNumber::kDeviceError, "the book is damaged"));
  EXPECT_EQ(book->Description().fields.size(), 3U);
  EXPECT_THAT(book->Stored().former_layouts, IsEmpty());
}

TEST_F(BookLayoutTest, IsRefusedWhereWhatItTellsOfItsChunksIsDamaged) {
  GrowTo(60);
  book.reset();
  Meddle("UPDATE layout SET rows_of_chunk = rows_of_chunk + 1");
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kDeviceError, "does not agree with its checksum"));
  Meddle("DROP TABLE layout");
  EXPECT_THAT([&] { Open(); }, FailsWith(FailureNumber::kDeviceError, "does not agree with its checksum"));
}

}  // namespace
}  // namespace tallybook::testing
