// Dates as people write and type them. Plain data; what the locale contributes is handed over.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "base/Types.h"

namespace tallybook::desktop {

// A date as the user's locale writes it.
using DateWriter = std::function<Text(Date date)>;

// The order of the numbers of a date that does not begin with its year.
enum class DateOrder { kDayFirst, kMonthFirst };

struct DateHabits {
  DateOrder order = DateOrder::kDayFirst;
  // Names of the months beside the English ones, January first; empty: none. Any three letters of one are enough.
  std::vector<Text> month_names;
};

// Reads "2024-02-03", "20240203", "3.2.2024", "2/3/24", "3 Feb 2024", "February 3", "Feb 2024", "2024-02", "2024",
// "today", "yesterday", "tomorrow", "+7", "-1". What is left out is taken from `from`: the year of a day and month; the
// first day of a month or a year alone. Signed numbers count days from it. A year of two digits is the nearest to it.
//   today   what the word stands for
// Nothing for any other text, and for a day that does not exist.
[[nodiscard]] std::optional<Date> ReadPlainDate(const Text& typed, Date from, Date today, const DateHabits& habits);

}  // namespace tallybook::desktop
