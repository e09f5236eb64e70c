#include "tallybook/engine/DescriptionTables.h"

#include <string>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/Checksums.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

// The names under which a description's single items are kept.
constexpr const char* kSystemName = "system_name";
constexpr const char* kTypeName = "type_name";
constexpr const char* kDataLevel = "data_level";
constexpr const char* kCalendarKind = "calendar_kind";
constexpr const char* kFirstDate = "first_date";
constexpr const char* kFirstYear = "first_year";
constexpr const char* kYears = "years";
constexpr const char* kYearsInUse = "years_in_use";
constexpr const char* kWeekEndsOn = "week_ends_on";
constexpr const char* kMaxAccounts = "max_accounts";
constexpr const char* kMaxFields = "max_fields";
constexpr const char* kRowsOfChunk = "rows_of_chunk";
constexpr const char* kChecksum = "checksum";  // of all of it, and of the format's number

class Properties {
 public:
  explicit Properties(Database& database)
      : database_(database),
        read_(database, "SELECT value FROM property WHERE name = ?1"),
        write_(database, "INSERT OR REPLACE INTO property (name, value) VALUES (?1, ?2)") {}

  void Put(const Text& name, const Text& value) { write_.Bind(1, name).Bind(2, value).Run(); }
  void Put(const Text& name, std::int64_t value) { write_.Bind(1, name).Bind(2, value).Run(); }

  [[nodiscard]] Text String(const Text& name) {
    Find(name);
    Text value = read_.String(0);
    read_.Reset();
    return value;
  }

  [[nodiscard]] std::int64_t Number(const Text& name) {
    Find(name);
    const std::int64_t value = read_.Int(0);
    read_.Reset();
    return value;
  }

 private:
  void Find(const Text& name) {
    if (!read_.Bind(1, name).Step()) {
      throw Failure(FailureNumber::kDeviceError,
                    database_.Path() + ": the book is damaged: it does not tell its " + name, kSource);
    }
  }

  Database& database_;
  DbStatement read_;
  DbStatement write_;
};

Checksum DescriptionChecksum(const StoredDescription& stored, Long format) {
  const BookDescription& description = stored.description;
  const CalendarDescription& calendar = description.calendar;
  Digest digest;
  digest.Add(std::int64_t{format}).Add(static_cast<std::int64_t>(stored.rows_of_chunk));
  digest.Add(description.system_name).Add(description.type_name).Add(std::int64_t{description.data_level});
  digest.Add(static_cast<std::int64_t>(calendar.kind)).Add(calendar.first_date);
  for (const Integer number : {calendar.first_year, calendar.years, calendar.years_in_use, calendar.week_ends_on}) {
    digest.Add(std::int64_t{number});
  }
  digest.Add(std::int64_t{description.max_accounts}).Add(std::int64_t{description.max_fields});
  digest.Add(static_cast<std::int64_t>(calendar.periods.size()));
  for (const PeriodDescription& row : calendar.periods) digest.Add(row.name).Add(std::int64_t{row.length});
  digest.Add(static_cast<std::int64_t>(description.accounts.size()));
  for (const AccountDescription& row : description.accounts) {
    digest.Add(std::int64_t{row.number}).Add(row.code).Add(row.description);
  }
  digest.Add(static_cast<std::int64_t>(description.fields.size()));
  for (const FieldDescription& row : description.fields) {
    digest.Add(std::int64_t{row.number}).Add(row.description).Add(std::int64_t{row.system});
  }
  return digest.Value();
}

}  // namespace

void SaveDescription(Database& database, const StoredDescription& stored, Long format) {
  const BookDescription& description = stored.description;
  Properties properties(database);
  const CalendarDescription& calendar = description.calendar;
  properties.Put(kSystemName, description.system_name);
  properties.Put(kTypeName, description.type_name);
  properties.Put(kDataLevel, description.data_level);
  properties.Put(kCalendarKind, static_cast<std::int64_t>(calendar.kind));
  properties.Put(kFirstDate, static_cast<std::int64_t>(calendar.first_date));
  properties.Put(kFirstYear, calendar.first_year);
  properties.Put(kYears, calendar.years);
  properties.Put(kYearsInUse, calendar.years_in_use);
  properties.Put(kWeekEndsOn, calendar.week_ends_on);
  properties.Put(kMaxAccounts, description.max_accounts);
  properties.Put(kMaxFields, description.max_fields);
  properties.Put(kRowsOfChunk, static_cast<std::int64_t>(stored.rows_of_chunk));

  DbStatement period(database, "INSERT INTO period (name, length) VALUES (?1, ?2)");
  for (const PeriodDescription& row : calendar.periods) {
    period.Bind(1, row.name).Bind(2, std::int64_t{row.length}).Run();
  }
  DbStatement account(database, "INSERT INTO account (number, code, description) VALUES (?1, ?2, ?3)");
  for (const AccountDescription& row : description.accounts) {
    account.Bind(1, std::int64_t{row.number}).Bind(2, row.code).Bind(3, row.description).Run();
  }
  DbStatement field(database, "INSERT INTO field (number, description, system) VALUES (?1, ?2, ?3)");
  for (const FieldDescription& row : description.fields) {
    field.Bind(1, std::int64_t{row.number}).Bind(2, row.description).Bind(3, std::int64_t{row.system}).Run();
  }
  SealDescription(database, stored, format);
}

void SealDescription(Database& database, const StoredDescription& stored, Long format) {
  Properties(database).Put(kChecksum, ToColumn(DescriptionChecksum(stored, format)));
}

StoredDescription LoadDescription(Database& database, Long format) {
  StoredDescription stored;
  BookDescription& description = stored.description;
  Properties properties(database);
  CalendarDescription& calendar = description.calendar;
  description.system_name = properties.String(kSystemName);
  description.type_name = properties.String(kTypeName);
  description.data_level = ToInteger(properties.Number(kDataLevel));
  calendar.kind = static_cast<CalendarKind>(ToInteger(properties.Number(kCalendarKind)));
  calendar.first_date = static_cast<Date>(properties.Number(kFirstDate));
  calendar.first_year = ToInteger(properties.Number(kFirstYear));
  calendar.years = ToInteger(properties.Number(kYears));
  calendar.years_in_use = ToInteger(properties.Number(kYearsInUse));
  calendar.week_ends_on = ToInteger(properties.Number(kWeekEndsOn));
  description.max_accounts = ToLong(properties.Number(kMaxAccounts));
  description.max_fields = ToLong(properties.Number(kMaxFields));
  stored.rows_of_chunk = static_cast<std::size_t>(properties.Number(kRowsOfChunk));

  DbStatement period(database, "SELECT name, length FROM period ORDER BY position");
  while (period.Step()) calendar.periods.push_back({period.String(0), ToInteger(period.Int(1))});
  DbStatement account(database, "SELECT number, code, description FROM account ORDER BY position");
  while (account.Step()) {
    description.accounts.push_back({ToLong(account.Int(0)), account.String(1), account.String(2)});
  }
  DbStatement field(database, "SELECT number, description, system FROM field ORDER BY position");
  while (field.Step()) {
    description.fields.push_back({ToInteger(field.Int(0)), field.String(1), field.Int(2) != 0});
  }
  if (format > 1 && FromColumn(properties.Number(kChecksum)) != DescriptionChecksum(stored, format)) {
    throw Failure(FailureNumber::kDeviceError,
                  database.Path() + ": the book is damaged: its description does not agree with its checksum", kSource);
  }
  // A file that was changed by something else must not lead to positions and dates that no table has.
  CheckBookDescription(description, database.Path());
  constexpr std::size_t kMostRows = 65'535;
  if (stored.rows_of_chunk < 1 || stored.rows_of_chunk > kMostRows) {
    throw Failure(
        FailureNumber::kDeviceError,
        database.Path() + ": the book is damaged: chunks of " + std::to_string(stored.rows_of_chunk) + " records",
        kSource);
  }
  return stored;
}

}  // namespace tallybook::engine
