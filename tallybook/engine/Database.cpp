#include "tallybook/engine/Database.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "base/Failure.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
constexpr int kBusyMilliseconds = 2000;  // how long a short commit of another program is waited for

FailureNumber NumberOfResult(int result) {
  switch (result & 0xFF) {
    case SQLITE_FULL:
      return FailureNumber::kDiskFull;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return FailureNumber::kPermissionDenied;
    case SQLITE_CANTOPEN:
    case SQLITE_NOTADB:
      return FailureNumber::kPathOrAccess;
    case SQLITE_NOMEM:
      return FailureNumber::kOutOfMemory;
    default:
      return FailureNumber::kDeviceError;
  }
}

// The URI form of a path, for the option that takes a file as one that nobody changes.
Text ImmutableUri(const Text& path) {
  Text uri = "file:";
  for (const char character : std::filesystem::absolute(path).string()) {
    const bool special = character == '%' || character == '?' || character == '#';
    if (special) {
      static constexpr char kHex[] = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(character);
      uri += '%';
      uri += kHex[byte >> 4];
      uri += kHex[byte & 0xF];
    } else {
      uri += character;
    }
  }
  return uri + "?immutable=1";
}

bool HasTooManyFiles(sqlite3* handle) {
  const int error = handle == nullptr ? 0 : sqlite3_system_errno(handle);
  return error == EMFILE || error == ENFILE;
}

}  // namespace

DbStatement::DbStatement(Database& database, const char* sql) : database_(&database) {
  sqlite3_stmt* statement = nullptr;
  const int result = sqlite3_prepare_v3(database.Handle(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  statement_.reset(statement);
  Check(result);
}

void DbStatement::Check(int result) const {
  if (result != SQLITE_OK) database_->Fail(result);
}

DbStatement& DbStatement::Bind(int parameter, std::int64_t value) {
  Check(sqlite3_bind_int64(statement_.get(), parameter, value));
  return *this;
}

DbStatement& DbStatement::Bind(int parameter, Double value) {
  Check(sqlite3_bind_double(statement_.get(), parameter, value));
  return *this;
}

DbStatement& DbStatement::Bind(int parameter, const Text& value) {
  Check(sqlite3_bind_text64(statement_.get(), parameter, value.data(), value.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

DbStatement& DbStatement::Bind(int parameter, std::span<const std::byte> value) {
  Check(sqlite3_bind_blob64(statement_.get(), parameter, value.data(), value.size(), SQLITE_STATIC));
  return *this;
}

DbStatement& DbStatement::BindNull(int parameter) {
  Check(sqlite3_bind_null(statement_.get(), parameter));
  return *this;
}

bool DbStatement::Step() {
  const int result = sqlite3_step(statement_.get());
  if (database_->guards_steps_) database_->Guard();
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  sqlite3_reset(statement_.get());
  database_->Fail(result);
}

void DbStatement::Run() {
  while (Step()) {
  }
  Reset();
}

void DbStatement::Reset() {
  sqlite3_reset(statement_.get());  // repeats the result of the last step, which has been told
}

bool DbStatement::IsNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

std::int64_t DbStatement::Int(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

Double DbStatement::Real(int column) const {
  return sqlite3_column_double(statement_.get(), column);
}

Text DbStatement::String(int column) const {
  const auto bytes = Bytes(column);
  Text text(bytes.size(), '\0');
  for (std::size_t index = 0; index < bytes.size(); ++index) text[index] = static_cast<char>(bytes[index]);
  return text;
}

std::span<const std::byte> DbStatement::Bytes(int column) const {
  const auto* data = static_cast<const std::byte*>(sqlite3_column_blob(statement_.get(), column));
  return {data, static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

Database::Database(const Text& path, const Text& file, Mode mode)
    : path_(path), guards_steps_(mode == Mode::kUnchanging) {
  switch (mode) {
    case Mode::kCreate:
      if (std::error_code ignored; std::filesystem::exists(file, ignored)) {
        throw Failure(FailureNumber::kPathOrAccess, path + ": the file exists already", kSource);
      }
      Open(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
      break;
    case Mode::kReadWrite:
      Open(file, SQLITE_OPEN_READWRITE);
      if (sqlite3_db_readonly(handle_.get(), "main") == 1) {
        throw Failure(FailureNumber::kPermissionDenied, path + ": the file may not be written", kSource);
      }
      break;
    case Mode::kReadOnly:
      // Open for writing, and held to reading by the pragma, it clears the log's index away when it is the last to
      // close.
      Open(file, SQLITE_OPEN_READWRITE);
      Execute("SELECT 1 FROM sqlite_master; PRAGMA query_only = ON");
      break;
    case Mode::kUnchanging:
      Open(ImmutableUri(file), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
      break;
    case Mode::kPrivate:
      Open(file, SQLITE_OPEN_READWRITE);
      Execute(
          "PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = OFF; PRAGMA journal_mode = DELETE; "
          "PRAGMA query_only = ON");
      break;
  }
}

void Database::Open(const Text& target, int flags) {
  sqlite3* handle = nullptr;
  const int result =
      sqlite3_open_v2(target.c_str(), &handle, flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  handle_.reset(handle);
  if (result != SQLITE_OK) Fail(result);
  sqlite3_busy_timeout(handle, kBusyMilliseconds);
}

bool Database::HasMoved() const {
  int moved = 0;
  return sqlite3_file_control(handle_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved) == SQLITE_OK && moved != 0;
}

void Database::Execute(const char* sql) {
  const int result = sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) Fail(result);
}

std::int64_t Database::Number(const char* sql) {
  DbStatement statement(*this, sql);
  return statement.Step() ? statement.Int(0) : 0;
}

void Database::Fail(int result) const {
  if ((result & 0xFF) == SQLITE_INTERRUPT) throw WorkCancelled();
  // SQLite tells of a full disk in more ways than one; the system's own number is plain.
  const int error = handle_ && (result & 0xFF) == SQLITE_IOERR ? sqlite3_system_errno(handle_.get()) : 0;
  if (error == ENOSPC || error == EDQUOT || error == EFBIG) result = SQLITE_FULL;
  Text reason = handle_ ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(result);
  switch (result & 0xFF) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      reason = kInUseByAnother;
      break;
    case SQLITE_FULL:
      reason = "there is no room left for the book";
      break;
    case SQLITE_READONLY:
      reason = "the book, or its folder, may not be written";
      break;
    case SQLITE_CANTOPEN:
      reason = HasTooManyFiles(handle_.get())
                   ? "it cannot be opened: too many files are open, in this process or in the whole system"
                   : "the file, or its folder, may not be read and written as a book needs it";
      break;
    case SQLITE_NOTADB:
      reason = "this file is not a book";
      break;
    case SQLITE_ERROR:  // what is asked is always the same: a table or a part of one is missing
    case SQLITE_CORRUPT:
      reason = "the book is damaged: " + reason;
      break;
    default:
      break;
  }
  throw Failure(NumberOfResult(result), path_ + ": " + reason, kSource);
}

void Database::BeginReading() {
  if (sqlite3_get_autocommit(handle_.get()) != 0) Execute("BEGIN");
}

void Database::EndReading() {
  if (sqlite3_get_autocommit(handle_.get()) == 0) Execute("COMMIT");
}

void Database::SetWatch(WorkWatch& watch) {
  constexpr int kStepsBetween = 20'000;  // of SQLite's machine: some milliseconds
  sqlite3_progress_handler(
      handle_.get(), kStepsBetween, [](void* its) { return static_cast<WorkWatch*>(its)->IsCancelled() ? 1 : 0; },
      &watch);
}

void Database::CopyPagesTo(Database& other, WorkWatch& watch) {
  constexpr int kPagesAtATime = 256;
  sqlite3_backup* backup = sqlite3_backup_init(other.Handle(), "main", Handle(), "main");
  if (backup == nullptr) other.Fail(sqlite3_errcode(other.Handle()));
  int result = SQLITE_OK;
  while (result == SQLITE_OK && !watch.IsCancelled()) {
    result = sqlite3_backup_step(backup, kPagesAtATime);
    const auto pages = static_cast<Single>(std::max(sqlite3_backup_pagecount(backup), 1));
    watch.Done(1 - static_cast<Single>(sqlite3_backup_remaining(backup)) / pages);
  }
  const int finished = sqlite3_backup_finish(backup);
  if (result == SQLITE_OK) throw WorkCancelled();
  if (result != SQLITE_DONE) other.Fail(finished == SQLITE_OK ? result : finished);
  if (guards_steps_) Guard();
}

Transaction::Transaction(Database& database) : database_(database) {
  database_.EndReading();
  database_.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  // SQLite may have rolled back by itself after a full disk; then there is nothing left to end.
  if (open_ && sqlite3_get_autocommit(database_.Handle()) == 0) {
    sqlite3_exec(database_.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void Transaction::Commit() {
  database_.Guard();
  database_.Execute("COMMIT");
  open_ = false;
}

}  // namespace tallybook::engine
