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

CompactResult CompactBook(const Text& path, double wait_seconds, WorkWatch& watch) {
  const Text place = ResolvedBookPath(path);
  CompactResult result;
  {
    const bool read_only = false;
    SqliteStorage storage(BookFile(place, read_only, wait_seconds, watch));
    result.before = SizeWithLog(place);
    constexpr Single kChecked = 0.4F;
    WorkPart check(watch, 0, kChecked);
    RequireSound(place, place, check);
    storage.Compact(watch);
    watch.Done(1);
  }
  result.after = SizeWithLog(place);
  return result;
}

}  // namespace tallybook::engine
