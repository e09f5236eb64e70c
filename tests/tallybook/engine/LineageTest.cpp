#include <filesystem>
#include <optional>
#include <random>
#include <vector>

#include "tallybook/engine/JournalTrim.h"
#include "tallybook/engine/Lineage.h"
#include "tests/tallybook/engine/BookFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::testing {
namespace {

using engine::FigureChange;
using engine::FigureHistory;
using engine::Journal;
using engine::JournalEntry;
using engine::Lineage;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Long kShop = 101;
constexpr Integer kSales = 1;
constexpr Integer kGuests = 4;

// A change as the tests tell it: the entry, before and after; -1 where nothing is known of before.
using Told = std::tuple<Long, Double, Double>;

class LineageTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    description.values = {{kShop, Day(2003, 5, 5), kSales, 1}};
    book = CreateAndOpen(description);
  }

  void Import(Double value, Integer field = kSales, Date date = Day(2003, 5, 5)) {
    book->SetOperationName("import");
    book->BeginRollback(date, date);
    Put(*book, kShop, date, field, value);
    book->EndRollback();
  }
  // Without figures from before.
  void Overwrite(Double value) {
    book->SetOperation(engine::JournalKind::kSet, "write");
    Put(*book, kShop, Day(2003, 5, 5), kSales, value);
    book->SetOperationName("");
  }

  FigureHistory History(Date date = Day(2003, 5, 5), Integer field = kSales) {
    return Lineage(*book).Of(kShop, date, field);
  }
  static std::vector<Told> ToldOf(const FigureHistory& history) {
    std::vector<Told> told;
    for (const FigureChange& change : history.changes) {
      told.emplace_back(change.entry.id, change.before.value_or(-1), change.after);
    }
    return told;
  }

  std::unique_ptr<engine::Book> book;
};

TEST_F(LineageTest, ListsEveryEntryThatChangedTheFigureOldestFirst) {
  Import(2);
  Import(7, kGuests);
  Import(2);
  Import(3);
  Import(0, kSales, Day(2003, 5, 6));
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{1, 1, 2}, Told{4, 2, 3}));
  EXPECT_EQ(History().value, 3);
  EXPECT_EQ(History().unknown_before, 0);
  EXPECT_THAT(ToldOf(History(Day(2003, 5, 5), kGuests)), ElementsAre(Told{2, 0, 7}));
}

TEST_F(LineageTest, IsEmptyForAFigureThatNoEntryChanged) {
  Import(2, kGuests);
  const FigureHistory history = History();
  EXPECT_THAT(history.changes, IsEmpty());
  EXPECT_EQ(history.value, 1);
  EXPECT_EQ(history.unknown_before, 0);
}

TEST_F(LineageTest, TellsUndosAsTheEntriesThatTheyAre) {
  Import(2);
  Import(3);
  Journal(*book).UndoNewest();
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{1, 1, 2}, Told{2, 2, 3}, Told{3, 3, 2}));
  EXPECT_EQ(History().changes.back().entry.undoes, 2);
}

TEST_F(LineageTest, TellsFromWhereBackNothingIsKnown) {
  Import(2);
  Overwrite(3);
  Import(4);
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{2, -1, 3}, Told{3, 3, 4}));
  EXPECT_EQ(History().unknown_before, 2);
  EXPECT_EQ(History(Day(2003, 5, 5), kGuests).unknown_before, 2);
  EXPECT_EQ(History(Day(2003, 6, 5)).unknown_before, 0);
}

TEST_F(LineageTest, KnowsFieldsThatCameLater) {
  Import(2);
  engine::BookDescription after = book->Description();
  after.fields.insert(after.fields.begin(), {30, "Waste", false});
  book->Grow(after, "field add");
  Import(5, 30);
  Import(6, kSales);
  EXPECT_THAT(ToldOf(History(Day(2003, 5, 5), 30)), ElementsAre(Told{3, 0, 5}));
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{1, 1, 2}, Told{4, 2, 6}));
}

// From three fields to four hundred all chunks are stored anew.
TEST_F(LineageTest, FollowsAFigureThroughChunksOfAnotherShape) {
  Import(2);
  engine::BookDescription after = book->Description();
  for (Integer number = 100; number < 500; ++number) after.fields.push_back({number, "", false});
  book->Grow(after, "field add");
  ASSERT_FALSE(book->Stored().former_layouts.empty());
  Import(3);
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{1, 1, 2}, Told{3, 2, 3}));
}

TEST_F(LineageTest, CanBeReadWhereNothingMayBeWritten) {
  Import(2);
  book->Close();
  book = OpenToRead();
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{1, 1, 2}));
}

TEST_F(LineageTest, RefusesWhatTheBookHasNot) {
  EXPECT_THAT([&] { (void)Lineage(*book).Of(999, Day(2003, 5, 5), kSales); },
              FailsWith(FailureNumber::kInvalidArgument, "account number 999"));
  EXPECT_THAT([&] { (void)Lineage(*book).Of(kShop, Day(2013, 5, 5), kSales); },
              FailsWith(FailureNumber::kInvalidArgument, "2013-05-05"));
  EXPECT_THAT([&] { (void)Lineage(*book).Of(kShop, Day(2003, 5, 5), 77); },
              FailsWith(FailureNumber::kInvalidArgument, "field 77"));
}

TEST_F(LineageTest, RefusesAnImageThatIsDamaged) {
  Import(2);
  book->Close();
  Meddle("UPDATE image SET figures = x'00'");
  book = OpenToRead();
  EXPECT_THAT([&] { (void)History(); }, FailsWith(FailureNumber::kDeviceError, "damaged"));
}

TEST_F(LineageTest, TellsWhatBooksOfEachFormatTell) {
  struct Sample {
    const char* name;
    Long unknown_before;
  };
  for (const auto& [name, unknown_before] : {Sample{"book-v1.tbk", 4}, Sample{"book-v2.tbk", 1}}) {
    SCOPED_TRACE(name);
    book.reset();
    std::filesystem::copy_file(tallybook::testing::SampleBook(name), BookPath(),
                               std::filesystem::copy_options::overwrite_existing);
    book = OpenToRead();
    const FigureHistory history = History(Day(2003, 1, 1) + 115, kSales);
    EXPECT_EQ(history.unknown_before, unknown_before);
    EXPECT_EQ(history.of_first_format, unknown_before == 4);
    if (unknown_before == 1) {
      ASSERT_EQ(history.changes.size(), 3U);
      EXPECT_EQ(history.changes.back().after, Get(*book, kShop, Day(2003, 1, 1) + 115, kSales));
    }
  }
}

TEST_F(LineageTest, TellsNothingOfWhatWasTrimmed) {
  platform.clock.Set(Day(2004, 2, 3));
  Import(2);
  Import(3);
  platform.clock.Set(Day(2004, 3, 3));
  Import(4);
  engine::JournalTrim(*book).Before(Day(2004, 3, 1));
  EXPECT_THAT(ToldOf(History()), ElementsAre(Told{2, -1, 3}, Told{3, 3, 4}));
  EXPECT_EQ(History().unknown_before, 2);
}

// What a history should be, kept beside the book while it is written: per figure the values that entries left.
class LineageModelTest : public LineageTest, public ::testing::WithParamInterface<unsigned> {
 protected:
  using Key = std::pair<Date, Integer>;

  void Note(Long entry, const Key& key, Double after) {
    Double& value = values_[key];
    if (value == after) return;
    told_[key].emplace_back(entry, value, after);
    value = after;
  }

  Key AnyKey() {
    return {Day(2003, 1, 1) + static_cast<int>(random_() % 300), random_() % 2U == 0U ? kSales : kGuests};
  }

  // An import writes several figures, of which some stay as they are.
  void RunImport(bool closes) {
    const Long id = ++entries_;
    before_[id] = {};
    book->SetOperationName("import");
    book->BeginRollback(Day(2003, 1, 1), Day(2003, 12, 31));
    for (auto count = 1 + random_() % 20; count > 0; --count) {
      const Key key = AnyKey();
      const auto value = static_cast<Double>(random_() % 4);
      before_[id].try_emplace(key.first, Row{values_[{key.first, kSales}], values_[{key.first, kGuests}]});
      pending_[key] = value;
      Put(*book, kShop, key.first, key.second, value);
    }
    if (closes) {
      book->EndRollback();
    } else {
      book->Commit();
    }
    for (const auto& [key, value] : std::exchange(pending_, {})) Note(id, key, value);
    std::erase_if(before_[id], [&](const auto& row) {
      return row.second == Row{values_[{row.first, kSales}], values_[{row.first, kGuests}]};
    });
    undoable_.push_back(id);
  }

  // Takes back the newest that is not undone.
  void RunUndo() {
    if (undoable_.empty()) return;
    const Long undone = Journal(*book).UndoNewest().front().id;
    ASSERT_EQ(undone, undoable_.back());
    undoable_.pop_back();
    const Long id = ++entries_;
    for (const auto& [date, row] : before_[undone]) {
      Note(id, {date, kSales}, row.first);
      Note(id, {date, kGuests}, row.second);
    }
  }

  void Compare() {
    for (const auto& [key, value] : values_) {
      const FigureHistory history = History(key.first, key.second);
      ASSERT_EQ(history.value, value);
      ASSERT_EQ(history.unknown_before, 0);
      ASSERT_EQ(ToldOf(history), told_[key]) << key.first << " field " << key.second;
      ASSERT_TRUE(history.changes.empty() || history.changes.back().after == history.value);
    }
  }

  using Row = std::pair<Double, Double>;
  std::mt19937 random_{GetParam()};
  Long entries_ = 0;
  std::map<Key, Double> values_;
  std::map<Key, Double> pending_;
  std::map<Key, std::vector<Told>> told_;
  std::map<Long, std::map<Date, Row>> before_;
  std::vector<Long> undoable_;
};

TEST_P(LineageModelTest, LastLineIsTheFigureAndAllLinesAreThoseOfAModel) {
  SCOPED_TRACE("seed " + std::to_string(GetParam()));
  values_[{Day(2003, 5, 5), kSales}] = 1;
  for (int step = 0; step < 60; ++step) {
    switch (random_() % 6) {
      case 0:
      case 1:
        RunUndo();
        break;
      case 2:
        book.reset();
        book = Open();
        break;
      default:
        RunImport(random_() % 5 != 0);
    }
    if (HasFatalFailure()) return;
  }
  Compare();
}

INSTANTIATE_TEST_SUITE_P(OverSeeds, LineageModelTest, ::testing::Range(1U, 13U));

}  // namespace
}  // namespace tallybook::testing
