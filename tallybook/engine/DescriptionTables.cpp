#include "tallybook/engine/DescriptionTables.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/engine/Checksums.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

constexpr const char* kChecksum = "checksum";  // of all of it, and of the format's number

// From this format on lists can change: fields have slots, and numbers are retired.
constexpr Long kFirstFormatOfGrowth = 3;

// The most rows that a chunk may have.
constexpr std::size_t kMostRows = 65'535;

// The lists of `retired`. The numbers stand in book files.
constexpr std::int64_t kAccountList = 1;
constexpr std::int64_t kFieldList = 2;

// The single items of a description under the names by which they are kept, in the order of the checksum.
template <typename Stored, typename Take>
void ForEachItem(Stored& stored, Long format, Take take) {
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
  if (format < kFirstFormatOfGrowth) return;
  take("first_slots", stored.first_slots);
  take("slots", stored.slots);
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

// Positions count from 1.
std::int64_t PositionOf(std::size_t index) {
  return static_cast<std::int64_t>(index) + 1;
}

// A book whose chunks were never stored anew tells nothing of it.
void AddGrowth(Digest& digest, const StoredDescription& stored) {
  for (const std::size_t slot : stored.slot_of_field) digest.Add(static_cast<std::int64_t>(slot));
  for (const auto* retired : {&stored.retired_accounts, &stored.retired_fields}) {
    digest.Add(static_cast<std::int64_t>(retired->size()));
    for (const Long number : *retired) digest.Add(std::int64_t{number});
  }
  for (const FormerLayout& layout : stored.former_layouts) {
    digest.Add(std::int64_t{layout.last_entry}).Add(static_cast<std::int64_t>(layout.rows_of_chunk));
    digest.Add(static_cast<std::int64_t>(layout.first_slots));
  }
}

Checksum DescriptionChecksum(const StoredDescription& stored, Long format) {
  const BookDescription& description = stored.description;
  const CalendarDescription& calendar = description.calendar;
  Digest digest;
  digest.Add(std::int64_t{format});
  ForEachItem(stored, format, [&](const char* /*name*/, const auto& item) {
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
  if (format >= kFirstFormatOfGrowth) AddGrowth(digest, stored);
  return digest.Value();
}

// Writes the rows of a list from `first` on, counted from 0.
void PutPeriods(Database& database, const StoredDescription& stored, std::size_t first) {
  const auto& rows = stored.description.calendar.periods;
  DbStatement put(database, "INSERT INTO period (position, name, length) VALUES (?1, ?2, ?3)");
  for (std::size_t index = first; index < rows.size(); ++index) {
    put.Bind(1, PositionOf(index)).Bind(2, rows[index].name).Bind(3, std::int64_t{rows[index].length}).Run();
  }
}

void PutAccounts(Database& database, const StoredDescription& stored, std::size_t first) {
  const auto& rows = stored.description.accounts;
  DbStatement put(database, "INSERT INTO account (position, number, code, description) VALUES (?1, ?2, ?3, ?4)");
  for (std::size_t index = first; index < rows.size(); ++index) {
    put.Bind(1, PositionOf(index)).Bind(2, std::int64_t{rows[index].number});
    put.Bind(3, rows[index].code).Bind(4, rows[index].description).Run();
  }
}

void PutFields(Database& database, const StoredDescription& stored, std::size_t first) {
  const auto& rows = stored.description.fields;
  DbStatement put(database,
                  "INSERT INTO field (position, number, description, system, slot) VALUES (?1, ?2, ?3, ?4, ?5)");
  for (std::size_t index = first; index < rows.size(); ++index) {
    put.Bind(1, PositionOf(index)).Bind(2, std::int64_t{rows[index].number}).Bind(3, rows[index].description);
    put.Bind(4, std::int64_t{rows[index].system});
    put.Bind(5, static_cast<std::int64_t>(stored.slot_of_field[index])).Run();
  }
}

void PutRetired(Database& database, const StoredDescription& stored) {
  DbStatement put(database, "INSERT INTO retired (list, number) VALUES (?1, ?2)");
  for (const Long number : stored.retired_accounts) put.Bind(1, kAccountList).Bind(2, std::int64_t{number}).Run();
  for (const Long number : stored.retired_fields) put.Bind(1, kFieldList).Bind(2, std::int64_t{number}).Run();
}

// The table is there once it has a row.
void PutLayouts(Database& database, const StoredDescription& stored) {
  if (stored.former_layouts.empty()) return;
  database.Execute(
      "CREATE TABLE IF NOT EXISTS layout (last_entry INTEGER PRIMARY KEY, rows_of_chunk INTEGER NOT NULL, "
      "first_slots INTEGER NOT NULL)");
  DbStatement put(database,
                  "INSERT OR IGNORE INTO layout (last_entry, rows_of_chunk, first_slots) VALUES (?1, ?2, ?3)");
  for (const FormerLayout& layout : stored.former_layouts) {
    put.Bind(1, std::int64_t{layout.last_entry}).Bind(2, static_cast<std::int64_t>(layout.rows_of_chunk));
    put.Bind(3, static_cast<std::int64_t>(layout.first_slots)).Run();
  }
}

// How many rows both lists begin with. Codes and numbers are each there once, so the rows behind are taken away
// together before new ones come.
template <typename Row>
std::size_t CommonRows(const std::vector<Row>& before, const std::vector<Row>& after) {
  const auto places = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
  return static_cast<std::size_t>(places.first - before.begin());
}

void TakeRowsAway(Database& database, const char* sql, std::size_t first) {
  DbStatement(database, sql).Bind(1, PositionOf(first)).Run();
}

// Slots and retired numbers are each there once, and none is both in use and retired.
bool GrowthIsSound(const StoredDescription& stored) {
  std::vector<bool> taken(stored.slots, false);
  for (const std::size_t slot : stored.slot_of_field) {
    if (slot >= stored.slots || taken[slot]) return false;
    taken[slot] = true;
  }
  const auto is_retired = [](const std::vector<Long>& retired, Long number) {
    return std::binary_search(retired.begin(), retired.end(), number);
  };
  const BookDescription& description = stored.description;
  return stored.slots <= kMostSlots && stored.first_slots <= stored.slots &&
         std::ranges::all_of(stored.former_layouts,
                             [&](const FormerLayout& layout) {
                               return layout.rows_of_chunk >= 1 && layout.rows_of_chunk <= kMostRows &&
                                      layout.first_slots <= stored.slots;
                             }) &&
         std::none_of(description.accounts.begin(), description.accounts.end(),
                      [&](const auto& row) { return is_retired(stored.retired_accounts, row.number); }) &&
         std::none_of(description.fields.begin(), description.fields.end(),
                      [&](const auto& row) { return is_retired(stored.retired_fields, row.number); });
}

// What formats before it lack: every field has the slot of its position.
void LoadGrowth(Database& database, StoredDescription& stored) {
  DbStatement slot(database, "SELECT slot FROM field ORDER BY position");
  while (slot.Step()) stored.slot_of_field.push_back(static_cast<std::size_t>(slot.Int(0)));
  DbStatement retired(database, "SELECT list, number FROM retired ORDER BY list, number");
  while (retired.Step()) {
    (retired.Int(0) == kAccountList ? stored.retired_accounts : stored.retired_fields)
        .push_back(ToLong(retired.Int(1)));
  }
  if (database.Number("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'layout'") == 0) return;
  DbStatement layout(database, "SELECT last_entry, rows_of_chunk, first_slots FROM layout ORDER BY last_entry");
  while (layout.Step()) {
    stored.former_layouts.push_back(
        {ToLong(layout.Int(0)), static_cast<std::size_t>(layout.Int(1)), static_cast<std::size_t>(layout.Int(2))});
  }
}

}  // namespace

void SaveDescription(Database& database, const StoredDescription& stored, Long format) {
  PutPeriods(database, stored, 0);
  PutAccounts(database, stored, 0);
  PutFields(database, stored, 0);
  PutRetired(database, stored);
  PutLayouts(database, stored);
  SealDescription(database, stored, format);
}

void ReplaceDescription(Database& database, const StoredDescription& before, const StoredDescription& after,
                        Long format) {
  const BookDescription& was = before.description;
  const BookDescription& is = after.description;
  const std::size_t periods = CommonRows(was.calendar.periods, is.calendar.periods);
  TakeRowsAway(database, "DELETE FROM period WHERE position >= ?1", periods);
  PutPeriods(database, after, periods);
  const std::size_t accounts = CommonRows(was.accounts, is.accounts);
  TakeRowsAway(database, "DELETE FROM account WHERE position >= ?1", accounts);
  PutAccounts(database, after, accounts);
  const std::size_t fields =
      std::min(CommonRows(was.fields, is.fields), CommonRows(before.slot_of_field, after.slot_of_field));
  TakeRowsAway(database, "DELETE FROM field WHERE position >= ?1", fields);
  PutFields(database, after, fields);
  database.Execute("DELETE FROM retired");
  PutRetired(database, after);
  PutLayouts(database, after);
  SealDescription(database, after, format);
}

void SealDescription(Database& database, const StoredDescription& stored, Long format) {
  Properties properties(database);
  ForEachItem(stored, format, [&](const char* name, const auto& item) { properties.Put(name, Kept(item)); });
  properties.Put(kChecksum, ToColumn(DescriptionChecksum(stored, format)));
}

StoredDescription LoadDescription(Database& database, Long format, Trust trust) {
  StoredDescription stored;
  BookDescription& description = stored.description;
  Properties properties(database);
  CalendarDescription& calendar = description.calendar;
  ForEachItem(stored, format, [&](const char* name, auto& item) { Read(properties, name, item); });

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
  if (format >= kFirstFormatOfGrowth) {
    LoadGrowth(database, stored);
  } else {
    stored = WithFirstSlots(std::move(stored.description), stored.rows_of_chunk);
  }
  if (format > 1 && trust == Trust::kChecksum &&
      FromColumn(properties.Number(kChecksum)) != DescriptionChecksum(stored, format)) {
    throw Failure(FailureNumber::kDeviceError,
                  database.Path() + ": the book is damaged: its description does not agree with its checksum", kSource);
  }
  // A file that was changed by something else must not lead to positions and dates that no table has.
  CheckBookDescription(description, database.Path());
  if (!GrowthIsSound(stored)) {
    throw Failure(
        FailureNumber::kDeviceError,
        database.Path() + ": the book is damaged: its fields' slots and retired numbers do not agree with its lists",
        kSource);
  }
  if (stored.rows_of_chunk < 1 || stored.rows_of_chunk > kMostRows) {
    throw Failure(
        FailureNumber::kDeviceError,
        database.Path() + ": the book is damaged: chunks of " + std::to_string(stored.rows_of_chunk) + " records",
        kSource);
  }
  return stored;
}

}  // namespace tallybook::engine
