#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/application/FigureChanges.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::application {
namespace {

using testing::Day;
using ::testing::ElementsAre;
using testing::FailsWith;
using testing::Get;

class FigureChangesTest : public testing::BookFixture {};

TEST_F(FigureChangesTest, AreOneEntryOverTheirDatesAndGiveTheFiguresFromBefore) {
  const auto book = CreateAndOpen();
  EXPECT_THAT(ChangeFigures(*book, "first", {{101, Day(2003, 5, 2), 1, 8}, {205, Day(2003, 5, 1), 4, 9}}),
              ElementsAre(0, 0));
  EXPECT_THAT(ChangeFigures(*book, "second", {{101, Day(2003, 5, 2), 1, 5}}), ElementsAre(8));
  const auto entries = engine::Journal(*book).Entries();
  ASSERT_EQ(entries.size(), 2U);
  EXPECT_EQ(entries[0].what_ran, "first");
  EXPECT_EQ(entries[0].kind, engine::JournalKind::kSet);
  EXPECT_EQ(entries[0].first, Day(2003, 5, 1));
  EXPECT_EQ(entries[0].last, Day(2003, 5, 2));
}

TEST_F(FigureChangesTest, OfNothingAreNoEntry) {
  const auto book = CreateAndOpen();
  EXPECT_THAT(ChangeFigures(*book, "nothing", {}), ElementsAre());
  EXPECT_TRUE(engine::Journal(*book).Entries().empty());
}

TEST_F(FigureChangesTest, LeaveNothingWhereOneFails) {
  {
    const auto book = CreateAndOpen();
    EXPECT_THAT(
        [&] {
          ChangeFigures(*book, "set", {{101, Day(2003, 1, 1), 1, 8}, {999, Day(2003, 1, 1), 1, 8}});
        },
        FailsWith(FailureNumber::kInternal, "the record of account '999' and 2003-01-01 cannot be read"));
  }
  const auto book = Open();
  EXPECT_EQ(Get(*book, 101, Day(2003, 1, 1), 1), 0);
  EXPECT_TRUE(engine::Journal(*book).Entries().empty());
}

}  // namespace
}  // namespace tallybook::application
