#include "tallybook/engine/DescriptionTables.h"

#include <string>
#include <type_traits>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/Checksums.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

constexpr const char* kChecksum = "checksum";  // of all of it, and of the format's number

// The single items of a description under the names by which they are kept, in the order of the checksum.
template <typename Stored, typename Take>
void ForEachItem(Stored& stored, Take take) {
  auto& description = stored.description;
  auto& calendar = description.calendar;
  take("rows_of_chunk", stored.rows_of_chunk);
  take("system_name", description.system_name);
  take("type_name", description.type_name);
  take("data_level", description.data_level);
  take("calendar_kind", calendar.kind);
  take("first_date", calendar.first_date);
  take("first_year", calendar.first_year);
  take("years", calendar.years);
  take("years_in_use", calendar.years_in_use);
  take("week_ends_on", calendar.week_ends_on);
  take("max_accounts", description.max_accounts);
  take("max_fields", description.max_fields);
}

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

// An item read into the member that it belongs to.
void Read(Properties& properties, const Text& name, Text& item) {
  item = properties.String(name);
}
void Read(Properties& properties, const Text& name, Integer& item) {
  item = ToInteger(properties.Number(name));
}
void Read(Properties& properties, const Text& name, Long& item) {
  item = ToLong(properties.Number(name));
}
void Read(Properties& properties, const Text& name, Date& item) {
  item = static_cast<Date>(properties.Number(name));
}
void Read(Properties& properties, const Text& name, std::size_t& item) {
  item = static_cast<std::size_t>(properties.Number(name));
}
void Read(Properties& properties, const Text& name, CalendarKind& item) {
  item = static_cast<CalendarKind>(ToInteger(properties.Number(name)));
}

// An item as it is kept: a text or a whole number.
const Text& Kept(const Text& item) {
  return item;
}
template <typename Number>
std::int64_t Kept(Number item) {
  return static_cast<std::int64_t>(item);
}

Checksum DescriptionChecksum(const StoredDescription& stored, Long format) {
  const BookDescription& description = stored.description;
  const CalendarDescription& calendar = description.calendar;
  Digest digest;
  digest.Add(std::int64_t{format});
  ForEachItem(stored, [&](const char* /*name*/, const auto& item) {
    // Meant: the date goes in as the number with a point that it is in memory.
    if constexpr (std::is_same_v<decltype(item), const Date&>) {
      digest.Add(item);
    } else {
      digest.Add(Kept(item));
    }
  });
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
  ForEachItem(stored, [&](const char* name, const auto& item) { properties.Put(name, Kept(item)); });

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
  ForEachItem(stored, [&](const char* name, auto& item) { Read(properties, name, item); });

  DbStatement period(database, "SELECT name, length FROM period ORDER BY position");
  while (period.Step()) calendar.periods.push_back({period.String(0), ToInteger(period.Int(1))});
  description.accounts.reserve(static_cast<std::size_t>(database.Number("SELECT count(*) FROM account")));
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
