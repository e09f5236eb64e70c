// A small book that all tests of exchange files write from.
#pragma once

#include <memory>

#include "base/Dates.h"
#include "tests/support/MemoryHost.h"

namespace tallybook::testing {

// The book of twenty days, 2004-02-01 (a Sunday) to 2004-02-20, whose header FileHeader{} describes: two periods of ten
// days, weeks that end on Saturday, accounts 101 and 205, fields 1 and 7, no figures.
inline std::unique_ptr<MemoryHost> TwentyDays(Integer data_level = kDayLevel) {
  BookShape shape;
  shape.data_level = data_level;
  shape.calendar = CalendarKind::kCustom;
  shape.first_date = DateFromParts(2004, 2, 1);
  shape.first_year = 2004;
  shape.years = 1;
  shape.period_lengths = {10, 10};
  shape.period_names = {"Alpha", "Beta"};
  auto host = std::make_unique<MemoryHost>(shape);
  host->book.AddAccount(101, "100", "Front of shop");
  host->book.AddAccount(205, "200", "Yard");
  host->book.AddField(1, "Sales");
  host->book.AddField(7, "Weather");
  host->book.answers.file_version = 12;
  host->book.answers.year_field = 3;
  host->book.answers.field_slots = 40;
  host->book.answers.account_slots = 99;
  return host;
}

// A day of the book's month.
inline Date February(int day) {
  return DateFromParts(2004, 2, day);
}

}  // namespace tallybook::testing
