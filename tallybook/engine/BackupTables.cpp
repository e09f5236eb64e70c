#include "tallybook/engine/BackupTables.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <span>
#include <unistd.h>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemError.h"
#include "tallybook/engine/Checksums.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

constexpr const char* kSchema = R"sql(
CREATE TABLE backup (book_name TEXT NOT NULL, time REAL NOT NULL, companions INTEGER NOT NULL, checksum INTEGER NOT NULL);
CREATE TABLE companion (stem TEXT PRIMARY KEY, content BLOB NOT NULL);
)sql";

// Where a database's head tells how it is written: 2 with a log, 1 without (SQLite file format, "File format version
// numbers").
constexpr off_t kWriteVersionOffset = 18;

Checksum TablesChecksum(const BackupHead& head, const std::vector<Companion>& companions) {
  Digest digest;
  digest.Add(head.book_name).Add(head.time).Add(static_cast<std::int64_t>(companions.size()));
  for (const Companion& companion : companions) digest.Add(companion.stem).Add(companion.content);
  return digest.Value();
}

// The copy is opened as it lies, without a log that would have to be made beside it.
void MarkAsWithoutLog(const Text& path, const Text& shown) {
  const std::array<unsigned char, 2> versions{1, 1};
  const Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  const bool written = file.IsOpen() && ::pwrite(file.Number(), versions.data(), versions.size(),
                                                 kWriteVersionOffset) == ssize_t{versions.size()};
  if (!written) throw Failure(FailureNumberOf(errno), shown + ": " + WordsOfError(errno), kSource);
}

struct Tables {
  BackupHead head;
  std::vector<Companion> companions;
};

Tables LoadTables(Database& database) {
  Tables tables;
  DbStatement companion(database, "SELECT stem, content FROM companion ORDER BY stem");
  while (companion.Step()) tables.companions.push_back({companion.String(0), companion.String(1)});
  DbStatement head(database, "SELECT book_name, time, companions, checksum FROM backup");
  if (head.Step()) {
    tables.head = {head.String(0), head.Real(1)};
    if (FromColumn(head.Int(3)) == TablesChecksum(tables.head, tables.companions)) return tables;
  }
  throw Failure(FailureNumber::kDeviceError,
                database.Path() + ": the backup is damaged: its companion files do not agree with their checksum",
                kSource);
}

}  // namespace

void CopyToFile(Database& database, const Text& path, const Text& shown, WorkWatch& watch) {
  {
    Database copy = OpenWorkFile(path, shown);
    database.CopyPagesTo(copy, watch);
  }
  MarkAsWithoutLog(path, shown);
}

Database OpenWorkFile(const Text& path, const Text& shown) {
  Database database(shown, path, Database::Mode::kReadWrite);
  database.Execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF");
  return database;
}

void SaveBackupTables(Database& database, const BackupHead& head, const std::vector<Companion>& companions) {
  database.Execute(kSchema);
  std::vector<Companion> in_order = companions;
  std::sort(in_order.begin(), in_order.end(), [](const auto& one, const auto& other) { return one.stem < other.stem; });
  DbStatement put(database, "INSERT INTO companion (stem, content) VALUES (?1, ?2)");
  for (const Companion& companion : in_order) {
    put.Bind(1, companion.stem).Bind(2, std::as_bytes(std::span(companion.content))).Run();
  }
  DbStatement put_head(database, "INSERT INTO backup (book_name, time, companions, checksum) VALUES (?1, ?2, ?3, ?4)");
  put_head.Bind(1, head.book_name).Bind(2, head.time).Bind(3, static_cast<std::int64_t>(in_order.size()));
  put_head.Bind(4, ToColumn(TablesChecksum(head, in_order))).Run();
}

void DropBackupTables(Database& database) {
  database.Execute("DROP TABLE companion; DROP TABLE backup");
}

bool HasBackupTables(Database& database) {
  return database.Number("SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'companion'") != 0;
}

BackupHead LoadBackupHead(Database& database) {
  return LoadTables(database).head;
}

std::vector<Companion> LoadCompanions(Database& database) {
  return LoadTables(database).companions;
}

}  // namespace tallybook::engine
