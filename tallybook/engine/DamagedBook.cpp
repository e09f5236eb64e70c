#include "tallybook/engine/DamagedBook.h"

#include <cstdint>
#include <sqlite3.h>

#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/DatabaseHead.h"
#include "tallybook/engine/DescriptionTables.h"
#include "tallybook/engine/FileState.h"
#include "tallybook/engine/LogCheck.h"

namespace tallybook::engine {

namespace {

// Puts what a log beside the file holds into it, as far as that can be read, so that no name is needed from then on.
// The version of the schema is told by the first page alone: reading it opens the log, and what is damaged shows later.
void TakeInLog(Database& database) {
  sqlite3_exec(database.Handle(), "PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = OFF; PRAGMA schema_version",
               nullptr, nullptr, nullptr);
  const int result = sqlite3_wal_checkpoint_v2(database.Handle(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
  if ((result & 0xFF) == SQLITE_FULL) database.Fail(result);
}

}  // namespace

DamagedBook::DamagedBook(const Text& path, WorkWatch& watch)
    : hold_(path, BookHold::Purpose::kLeaveAlone),
      copy_(hold_, watch),
      log_trouble_(engine::LogTrouble(copy_.Path() + "-wal")),
      database_(OpenCopy()) {}

// The schema is taken as it reads, which also lets a file be read that has been cut.
Database DamagedBook::OpenCopy() {
  const bool has_log = StateAt(copy_.Path() + "-wal").size > 0;
  MendDatabaseHead(copy_.Path(), Path(), has_log);
  Database database(Path(), copy_.Path(), Database::Mode::kReadWrite);
  TakeInLog(database);
  copy_.Remove();
  database.Execute("PRAGMA writable_schema = ON; PRAGMA cell_size_check = ON; PRAGMA query_only = ON");
  return database;
}

// The first format has no checksum that would tell it from others, so it is taken at its word.
std::vector<Long> DamagedBook::FormatsToTry(std::int64_t told) {
  std::vector<Long> formats;
  if (told > 1 && told <= kBookFormat) formats.push_back(static_cast<Long>(told));
  for (Long format = kBookFormat; format > 1; --format) {
    if (format != told) formats.push_back(format);
  }
  if (told == 1) formats.push_back(1);
  return formats;
}

Text DamagedBook::LoadDescription(bool as_it_reads) {
  const std::int64_t told = database_.Number("PRAGMA user_version");
  Text trouble;
  for (const Long format : FormatsToTry(told)) {
    try {
      stored_ = engine::LoadDescription(database_, format);
      format_ = format;
      return "";
    } catch (const Failure& failure) {
      if (trouble.empty() || format == told) trouble = failure.Description();
    }
  }
  if (!as_it_reads) throw Failure(FailureNumber::kDeviceError, trouble, "Tallybook.Book");
  format_ = FormatsToTry(told).front();
  stored_ = engine::LoadDescription(database_, format_, Trust::kAsItReads);
  return trouble;
}

}  // namespace tallybook::engine
