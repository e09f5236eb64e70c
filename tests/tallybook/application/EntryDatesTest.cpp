#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/application/EntryDates.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::application {
namespace {

EntryDates Told(Date first, Date last) {
  engine::JournalEntry entry;
  entry.first = first;
  entry.last = last;
  return EntryDatesOf(entry);
}

TEST(EntryDates, AreToldAsTheyAre) {
  EXPECT_EQ(Told(DateFromParts(2003, 1, 5), DateFromParts(2003, 2, 1)), (EntryDates{"2003-01-05", "2003-02-01"}));
}

TEST(EntryDates, AreADashEachWhereAnImportHadNone) {
  EXPECT_EQ(Told(kNoDate, kNoDate), (EntryDates{"-", "-"}));
  EXPECT_EQ(Told(DateFromParts(9999, 12, 31), kNoDate), (EntryDates{"-", "-"})) << "of a delimited import";
}

TEST(EntryDates, AreOneDateWhereAFileHasOne) {
  EXPECT_EQ(Told(DateFromParts(2003, 2, 3), kNoDate), (EntryDates{"2003-02-03", "2003-02-03"}));
}

}  // namespace
}  // namespace tallybook::application
