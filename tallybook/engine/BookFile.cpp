#include "tallybook/engine/BookFile.h"

#include <algorithm>
#include <string>
#include <utility>

#include "support/Failure.h"
#include "support/Narrow.h"
#include "tallybook/engine/Book.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

// A page, and what of it is left for one chunk when a row's head and its bytes outside the figures are taken off.
constexpr std::size_t kPageSize = 16384;
constexpr std::size_t kPageRoom = 16256;
// One chunk of every account together stays below this, so that a walk from date to date over all accounts finds its
// chunks in a cache of the usual size.
constexpr std::size_t kChunksOfAllAccounts = std::size_t{128} << 20;
constexpr std::size_t kSmallestChunk = 2032;

constexpr const char* kSchema = R"sql(
CREATE TABLE property (name TEXT PRIMARY KEY, value) WITHOUT ROWID;
CREATE TABLE period (position INTEGER PRIMARY KEY, name TEXT NOT NULL, length INTEGER NOT NULL);
CREATE TABLE account (position INTEGER PRIMARY KEY, number INTEGER NOT NULL UNIQUE, code TEXT NOT NULL UNIQUE,
                      description TEXT NOT NULL);
CREATE TABLE field (position INTEGER PRIMARY KEY, number INTEGER NOT NULL UNIQUE, description TEXT NOT NULL,
                    system INTEGER NOT NULL);
CREATE TABLE chunk (id INTEGER PRIMARY KEY, key INTEGER NOT NULL UNIQUE, figures BLOB NOT NULL);
CREATE TABLE journal (id INTEGER PRIMARY KEY AUTOINCREMENT, time REAL NOT NULL, first REAL NOT NULL, last REAL NOT NULL,
                      what TEXT NOT NULL, state INTEGER NOT NULL, chunks INTEGER NOT NULL);
CREATE TABLE journal_chunk (entry INTEGER NOT NULL, key INTEGER NOT NULL, rows BLOB NOT NULL, image INTEGER,
                            PRIMARY KEY (entry, key)) WITHOUT ROWID;
CREATE TABLE image (id INTEGER PRIMARY KEY, figures BLOB NOT NULL);
)sql";

// The record size decides how many records fit; a record larger than a page has a chunk of its own.
std::size_t ChooseRowsOfChunk(const BookDescription& description) {
  std::size_t room = kPageRoom;
  while (room > kSmallestChunk && room * description.accounts.size() > kChunksOfAllAccounts) room /= 2;
  const std::size_t record = std::max<std::size_t>(description.fields.size(), 1) * sizeof(Double);
  return std::max<std::size_t>(room / record, 1);
}

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

class Properties {
 public:
  explicit Properties(Database& database)
      : database_(database),
        read_(database, "SELECT value FROM property WHERE name = ?1"),
        write_(database, "INSERT INTO property (name, value) VALUES (?1, ?2)") {}

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

}  // namespace

BookFile BookFile::Create(const Text& path, const BookDescription& description) {
  return {path, description};
}

BookFile::BookFile(const Text& path, const BookDescription& description) : path_(path), read_only_(false) {
  database_ = std::make_unique<Database>(path, Database::Mode::kCreate);
  TakeRightToWrite();
  *description_ = description;
  description_->values.clear();
  rows_of_chunk_ = ChooseRowsOfChunk(description);
  Database& database = *database_;
  database.Execute(("PRAGMA page_size = " + std::to_string(kPageSize)).c_str());
  database.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  Transaction transaction(database);
  database.Execute(("PRAGMA application_id = " + std::to_string(kBookApplicationId)).c_str());
  database.Execute(("PRAGMA user_version = " + std::to_string(kBookVersion)).c_str());
  database.Execute(kSchema);
  SaveDescription();
  transaction.Commit();
}

BookFile::BookFile(const Text& path, bool read_only) : path_(path), read_only_(read_only) {
  database_ = std::make_unique<Database>(path, read_only ? Database::Mode::kReadOnly : Database::Mode::kReadWrite);
  CheckIsBook();
  if (read_only_) {
    // One long read transaction: whatever a writer commits meanwhile, this book stays one consistent state.
    database_->BeginReading();
  } else {
    TakeRightToWrite();
    // A log of up to 64 MiB is left to grow before it is copied back, so that a large commit is not written twice at
    // once.
    // SQLite keeps 16 MiB of pages besides, so that the index pages of a large commit are written once.
    database_->Execute(
        "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 4096; "
        "PRAGMA cache_size = -16384");
  }
  LoadDescription();
}

void BookFile::TakeRightToWrite() {
  try {
    right_to_write_ = ThePlatform().files->Open(path_ + "-lock", Access::kReadWrite, Sharing::kLockReadWrite,
                                                Creation::kCreateIfMissing);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kPermissionDenied) throw;
    throw Failure(FailureNumber::kPermissionDenied,
                  path_ + ": the book is open for writing elsewhere, or its folder may not be written (" +
                      failure.Description() + ")",
                  kSource);
  }
}

void BookFile::CheckIsBook() {
  if (database_->Number("PRAGMA application_id") != kBookApplicationId) {
    throw Failure(FailureNumber::kPathOrAccess, path_ + ": this file is not a book", kSource);
  }
  const std::int64_t version = database_->Number("PRAGMA user_version");
  if (version > kBookVersion) {
    throw Failure(FailureNumber::kFeatureUnavailable,
                  path_ + ": this book was made by a newer version of Tallybook (book version " +
                      std::to_string(version) + "; this one reads up to " + std::to_string(kBookVersion) + ")",
                  kSource);
  }
}

void BookFile::SaveDescription() {
  Properties properties(*database_);
  const CalendarDescription& calendar = description_->calendar;
  properties.Put(kSystemName, description_->system_name);
  properties.Put(kTypeName, description_->type_name);
  properties.Put(kDataLevel, description_->data_level);
  properties.Put(kCalendarKind, static_cast<std::int64_t>(calendar.kind));
  properties.Put(kFirstDate, static_cast<std::int64_t>(calendar.first_date));
  properties.Put(kFirstYear, calendar.first_year);
  properties.Put(kYears, calendar.years);
  properties.Put(kYearsInUse, calendar.years_in_use);
  properties.Put(kWeekEndsOn, calendar.week_ends_on);
  properties.Put(kMaxAccounts, description_->max_accounts);
  properties.Put(kMaxFields, description_->max_fields);
  properties.Put(kRowsOfChunk, static_cast<std::int64_t>(rows_of_chunk_));

  DbStatement period(*database_, "INSERT INTO period (name, length) VALUES (?1, ?2)");
  for (const PeriodDescription& row : calendar.periods) {
    period.Bind(1, row.name).Bind(2, std::int64_t{row.length}).Run();
  }
  DbStatement account(*database_, "INSERT INTO account (number, code, description) VALUES (?1, ?2, ?3)");
  for (const AccountDescription& row : description_->accounts) {
    account.Bind(1, std::int64_t{row.number}).Bind(2, row.code).Bind(3, row.description).Run();
  }
  DbStatement field(*database_, "INSERT INTO field (number, description, system) VALUES (?1, ?2, ?3)");
  for (const FieldDescription& row : description_->fields) {
    field.Bind(1, std::int64_t{row.number}).Bind(2, row.description).Bind(3, std::int64_t{row.system}).Run();
  }
}

void BookFile::LoadDescription() {
  Properties properties(*database_);
  CalendarDescription& calendar = description_->calendar;
  description_->system_name = properties.String(kSystemName);
  description_->type_name = properties.String(kTypeName);
  description_->data_level = ToInteger(properties.Number(kDataLevel));
  calendar.kind = static_cast<CalendarKind>(ToInteger(properties.Number(kCalendarKind)));
  calendar.first_date = static_cast<Date>(properties.Number(kFirstDate));
  calendar.first_year = ToInteger(properties.Number(kFirstYear));
  calendar.years = ToInteger(properties.Number(kYears));
  calendar.years_in_use = ToInteger(properties.Number(kYearsInUse));
  calendar.week_ends_on = ToInteger(properties.Number(kWeekEndsOn));
  description_->max_accounts = ToLong(properties.Number(kMaxAccounts));
  description_->max_fields = ToLong(properties.Number(kMaxFields));
  rows_of_chunk_ = static_cast<std::size_t>(properties.Number(kRowsOfChunk));

  DbStatement period(*database_, "SELECT name, length FROM period ORDER BY position");
  while (period.Step()) calendar.periods.push_back({period.String(0), ToInteger(period.Int(1))});
  DbStatement account(*database_, "SELECT number, code, description FROM account ORDER BY position");
  while (account.Step()) {
    description_->accounts.push_back({ToLong(account.Int(0)), account.String(1), account.String(2)});
  }
  DbStatement field(*database_, "SELECT number, description, system FROM field ORDER BY position");
  while (field.Step()) {
    description_->fields.push_back({ToInteger(field.Int(0)), field.String(1), field.Int(2) != 0});
  }
  // A file that was changed by something else must not lead to positions and dates that no table has.
  CheckBookDescription(*description_, path_);
  constexpr std::size_t kMostRows = 65'535;
  if (rows_of_chunk_ < 1 || rows_of_chunk_ > kMostRows) {
    throw Failure(FailureNumber::kDeviceError,
                  path_ + ": the book is damaged: chunks of " + std::to_string(rows_of_chunk_) + " records", kSource);
  }
}

}  // namespace tallybook::engine
