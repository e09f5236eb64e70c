// Which orders of month, day and year the dates of a delimited file can be read in: all dates must exist and be of the
// book.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/inspect/DelimitedFile.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

// A date of the file that speaks for or against an order.
struct DateAt {
  long long line = 0;
  Text text;
};

struct DateOrder {
  Integer order = 0;  // kMonthDayYear, kDayMonthYear, kYearMonthDay
  Text word;          // "MDY"
  Text words;         // "month, day, year"
};

struct DateOrders {
  long long dates = 0;  // lines with a date
  // The orders that fit. Of those that read every date alike only the first is here.
  std::vector<DateOrder> fitting;
  // For each order that does not fit, the first date that rules it out, with what it would be; by line.
  struct RuledOut {
    DateOrder order;
    DateAt date;
    Text reason;  // "2004-13-2 is in no calendar and is read as 2005-01-02"
  };
  std::vector<RuledOut> ruled_out;
  // Where more than one fits: the first date that they read in different ways, and how, in their order.
  DateAt open;
  std::vector<Date> readings;
  bool cancelled = false;  // the user ended it before the file's end: nothing is known
};

// Looks through all dates of the file. Moves nothing of the book but its progress display.
//   fails  as LookAtDelimited
[[nodiscard]] DateOrders FindDateOrders(Masterfile& masterfile, const Text& file, const DelimitedForm& form);

// What the look came to, for people: what to ask where one order fits, and what must be decided else.
//   "the dates are MDY (month, day, year): line 1 "01/13/2004" rules out DMY and YMD"
//   "MDY and DMY both fit all dates: line 1 "02/03/2004" is 2004-02-03 or 2004-03-02"
//   "no order of month, day and year fits all dates: line 1 "13/02/2004" rules out MDY and YMD, line 2 ..."
[[nodiscard]] Text Tell(const DateOrders& orders);

// The one order that fits all dates of the file. Where its lines end in a way that is not to be read, which the look
// tells of, no date can be read either: it is the first order then. Nothing where the user ended the look at them.
//   fails  5 with the file and what Tell says where none fits, or more than one; and as FindDateOrders
[[nodiscard]] std::optional<Integer> FittingDateOrder(Masterfile& masterfile, const Text& file,
                                                      const DelimitedForm& form);

}  // namespace tallybook::inspect
