// A thin owner of an SQLite connection and of its statements. Every error becomes a Failure that names the file.
// One thread; statements must not outlive their connection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <sqlite3.h>
#include <utility>

#include "base/Types.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::engine {

class Database;

// Ends the words of a failure that a short commit of another program outlasted the wait for it.
inline constexpr const char* kInUseByAnother = "the book is in use by another program";

// A prepared statement. Parameters count from 1 and columns from 0, as SQLite does.
class DbStatement {
 public:
  // `database` must outlive the statement.
  DbStatement(Database& database, const char* sql);

  // Each gives the statement back, so that the bindings of one statement stand in one line. Bytes are not copied: they
  // must stay until the statement has run.
  DbStatement& Bind(int parameter, std::int64_t value);
  DbStatement& Bind(int parameter, Double value);
  DbStatement& Bind(int parameter, const Text& value);
  DbStatement& Bind(int parameter, std::span<const std::byte> value);
  DbStatement& BindNull(int parameter);

  // Steps once: true while there is a row.
  [[nodiscard]] bool Step();
  // Runs a statement that gives no rows, and makes it ready to run again.
  void Run();
  // Ends a walk over rows, so that the statement can be bound and run again.
  void Reset();

  [[nodiscard]] bool IsNull(int column) const;
  [[nodiscard]] std::int64_t Int(int column) const;
  [[nodiscard]] Double Real(int column) const;
  [[nodiscard]] Text String(int column) const;
  // Valid until the next step.
  [[nodiscard]] std::span<const std::byte> Bytes(int column) const;

 private:
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };

  void Check(int result) const;

  Database* database_;
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// Resets a statement at the end of a walk over its rows, however the walk ends: a statement that stands on a row keeps
// a read transaction open.
class EndOfWalk {
 public:
  explicit EndOfWalk(DbStatement& statement) : statement_(statement) {}
  ~EndOfWalk() { statement_.Reset(); }
  EndOfWalk(const EndOfWalk&) = delete;
  EndOfWalk& operator=(const EndOfWalk&) = delete;

 private:
  DbStatement& statement_;
};

class Database {
 public:
  // kReadOnly shares the log with writers, and makes it, and its index, where they are not there. kUnchanging takes the
  // file as one that nobody changes, and neither looks for a log nor makes anything. kPrivate puts a log that is there
  // into the file, which nobody else can have, and needs no other from then on.
  enum class Mode { kCreate, kReadWrite, kReadOnly, kUnchanging, kPrivate };

  // Opens or makes the file. kCreate refuses a path that exists (75).
  Database(const Text& path, Mode mode) : Database(path, path, mode) {}
  // The same for a file that failures are to call by another path.
  Database(const Text& path, const Text& file, Mode mode);

  [[nodiscard]] const Text& Path() const { return path_; }

  // Lets `guard` look whether the file is still what it was: before each commit, and in kUnchanging behind each step of
  // a statement, before its row is given. What it throws is the failure of the commit or the step.
  void SetGuard(std::function<void()> guard) { guard_ = std::move(guard); }
  // True where the path that was opened leads to another file by now.
  [[nodiscard]] bool HasMoved() const;
  [[nodiscard]] sqlite3* Handle() const { return handle_.get(); }

  // Runs statements that give no rows of interest.
  void Execute(const char* sql);
  // The first column of a statement's only row.
  [[nodiscard]] std::int64_t Number(const char* sql);
  // Begins a read transaction where none is open, so that many reads in a row take and give back the file's locks once.
  // It lasts until the next write transaction begins, or EndReading. A statement that writes must not run within it.
  void BeginReading();
  void EndReading();

  // Statements end with WorkCancelled where the work is not wanted any more; what they had changed is taken back.
  // `watch` outlives the last of them.
  void SetWatch(WorkWatch& watch);

  // Puts all pages as this connection sees them, with what its log holds, into the file of another, which is empty.
  void CopyPagesTo(Database& other, WorkWatch& watch = Unwatched());

  // The key of the row that was inserted last.
  [[nodiscard]] std::int64_t LastRow() const { return sqlite3_last_insert_rowid(handle_.get()); }

  // Raises the failure of an SQLite result code: 61 no room, 70 busy, locked or not permitted, 75 no database or cannot
  // be opened, 57 anything else. WorkCancelled where the watch has ended it.
  [[noreturn]] void Fail(int result) const;

 private:
  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };

  friend class DbStatement;
  friend class Transaction;

  void Open(const Text& target, int flags);
  void Guard() const {
    if (guard_) guard_();
  }

  Text path_;
  bool guards_steps_ = false;
  std::unique_ptr<sqlite3, Closer> handle_;
  std::function<void()> guard_;
};

// A write transaction: rolled back by its end unless Commit came first. It ends a read transaction that is open.
class Transaction {
 public:
  explicit Transaction(Database& database);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Database& database_;
  bool open_ = true;
};

}  // namespace tallybook::engine
