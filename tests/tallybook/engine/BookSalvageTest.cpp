// What is saved of a damaged book: nothing wrong, and nothing missing that is not in the list.
#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <random>
#include <set>

#include "tallybook/engine/BookBackup.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookSalvage.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::BookFinding;
using engine::FindingKind;
using engine::SalvageBook;
using engine::SalvageResult;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr bool kAsItReads = true;
constexpr bool kNotAsItReads = false;

auto Lost(FindingKind kind, const Text& what) {
  return ::testing::AllOf(Field(&BookFinding::kind, kind), Field(&BookFinding::what, HasSubstr(what)));
}

// Several chunks an account, of each form, and a journal of images; small enough to be tried often.
class BookSalvageTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    for (Integer number = 20; number < 60; ++number) description.fields.push_back({number, "", false});
    description.accounts.push_back({300, "300", ""});
    const auto book = CreateAndOpen(description);
    for (const int entry : {1, 2, 3}) {
      book->SetOperationName("import " + std::to_string(entry));
      book->BeginRollback(Day(2003, 1, 1), Day(2004, 12, 31));
      for (int day = 0; day < 700; day += entry) {
        Put(*book, 101, Day(2003, 1, 1) + day, 1, day * 0.25 * entry + 1);
        Put(*book, 205, Day(2003, 1, 1) + day, static_cast<Integer>(20 + day % 40), day / 7.0 + entry);
      }
      for (int day = 0; day < 60; ++day) Put(*book, 7, Day(2003, 1, 1) + day, 4, entry * 1000.0 / (day + 1));
      book->EndRollback();
    }
    figures = FiguresOf(*book);
    book->Close();
    bytes = folder.Read("North.tbk");
    folder.Write("TBQDX1.North", "a definition");
  }

  [[nodiscard]] Text NewPath() const { return folder.Path("Saved.tbk"); }
  SalvageResult Salvage(bool as_it_reads = kNotAsItReads) { return SalvageBook(BookPath(), NewPath(), as_it_reads); }
  std::unique_ptr<engine::Book> OpenNew(bool read_only = true) {
    engine::BookOptions options;
    options.read_only = read_only;
    return engine::Book::Open(NewPath(), app, options);
  }
  FigureMap NewFigures() { return FiguresOf(*OpenNew()); }

  void RemoveNew() {
    for (const char* name : {"Saved.tbk", "Saved.tbk-lock", "TBQDX1.Saved"}) {
      std::filesystem::remove(folder.Path(name));
    }
  }

  static bool IsTold(const std::vector<BookFinding>& lost, Long account, Date date) {
    return std::ranges::any_of(lost, [&](const BookFinding& finding) {
      return finding.account == account && finding.first <= date && date <= finding.last;
    });
  }

  // Every figure of the new book is as it was, and every other is in the list.
  void ExpectTold(const SalvageResult& result) {
    const FigureMap saved = NewFigures();
    for (const auto& [place, value] : saved) {
      const auto was = figures.find(place);
      ASSERT_TRUE(was != figures.end() && was->second == value)
          << "account " << std::get<0>(place) << ", " << DateText(std::get<1>(place)) << ": " << value;
    }
    for (const auto& [place, value] : figures) {
      ASSERT_TRUE(saved.contains(place) || IsTold(result.lost, std::get<0>(place), std::get<1>(place)))
          << "account " << std::get<0>(place) << ", " << DateText(std::get<1>(place)) << " is missing without a word";
    }
  }

  FigureMap figures;
  std::string bytes;
};

TEST_F(BookSalvageTest, LosesNothingOfABookThatIsWhole) {
  const SalvageResult result = Salvage();
  EXPECT_THAT(result.lost, IsEmpty());
  EXPECT_EQ(result.entries, 3);
  EXPECT_EQ(result.companions, 1);
  EXPECT_EQ(NewFigures(), figures);
  EXPECT_EQ(folder.Read("TBQDX1.Saved"), "a definition");
  EXPECT_EQ(folder.Read("North.tbk"), bytes);
}

TEST_F(BookSalvageTest, LetsTheJournalTakeBackWhatItCouldBefore) {
  Salvage();
  {
    const auto book = Open();
    for (int entry = 0; entry < 2; ++entry) engine::Journal(*book).UndoNewest();
    const auto saved = OpenNew(false);
    for (int entry = 0; entry < 2; ++entry) engine::Journal(*saved).UndoNewest();
  }
  EXPECT_EQ(NewFigures(), FiguresOf(*OpenToRead()));
}

TEST_F(BookSalvageTest, NamesTheDatesOfAChunkThatIsDamaged) {
  Meddle("UPDATE chunk SET figures = x'0100000000' WHERE key = (101 << 24) + 2");
  const SalvageResult result = Salvage();
  ASSERT_THAT(result.lost, ElementsAre(Lost(FindingKind::kChunk, "these figures cannot be read")));
  EXPECT_EQ(result.lost[0].account, 101);
  EXPECT_EQ(result.lost[0].code, "100");
  EXPECT_GT(result.lost[0].first, Day(2003, 1, 31));
  EXPECT_LT(result.lost[0].last, Day(2004, 1, 1));
  ExpectTold(result);
  EXPECT_LT(NewFigures().size(), figures.size());
}

TEST_F(BookSalvageTest, NamesTheAccountWhereTheDatesCannotBeTold) {
  Meddle("DELETE FROM chunk WHERE key BETWEEN (101 << 24) + 1 AND (101 << 24) + 2");
  const SalvageResult result = Salvage();
  ASSERT_THAT(result.lost, ElementsAre(Lost(FindingKind::kChunk, "where the others belong cannot be told")));
  ExpectTold(result);
}

TEST_F(BookSalvageTest, TakesNoFiguresThatAreNotThoseWrittenLast) {
  Meddle(
      "UPDATE chunk SET figures = (SELECT figures FROM image JOIN journal_chunk ON image.id = image "
      "WHERE entry = 2 AND key = (101 << 24) + 1) WHERE key = (101 << 24) + 1");
  const SalvageResult result = Salvage();
  ASSERT_THAT(result.lost, ElementsAre(Lost(FindingKind::kChunk, "not what was written last")));
  ExpectTold(result);
}

TEST_F(BookSalvageTest, TakesADamagedDescriptionOnlyWhereItIsTold) {
  Meddle("UPDATE property SET value = 'South' WHERE name = 'system_name'");
  EXPECT_THAT([&] { Salvage(); }, FailsWith(FailureNumber::kDeviceError, "description does not agree"));
  EXPECT_FALSE(std::filesystem::exists(NewPath()));
  const SalvageResult result = Salvage(kAsItReads);
  EXPECT_THAT(result.lost, ElementsAre(Lost(FindingKind::kDescription, "does not agree with its checksum")));
  EXPECT_EQ(NewFigures(), figures);
}

TEST_F(BookSalvageTest, KeepsTheNumberOfAnEntryThatIsLostAndTakesNothingBackBehindIt) {
  Meddle("UPDATE journal SET what = 'other' WHERE id = 2");
  const SalvageResult result = Salvage();
  ASSERT_THAT(result.lost, ElementsAre(Lost(FindingKind::kJournal, "this entry is damaged"),
                                       Lost(FindingKind::kJournal, "cannot be taken back any more")));
  EXPECT_EQ(result.lost[0].entry, 2);
  EXPECT_EQ(result.entries, 1);
  EXPECT_EQ(NewFigures(), figures);
  const auto saved = OpenNew(false);
  engine::Journal journal(*saved);
  ASSERT_EQ(journal.Entries().size(), 3U);
  EXPECT_EQ(journal.Entries()[0].what_ran, "import 1");
  EXPECT_EQ(journal.Entries()[2].what_ran, "import 3");
  journal.UndoNewest();
  EXPECT_THAT([&] { journal.UndoNewest(); }, FailsWith(FailureNumber::kInvalidArgument, "kept no figures"));
}

TEST_F(BookSalvageTest, ReadsWhatNoTreeLeadsToAnyMore) {
  // The root of the table is an inner page; nothing in it is true any more.
  sqlite3* handle = nullptr;
  ASSERT_EQ(sqlite3_open(BookPath().c_str(), &handle), SQLITE_OK);
  sqlite3_stmt* find = nullptr;
  sqlite3_prepare_v2(handle, "SELECT rootpage FROM sqlite_master WHERE name = 'chunk'", -1, &find, nullptr);
  ASSERT_EQ(sqlite3_step(find), SQLITE_ROW);
  const auto page = static_cast<std::size_t>(sqlite3_column_int(find, 0) - 1) * engine::kPageSize;
  sqlite3_finalize(find);
  sqlite3_close(handle);
  std::string damaged = bytes;
  std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(page), 200, '\x55');
  folder.Write("North.tbk", damaged);
  const SalvageResult result = Salvage();
  EXPECT_THAT(result.lost, IsEmpty());
  EXPECT_EQ(NewFigures(), figures);
}

TEST_F(BookSalvageTest, ReadsABookWhoseHeadIsDamaged) {
  std::string damaged = bytes;
  for (const std::size_t place : {3U, 17U, 18U, 29U, 57U, 95U}) damaged[place] = '\x7E';
  folder.Write("North.tbk", damaged);
  EXPECT_THAT(Salvage().lost, IsEmpty());
  EXPECT_EQ(NewFigures(), figures);
  EXPECT_EQ(folder.Read("North.tbk"), damaged);
}

TEST_F(BookSalvageTest, TakesWhatALogHoldsAndLeavesTheLog) {
  const auto book = Open();
  Put(*book, 101, Day(2003, 1, 1), 4, 4711);
  book->Commit();
  std::filesystem::copy_file(BookPath(), folder.Path("Left.tbk"));
  std::filesystem::copy_file(BookPath() + "-wal", folder.Path("Left.tbk-wal"));
  const std::string log = folder.Read("Left.tbk-wal");
  ASSERT_FALSE(log.empty());
  const SalvageResult result = SalvageBook(folder.Path("Left.tbk"), NewPath(), kNotAsItReads);
  EXPECT_THAT(result.lost, IsEmpty());
  EXPECT_EQ(Get(*OpenNew(), 101, Day(2003, 1, 1), 4), 4711);
  EXPECT_EQ(folder.Read("Left.tbk-wal"), log);
}

TEST_F(BookSalvageTest, SaysThatALogIsDamagedWhoseBookAgreesWithItsChecksums) {
  const auto book = Open();
  Put(*book, 101, Day(2003, 1, 1), 4, 4711);
  book->Commit();
  std::filesystem::copy_file(BookPath(), folder.Path("Left.tbk"));
  std::string log = folder.Read("North.tbk-wal");
  ASSERT_GT(log.size(), 5000U);
  log[5000] = static_cast<char>(log[5000] ^ 4);
  folder.Write("Left.tbk-wal", log);
  const SalvageResult result = SalvageBook(folder.Path("Left.tbk"), NewPath(), kNotAsItReads);
  EXPECT_THAT(result.lost, ElementsAre(Lost(FindingKind::kFile, "the log beside the book is damaged")));
  EXPECT_EQ(NewFigures(), figures);
}

TEST_F(BookSalvageTest, MayBeReadByNobodyWhoMayNotReadTheDamagedBook) {
  std::filesystem::permissions(BookPath(), std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
  Salvage();
  EXPECT_EQ(std::filesystem::status(NewPath()).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(BookSalvageTest, SaysThatABackupsCompanionFilesAreLost) {
  engine::Book::Create(folder.Path("Other.tbk"), ShopDescription());
  folder.Write("TBQDX1.Other", "another's");
  folder.Write("safe", "");
  engine::WriteBackup(BookPath(), folder.Path("safe"), "backup");
  std::filesystem::rename(folder.Path("safe"), BookPath());
  Meddle("DROP TABLE companion");
  const SalvageResult result = Salvage();
  EXPECT_THAT(result.lost, ElementsAre(Lost(FindingKind::kCompanions, "cannot be read")));
  EXPECT_EQ(result.companions, 0);
}

TEST_F(BookSalvageTest, SaysThatABookOfTheFirstFormatHasNoChecksums) {
  std::filesystem::copy_file(tallybook::testing::SampleBook("book-v1.tbk"), BookPath(),
                             std::filesystem::copy_options::overwrite_existing);
  const FigureMap sample = FiguresOf(*OpenToRead());
  EXPECT_THAT(Salvage().lost, Contains(Lost(FindingKind::kFile, "has no checksums")));
  EXPECT_EQ(NewFigures(), sample);
}

TEST_F(BookSalvageTest, SavesABookOfEachOlderFormatThatHasChecksums) {
  for (const char* name : {"book-v2.tbk", "book-v3.tbk"}) {
    std::filesystem::copy_file(tallybook::testing::SampleBook(name), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
    const FigureMap sample = FiguresOf(*OpenToRead());
    EXPECT_THAT(Salvage().lost, IsEmpty());
    EXPECT_EQ(NewFigures(), sample) << name;
    RemoveNew();
  }
}

TEST_F(BookSalvageTest, RefusesWhatIsNoBookAndReplacesNothing) {
  folder.Write("letter", std::string(5000, 'x'));
  EXPECT_THAT([&] { SalvageBook(folder.Path("letter"), NewPath(), kNotAsItReads); },
              FailsWith(FailureNumber::kPathOrAccess, "not a book"));
  EXPECT_THAT([&] { SalvageBook(BookPath(), folder.Path("letter"), kNotAsItReads); },
              FailsWith(FailureNumber::kPathOrAccess, "exists already"));
  folder.Write("TBQDX1.Saved", "another's");
  EXPECT_THAT([&] { Salvage(); }, FailsWith(FailureNumber::kPathOrAccess, "which would belong to it"));
}

class BookSalvageTrial : public BookSalvageTest {
 protected:
  // Damages the book in some way, and holds that what is saved is true and the rest is told.
  int Try(std::mt19937& random) {
    std::string damaged = bytes;
    const unsigned kind = random() % 4;
    const std::size_t at = random() % damaged.size();
    SCOPED_TRACE("damage " + std::to_string(kind) + " at " + std::to_string(at));
    if (kind == 0) damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 8));
    if (kind == 1) damaged.resize(at);
    if (kind == 2)
      std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(at), std::min<std::size_t>(4096, damaged.size() - at),
                  '\0');
    for (int flip = 0; kind == 3 && flip < 20; ++flip) {
      const std::size_t place = random() % damaged.size();
      damaged[place] = static_cast<char>(damaged[place] ^ (1 << random() % 8));
    }
    folder.Write("North.tbk", damaged);
    RemoveNew();
    int saved = 0;
    try {
      ExpectTold(Salvage());
      saved = 1;
    } catch (const Failure& failure) {
      EXPECT_NE(failure.Number(), FailureNumber::kDiskFull) << failure.Description();
      EXPECT_FALSE(std::filesystem::exists(NewPath())) << failure.Description();
    }
    EXPECT_TRUE(folder.Read("North.tbk") == damaged);
    return saved;
  }
};

TEST_F(BookSalvageTrial, SavesNothingWrongAndTellsWhatIsMissingWhateverIsDamaged) {
  std::mt19937 random(4711);
  int saved = 0;
  constexpr int kTrials = 50;
  for (int trial = 0; trial < kTrials && !HasFailure(); ++trial) saved += Try(random);
  EXPECT_GT(saved, kTrials / 2);
}

}  // namespace
}  // namespace tallybook::testing
