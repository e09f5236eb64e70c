// What a book is made from and what it tells of itself: its names, calendar, accounts, datafields and figures, as plain
// data, and the JSON form of it that `tallybook new` reads and `tallybook info --json` writes (docs/book-file.md,
// "The description").
//
// Account and field lists are in position order. Dates are whole days. Nothing here touches a file.
#pragma once

#include <functional>
#include <iosfwd>
#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// The calendar kinds. The numbers are Masterfile::CalendarType; they stand in book files and exchange files.
enum class CalendarKind : Integer { kMonths = 0, kWeeks = 1, k445 = 2, k13x4 = 3, kCustom = 4 };

// Limits of a book. A position in a list is an Integer, and so is a field number.
inline constexpr Long kMaxAccountNumber = 9'999'999;
inline constexpr Long kMaxListLength = 32'767;
inline constexpr Integer kCodeWidth = 10;         // characters; codes are padded to it and may not be longer
inline constexpr Integer kDescriptionWidth = 30;  // characters; shorter descriptions are padded to it
inline constexpr Integer kMaxYears = 200;
inline constexpr Integer kMaxCustomPeriods = 366;

struct PeriodDescription {
  Text name;
  Integer length = 0;  // days; rules the calendar of kCustom only, elsewhere 0 stands for the usual length
  bool operator==(const PeriodDescription&) const = default;
};

struct CalendarDescription {
  CalendarKind kind = CalendarKind::kMonths;
  Date first_date = kNoDate;               // the first year starts here, or near it (Calendar.h)
  Integer first_year = 0;                  // the name of the first fiscal year
  Integer years = 1;                       // years held
  Integer years_in_use = 1;                // 1 to `years`
  Integer week_ends_on = 7;                // 1 Sunday to 7 Saturday
  std::vector<PeriodDescription> periods;  // empty: the kind's own names and lengths
  bool operator==(const CalendarDescription&) const = default;
};

struct AccountDescription {
  Long number = 0;  // the stable key, 1 to max_accounts
  Text code;        // without trailing blanks
  Text description;
  bool operator==(const AccountDescription&) const = default;
};

struct FieldDescription {
  Integer number = 0;  // the stable key, 1 to max_fields
  Text description;
  bool system = false;  // kept by the book itself
  bool operator==(const FieldDescription&) const = default;
};

struct ValueDescription {
  Long account = 0;   // an account number
  Date date = 0;      // any date of the record; the book puts it through LevelDate
  Integer field = 0;  // a field number
  Double value = 0;
  bool operator==(const ValueDescription&) const = default;
};

struct BookDescription {
  Text system_name;
  Text type_name;
  Integer data_level = kDayLevel;
  CalendarDescription calendar;
  Long max_accounts = 9999;
  Long max_fields = 999;
  std::vector<AccountDescription> accounts;
  std::vector<FieldDescription> fields;
  std::vector<ValueDescription> values;
  bool operator==(const BookDescription&) const = default;
};

// Reads the JSON form. May be left out: type_name ("Tallybook"), data_level ("day"), first_year (that of first_date),
// years_in_use (all), week_ends_on ("saturday"), periods (but for "custom"), the maxima (9999 and 999, or the highest
// number where that is more), descriptions, "system" (false), "values".
//   source_name  what `json` came from, for messages: a file's path
//   fails        Failure 5 that names the source, the place (as `accounts[3].code`, positions from 0, or line and
//                column where it is no JSON at all), the value found and what is wanted; a key that is not known is
//                refused
[[nodiscard]] BookDescription ParseBookDescription(const Text& json, const Text& source_name);

// The same for a description of what a book is to become: what the text leaves out, a list or an item of a row among
// it, is as in `now`, but for values, of which there are none then; a limit is raised to the highest number where that
// is more. Whether the book may become that is CheckGrowth's to say.
[[nodiscard]] BookDescription ParseBookDescription(const Text& json, const Text& source_name,
                                                   const BookDescription& now);

// Checks what no single item shows: ranges, lists, doubles, values without account or field, two values on one field of
// one record. Fails as ParseBookDescription. That of a new book, which ParseBookDescription calls last, refuses a
// calendar that begins before 1900 or goes on behind the year 9999 as well; a book that has such a one stays readable.
void CheckNewBookDescription(const BookDescription& description, const Text& source_name);
void CheckBookDescription(const BookDescription& description, const Text& source_name);

// Hands over values one at a time, in the order in which they are to be written.
using ValueTaker = std::function<void(const ValueDescription&)>;
using ValueGiver = std::function<void(const ValueTaker&)>;

// Writes the JSON form, one account, field and value a line. Values come from `values` where it is set, so that a large
// book never stands in memory, and from the description otherwise. A value that JSON cannot hold (not-a-number,
// infinity) is Failure 5.
void PrintBookDescription(const BookDescription& description, std::ostream& out, const ValueGiver& values = nullptr);
[[nodiscard]] Text PrintBookDescription(const BookDescription& description);

// The names that the JSON form uses: "day"; "4-4-5"; "saturday".
[[nodiscard]] Text DataLevelName(Integer data_level);
[[nodiscard]] Text CalendarKindName(CalendarKind kind);
[[nodiscard]] Text WeekdayName(Integer weekday);

}  // namespace tallybook::engine
