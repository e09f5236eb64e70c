#include "tallybook/engine/DamagedBook.h"

#include <cstdint>

#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/DatabaseHead.h"
#include "tallybook/engine/DescriptionTables.h"
#include "tallybook/engine/FileState.h"
#include "tallybook/engine/LogCheck.h"

namespace tallybook::engine {

DamagedBook::DamagedBook(const Text& path)
    : hold_(path, BookHold::Purpose::kLeaveAlone),
      copy_(hold_),
      log_trouble_(engine::LogTrouble(copy_.Path() + "-wal")),
      database_(OpenCopy()) {}

// The schema is taken as it reads, which also lets a file be read that has been cut.
Database DamagedBook::OpenCopy() const {
  const bool has_log = StateAt(copy_.Path() + "-wal").size > 0;
  MendDatabaseHead(copy_.Path(), Path(), has_log);
  Database database(Path(), copy_.Path(), Database::Mode::kReadWrite);
  database.Execute("PRAGMA writable_schema = ON; PRAGMA cell_size_check = ON; PRAGMA query_only = ON");
  return database;
}

Text DamagedBook::LoadDescription(bool as_it_reads) {
  const std::int64_t told = database_.Number("PRAGMA user_version");
  Text trouble;
  for (const Long format : {told == 2 ? 2 : 3, told == 2 ? 3 : 2, 1}) {
    if (format == 1 && told != 1) break;
    try {
      stored_ = engine::LoadDescription(database_, format);
      format_ = format;
      return "";
    } catch (const Failure& failure) {
      if (trouble.empty() || format == told) trouble = failure.Description();
    }
  }
  if (!as_it_reads) throw Failure(FailureNumber::kDeviceError, trouble, "Tallybook.Book");
  format_ = told == 2 ? 2 : kBookFormat;
  stored_ = engine::LoadDescription(database_, format_, Trust::kAsItReads);
  return trouble;
}

}  // namespace tallybook::engine
