#include <gmock/gmock.h>

#include "base/Dates.h"
#include "tallybook/preview/RecordPlaces.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::preview {
namespace {

class RecordPlacesTest : public ::testing::Test {
 protected:
  RecordPlaces Places(Integer data_level) {
    testing::BookShape shape;
    shape.data_level = data_level;
    host_ = testing::SmallBook(shape);
    return {host_->book, host_->book.FiscalCalendar()};
  }

  testing::ScriptedPlatform platform_;
  std::unique_ptr<testing::MemoryHost> host_;
};

TEST_F(RecordPlacesTest, CountsAccountsInTheOrderOfTheirListAndRecordsByTheirLevelDates) {
  const RecordPlaces places = Places(kDayLevel);
  const auto place = places.Find(102, DateFromParts(2003, 1, 3));
  ASSERT_TRUE(place);
  EXPECT_EQ(place->account, 1);
  EXPECT_EQ(place->record, 2);
  EXPECT_TRUE(place->is_certain);
  EXPECT_EQ(places.NumberOf(1), 102);
  EXPECT_EQ(places.DateOf(2), DateFromParts(2003, 1, 3));
  EXPECT_EQ(places.Records(), places.Days());
  EXPECT_EQ(static_cast<Long>(places.Accounts()), host_->book.NumAccounts());
}

TEST_F(RecordPlacesTest, HasOneRecordForAllDaysOfAPeriod) {
  const RecordPlaces places = Places(kPeriodLevel);
  const auto first = places.Find(101, DateFromParts(2003, 2, 1));
  const auto last = places.Find(101, DateFromParts(2003, 2, 28));
  ASSERT_TRUE(first && last);
  EXPECT_EQ(first->record, last->record);
  EXPECT_EQ(places.DateOf(first->record), DateFromParts(2003, 2, 28));
  EXPECT_LT(places.Records(), places.Days());
}

TEST_F(RecordPlacesTest, KnowsNoOtherAccountDateOrField) {
  const RecordPlaces places = Places(kDayLevel);
  EXPECT_FALSE(places.Find(999, DateFromParts(2003, 1, 3)));
  EXPECT_FALSE(places.Find(-1, DateFromParts(2003, 1, 3)));
  EXPECT_FALSE(places.Find(101, DateFromParts(1999, 1, 3)));
  EXPECT_FALSE(places.Find(101, host_->book.LastDate() + 400));
  EXPECT_EQ(places.FieldPosition(55), 0);
  EXPECT_EQ(places.FieldPosition(1), 1);
}

}  // namespace
}  // namespace tallybook::preview
