// A SQLite file with one table. Small and whole numbers are INTEGER, figures REAL, dates TEXT as 2004-02-03 (SQLite's
// own date functions read that), texts TEXT. All rows are one transaction.
#include <cerrno>
#include <memory>
#include <sqlite3.h>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/FileSystem.h"
#include "platform/Platform.h"
#include "platform/posix/SystemError.h"
#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

namespace {

Text Quoted(const Text& name) {
  Text out = "\"";
  for (const char c : name) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + '"';
}

const char* TypeName(ColumnType type) {
  switch (type) {
    case ColumnType::kSmallNumber:
    case ColumnType::kInteger:
      return "INTEGER";
    case ColumnType::kDouble:
      return "REAL";
    case ColumnType::kDate:
    case ColumnType::kText:
      break;
  }
  return "TEXT";
}

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct EndStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

class SqliteWriter : public TableWriter {
 public:
  SqliteWriter(const Text& path, Text table_name) : table_name_(std::move(table_name)) {
    MakeEmptyFile(path);
    // What a writer that was killed left beside a file of the same name would be taken for this file's journal.
    for (const char* ending : {"-journal", "-wal", "-shm"}) {
      if (ThePlatform().files->Attributes(path + ending).found) ThePlatform().files->Delete(path + ending);
    }
    // A name that begins with a colon would be no file to SQLite.
    const Text name = path.starts_with(':') ? "./" + path : path;
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(name.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    database_.reset(database);
    if (result != SQLITE_OK) Fail();
    // There is no older state to go back to, so the journal stays in memory.
    Run("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = MEMORY");
  }

  void Begin(const std::vector<Column>& columns) override {
    columns_ = columns;
    Text definitions;
    Text values;
    for (const Column& column : columns) {
      definitions += (definitions.empty() ? "" : ", ") + Quoted(column.name) + " " + TypeName(column.type);
      values += values.empty() ? "?" : ", ?";
    }
    Run("BEGIN EXCLUSIVE; CREATE TABLE " + Quoted(table_name_) + " (" + definitions + ")");
    const Text insert = "INSERT INTO " + Quoted(table_name_) + " VALUES (" + values + ")";
    sqlite3_stmt* statement = nullptr;
    const int result = sqlite3_prepare_v2(database_.get(), insert.c_str(), -1, &statement, nullptr);
    insert_.reset(statement);
    if (result != SQLITE_OK) Fail();
  }

  void WriteRow(const std::vector<Cell>& cells) override {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      // What is bound stays bound from row to row, as the cells do.
      if (cells[i].changed && Bind(static_cast<int>(i + 1), cells[i], columns_[i]) != SQLITE_OK) Fail();
    }
    const int result = sqlite3_step(insert_.get());
    if (result != SQLITE_DONE) Fail();
    sqlite3_reset(insert_.get());
  }

  void Close() override {
    insert_.reset();
    if (sqlite3_get_autocommit(database_.get()) == 0) Run("COMMIT");
    if (sqlite3_close(database_.release()) != SQLITE_OK)
      throw Failure(FailureNumber::kDeviceError, "The SQLite file could not be closed", "ExportLibrary");
  }

 private:
  void Run(const Text& statements) {
    if (sqlite3_exec(database_.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
  }

  int Bind(int position, const Cell& cell, const Column& column) {
    switch (cell.kind) {
      case CellKind::kEmpty:
        break;
      case CellKind::kWhole:
        return sqlite3_bind_int(insert_.get(), position, cell.whole);
      case CellKind::kFigure:
        return sqlite3_bind_double(insert_.get(), position, RoundedFigure(cell, column));
      case CellKind::kDate:
        return BindText(position, DateText(cell.date));
      case CellKind::kText:
        return BindText(position, cell.text);
    }
    return sqlite3_bind_null(insert_.get(), position);
  }

  int BindText(int position, const Text& text) {
    return sqlite3_bind_text64(insert_.get(), position, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  }

  // The reason that SQLite gives for what went wrong last.
  [[noreturn]] void Fail() const {
    const int code = sqlite3_errcode(database_.get());
    const int system_error = sqlite3_system_errno(database_.get());
    const bool full = code == SQLITE_FULL || FailureNumberOf(system_error) == FailureNumber::kDiskFull;
    throw Failure(full ? FailureNumber::kDiskFull : FailureNumber::kDeviceError, sqlite3_errmsg(database_.get()),
                  "ExportLibrary");
  }

  Text table_name_;
  std::vector<Column> columns_;
  std::unique_ptr<sqlite3, CloseDatabase> database_;
  std::unique_ptr<sqlite3_stmt, EndStatement> insert_;
};

}  // namespace

std::unique_ptr<TableWriter> NewSqliteWriter(const Text& path, const Text& table_name) {
  return std::make_unique<SqliteWriter>(path, table_name);
}

}  // namespace tallybook::tables
