#include "tallybook/engine/FiguresBefore.h"
#include "tallybook/engine/JournalTrim.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::FiguresBefore;

constexpr Long kFront = 101;

class FiguresBeforeTest : public BookFixture {
 protected:
  void SetUp() override {
    auto description = ShopDescription();
    description.values = {{kFront, Day(2003, 5, 5), 1, 7}};
    book = CreateAndOpen(description);
  }

  void Import(Double value, Date date = Day(2003, 5, 5)) {
    book->SetOperationName("import");
    book->BeginRollback(date, date);
    Put(*book, kFront, date, 1, value);
    book->EndRollback();
  }
  std::optional<Double> Before(Long entry, Date date = Day(2003, 5, 5), Integer field = 1) {
    const auto entries = engine::Journal(*book).Entries();
    FiguresBefore before(*book, entries.at(static_cast<std::size_t>(entry - 1)));
    const Double* figures = before.Select(kFront, date);
    const std::optional<std::size_t> place = before.PlaceOf(field);
    return figures == nullptr || !place ? std::nullopt : std::optional(figures[*place]);
  }

  std::unique_ptr<engine::Book> book;
};

TEST_F(FiguresBeforeTest, AreWhatEachEntryFound) {
  Import(8);
  Import(9);
  EXPECT_EQ(Before(1), 7);
  EXPECT_EQ(Before(2), 8);
  EXPECT_EQ(Before(2, Day(2003, 5, 5), 4), 0);
}

TEST_F(FiguresBeforeTest, AreNotToldOfRecordsThatTheEntryDidNotWrite) {
  Import(8);
  EXPECT_FALSE(Before(1, Day(2003, 5, 6)));
  EXPECT_FALSE(Before(1, Day(1999, 5, 6)));
  EXPECT_FALSE(Before(1, Day(2003, 5, 5), 55));
}

TEST_F(FiguresBeforeTest, AreNotToldOnceTheJournalWasTrimmed) {
  Import(8);
  Import(9);
  (void)engine::JournalTrim(*book).Before(Day(2100, 1, 1));
  EXPECT_FALSE(Before(1));
  EXPECT_FALSE(Before(2));
}

TEST_F(FiguresBeforeTest, AreReadByWhoMayOnlyRead) {
  Import(8);
  book->Close();
  book = OpenToRead();
  EXPECT_EQ(Before(1), 7);
}

// A chunk that was stored anew holds other rows than the entry's images do.
TEST_F(FiguresBeforeTest, AreFoundInImagesFromBeforeAllChunksWereStoredAnew) {
  Import(8, Day(2004, 3, 1));
  Import(9, Day(2004, 3, 1));
  auto wider = book->Description();
  for (Integer number = 100; number < 300; ++number) wider.fields.push_back({number, "More", false});
  book->Grow(wider, "fields");
  EXPECT_EQ(Before(2, Day(2004, 3, 1)), 8);
  EXPECT_EQ(Before(2, Day(2004, 3, 1), 200), 0);
  EXPECT_FALSE(Before(2, Day(2004, 3, 2)));
}

}  // namespace
}  // namespace tallybook::testing
