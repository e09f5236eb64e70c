#include "tallybook/engine/Workpiece.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"
#include "tallybook/engine/BookCompanions.h"
#include "tallybook/engine/BookHold.h"
#include "tallybook/engine/BookPlace.h"
#include "tallybook/files/FileNames.h"

namespace tallybook::engine {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "Tallybook.Book";
constexpr const char* kEnding = "-new-";
constexpr mode_t kMode = 0644;
// A workpiece that has not been touched for so long may be a leftover; whether it is, its lock tells.
constexpr std::chrono::seconds kLeftoverAge{10};

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

}  // namespace

Workpiece::Workpiece(const Text& path) : path_(path), work_path_(path + kEnding + RandomWord()) {
  RefuseTakenName();
  RefuseUnfitName();
  const int made = ::open(work_path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
  if (made < 0) {
    const int error = errno;
    const bool no_folder = error == ENOENT || error == ENOTDIR;
    const bool full = error == ENOSPC || error == EDQUOT;
    throw Failure(no_folder ? FailureNumber::kPathNotFound
                  : full    ? FailureNumber::kDiskFull
                            : FailureNumber::kPathOrAccess,
                  path_ + (no_folder ? Text(": the folder does not exist")
                                     : ": the new book cannot be made: " + WordsOfError(error)),
                  kSource);
  }
  ::close(made);
  RemoveLeftovers();
}

Workpiece::~Workpiece() {
  RemoveWith(work_path_);
}

void Workpiece::Do(const std::function<void()>& work) const {
  try {
    work();
  } catch (const Failure& failure) {
    Text words = failure.Description();
    const std::size_t place = words.find(work_path_);
    if (place != Text::npos) words.replace(place, work_path_.size(), path_);
    throw Failure(failure.Number(), words, failure.Source());
  }
}

void Workpiece::RefuseTakenName() const {
  struct stat status {};
  if (::lstat(path_.c_str(), &status) != 0) return;
  const bool leads_nowhere = S_ISLNK(status.st_mode) && ::stat(path_.c_str(), &status) != 0;
  throw Failure(FailureNumber::kPathOrAccess,
                path_ + ": the file exists already" + (leads_nowhere ? ", as a link that leads nowhere" : ""), kSource);
}

void Workpiece::RefuseUnfitName() const {
  const std::vector<Text> troubles = NameTroubles(path_);
  if (!troubles.empty()) throw Failure(FailureNumber::kPathOrAccess, path_ + ": " + troubles.front(), kSource);
  RefuseStrayCompanions(path_);
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
  if (const std::error_code error = files::RenameToFreeName(work_path_, path_)) {
    RefuseTakenName();
    throw Failure(FailureNumber::kPathOrAccess,
                  path_ + ": the new book cannot be moved to its place: " + error.message(), kSource);
  }
  files::StoreFolder(BookFolder(path_));
}

}  // namespace tallybook::engine
