#include "tallybook/engine/BookFile.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "tallybook/engine/BackupTables.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookUpgrade.h"
#include "tallybook/engine/DescriptionTables.h"
#include "tallybook/engine/PrivateCopy.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";

}  // namespace

BookFile BookFile::Create(const Text& path, const BookDescription& description) {
  BookDescription without_values = description;
  without_values.values.clear();
  return Create(path, WithFirstSlots(std::move(without_values), ChooseRowsOfChunk(description)));
}

BookFile BookFile::Create(const Text& path, const StoredDescription& stored) {
  return {path, std::make_shared<const StoredDescription>(stored)};
}

BookFile::BookFile(const Text& path, std::shared_ptr<const StoredDescription> stored)
    : path_(path), read_only_(false), stored_(std::move(stored)) {
  hold_ = std::make_unique<BookHold>(path, BookHold::Purpose::kChange);
  hold_->TakeRightToWrite(0);
  database_ = std::make_unique<Database>(path, Database::Mode::kReadWrite);
  Database& database = *database_;
  SetPageSize(database);
  database.Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  Transaction transaction(database);
  CreateTables(database);
  SaveDescription(database, *stored_, kBookFormat);
  transaction.Commit();
}

BookFile::BookFile(const Text& path, bool read_only, double wait_seconds, WorkWatch& watch)
    : path_(path), read_only_(read_only) {
  if (read_only_) {
    OpenToLook();
    LetRestoringFinish();
    // One long read transaction: whatever a writer commits meanwhile, this book stays one consistent state.
    database_->BeginReading();
  } else {
    OpenToChange(wait_seconds, watch);
    // A log of up to 64 MiB is left to grow before it is copied back, so that a large commit is not written twice at
    // once.
    // SQLite keeps 16 MiB of pages besides, so that the index pages of a large commit are written once.
    database_->Execute(
        "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA wal_autocheckpoint = 4096; "
        "PRAGMA cache_size = -16384");
  }
  format_ = FormatOf(*database_);
  LoadDescription();
}

BookFile BookFile::OpenToCheck(const Text& path) {
  return BookFile(path);
}

BookFile::BookFile(const Text& path) : path_(path), read_only_(true), also_backups_(true) {
  OpenToLook();
  database_->BeginReading();
  format_ = FormatOf(*database_, also_backups_);
  try {
    LoadDescription();
  } catch (const Failure& failure) {
    description_trouble_ = failure.Description();
  }
}

void BookFile::LoadDescription() {
  stored_ = std::make_shared<StoredDescription>(engine::LoadDescription(*database_, format_));
}

bool BookFile::BringUpToDate() {
  if (format_ == kBookFormat) return false;
  const Text backup = UpgradeBook(*database_, format_);
  const Long before = format_;
  format_ = kBookFormat;
  if (notice_) {
    notice_(path_ + ": the book is brought from format " + std::to_string(before) + " to " +
            std::to_string(kBookFormat) + "; as it was it stands in " + backup);
  }
  return true;
}

// SQLite leaves a commit in the log to the system, and waits for the disk only where it puts the log into the file.
// Without a log that has been done.
void BookFile::Settle() const {
  const Descriptor log(::open((path_ + "-wal").c_str(), O_RDONLY | O_CLOEXEC));
  if (!log.IsOpen() && errno == ENOENT) return;
  if (log.IsOpen() && ::fdatasync(log.Number()) == 0) return;
  throw Failure(FailureNumber::kDeviceError,
                path_ + ": what was written may not be on the disk: " + std::system_category().message(errno), kSource);
}

void BookFile::SetNotice(Notice notice) {
  notice_ = std::move(notice);
  if (notice_ && !companions_trouble_.empty()) notice_(companions_trouble_);
}

// The log that this fills goes back into the file at once, so that the room is given back where nobody else reads.
void BookFile::Compact(WorkWatch& watch) {
  CheckInPlace();
  database_->EndReading();
  database_->SetWatch(watch);
  database_->Execute("VACUUM; PRAGMA wal_checkpoint(TRUNCATE)");
}

void BookFile::OpenToChange(double wait_seconds, WorkWatch& watch) {
  hold_ = std::make_unique<BookHold>(path_, BookHold::Purpose::kChange);
  hold_->TakeRightToWrite(wait_seconds, watch);
  (void)hold_->CanShareLog();  // clears away what would keep the book from being written; what stays, the opening tells
  database_ = std::make_unique<Database>(path_, Database::Mode::kReadWrite);
  CheckIsBook();
  CheckInPlace();
  hold_->TakeOlderRight();
  database_->SetGuard([hold = hold_.get()] { hold->CheckInPlace(); });
  FinishRestoring();
}

// Who may write the book and what stands beside it shares the log with writers, and puts a log that a killed writer
// left into the file at the end. Nobody else touches anything: without a log the file is read as it is, and given up
// when it changes; with one, both are read from a copy. What the file holds without its log is never shown.
void BookFile::OpenToLook() {
  hold_ = std::make_unique<BookHold>(path_, BookHold::Purpose::kLook);
  if (!hold_->CanShareLog() || !OpenShared()) {
    if (hold_->LogIsEmpty()) {
      OpenUnchanging();
    } else {
      OpenCopy();
    }
  }
  CheckIsBook();
}

// False where SQLite cannot make the log's index: a full disk, or rights that only show when they are used.
bool BookFile::OpenShared() {
  try {
    database_ = std::make_unique<Database>(path_, Database::Mode::kReadOnly);
  } catch (const Failure&) {
    return false;  // told by the opening that follows where it is the file's own fault
  }
  CheckInPlace();
  return true;
}

void BookFile::OpenUnchanging() {
  const FileState state = hold_->SettledState();
  database_ = std::make_unique<Database>(path_, Database::Mode::kUnchanging);
  database_->SetGuard([hold = hold_.get(), state, path = path_] {
    if (hold->State() == state) return;
    throw Failure(FailureNumber::kPermissionDenied,
                  path + ": a writer changed the book while it was read; read it again", kSource);
  });
  CheckInPlace();
}

void BookFile::OpenCopy() {
  const PrivateCopy copy(*hold_);  // gone at the end of this; what the connection has open stays
  database_ = std::make_unique<Database>(path_, copy.Path(), Database::Mode::kPrivate);
}

// What was found and locked, what the connection opened, and what stands at the path are one file.
void BookFile::CheckInPlace() const {
  hold_->CheckInPlace();
  if (!database_->HasMoved()) return;
  throw Failure(FailureNumber::kPermissionDenied, path_ + ": the book was replaced while it was opened; try again",
                kSource);
}

// A file that is no book gets no companions.
void BookFile::CheckIsBook() {
  static_cast<void>(FormatOf(*database_, also_backups_));
}

// A book that a restore has put in place holds its companion files until they are in place as well.
bool BookFile::LacksCompanions() {
  return !IsBackup(*database_) && HasBackupTables(*database_);
}

// Nothing where they are damaged.
std::optional<std::vector<Companion>> BookFile::CompanionsWithin() {
  try {
    return LoadCompanions(*database_);
  } catch (const Failure& failure) {
    if (failure.Number() != FailureNumber::kDeviceError) throw;
    companions_trouble_ = path_ +
                          ": the companion files that were restored with this book are damaged within it, and are not "
                          "put in place";
    return std::nullopt;
  }
}

void BookFile::FinishRestoring() {
  if (!LacksCompanions()) return;
  const auto companions = CompanionsWithin();
  if (!companions) return;
  PutCompanions(path_, *companions);
  Transaction transaction(*database_);
  DropBackupTables(*database_);
  transaction.Commit();
}

// What a killed restore has left to do, done by who may; a writer who has the book does it first of all.
void BookFile::LetRestoringFinish() {
  if (!LacksCompanions() || !CompanionsWithin()) return;
  database_.reset();
  hold_.reset();
  try {
    const bool read_only = false;
    constexpr double kWaitSeconds = 2;
    const BookFile finished(path_, read_only, kWaitSeconds);
  } catch (const Failure& failure) {
    throw Failure(failure.Number(),
                  path_ + ": this book is being restored, and its companion files are not in place yet (" +
                      failure.Description() + ")",
                  kSource);
  }
  OpenToLook();
}

}  // namespace tallybook::engine
