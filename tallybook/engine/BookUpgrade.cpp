#include "tallybook/engine/BookUpgrade.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "platform/posix/SystemError.h"
#include "tallybook/engine/AccountSums.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/ChunkCodec.h"
#include "tallybook/engine/ChunkKey.h"
#include "tallybook/engine/DescriptionTables.h"
#include "tallybook/engine/JournalTables.h"
#include "tallybook/engine/SumTable.h"
#include "tallybook/files/FileNames.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

// Format 2: checksums, sums, and the journal by commands.

// Reads bytes as the first format has them, so that no damage is given a checksum.
void CheckFigures(const Database& database, const ChunkShape& shape, std::int64_t key,
                  std::span<const std::byte> bytes) {
  ChunkRows rows;
  try {
    DecodeChunk(shape, bytes, rows);
  } catch (const Failure& failure) {
    throw Failure(failure.Number(),
                  database.Path() + ": " + failure.Description() + " (account number " +
                      std::to_string(AccountOf(key)) + ", chunk " + std::to_string(ChunkNumberOf(key)) + ")",
                  kSource);
  }
}

// Rows of a table whose figures get a checksum: their keys by row.
struct KeyedRow {
  std::int64_t row = 0;
  std::int64_t key = 0;
};

std::vector<KeyedRow> KeyedRows(Database& database, const char* sql) {
  DbStatement select(database, sql);
  std::vector<KeyedRow> rows;
  while (select.Step()) rows.push_back({select.Int(0), select.Int(1)});
  return rows;
}

// Gives each row's figures their checksum. `keep` is told of it.
template <typename Keep>
void AddChecksums(Database& database, const ChunkShape& shape, const std::vector<KeyedRow>& rows, const Text& table,
                  Keep keep) {
  DbStatement read(database, ("SELECT figures FROM " + table + " WHERE id = ?1").c_str());
  DbStatement write(database, ("UPDATE " + table + " SET figures = ?2 WHERE id = ?1").c_str());
  std::vector<std::byte> bytes;
  for (const KeyedRow& row : rows) {
    const bool found = read.Bind(1, row.row).Step();
    if (found) bytes.assign(read.Bytes(0).begin(), read.Bytes(0).end());
    read.Reset();
    if (!found) {
      throw Failure(
          FailureNumber::kDeviceError,
          database.Path() + ": the book is damaged: row " + std::to_string(row.row) + " of " + table + " is missing",
          kSource);
    }
    CheckFigures(database, shape, row.key, bytes);
    keep(row.key, AppendChecksum(bytes, row.key));
    write.Bind(1, row.row).Bind(2, std::span<const std::byte>(bytes)).Run();
  }
}

void ConvertMarks(Database& database, JournalTables& tables, JournalRow& row) {
  DbStatement select(database, "SELECT key, rows, image FROM old_journal_chunk WHERE entry = ?1 ORDER BY key");
  select.Bind(1, std::int64_t{row.entry.id});
  while (select.Step()) {
    row.marks_sum += tables.InsertMark(row.entry.id, select.Int(0), select.Bytes(1), select.Int(2));
    ++row.marks;
  }
}

// Which entries one command ran was not written down, so each is one of its own. What was undone had its images taken
// away.
void ConvertJournal(Database& database) {
  JournalTables tables(database);
  const Long first_format = 1;
  std::vector<JournalRow> rows = tables.Rows(first_format);
  database.Execute("ALTER TABLE journal RENAME TO old_journal; ALTER TABLE journal_chunk RENAME TO old_journal_chunk");
  CreateJournalTables(database);
  for (JournalRow& row : rows) {
    JournalEntry& entry = row.entry;
    const Long id = entry.id;
    entry.command = tables.AddCommand(entry.time, entry.what_ran, "");
    entry.id = 0;
    tables.Save(row);
    if (entry.id != id) {
      throw Failure(
          FailureNumber::kDeviceError,
          database.Path() + ": the book is damaged: journal entry " + std::to_string(entry.id) + " is missing",
          kSource);
    }
    ConvertMarks(database, tables, row);
    tables.Save(row);
  }
  database.Execute("DROP TABLE old_journal; DROP TABLE old_journal_chunk");
}

void ToFormat2(Database& database) {
  const Long first_format = 1;
  const StoredDescription stored = LoadDescription(database, first_format);
  const ChunkShape shape = ShapeOf(stored);
  database.Execute("CREATE TABLE account_sum (block INTEGER PRIMARY KEY, sums BLOB NOT NULL)");
  AccountSums sums;
  AddChecksums(database, shape, KeyedRows(database, "SELECT id, key FROM chunk ORDER BY key"), "chunk",
               [&](std::int64_t key, Checksum checksum) { sums.Add(key, checksum); });
  SumTable table(database);
  sums.GiveChanged([&](std::int64_t block, std::span<const std::byte> bytes) { table.Put(block, bytes); });
  AddChecksums(database, shape,
               KeyedRows(database, "SELECT image, key FROM journal_chunk WHERE image IS NOT NULL ORDER BY image"),
               "image", [](std::int64_t, Checksum) {});
  ConvertJournal(database);
  SealDescription(database, stored, 2);
}

// Format 3: lists that change. Chunks and images stay as they are.
void ToFormat3(Database& database) {
  const StoredDescription stored = LoadDescription(database, 2);
  database.Execute(
      "ALTER TABLE field ADD COLUMN slot INTEGER NOT NULL DEFAULT 0;"
      "CREATE TABLE retired (list INTEGER NOT NULL, number INTEGER NOT NULL, PRIMARY KEY (list, number)) WITHOUT "
      "ROWID");
  DbStatement put(database, "UPDATE field SET slot = ?2 WHERE number = ?1");
  for (std::size_t index = 0; index < stored.slot_of_field.size(); ++index) {
    put.Bind(1, std::int64_t{stored.description.fields[index].number});
    put.Bind(2, static_cast<std::int64_t>(stored.slot_of_field[index])).Run();
  }
  SealDescription(database, stored, 3);
}

// Format 4: entries count their notes. The journal of a book of the first format has been made anew above, with all
// that this one has.
void ToFormat4(Database& database) {
  const StoredDescription stored = LoadDescription(database, 3);
  if (database.Number("SELECT count(*) FROM pragma_table_info('journal') WHERE name = 'notes'") == 0) {
    JournalTables tables(database);
    std::vector<JournalRow> rows = tables.Rows(3);
    database.Execute(
        "ALTER TABLE journal ADD COLUMN notes INTEGER NOT NULL DEFAULT 0;"
        "ALTER TABLE journal ADD COLUMN notes_sum INTEGER NOT NULL DEFAULT 0");
    for (JournalRow& row : rows) {
      tables.CountTexts(row);
      tables.Save(row);
    }
  }
  SealDescription(database, stored, 4);
}

// The step from each format to the next; the first is from format 1.
using UpgradeStep = void (*)(Database&);
constexpr std::array<UpgradeStep, kBookFormat - 1> kSteps = {ToFormat2, ToFormat3, ToFormat4};

[[noreturn]] void FailBackup(const Text& path, const Text& why) {
  throw Failure(FailureNumber::kPathOrAccess, path + ": the backup of the book cannot be made: " + why, kSource);
}

// A file of which nothing is left unless it was kept.
class BackupFile {
 public:
  explicit BackupFile(const Text& book) : work_path_(book + "-backup-new") { Remove(); }
  ~BackupFile() {
    Remove();
    if (!path_.empty() && !kept_) unlink(path_.c_str());
  }
  BackupFile(const BackupFile&) = delete;
  BackupFile& operator=(const BackupFile&) = delete;

  [[nodiscard]] const Text& WorkPath() const { return work_path_; }
  [[nodiscard]] const Text& Path() const { return path_; }
  void Keep() { kept_ = true; }

  // Gives the file a name that no other has, and from which nothing is taken: at no moment has it two, which a book may
  // not have.
  void MoveTo(const Text& name) {
    Sync(work_path_);
    for (int number = 1; path_.empty(); ++number) {
      const Text path = number == 1 ? name : name + "-" + std::to_string(number);
      const std::error_code error = files::RenameToFreeName(work_path_, path);
      if (!error) path_ = path;
      if (error && error != std::errc::file_exists) FailBackup(path, error.message());
    }
    Sync(BookFolder(path_));
  }

 private:
  void Remove() const {
    for (const char* ending : {"", "-journal", "-wal", "-shm"}) unlink((work_path_ + ending).c_str());
  }
  static void Sync(const Text& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool synced = file >= 0 && fsync(file) == 0;
    const int error = errno;
    if (file >= 0) close(file);
    if (!synced) FailBackup(path, WordsOfError(error));
  }

  Text work_path_;
  Text path_;
  bool kept_ = false;
};

// An empty file that only those may read who may read the book.
void MakeAsReadable(const Text& book, const Text& path) {
  struct stat about {};
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  const bool made = file >= 0 && stat(book.c_str(), &about) == 0 && fchmod(file, about.st_mode & 07777) == 0;
  const int error = errno;
  // Another user's book is changed by an administrator at most, who may give files away; for others it is theirs
  // already.
  if (made && fchown(file, about.st_uid, about.st_gid) != 0) errno = 0;
  if (file >= 0) close(file);
  if (!made) FailBackup(path, WordsOfError(error));
}

// The pages as the book's connection sees them, with what its log holds.
void CopyPages(Database& database, const Text& path) {
  MakeAsReadable(database.Path(), path);
  Database copy(path, Database::Mode::kReadWrite);
  database.CopyPagesTo(copy);
}

}  // namespace

Text UpgradeBook(Database& database, Long format) {
  database.EndReading();
  BackupFile backup(database.Path());
  CopyPages(database, backup.WorkPath());
  backup.MoveTo(database.Path() + "-v" + std::to_string(format));
  Transaction transaction(database);
  for (Long from = format; from < kBookFormat; ++from) kSteps[static_cast<std::size_t>(from - 1)](database);
  database.Execute(("PRAGMA user_version = " + std::to_string(kBookFormat)).c_str());
  transaction.Commit();
  backup.Keep();
  return backup.Path();
}

}  // namespace tallybook::engine
