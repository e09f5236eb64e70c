#include "tallybook/application/EntryDates.h"

#include "base/Dates.h"
#include "tallybook/engine/Journal.h"

namespace tallybook::application {

EntryDates EntryDatesOf(const engine::JournalEntry& entry) {
  // A delimited import announces the span of what it read, which is turned round where it read nothing.
  static const Date last_possible = DateFromParts(9999, 12, 31);
  const bool has_dates = entry.first != kNoDate && entry.first != last_possible;
  if (!has_dates) return {"-", "-"};
  return {DateText(entry.first), DateText(entry.last == kNoDate ? entry.first : entry.last)};
}

}  // namespace tallybook::application
