#include "tallybook/engine/BookBackup.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "platform/Clock.h"
#include "platform/Platform.h"
#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/FileState.h"
#include "tallybook/engine/SqliteStorage.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
constexpr int kTries = 30;
constexpr std::chrono::milliseconds kBetweenTries{100};

// The name that a book's companions bear, also of a book that has not taken its own yet.
Text CompanionName(const Text& path, const BookStorage& storage) {
  constexpr Long kFirstFormatOfWholeNames = 2;
  const bool own = storage.Format() >= kFirstFormatOfWholeNames || HasTakenItsName(path) || !HasOlderCompanions(path);
  return own ? BookName(path) : OlderBookName(path);
}

using Companions = std::vector<std::pair<Text, FileState>>;

Companions StatesOf(const Text& folder, const Text& name) {
  Companions states;
  for (const Text& path : CompanionPaths(folder, name)) states.emplace_back(path, StateAt(path));
  return states;
}

// A book that is open to look, which shows one moment, and the companion files that stood there at that moment: those
// that nobody has changed from before the book was opened until they were read.
struct Moment {
  std::unique_ptr<SqliteStorage> storage;
  Text name;
  std::vector<Companion> companions;
};

std::optional<Moment> TryMoment(const Text& path) {
  const Text folder = BookFolder(path);
  const Companions own = StatesOf(folder, BookName(path));
  const Companions older = StatesOf(folder, OlderBookName(path));
  const bool read_only = true;
  Moment moment;
  moment.storage = std::make_unique<SqliteStorage>(BookFile(path, read_only));
  moment.name = CompanionName(path, *moment.storage);
  moment.companions = ReadCompanions(folder, moment.name);
  const Companions& before = moment.name == BookName(path) ? own : older;
  const bool settled = std::ranges::all_of(before, [](const auto& each) { return IsSettled(each.second); });
  if (settled && StatesOf(folder, moment.name) == before) return moment;
  return std::nullopt;
}

Moment FindMoment(const Text& path, WorkWatch& watch) {
  for (int tries = 0; tries < kTries; ++tries) {
    watch.EndIfCancelled();
    if (auto moment = TryMoment(path)) return std::move(*moment);
    std::this_thread::sleep_for(kBetweenTries);
  }
  throw Failure(FailureNumber::kPermissionDenied,
                path + ": its companion files are being changed all the while; try again when that is done", kSource);
}

// Those that are sound have been put in place when the book was opened.
void RefuseCompanionsWithin(Database& copy, const Text& book) {
  if (!HasBackupTables(copy)) return;
  throw Failure(FailureNumber::kDeviceError,
                book +
                    ": the book is damaged: the companion files that were restored with it do not agree with their "
                    "checksum",
                kSource);
}

Long FormatOfBackup(Database& database) {
  const bool also_backups = true;
  if (!LooksLikeBackup(database.Path())) {
    throw Failure(FailureNumber::kPathOrAccess, database.Path() + ": this file is not the backup of a book", kSource);
  }
  return FormatOf(database, also_backups);
}

}  // namespace

BackupContents WriteBackup(const Text& book, const Text& to, const Text& shown, WorkWatch& watch) {
  Moment moment = FindMoment(ResolvedBookPath(book), watch);
  const Long format = moment.storage->Format();
  moment.storage->CopyTo(to, shown, watch);
  moment.storage.reset();
  const BackupHead head{moment.name, Now()};
  Database copy = OpenWorkFile(to, shown);
  RefuseCompanionsWithin(copy, book);
  Transaction transaction(copy);
  SaveBackupTables(copy, head, moment.companions);
  SetApplicationId(copy, kBackupApplicationId);
  transaction.Commit();
  return {head.book_name, head.time, format, moment.companions.size()};
}

BackupContents ReadBackup(const Text& path) {
  Database database(path, Database::Mode::kUnchanging);
  const Long format = FormatOfBackup(database);
  const BackupHead head = LoadBackupHead(database);
  return {head.book_name, head.time, format, LoadCompanions(database).size()};
}

void UnpackBackup(const Text& backup, const Text& to, const Text& shown, WorkWatch& watch) {
  {
    Database from(backup, Database::Mode::kUnchanging);
    static_cast<void>(FormatOfBackup(from));
    CopyToFile(from, to, shown, watch);
  }
  Database copy = OpenWorkFile(to, shown);
  Transaction transaction(copy);
  SetApplicationId(copy, kBookApplicationId);
  transaction.Commit();
}

bool LooksLikeBackup(const Text& path) {
  return ApplicationIdAt(path) == kBackupApplicationId;
}

}  // namespace tallybook::engine
