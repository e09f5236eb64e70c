#include "tallybook/engine/Workpiece.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "base/Failure.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookPlace.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
constexpr const char* kEnding = "-new-";
constexpr mode_t kMode = 0644;
// A workpiece that has not been touched for so long may be a leftover; whether it is, its lock tells.
constexpr std::chrono::seconds kLeftoverAge{10};

Text WordsOf(int error) {
  return std::generic_category().message(error);
}

constexpr std::size_t kWordLength = 16;

Text RandomWord() {
  std::random_device random;
  Text word;
  while (word.size() < kWordLength) word += "0123456789abcdef"[random() % 16];
  return word;
}

void RemoveWith(const Text& path) {
  for (const char* ending : {"", "-wal", "-shm"}) ::unlink((path + ending).c_str());
}

bool IsOld(const fs::path& path) {
  std::error_code error;
  const auto written = fs::last_write_time(path, error);
  return !error && fs::file_time_type::clock::now() - written > kLeftoverAge;
}

void RemoveIfNobodyHasIt(const Text& path) {
  try {
    BookHold hold(path, BookHold::Purpose::kChange);
    hold.TakeRightToWrite(0);
    RemoveWith(path);
  } catch (const Failure&) {
    // Somebody is at work on it, or it is not ours to remove: it is in nobody's way.
  }
}

// Gives a file its name where nothing has that name. False with errno set.
bool RenameToFreeName(const Text& from, const Text& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  // This file system cannot refuse by itself to replace a file; a second name it refuses everywhere.
  return ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
}

// Makes the new name last through a loss of power; where the folder cannot be told so, it lasts by the system's own time.
void StoreFolder(const Text& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

}  // namespace

Workpiece::Workpiece(const Text& path) : path_(path), work_path_(path + kEnding + RandomWord()) {
  RefuseTakenName();
  const int made = ::open(work_path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
  if (made < 0) {
    const int error = errno;
    const bool no_folder = error == ENOENT || error == ENOTDIR;
    const bool full = error == ENOSPC || error == EDQUOT;
    throw Failure(
        no_folder ? FailureNumber::kPathNotFound
        : full    ? FailureNumber::kDiskFull
                  : FailureNumber::kPathOrAccess,
        path_ + (no_folder ? Text(": the folder does not exist") : ": the new book cannot be made: " + WordsOf(error)),
        kSource);
  }
  ::close(made);
  RemoveLeftovers();
}

Workpiece::~Workpiece() {
  RemoveWith(work_path_);
}

void Workpiece::RefuseTakenName() const {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) != 0) return;
  const bool leads_nowhere = S_ISLNK(status.st_mode) && ::stat(path_.c_str(), &status) != 0;
  throw Failure(FailureNumber::kPathOrAccess,
                path_ + ": the file exists already" + (leads_nowhere ? ", as a link that leads nowhere" : ""), kSource);
}

void Workpiece::RemoveLeftovers() const {
  const Text beginning = fs::path(path_).filename().string() + kEnding;
  std::error_code ignored;  // what cannot be seen cannot be cleared away
  for (fs::directory_iterator entry(BookFolder(path_), ignored), end; !ignored && entry != end;
       entry.increment(ignored)) {
    const fs::path& file = entry->path();
    const Text name = file.filename().string();
    const bool is_workpiece = name.starts_with(beginning) && name.size() == beginning.size() + kWordLength;
    if (is_workpiece && file.string() != work_path_ && IsOld(file)) RemoveIfNobodyHasIt(file.string());
  }
}

// SQLite says nothing where it cannot copy its log back while it closes a file; the log that stays then tells it.
void Workpiece::RefuseWithLog() const {
  struct stat status {};
  if (::lstat((work_path_ + "-wal").c_str(), &status) != 0) return;
  throw Failure(FailureNumber::kDeviceError, path_ + ": the new book cannot be written whole", kSource);
}

void Workpiece::MoveToPlace() {
  RefuseWithLog();
  if (!RenameToFreeName(work_path_, path_)) {
    const int error = errno;
    RefuseTakenName();
    throw Failure(FailureNumber::kPathOrAccess,
                  path_ + ": the new book cannot be moved to its place: " + WordsOf(error), kSource);
  }
  StoreFolder(BookFolder(path_));
}

}  // namespace tallybook::engine
