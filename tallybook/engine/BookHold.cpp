#include "tallybook/engine/BookHold.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "base/Failure.h"
#include "platform/Platform.h"
#include "platform/posix/FileLock.h"
#include "platform/posix/SystemError.h"
#include "tallybook/engine/BookFormat.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
constexpr const char* kOpenElsewhere = ": the book is open for writing elsewhere";
constexpr std::chrono::milliseconds kBetweenTries{100};
constexpr int kTries = 30;

// The byte of the right to write. It lies behind any book, and before the bytes that the files of the component are
// shared by. Every version must take the same: never move it.
constexpr FileBytes kRightByte{.start = std::numeric_limits<off_t>::max() - 256, .count = 1};
// The bytes of a database that SQLite locks (file format, "Locking bytes"): who reads or writes has one of them.
constexpr FileBytes kSqliteBytes{.start = 0x40000000, .count = 512};

// The head of a database (SQLite file format, "The Database Header"): its magic, and where its application's mark
// stands.
constexpr std::string_view kSqliteHead = "SQLite format 3";
constexpr std::size_t kMarkOffset = 68;

// --- The table of descriptors ----------------------------------------------------------------------------------------

struct KeptFile {
  int users = 0;
  bool right_taken = false;
  int to_read = -1;
  int to_write = -1;
  std::vector<int> spare;  // opened by accident, while the file at a path was being replaced
};

class KeptFiles {
 public:
  // Counts a user of the file at `path` and gives a descriptor of it, -1 with errno set where it cannot be opened.
  int Enter(const Text& path, bool to_write, FileState& file) {
    const std::lock_guard lock(mutex_);
    for (;;) {
      file = StateAt(path);
      if (!file.exists) return -1;
      KeptFile& kept = files_[KeyOf(file)];
      ++kept.users;
      int& known = to_write || kept.to_read < 0 ? kept.to_write : kept.to_read;
      if (known >= 0) return known;
      const int opened = Open(path, to_write);
      const int error = errno;
      if (opened >= 0 && StateBehind(opened).IsSameFile(file)) {
        (to_write ? kept.to_write : kept.to_read) = opened;
        return opened;
      }
      GiveBack(file);
      if (opened < 0) {
        errno = error;
        return -1;
      }
      KeepSpare(opened);
    }
  }

  void Leave(const FileState& file) {
    const std::lock_guard lock(mutex_);
    GiveBack(file);
  }

  [[nodiscard]] bool TakeRight(const FileState& file) {
    const std::lock_guard lock(mutex_);
    return !std::exchange(files_[KeyOf(file)].right_taken, true);
  }
  void GiveRightBack(const FileState& file) {
    const std::lock_guard lock(mutex_);
    files_[KeyOf(file)].right_taken = false;
  }

 private:
  using Key = std::pair<std::uint64_t, std::uint64_t>;
  static Key KeyOf(const FileState& file) { return {file.device, file.inode}; }

  static int Open(const Text& path, bool to_write) {
    return ::open(path.c_str(), (to_write ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  }

  void KeepSpare(int descriptor) {
    const FileState file = StateBehind(descriptor);
    KeptFile& kept = files_[KeyOf(file)];
    kept.spare.push_back(descriptor);
    ++kept.users;
    GiveBack(file);
  }

  void GiveBack(const FileState& file) {
    const auto found = files_.find(KeyOf(file));
    KeptFile& kept = found->second;
    if (--kept.users > 0) return;
    kept.spare.insert(kept.spare.end(), {kept.to_read, kept.to_write});
    for (const int descriptor : kept.spare) {
      if (descriptor >= 0) ::close(descriptor);
    }
    files_.erase(found);
  }

  std::mutex mutex_;
  std::map<Key, KeptFile> files_;
};

KeptFiles& TheKeptFiles() {
  static KeptFiles files;
  return files;
}

// --- Rights ----------------------------------------------------------------------------------------------------------

bool Allows(const Text& path, int rights) {
  return ::faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0;
}

// True where a file of SQLite beside the book is not there, or can be used as it is.
bool IsUsable(const Text& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return true;
  return S_ISREG(status.st_mode) && Allows(path, R_OK | W_OK);
}

}  // namespace

BookHold::BookHold(Text path, Purpose purpose) : path_(std::move(path)) {
  CheckIsBookFile(path_);
  may_write_ = purpose == Purpose::kChange || (purpose == Purpose::kLook && Allows(path_, R_OK | W_OK));
  descriptor_ = TheKeptFiles().Enter(path_, may_write_, opened_);
  // More than the rights of a file can be against writing it; a look goes on without.
  if (descriptor_ < 0 && may_write_ && purpose == Purpose::kLook) {
    may_write_ = false;
    descriptor_ = TheKeptFiles().Enter(path_, may_write_, opened_);
  }
  if (descriptor_ >= 0) return;
  throw Failure(FailureNumber::kPermissionDenied,
                path_ + ": the file may not be " + (may_write_ ? "written" : "read") + " (" + WordsOfError(errno) + ")",
                kSource);
}

BookHold::~BookHold() {
  if (may_write_) ClearLog(false);
  older_right_.reset();
  if (is_alone_) Unlock(descriptor_, kSqliteBytes);
  if (has_right_) {
    Unlock(descriptor_, kRightByte);
    TheKeptFiles().GiveRightBack(opened_);
  }
  TheKeptFiles().Leave(opened_);
}

bool BookHold::TryRight() const {
  if (!TheKeptFiles().TakeRight(opened_)) return false;
  if (TryLock(descriptor_, kRightByte)) return true;
  const int error = errno;
  TheKeptFiles().GiveRightBack(opened_);
  if (error == EAGAIN || error == EACCES) return false;
  throw Failure(
      FailureNumber::kFeatureUnavailable,
      path_ + ": its file system cannot lock files, which a book to be written needs (" + WordsOfError(error) + ")",
      kSource);
}

bool BookHold::WaitedInVain() const {
  const auto left = deadline_ - std::chrono::steady_clock::now();
  if (left <= left.zero()) return true;
  watch_->EndIfCancelled();
  std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(left, kBetweenTries));
  return false;
}

void BookHold::TakeRightToWrite(double wait_seconds, WorkWatch& watch) {
  watch_ = &watch;
  deadline_ = std::chrono::steady_clock::now() + std::chrono::duration_cast<std::chrono::steady_clock::duration>(
                                                     std::chrono::duration<double>(wait_seconds));
  while (!(has_right_ = TryRight())) {
    if (!WaitedInVain()) continue;
    throw Failure(FailureNumber::kPermissionDenied, path_ + kOpenElsewhere + HolderWords(), kSource);
  }
}

// The locks of files tell no process; those of SQLite do, and whoever writes a book has one.
Text BookHold::HolderWords() const {
  const auto holder = HolderOf(descriptor_, kSqliteBytes);
  if (!holder || !holder->exists || holder->process <= 0) return "";
  if (holder->process == ::getpid()) return " (in this program)";
  return " (process " + std::to_string(holder->process) + " has it open)";
}

void BookHold::MakeLockFile() const {
  struct stat book {};
  if (::fstat(descriptor_, &book) != 0) return;
  const mode_t mode = book.st_mode & 0666U;
  const int made = ::open(LockPath().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode);
  if (made < 0) return;  // it is there, or the opening tells why it cannot be
  ::fchmod(made, mode);
  if (::geteuid() == 0) (void)!::fchown(made, book.st_uid, book.st_gid);
  ::close(made);
}

std::unique_ptr<OpenFile> BookHold::OpenLockFile() const {
  // One that another user made can be locked by who may only read it.
  const bool only_read = !Allows(LockPath(), W_OK) && Allows(LockPath(), R_OK);
  return ThePlatform().files->Open(LockPath(), only_read ? Access::kRead : Access::kReadWrite, Sharing::kLockReadWrite,
                                   Creation::kMustExist);
}

void BookHold::TakeOlderRight() {
  MakeLockFile();
  struct stat status {};
  if (::lstat(LockPath().c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    throw Failure(FailureNumber::kPathOrAccess,
                  path_ + ": the book needs the name " + LockPath() + ", which is taken by something that is no file",
                  kSource);
  }
  for (;;) {
    try {
      older_right_ = OpenLockFile();
      return;
    } catch (const Failure& failure) {
      if (failure.Number() == FailureNumber::kPermissionDenied && !WaitedInVain()) continue;
      if (failure.Number() != FailureNumber::kPermissionDenied && failure.Number() != FailureNumber::kFileNotFound)
        throw;
      throw Failure(FailureNumber::kPermissionDenied,
                    path_ + kOpenElsewhere + ", or its folder may not be written (" + failure.Description() + ")",
                    kSource);
    }
  }
}

// Who has the lock on all of SQLite's bytes knows that nobody has the book open: a connection takes one of them before
// it looks for a log, and keeps it to its end.
void BookHold::TakeAlone() {
  while (!TryLock(descriptor_, kSqliteBytes)) {
    if (!WaitedInVain()) continue;
    throw Failure(FailureNumber::kPermissionDenied, path_ + ": the book is open elsewhere" + HolderWords(), kSource);
  }
  is_alone_ = true;
  CheckInPlace();
}

bool BookHold::CanShareLog() {
  if (!may_write_ || !Allows(BookFolder(path_), W_OK | X_OK)) return false;
  if (!IsUsable(IndexPath()) || !IsUsable(LogPath())) ClearLog(true);
  return IsUsable(IndexPath()) && IsUsable(LogPath());
}

// Takes the log's index away, and a log that holds nothing, where nobody has the book open (TakeAlone).
void BookHold::ClearLog(bool only_unusable) {
  struct stat status {};
  if (::lstat(IndexPath().c_str(), &status) != 0 && ::lstat(LogPath().c_str(), &status) != 0) return;
  if (!TryLock(descriptor_, kSqliteBytes)) return;
  // Beside a path that leads elsewhere by now stands what belongs to another file.
  if (StateAt(path_).IsSameFile(opened_)) {
    const bool empty = LogIsEmpty();
    if (empty && (!only_unusable || !IsUsable(LogPath()))) ::unlink(LogPath().c_str());
    if (only_unusable ? !IsUsable(IndexPath()) : empty) ::unlink(IndexPath().c_str());
  }
  Unlock(descriptor_, kSqliteBytes);
}

FileState BookHold::SettledState() const {
  for (int tries = 0; tries < kTries; ++tries) {
    const FileState state = State();
    if (IsSettled(state)) return state;
    std::this_thread::sleep_for(kBetweenTries);
  }
  throw Failure(FailureNumber::kPermissionDenied,
                path_ + ": a writer is at work in the book, which may only be read here; try again when it is done",
                kSource);
}

void BookHold::CheckInPlace() const {
  const FileState there = StateAt(path_);
  if (there.IsSameFile(opened_)) return;
  throw Failure(FailureNumber::kPermissionDenied,
                path_ + (there.exists ? ": another file has been put in the place of the book while it was open"
                                      : ": the book has been moved or deleted while it was open"),
                kSource);
}

bool IsInUse(const Failure& failure) {
  return failure.Number() == FailureNumber::kPermissionDenied && failure.Source() == kSource &&
         (failure.Description().find(kOpenElsewhere) != Text::npos ||
          failure.Description().find(kInUseByAnother) != Text::npos);
}

std::int64_t ApplicationIdAt(const Text& path) {
  FileState file;
  const int descriptor = TheKeptFiles().Enter(path, false, file);
  if (descriptor < 0) return 0;
  std::array<unsigned char, kMarkOffset + 4> head{};
  const bool is_whole = ::pread(descriptor, head.data(), head.size(), 0) == static_cast<ssize_t>(head.size());
  TheKeptFiles().Leave(file);
  std::int64_t mark = 0;
  for (std::size_t index = kMarkOffset; index < head.size(); ++index) mark = mark << 8 | head[index];
  return is_whole && std::equal(kSqliteHead.begin(), kSqliteHead.end(), head.begin()) ? mark : 0;
}

bool LooksLikeBook(const Text& path) {
  return ApplicationIdAt(path) == kBookApplicationId;
}

}  // namespace tallybook::engine
