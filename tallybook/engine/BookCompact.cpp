#include "tallybook/engine/BookCompact.h"

#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/FileState.h"
#include "tallybook/engine/SqliteStorage.h"

namespace tallybook::engine {

namespace {

std::int64_t SizeWithLog(const Text& path) {
  return StateAt(path).size + StateAt(path + "-wal").size;
}

}  // namespace

CompactResult CompactBook(const Text& path, double wait_seconds) {
  const Text place = ResolvedBookPath(path);
  CompactResult result;
  {
    const bool read_only = false;
    SqliteStorage storage(BookFile(place, read_only, wait_seconds));
    result.before = SizeWithLog(place);
    RequireSound(place);
    storage.Compact();
  }
  result.after = SizeWithLog(place);
  return result;
}

}  // namespace tallybook::engine
