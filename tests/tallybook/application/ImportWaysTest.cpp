#include <gtest/gtest.h>

#include "import/DelimitedImport.h"
#include "tallybook/application/ImportWays.h"

namespace tallybook::application {
namespace {

TEST(ImportWays, ADefinitionIsTheSameWayWhateverItDoesWithTheFiguresThatStand) {
  const EntryFacts added = WayOfDefinition(3, "North", static_cast<Integer>(eMath::mAdd));
  EXPECT_EQ(added.kind, "qdx");
  EXPECT_EQ(added.title, "North");
  EXPECT_EQ(added.math, "add");
  EXPECT_TRUE(IsSameImport(added, WayOfDefinition(3, "North again", static_cast<Integer>(eMath::mReplace))));
  EXPECT_FALSE(IsSameImport(added, WayOfDefinition(4, "North", static_cast<Integer>(eMath::mAdd))));
}

TEST(ImportWays, ACommaSeparatedFileIsImportedAsItTellsOrAsWasChosen) {
  EXPECT_EQ(WayOfCsv(eMath::mDefault, {}).math, "as told");
  EXPECT_EQ(WayOfCsv(eMath::mDefault, {}).options, "");
  EXPECT_EQ(WayOfCsv(eMath::mSubtract, {5, 7}).math, "subtract");
  EXPECT_EQ(WayOfCsv(eMath::mSubtract, {5, 7}).options, "clear 5, 7");
}

TEST(ImportWays, ADelimitedFileIsAnotherImportWhereItsDatesAreReadOtherwise) {
  DelimitedWay way;
  way.math = eMath::mAdd;
  EXPECT_EQ(WayOfDelimited(way).options, "dates MDY");
  const EntryFacts as_months = WayOfDelimited(way);
  way.date_order = kDayMonthYear;
  EXPECT_FALSE(IsSameImport(as_months, WayOfDelimited(way)));
  way.date_order = kYearMonthDay;
  way.date_parts = true;
  way.system_fields = true;
  way.any_line_end = true;
  EXPECT_EQ(WayOfDelimited(way).options, "dates YMD in parts, system fields, any line end");
  EXPECT_EQ(WayOfDelimited(way).math, "add");
}

}  // namespace
}  // namespace tallybook::application
