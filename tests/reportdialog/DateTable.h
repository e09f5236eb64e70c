// Rows of dates worked out by hand on the calendar's page, and the walk that holds the print dialog to them: a date and
// a length are chosen, the dialog is finished, and its ranges are compared.
#pragma once

#include <gtest/gtest.h>
#include <ostream>
#include <vector>

#include "base/Dates.h"
#include "reportdialog/dlgRepPrint.h"

namespace tallybook::testing {

// A day as 20040203.
inline Date DayOf(int day) {
  return DateFromParts(day / 10'000, day / 100 % 100, day % 100);
}

struct DateRow {
  int chosen;             // the date chosen; for a custom range its end
  Integer length;         // the length chosen
  int start;              // what is expected
  int end;                //
  int from = 0;           // a custom range's beginning
  Integer compare = 0;    // the compare range chosen; the length's own where there is none
  int compare_start = 0;  // what is expected of it, through the whole range
  int compare_end = 0;    //
};

inline void PrintTo(const DateRow& row, std::ostream* out) {
  *out << row.chosen << " length " << row.length << " compare " << row.compare;
}

// Finishes a filled and shown dialog at its date page with the row's choices.
inline void ExpectDates(dlgRepPrint& dialog, const DateRow& row) {
  SCOPED_TRACE(::testing::PrintToString(row));
  EXPECT_TRUE(dialog.optLength(row.length).UserClick());
  if (row.from != 0) {
    EXPECT_TRUE(dialog.Calendar[0].UserChoose(DayOf(row.from)));
    EXPECT_TRUE(dialog.Calendar[1].UserChoose(DayOf(row.chosen)));
  }
  if (row.compare != 0) {
    // One entry for each length above the chosen one, behind "None".
    EXPECT_TRUE(dialog.cmbCompareRange.UserChoose(static_cast<Integer>(row.compare - row.length)));
    EXPECT_TRUE(dialog.cmbCompareType.UserChoose(2));
  }
  EXPECT_TRUE(dialog.Command1[kNextButton].UserClick());
  EXPECT_FALSE(dialog.Cancelled());
  EXPECT_EQ(DateText(dialog.StartDate()), DateText(DayOf(row.start)));
  EXPECT_EQ(DateText(dialog.EndDate()), DateText(DayOf(row.end)));
  EXPECT_EQ(DateText(dialog.CompareStart()), DateText(DayOf(row.compare == 0 ? row.start : row.compare_start)));
  EXPECT_EQ(DateText(dialog.CompareEnd()), DateText(DayOf(row.compare == 0 ? row.end : row.compare_end)));
}

}  // namespace tallybook::testing
