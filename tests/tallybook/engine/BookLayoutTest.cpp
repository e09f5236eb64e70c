// A book that grows from few fields to many: its chunks are stored anew with fewer rows each, and what the journal
// keeps from before still takes figures back.
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
using ::testing::Not;
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

// The pages of a closed book's file (SQLite file format, "B-tree Pages", "The Freelist"). Pages count from 1.
class FilePages {
 public:
  explicit FilePages(std::string bytes) : bytes_(std::move(bytes)) {}

  [[nodiscard]] const std::string& Bytes() const { return bytes_; }
  [[nodiscard]] std::string PageAt(std::uint32_t page) const { return bytes_.substr(StartOf(page), engine::kPageSize); }
  void SetPage(std::uint32_t page, const std::string& content) {
    bytes_.replace(StartOf(page), content.size(), content);
  }
  void SetNumber(std::size_t at, std::uint32_t number) {
    for (std::size_t byte = 0; byte < 4; ++byte) bytes_[at + byte] = static_cast<char>(number >> (24 - 8 * byte));
  }

  // Where a page above leaves has the numbers of the pages below; none for a leaf.
  [[nodiscard]] std::vector<std::size_t> PointersOf(std::uint32_t page) const {
    constexpr char kAboveLeavesOfTable = 5;
    constexpr char kAboveLeavesOfIndex = 2;
    constexpr std::size_t kHead = 12;
    const std::size_t start = StartOf(page);
    if (bytes_[start] != kAboveLeavesOfTable && bytes_[start] != kAboveLeavesOfIndex) return {};
    std::vector<std::size_t> pointers = {start + 8};
    for (std::size_t cell = 0; cell < Number(start + 3, 2); ++cell) {
      pointers.push_back(start + Number(start + kHead + 2 * cell, 2));
    }
    return pointers;
  }
  // A page that is not in use, and is no list of such.
  [[nodiscard]] std::uint32_t FreePage() const { return Number(StartOf(Number(32, 4)) + 8, 4); }

 private:
  static std::size_t StartOf(std::uint32_t page) { return (page - 1) * engine::kPageSize; }
  [[nodiscard]] std::uint32_t Number(std::size_t at, std::size_t size) const {
    std::uint32_t number = 0;
    for (std::size_t byte = 0; byte < size; ++byte)
      number = number << 8 | static_cast<unsigned char>(bytes_[at + byte]);
    return number;
  }

  std::string bytes_;
};

// Nine years in which chunks of before and of now have keys in common, at other dates: the file of one keeps, in a page
// that is not in use any more, what looks like one of the other.
class BookLayoutPages : public BookFixture {
 protected:
  void SetUp() override {
    BookDescription description = ShopDescription();
    description.accounts.resize(1);
    description.fields.resize(1);
    description.calendar.years = 9;
    {
      const auto book = CreateAndOpen(description);
      Grow(*book, 2);
      for (const int day : {0, 40, FirstOfSecondChunk(*book) + kRow}) Set(*book, day, 2, 4711);
    }
    old_leaf = FilePages(folder.Read("North.tbk")).PageAt(RootOf("chunk"));
    {
      const auto book = Open();
      Grow(*book, kFields);
      ASSERT_NE(book->Stored().former_layouts.size(), 0U);
      for (int day = 100; day < 3200; day += 11) {
        for (Integer field = 1; field <= kFields; ++field) Set(*book, day, field, 0.1 * day + field);
      }
      right = FiguresOf(*book);
    }
    Meddle("CREATE TABLE gone (content BLOB); INSERT INTO gone VALUES (zeroblob(100000)); DROP TABLE gone");
  }

  static constexpr Integer kFields = 60;
  static constexpr int kRow = 3;
  static int FirstOfSecondChunk(const Book& book) { return static_cast<int>(book.Stored().rows_of_chunk); }
  static void Set(Book& book, int day, Integer field, Double value) {
    Put(book, 101, Day(2003, 1, 1) + day, field, value);
  }
  static void Grow(Book& book, Integer fields) {
    BookDescription after = book.Description();
    while (after.fields.size() < static_cast<std::size_t>(fields)) {
      after.fields.push_back({static_cast<Integer>(after.fields.size() + 1), "", false});
    }
    book.Grow(after, "grow");
  }
  std::uint32_t RootOf(const Text& tree) {
    engine::Database database(BookPath(), engine::Database::Mode::kReadWrite);
    return static_cast<std::uint32_t>(
        database.Number(("SELECT rootpage FROM sqlite_master WHERE name = '" + tree + "'").c_str()));
  }

  // Each of these ends with a failure, or as if nothing were damaged.
  void ExpectRightOrRefused() {
    const auto refused = [](const auto& act) {
      try {
        act();
      } catch (const Failure&) {
      }
    };
    for (int day = 0; day < 3285; ++day) {
      refused([&] {
        const auto book = OpenOnce();
        const Date date = Day(2003, 1, 1) + day;
        if (!book->ReadRecord(101, date)) return;
        for (const Integer field : {Integer{1}, Integer{2}}) {
          const auto found = right.find({101, date, field});
          ASSERT_EQ(book->FieldValue(field), found == right.end() ? 0 : found->second) << day;
        }
      });
    }
    opened.reset();
    refused([&] { EXPECT_EQ(FiguresOf(*OpenToRead()), right); });
  }
  Book* OpenOnce() {
    if (!opened) opened = OpenToRead();
    return opened.get();
  }

  std::string old_leaf;
  FigureMap right;
  std::unique_ptr<Book> opened;
};

TEST_F(BookLayoutPages, FromBeforeAGrowthAreNeverReadWhereADamagedPointerLeadsToThem) {
  FilePages pages(folder.Read("North.tbk"));
  const std::uint32_t root = RootOf("chunk");
  const auto pointers = pages.PointersOf(root);
  ASSERT_GT(pointers.size(), 2U);
  pages.SetPage(pages.FreePage(), old_leaf);
  for (const std::size_t pointer : pointers) {
    SCOPED_TRACE("the pointer at " + std::to_string(pointer));
    FilePages damaged = pages;
    damaged.SetNumber(pointer, pages.FreePage());
    folder.Write("North.tbk", damaged.Bytes());
    ExpectRightOrRefused();
    for (const bool deep : {false, true}) EXPECT_THAT(engine::CheckBook(BookPath(), deep).findings, Not(IsEmpty()));
  }
}

}  // namespace
}  // namespace tallybook::testing
