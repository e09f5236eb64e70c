#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>
#include <vector>

#include "tests/support/FailsWith.h"
#include "tests/tallybook/desktop/figures/FiguresFixture.h"

namespace tallybook::desktop {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using testing::FailsWith;
using testing::Get;
using ::testing::IsEmpty;
using ::testing::Pair;

class BookReaderTest : public testing::FiguresFixture {
 protected:
  Double Sales() { return Get(Reader().Read(), 101, Day(2003, 1, 1), 1); }
};

TEST_F(BookReaderTest, ShowsOneStateUntilItIsToldToLookAgain) {
  EXPECT_EQ(Sales(), 10);
  Write(101, Day(2003, 1, 1), 1, 99);
  EXPECT_EQ(Sales(), 10);
  EXPECT_TRUE(Reader().HasChanged());
  Reader().Refresh();
  EXPECT_EQ(Sales(), 99);
}

TEST_F(BookReaderTest, GivesTheLastDateOnWhichTheFirstAccountWithFiguresHasOne) {
  EXPECT_EQ(Reader().DateOfNewestFigures(Day(2004, 6, 1)), Day(2003, 1, 31));
  EXPECT_EQ(Reader().DateOfNewestFigures(Day(2003, 1, 12)), Day(2003, 1, 12));
  EXPECT_EQ(Reader().DateOfNewestFigures(Day(2026, 1, 1)), Day(2004, 12, 31));
}

TEST_F(BookReaderTest, GivesTheDateAskedWhereNoAccountHasAFigureByThen) {
  EXPECT_EQ(Reader().DateOfNewestFigures(Day(2002, 12, 31)), Day(2002, 12, 31));
}

TEST_F(BookReaderTest, KnowsTheListsAtRest) {
  Reader().Rest();
  EXPECT_EQ(Reader().Description().accounts.size(), 3U);
  EXPECT_EQ(Reader().CalendarRules().FirstDate(), Day(2003, 1, 1));
}

TEST_F(BookReaderTest, LeavesNothingBesideTheBookAtRest) {
  (void)Sales();
  Reader().Rest();
  EXPECT_FALSE(std::filesystem::exists(BookPath() + "-wal"));
  EXPECT_FALSE(std::filesystem::exists(BookPath() + "-shm"));
}

TEST_F(BookReaderTest, CountsAReadAfterAChangeAsNew) {
  (void)Sales();
  Reader().Rest();
  Write(101, Day(2003, 1, 1), 1, 99);
  const Long before = Reader().FiguresSeen();
  EXPECT_EQ(Sales(), 99);
  EXPECT_GT(Reader().FiguresSeen(), before);
}

TEST_F(BookReaderTest, ComesToRestWithWhatItSawWhenNobodyWrites) {
  // A change within the same step of the clock could look like none, so one more look is allowed.
  for (int tries = 0; Reader().HasChanged() && tries < 100; ++tries) Reader().Refresh();
  const Long before = Reader().FiguresSeen();
  Reader().Rest();
  EXPECT_FALSE(Reader().HasChanged());
  (void)Sales();
  EXPECT_LE(Reader().FiguresSeen(), before + 1);
}

TEST_F(BookReaderTest, DoesNotKeepAWriterFromTheBook) {
  (void)Reader().Read();
  EXPECT_NO_THROW(Write(101, Day(2003, 1, 1), 1, 99));
}

TEST_F(BookReaderTest, StaysWithTheListsKnownUntilItIsToldToTakeOthers) {
  (void)Reader().Read();
  ChangeLists();
  Reader().Refresh();
  EXPECT_TRUE(Reader().HasOtherLists());
  EXPECT_EQ(Reader().Description().accounts.size(), 3U);
  EXPECT_TRUE(Reader().TakeLists());
  EXPECT_FALSE(Reader().TakeLists());
  EXPECT_EQ(Reader().Description().accounts.size(), 2U);
  EXPECT_EQ(Reader().Description().fields.front().description, "Tips");
}

TEST_F(BookReaderTest, VisitsTheAccountsAndFieldsKnownWhereverTheyStandNow) {
  (void)Reader().Read();
  ChangeLists();
  Reader().Refresh();
  const auto seen = [&](Integer account, Integer field) {
    std::vector<std::pair<Integer, Double>> figures;
    Reader().VisitAccount(account, Day(2003, 1, 5), Day(2003, 1, 5), field, [&](const BookReader::FigureSeen& figure) {
      if (figure.value != 0) figures.emplace_back(figure.field, figure.value);
    });
    return figures;
  };
  const Integer all_fields = 0;
  EXPECT_THAT(seen(2, all_fields), ElementsAre(Pair(2, 7.0)));
  EXPECT_THAT(seen(2, 2), ElementsAre(Pair(2, 7.0)));
  EXPECT_THAT(seen(1, all_fields), IsEmpty()) << "the book has that account no more";
  Reader().TakeLists();
  EXPECT_THAT(seen(1, all_fields), ElementsAre(Pair(1, 77.0), Pair(3, 7.0)));
}

TEST_F(BookReaderTest, FailsForABookThatIsGoneAndIsAtRestThen) {
  Reader().Rest();
  std::filesystem::remove(BookPath());
  EXPECT_THAT([&] { Reader().Refresh(); }, FailsWith(FailureNumber::kFileNotFound));
  EXPECT_EQ(Reader().Description().accounts.size(), 3U);
}

}  // namespace
}  // namespace tallybook::desktop
