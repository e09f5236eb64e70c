#include "base/Dates.h"
#include "qdx/HeaderRecord.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

class HeaderRecordTest : public ::testing::Test {
 protected:
  ~HeaderRecordTest() override { ResetSharedHeader(); }

  HeaderRecord record;
};

TEST_F(HeaderRecordTest, HasTablesOfTheSizesThatAReaderHolds) {
  EXPECT_EQ(record.PeriodNames.Rows(), 26);
  EXPECT_EQ(record.PeriodLengths.Rows(), 26);
  EXPECT_EQ(record.YearCodes.Rows(), 9);
  EXPECT_EQ(record.AccountCodes.Rows(), 9999);
  EXPECT_EQ(record.AccountDescs.Rows(), 9999);
  EXPECT_EQ(record.FieldNumbers.Rows(), 9999);
  EXPECT_EQ(record.FieldDescs.Rows(), 9999);
}

TEST_F(HeaderRecordTest, FailsForARowOutsideATable) {
  EXPECT_THAT([&] { record.PeriodNames(0) = "before the first"; }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { record.PeriodNames(27) = "behind the last"; }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { record.YearCodes(10) = 2013; }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { record.AccountCodes(10000) = "10000"; }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { record.FieldNumbers(-1) = 1; }, FailsWith(FailureNumber::kRange));
}

TEST_F(HeaderRecordTest, IsOneForTheWholeProcess) {
  SharedHeader().SystemName = "North Shop";
  SharedHeader().AccountCodes(9999) = "900";
  EXPECT_EQ(&SharedHeader(), &SharedHeader());
  EXPECT_EQ(SharedHeader().SystemName, "North Shop");
  EXPECT_EQ(SharedHeader().AccountCodes(9999), "900");
}

TEST_F(HeaderRecordTest, IsBlankAfterAReset) {
  SharedHeader().SystemName = "North Shop";
  SharedHeader().NumAccounts = 2;
  SharedHeader().AccountCodes(1) = "100";
  ResetSharedHeader();
  EXPECT_EQ(SharedHeader().SystemName, "");
  EXPECT_EQ(SharedHeader().NumAccounts, 0);
  EXPECT_EQ(SharedHeader().AccountCodes(1), "");
  EXPECT_EQ(SharedHeader().AccountCodes.Rows(), 9999);
}

TEST_F(HeaderRecordTest, GivesTheRangeAsDates) {
  record.StartMonth = 2;
  record.StartDay = 29;
  record.StartYear = 2004;
  record.LastMonth = 12;
  record.LastDay = 31;
  record.LastYear = 2005;
  EXPECT_EQ(DateText(record.StartDate()), "2004-02-29");
  EXPECT_EQ(DateText(record.LastDate()), "2005-12-31");
}

// A damaged header may tell any numbers; they make a date all the same.
TEST_F(HeaderRecordTest, LetsThePartsOfADateRunOverInBothDirections) {
  record.StartMonth = 13;
  record.StartDay = 32;
  record.StartYear = 2003;
  record.LastMonth = 0;
  record.LastDay = 0;
  record.LastYear = 2004;
  EXPECT_EQ(DateText(record.StartDate()), "2004-02-01");
  EXPECT_EQ(DateText(record.LastDate()), "2003-11-30");
}

}  // namespace
}  // namespace tallybook::testing
