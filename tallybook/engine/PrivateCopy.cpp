#include "tallybook/engine/PrivateCopy.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileLock.h"
#include "platform/posix/SystemError.h"
#include "platform/posix/WriteAll.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
constexpr int kTries = 30;
constexpr std::chrono::milliseconds kBetweenTries{100};

constexpr std::string_view kFolderMark = "tallybook-look-";
constexpr const char* kBookName = "/copy.tbk";
// An empty folder that is older than this has been left; a younger one may be about to be used.
constexpr std::chrono::seconds kLeftoverAge{10};

[[noreturn]] void Fail(int error, const Text& what) {
  throw Failure(FailureNumberOf(error), what + ": " + WordsOfError(error), kSource);
}

// Makes one file's bytes those of another, which has about so many. `what` is said where that fails.
void CopyBytes(int from, int to, std::int64_t size, const Text& what, WorkWatch& watch) {
  if (::ftruncate(to, 0) != 0 || ::lseek(to, 0, SEEK_SET) != 0) Fail(errno, what);
  std::vector<char> bytes(std::size_t{1} << 20);
  for (off_t offset = 0;;) {
    const ssize_t count = ::pread(from, bytes.data(), bytes.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(errno, what);
    if (count == 0) return;
    if (const int error = WriteAll(to, bytes.data(), static_cast<std::size_t>(count))) Fail(error, what);
    offset += count;
    watch.Step(std::min(1.0F, static_cast<Single>(offset) / static_cast<Single>(size)));
  }
}

Text Words(const BookHold& book) {
  return book.Path() + ": a writer left a log beside the book, and the two cannot be copied to be read";
}

Text TemporaryFolder() {
  std::error_code error;
  const fs::path temporary = fs::temp_directory_path(error);
  return error ? "/tmp" : temporary.string();
}

Text PathOfDescriptor(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

// A file without a name that can be given one; negative where the system has none.
int MakeUnnamed() {
  if (::access("/proc/self/fd", X_OK) != 0) return -1;
  return ::open(TemporaryFolder().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
}

// Where the system cannot lock files nobody takes leftovers away.
void HoldAsMaker(int file) {
  (void)TryLock(file, kMakersByte);
}

bool IsHeld(int file) {
  const auto maker = HolderOf(file, kMakersByte);
  return !maker || maker->exists;
}

bool IsLeftover(const Text& folder) {
  struct stat status {};
  if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::geteuid()) return false;
  const Descriptor book(::open((folder + kBookName).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (book.IsOpen()) return !IsHeld(book.Number());
  const auto made = std::chrono::system_clock::from_time_t(status.st_mtime);
  return errno == ENOENT && std::chrono::system_clock::now() - made > kLeftoverAge;
}

// False where it is still there.
bool RemoveFolder(const Text& folder) {
  for (const char* ending : {"", "-wal", "-shm", "-journal"}) ::unlink((folder + kBookName + ending).c_str());
  return ::rmdir(folder.c_str()) == 0 || errno == ENOENT;
}

void RemoveLeftovers() {
  std::error_code ignored;  // what cannot be seen cannot be cleared away
  for (fs::directory_iterator entry(TemporaryFolder(), ignored), end; !ignored && entry != end;
       entry.increment(ignored)) {
    const Text folder = entry->path().string();
    if (entry->path().filename().string().starts_with(kFolderMark) && IsLeftover(folder)) RemoveFolder(folder);
  }
}

}  // namespace

PrivateCopy::PrivateCopy(const BookHold& book, WorkWatch& watch) {
  RemoveLeftovers();
  try {
    MakeFiles(book);
    CopySettled(book, watch);
    GiveNames(book);
  } catch (...) {
    Remove();
    for (const int file : {book_, log_}) ::close(file);
    throw;
  }
}

PrivateCopy::~PrivateCopy() {
  Remove();
  for (const int file : {book_, log_}) ::close(file);
}

void PrivateCopy::MakeFolder(const BookHold& book) {
  folder_ = TemporaryFolder() + "/" + Text(kFolderMark) + "XXXXXX";
  if (::mkdtemp(folder_.data()) != nullptr) return;
  const int reason = errno;
  const Text wanted = folder_;
  folder_.clear();
  Fail(reason, book.Path() +
                   ": a writer left a log beside the book, and to read both a folder for a copy cannot be made (" +
                   wanted + ")");
}

void PrivateCopy::MakeFiles(const BookHold& book) {
  book_ = MakeUnnamed();
  if (book_ >= 0) {
    log_ = MakeUnnamed();
    if (log_ < 0) Fail(errno, Words(book));
  } else {
    MakeFolder(book);
    has_names_ = true;
    constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
    book_ = ::open(Path().c_str(), kFlags, 0600);
    log_ = ::open((Path() + "-wal").c_str(), kFlags, 0600);
    if (book_ < 0 || log_ < 0) Fail(errno, Words(book) + " (" + folder_ + ")");
  }
  HoldAsMaker(book_);
}

void PrivateCopy::CopySettled(const BookHold& book, WorkWatch& watch) {
  for (int tries = 0; tries < kTries; ++tries) {
    const FileState file = book.State();
    const FileState log = StateAt(book.LogPath());
    if (IsSettled(file) && IsSettled(log)) {
      Copy(book, watch);
      if (book.State() == file && StateAt(book.LogPath()) == log) return;
    }
    watch.EndIfCancelled();
    std::this_thread::sleep_for(kBetweenTries);
  }
  throw Failure(
      FailureNumber::kPermissionDenied,
      book.Path() + ": a writer is at work in the book, which may only be read here; try again when it is done",
      kSource);
}

void PrivateCopy::Copy(const BookHold& book, WorkWatch& watch) {
  const Text what = Words(book) + " (" + TemporaryFolder() + ")";
  CopyBytes(book.Descriptor(), book_, book.State().size, what, watch);
  const FileState log_state = StateAt(book.LogPath());
  has_log_ = log_state.exists;
  if (!has_log_) return;
  const tallybook::Descriptor log(::open(book.LogPath().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (log.IsOpen()) {
    CopyBytes(log.Number(), log_, log_state.size, what, watch);
  } else if (errno == ENOENT) {
    has_log_ = false;
  } else {
    Fail(errno, Words(book) + " (" + book.LogPath() + ")");
  }
}

void PrivateCopy::GiveNames(const BookHold& book) {
  const Text log_path = Path() + "-wal";
  if (has_names_) {
    if (!has_log_) ::unlink(log_path.c_str());
    return;
  }
  MakeFolder(book);
  const auto give = [&](int file, const Text& path) {
    if (::linkat(AT_FDCWD, PathOfDescriptor(file).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) return;
    Fail(errno, Words(book) + " (" + path + ")");
  };
  if (has_log_) give(log_, folder_ + kBookName + "-wal");
  give(book_, Path());
}

void PrivateCopy::Remove() noexcept {
  if (folder_.empty()) return;
  // What cannot be removed now is tried once more at the end.
  if (RemoveFolder(folder_)) folder_.clear();
}

}  // namespace tallybook::engine
