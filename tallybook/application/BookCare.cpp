#include "tallybook/application/BookCare.h"

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/Platform.h"
#include "platform/posix/SystemError.h"
#include "tallybook/application/FileKind.h"
#include "tallybook/application/OutputRules.h"
#include "tallybook/application/WholeFile.h"
#include "tallybook/engine/BookCheck.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookFile.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/files/FileModes.h"
#include "tallybook/files/FileNames.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "BookCare";

[[noreturn]] void Refuse(const Text& path, const Text& reason) {
  throw Failure(FailureNumber::kPathOrAccess, path + ": " + reason, kSource);
}

// Nobody but its owner may read it who may not read the other.
void MakeNoMoreReadable(const Text& path, const Text& than) {
  const std::error_code error = files::MakeNoMoreReadable(path, than);
  if (!error) return;
  throw Failure(FailureNumberOf(error.value()),
                than + ": what is made of it cannot be kept from others: " + WordsOfError(error.value()), kSource);
}

void CheckBackupPlace(const Text& book, const Text& file, bool replace) {
  OutputRules rules;
  rules.ProtectBook(book);
  if (LookAt(file).kind == FileKind::kRegular && engine::LooksLikeBackup(file)) {
    if (!replace) {
      const engine::BackupContents there = engine::ReadBackup(file);
      Refuse(file, "the backup of " + there.book_name + " from " + DateTimeText(there.time) + " is there already");
    }
    return;
  }
  rules.Check(file);
  if (LookAt(file).kind == FileKind::kRegular) Refuse(file, "a file that is no backup is there already");
}

// A backup that is whole, or not there.
engine::BackupContents MakeBackup(const Text& book, WholeFile& output, engine::WorkWatch& watch) {
  constexpr Single kWritten = 0.4F;
  engine::WorkPart writing(watch, 0, kWritten);
  engine::WorkPart checking(watch, kWritten, 1);
  MakeNoMoreReadable(output.Begin(), book);
  engine::BackupContents contents = engine::WriteBackup(book, output.WorkPath(), output.Path(), writing);
  engine::RequireSound(output.WorkPath(), book, checking);
  return contents;
}

// --- Restoring -------------------------------------------------------------------------------------------------------

void CheckBookPlace(const Text& book, const Text& place, bool replace) {
  const FileLook look = LookAt(place);
  std::error_code ignored;  // what cannot be asked is no link
  if (look.kind == FileKind::kMissing && fs::is_symlink(fs::symlink_status(engine::NativeBookPath(book), ignored))) {
    Refuse(book, "this is a link that leads nowhere");
  }
  if (look.kind != FileKind::kMissing && look.kind != FileKind::kRegular) {
    Refuse(place, "this is " + WordsFor(look.kind) + ", and a book needs a file");
  }
  if (const auto troubles = engine::NameTroubles(place); !troubles.empty()) Refuse(place, troubles.front());
  if (look.kind == FileKind::kRegular) {
    if (!engine::LooksLikeBook(place)) Refuse(place, "a file that is no book is there");
    if (!replace) Refuse(place, "a book is there already");
    return;
  }
  engine::RefuseStrayCompanions(place);
}

// The book that is to be replaced: kept from all others, and beside its place. What was kept is taken away again unless
// the book has been replaced.
class PresentBook {
 public:
  PresentBook(const Text& place, double wait_seconds, engine::WorkWatch& watch)
      : place_(place), hold_(place, engine::BookHold::Purpose::kChange) {
    hold_.TakeRightToWrite(wait_seconds, watch);
    (void)hold_.CanShareLog();
    hold_.TakeOlderRight();
  }
  ~PresentBook() {
    if (replaced_) return;
    std::error_code ignored;  // what is left is whole, and in nobody's way
    for (const Text& path : made_) fs::remove(path, ignored);
  }
  PresentBook(const PresentBook&) = delete;
  PresentBook& operator=(const PresentBook&) = delete;

  // Gives where it is kept.
  Text Keep(engine::WorkWatch& watch) {
    Text kept = FreeName();
    try {
      KeepAsBackup(kept, watch);
    } catch (const Failure& failure) {
      if (failure.Number() != FailureNumber::kDeviceError && failure.Number() != FailureNumber::kPathOrAccess) throw;
      KeepAsItIs(kept);
    }
    files::StoreFolder(engine::BookFolder(kept));
    return kept;
  }
  void KeepOthersAway() {
    hold_.TakeAlone();
    if (is_damaged_ || hold_.LogIsEmpty()) return;
    throw Failure(FailureNumber::kPermissionDenied, place_ + ": a writer has left a log beside the book; try again",
                  kSource);
  }
  void SetReplaced() { replaced_ = true; }

 private:
  [[nodiscard]] Text FreeName() const {
    for (int number = 1;; ++number) {
      Text name = place_ + "-replaced" + (number == 1 ? "" : "-" + std::to_string(number));
      if (LookAt(name).kind == FileKind::kMissing) return name;
    }
  }

  void KeepAsBackup(const Text& kept, engine::WorkWatch& watch) {
    WholeFile output(*ThePlatform().files, kept);
    MakeBackup(place_, output, watch);
    MakeAs(output.WorkPath());
    output.Keep();
    made_.push_back(kept);
  }

  // Byte for byte, with its log and its companions: a damaged book that can be salvaged.
  void KeepAsItIs(const Text& kept) {
    is_damaged_ = true;
    Copy(place_, kept);
    if (LookAt(place_ + "-wal").kind == FileKind::kRegular) Copy(place_ + "-wal", kept + "-wal");
    const Text folder = engine::BookFolder(place_);
    for (const engine::Companion& companion : engine::ReadCompanions(folder, engine::BookName(place_))) {
      made_.push_back(engine::CompanionPath(folder, companion.stem, engine::BookName(kept)));
    }
    engine::PutCompanions(kept, engine::ReadCompanions(folder, engine::BookName(place_)));
  }

  void Copy(const Text& from, const Text& to) {
    made_.push_back(to);
    std::error_code error;
    fs::copy_file(from, to, error);
    if (!error) return;
    throw Failure(error == std::errc::no_space_on_device ? FailureNumber::kDiskFull : FailureNumber::kDeviceError,
                  place_ + ": the book that is there cannot be kept as " + to + ": " + error.message(), kSource);
  }

  // With mode and owner of the book.
  void MakeAs(const Text& path) const {
    struct stat book {};
    if (::stat(place_.c_str(), &book) != 0) return;
    if (::geteuid() == 0) (void)!::chown(path.c_str(), book.st_uid, book.st_gid);
    ::chmod(path.c_str(), book.st_mode & 0777U);
  }

  Text place_;
  engine::BookHold hold_;
  std::vector<Text> made_;
  bool is_damaged_ = false;
  bool replaced_ = false;
};

// Whoever opens the restored book first puts its companion files in place. Gives why that could not be done now.
Text PutCompanionsInPlace(const Text& place) {
  const bool read_only = false;
  constexpr double kWaitSeconds = 2;
  try {
    const engine::BookFile finished(place, read_only, kWaitSeconds);
  } catch (const Failure& failure) {
    if (!engine::IsInUse(failure)) return failure.Description();
  }
  return "";
}

}  // namespace

BackupDone BackUpBook(const Text& book, const Text& file, bool replace, engine::WorkWatch& watch) {
  const Text place = engine::ResolvedBookPath(book);
  engine::CheckIsBookFile(place);
  CheckBackupPlace(place, file, replace);
  WholeFile output(*ThePlatform().files, file);
  BackupDone done{MakeBackup(place, output, watch)};
  done.size = static_cast<std::int64_t>(fs::file_size(output.WorkPath()));
  output.Keep();
  return done;
}

// From the moment that the new book takes its name nobody can cancel any more.
RestoreDone RestoreBook(const Text& file, const Text& book, const RestoreOptions& options, engine::WorkWatch& watch) {
  constexpr Single kUnpacked = 0.2F;
  constexpr Single kChecked = 0.5F;
  NeedRegularFile(file);
  if (LookAt(file).kind == FileKind::kMissing) {
    throw Failure(FailureNumber::kFileNotFound, file + ": there is no such file", kSource);
  }
  RestoreDone done{engine::ReadBackup(file), engine::ResolvedBookPath(book), "", ""};
  const Text& place = done.book;
  CheckBookPlace(book, place, options.replace);
  std::optional<PresentBook> present;
  if (LookAt(place).kind == FileKind::kRegular) present.emplace(place, options.wait_seconds, watch);

  WholeFile output(*ThePlatform().files, place);
  output.Begin();
  if (!present) MakeNoMoreReadable(output.WorkPath(), file);
  engine::WorkPart unpacking(watch, 0, kUnpacked);
  engine::UnpackBackup(file, output.WorkPath(), place, unpacking);
  engine::WorkPart checking(watch, kUnpacked, kChecked);
  engine::RequireSound(output.WorkPath(), file, checking);
  if (present) {
    engine::WorkPart keeping(watch, kChecked, 1);
    done.kept_as = present->Keep(keeping);
    present->KeepOthersAway();
  }
  output.Keep();
  if (present) present->SetReplaced();
  present.reset();
  watch.Done(1);
  done.companions_wait = PutCompanionsInPlace(place);
  return done;
}

}  // namespace tallybook::application
