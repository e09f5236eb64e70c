#include "tallybook/application/WholeFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileLock.h"
#include "platform/posix/SystemError.h"
#include "tallybook/files/FileNames.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "WholeFile";
constexpr std::string_view kWorkMark = ".part-";
constexpr std::size_t kEndingLength = 10;
constexpr mode_t kModeBits = 07777;

[[noreturn]] void Fail(FailureNumber number, const Text& path, const Text& reason) {
  throw Failure(number, path + ": " + reason, kSource);
}

// What is missing here is a folder.
FailureNumber NumberOf(int error) {
  return error == ENOENT ? FailureNumber::kPathNotFound : FailureNumberOf(error);
}

[[noreturn]] void FailWithError(int error, const Text& path, const Text& deed) {
  Fail(NumberOf(error), path, deed + ": " + WordsOfError(error));
}

bool Permits(const Text& path, int rights) {
  return ::faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0;
}

// True while the name still leads to the open file.
bool StillStandsAt(int file, const Text& path) {
  struct stat opened {};
  struct stat now {};
  return ::fstat(file, &opened) == 0 && ::lstat(path.c_str(), &now) == 0 && opened.st_dev == now.st_dev &&
         opened.st_ino == now.st_ino;
}

// What the names of unfinished outputs of a place begin with. A long name is cut, so that the rest fits; the outputs of
// two such names then wait for each other.
Text WorkPrefix(const Text& place) {
  constexpr std::size_t kLongest = 200;
  return "." + fs::path(place).filename().string().substr(0, kLongest) + Text(kWorkMark);
}

Text FolderOf(const Text& place) {
  const fs::path folder = fs::path(place).parent_path();
  return folder.empty() ? "." : folder.string();
}

Text RandomEnding() {
  static constexpr std::string_view kLetters = "0123456789abcdefghijklmnopqrstuv";
  std::random_device source;
  Text ending;
  while (ending.size() < kEndingLength) ending += kLetters[source() % kLetters.size()];
  return ending;
}

// The journal and log that belong to an old SQLite file would be taken for the new one's.
void ClearDatabaseCompanions(int file, const Text& place) {
  static constexpr std::string_view kMark("SQLite format 3\0", 16);
  std::array<char, kMark.size()> head{};
  if (::pread(file, head.data(), head.size(), 0) != static_cast<ssize_t>(head.size())) return;
  if (std::string_view(head.data(), head.size()) != kMark) return;
  for (const char* ending : {"-journal", "-wal", "-shm"}) ::unlink((place + ending).c_str());
}

}  // namespace

WholeFile::WholeFile(FileSystem& files, Text path)
    : files_(files), path_(std::move(path)), place_(ResolveLinks(path_)) {
  std::ranges::replace(place_, '\\', '/');
  LookAtOld();
}

WholeFile::~WholeFile() {
  Drop();
}

void WholeFile::LookAtOld() {
  old_look_ = LookAt(place_);
  old_.reset();
  struct stat status {};
  if (old_look_.kind == FileKind::kMissing || ::stat(place_.c_str(), &status) != 0) return;
  old_ = Old{.mode = status.st_mode & kModeBits, .owner = status.st_uid, .group = status.st_gid};
}

void WholeFile::NeedReplaceable() {
  LookAtOld();
  // A name that could not be followed is not the place that the link means.
  std::error_code ignored;  // what cannot be asked is no link
  if (fs::is_symlink(fs::symlink_status(place_, ignored)))
    Fail(FailureNumber::kPathNotFound, path_, "it is a link into a folder that does not exist");
  if (!old_) return;
  if (old_look_.kind != FileKind::kRegular)
    Fail(FailureNumber::kPathOrAccess, path_, "it is " + WordsFor(old_look_.kind) + ", and an output needs a file");
  if (!Permits(place_, W_OK)) Fail(FailureNumber::kPermissionDenied, path_, "the old file may not be written");
  if (!Permits(FolderOf(place_), W_OK | X_OK))
    Fail(FailureNumber::kPermissionDenied, path_, "its folder takes no new file");
  // Whoever may not read the old file cannot ask who holds it.
  if (Permits(place_, R_OK)) files_.Open(place_, Access::kRead, Sharing::kLockReadWrite, Creation::kMustExist)->Close();
}

const Text& WholeFile::Begin() {
  Drop();
  NeedReplaceable();
  ClearLeftovers();
  MakeWorkFile();
  try {
    TakeOwner();
  } catch (...) {
    Drop();
    throw;
  }
  return work_path_;
}

// An unfinished output whose writer is gone is nobody's. One that is held is another process's, which is at work.
void WholeFile::ClearLeftovers() const {
  const Text prefix = WorkPrefix(place_);
  std::error_code error;  // a folder that cannot be read takes no new file either, or has nothing that we could clear
  for (const fs::directory_entry& entry : fs::directory_iterator(FolderOf(place_), error)) {
    const Text leftover = entry.path().string();
    const Text name = entry.path().filename().string();
    if (!name.starts_with(prefix) || name.size() != prefix.size() + kEndingLength) continue;
    const Descriptor file(::open(leftover.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!file.IsOpen()) continue;
    const bool abandoned = TryLock(file.Number(), kMakersByte);
    if (abandoned && StillStandsAt(file.Number(), leftover)) ::unlink(leftover.c_str());
    if (!abandoned) Fail(FailureNumber::kPermissionDenied, path_, "another process is writing it");
  }
}

void WholeFile::MakeWorkFile() {
  constexpr mode_t kOwnerOnly = 0600;
  constexpr mode_t kReadWriteForAll = 0666;  // less what the process's mask takes away
  if (!fs::is_directory(FolderOf(place_)))
    throw Failure(FailureNumber::kPathNotFound, "Cannot open \"" + path_ + "\": its folder does not exist", kSource);
  for (;;) {
    const Text name = FolderOf(place_) + "/" + WorkPrefix(place_) + RandomEnding();
    const int file =
        ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, old_ ? kOwnerOnly : kReadWriteForAll);
    if (file < 0 && errno == EEXIST) continue;
    if (file < 0) {
      throw Failure(NumberOf(errno), "Cannot open \"" + path_ + "\": " + WordsOfError(errno), kSource);
    }
    work_ = file;
    work_path_ = name;
    broken_ = false;
    if (!TryLock(file, kMakersByte)) {
      const int reason = errno;
      Drop();
      FailWithError(reason, path_, "its file system cannot lock files");
    }
    // Between making and locking another process may have taken it for abandoned.
    if (StillStandsAt(file, name)) return;
    Drop();
  }
}

void WholeFile::TakeOwner() {
  if (!old_) return;
  struct stat status {};
  if (::fstat(work_, &status) != 0) FailWithError(errno, path_, "its unfinished file cannot be looked at");
  if (status.st_uid == old_->owner && status.st_gid == old_->group) return;
  if (::fchown(work_, old_->owner, old_->group) != 0)
    Fail(FailureNumber::kPermissionDenied, path_,
         "the old file belongs to another user or group, which a new one could not be given");
}

void WholeFile::NoteWritten(std::size_t size) {
#if defined(SYNC_FILE_RANGE_WRITE)
  constexpr std::size_t kPiece = std::size_t{2} << 20;
  written_ += size;
  if (written_ < kPiece) return;
  written_ = 0;
  // Of no consequence where it fails: Keep hands everything over, and tells.
  static_cast<void>(::sync_file_range(work_, 0, 0, SYNC_FILE_RANGE_WRITE));
#endif
}

bool WholeFile::Keep() {
  if (work_ < 0) return false;
  if (broken_) {
    Drop();
    return false;
  }
  try {
    Hand();
    MoveToPlace();
  } catch (...) {
    Drop();
    throw;
  }
  ::close(std::exchange(work_, -1));
  work_path_.clear();
  files::StoreFolder(FolderOf(place_));
  return true;
}

// All bytes to the disk before the name leads to them: a full disk shows here at the latest.
void WholeFile::Hand() {
  if (!StillStandsAt(work_, work_path_))
    Fail(FailureNumber::kPathOrAccess, path_, "its unfinished file was taken away by another program");
  if (::fsync(work_) != 0) FailWithError(errno, path_, "the output cannot be handed to the disk");
  if (old_ && ::fchmod(work_, old_->mode) != 0)
    FailWithError(errno, path_, "the output cannot get the old file's mode");
}

void WholeFile::MoveToPlace() {
  const FileLook now = LookAt(place_);
  if (now.kind != FileKind::kMissing && now.identity != old_look_.identity)
    Fail(FailureNumber::kPathOrAccess, path_, "another program has put a file there meanwhile, which stays");
  ClearDatabaseCompanions(work_, place_);
  if (::rename(work_path_.c_str(), place_.c_str()) != 0) FailWithError(errno, path_, "the output cannot take its name");
}

bool WholeFile::Drop() noexcept {
  if (work_ < 0) return false;
  if (StillStandsAt(work_, work_path_)) ::unlink(work_path_.c_str());
  ::close(std::exchange(work_, -1));
  work_path_.clear();
  return true;
}

}  // namespace tallybook::application
