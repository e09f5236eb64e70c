#include "platform/posix/PosixFileSystem.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "base/Wildcard.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileLock.h"
#include "platform/posix/PosixPlatform.h"
#include "platform/posix/SystemError.h"

namespace tallybook {

namespace {

// --- Failures --------------------------------------------------------------------------------------------------------

// Tells what was tried ("open", "delete") on which file and what the system answered.
[[noreturn]] void Fail(FailureNumber number, const Text& deed, const Text& path, const Text& reason) {
  throw Failure(number, "Cannot " + deed + " \"" + path + "\": " + reason, "FileSystem");
}

[[noreturn]] void FailWithError(int error, const Text& deed, const Text& path) {
  Fail(FailureNumberOf(error), deed, path, WordsOfError(error));
}

[[noreturn]] void FailInUse(const Text& deed, const Text& path) {
  Fail(FailureNumber::kPermissionDenied, deed, path, "it is in use");
}

// --- Paths and descriptors -------------------------------------------------------------------------------------------

Text NativePath(Text path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

// Does a call of the system again for as long as a signal cuts it short.
template <typename Call>
auto Uninterrupted(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

struct stat StatusOf(const Descriptor& file, const Text& deed, const Text& path) {
  struct stat status {};
  if (::fstat(file.Number(), &status) != 0) FailWithError(errno, deed, path);
  return status;
}

bool IsDirectory(const struct stat& status) {
  return S_ISDIR(status.st_mode);
}

bool FolderExists(const Text& native) {
  const std::size_t slash = native.find_last_of('/');
  if (slash == Text::npos) return true;
  struct stat status {};
  const Text folder = slash == 0 ? Text("/") : native.substr(0, slash);
  return ::stat(folder.c_str(), &status) == 0 && IsDirectory(status);
}

[[noreturn]] void FailToReach(int error, const Text& deed, const Text& path) {
  if (error == ENOENT && !FolderExists(NativePath(path)))
    Fail(FailureNumber::kPathNotFound, deed, path, "its folder does not exist");
  FailWithError(error, deed, path);
}

// --- Sharing ---------------------------------------------------------------------------------------------------------

// What a holder of a file states, each a bit and each a byte of the file to hold. The places of the bytes are shared by
// every process that runs any version of this component: never move them.
enum Statement : unsigned { kReads = 1, kWrites = 2, kDeniesReading = 4, kDeniesWriting = 8 };
constexpr std::array kAllStatements{kReads, kWrites, kDeniesReading, kDeniesWriting};
constexpr off_t kHoldsOffset = std::numeric_limits<off_t>::max() - 16;

FileBytes PlaceOf(std::size_t statement) {
  return {.start = kHoldsOffset + static_cast<off_t>(statement), .count = 1};
}

unsigned StatementsOf(Access access, Sharing sharing) {
  unsigned statements = 0;
  if (access != Access::kWrite) statements |= kReads;
  if (access != Access::kRead) statements |= kWrites;
  if (sharing == Sharing::kLockReadWrite) statements |= kDeniesReading;
  if (sharing != Sharing::kShared) statements |= kDeniesWriting;
  return statements;
}

unsigned ContradictionsOf(unsigned statements) {
  unsigned contradictions = 0;
  if (statements & kReads) contradictions |= kDeniesReading;
  if (statements & kWrites) contradictions |= kDeniesWriting;
  if (statements & kDeniesReading) contradictions |= kReads;
  if (statements & kDeniesWriting) contradictions |= kWrites;
  return contradictions;
}

void TakeHolds(const Descriptor& file, unsigned statements, const Text& deed, const Text& path) {
  for (std::size_t i = 0; i < kAllStatements.size(); ++i) {
    if ((statements & kAllStatements[i]) == 0) continue;
    if (TryLock(file.Number(), PlaceOf(i), LockKind::kShared)) continue;
    // A file system that knows no such locks says so in more than one way.
    if (errno == EINVAL) Fail(FailureNumber::kFeatureUnavailable, deed, path, "its file system cannot lock files");
    FailWithError(errno, deed, path);
  }
}

// True where another holder states one of `statements`.
bool OthersState(const Descriptor& file, unsigned statements, const Text& deed, const Text& path) {
  for (std::size_t i = 0; i < kAllStatements.size(); ++i) {
    if ((statements & kAllStatements[i]) == 0) continue;
    const auto holder = HolderOf(file.Number(), PlaceOf(i));
    if (!holder) FailWithError(errno, deed, path);
    if (holder->exists) return true;
  }
  return false;
}

void Hold(const Descriptor& file, unsigned statements, const Text& deed, const Text& path) {
  TakeHolds(file, statements, deed, path);
  if (OthersState(file, ContradictionsOf(statements), deed, path)) FailInUse(deed, path);
}

// True while the path still leads to the open file: between open and hold another may have deleted or replaced it.
bool StillStandsAt(const Descriptor& file, const Text& deed, const Text& path) {
  const struct stat opened = StatusOf(file, deed, path);
  struct stat now {};
  return ::stat(NativePath(path).c_str(), &now) == 0 && now.st_dev == opened.st_dev && now.st_ino == opened.st_ino;
}

// Opens a file and holds it. Without O_NONBLOCK the open of a named pipe would wait for its other end.
Descriptor OpenAndHold(const Text& path, int flags, unsigned statements, const Text& deed) {
  constexpr mode_t kReadWriteForAll = 0666;
  const Text native = NativePath(path);
  for (;;) {
    Descriptor file(Uninterrupted(
        [&] { return ::open(native.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, kReadWriteForAll); }));
    if (!file.IsOpen()) FailToReach(errno, deed, path);
    if (IsDirectory(StatusOf(file, deed, path))) FailWithError(EISDIR, deed, path);
    Hold(file, statements, deed, path);
    if (StillStandsAt(file, deed, path)) return file;
  }
}

// A file held so that nobody of this component has it or can get it, while its name is taken away. Not open where the
// system does not let us read the file and so hold it; whether its name may go is then the folder's matter alone.
Descriptor HoldAlone(const Text& path, const Text& deed) {
  const Text native = NativePath(path);
  if (::access(native.c_str(), F_OK) == 0 && ::access(native.c_str(), R_OK) != 0 && errno == EACCES)
    return Descriptor();
  return OpenAndHold(path, O_RDONLY, kReads | kWrites | kDeniesReading | kDeniesWriting, deed);
}

// --- Open files ------------------------------------------------------------------------------------------------------

class PosixFile : public OpenFile {
 public:
  PosixFile(Descriptor file, Access access, Text path)
      : file_(std::move(file)), access_(access), path_(std::move(path)) {}

  std::size_t ReadAt(long long offset, std::span<std::byte> into) override {
    if (access_ == Access::kWrite) Fail(FailureNumber::kPermissionDenied, "read", path_, "it is open for writing only");
    std::size_t done = 0;
    while (done < into.size()) {
      const ssize_t count = Uninterrupted([&] {
        return ::pread(file_.Number(), into.data() + done, into.size() - done, offset + static_cast<off_t>(done));
      });
      if (count < 0) FailWithError(errno, "read", path_);
      if (count == 0) break;
      done += static_cast<std::size_t>(count);
    }
    return done;
  }

  void WriteAt(long long offset, std::span<const std::byte> from) override {
    if (access_ == Access::kRead) Fail(FailureNumber::kPermissionDenied, "write", path_, "it is open for reading only");
    std::size_t done = 0;
    while (done < from.size()) {
      const ssize_t count = Uninterrupted([&] {
        return ::pwrite(file_.Number(), from.data() + done, from.size() - done, offset + static_cast<off_t>(done));
      });
      if (count < 0) FailWithError(errno, "write", path_);
      done += static_cast<std::size_t>(count);
    }
  }

  long long Size() override { return StatusOf(file_, "measure", path_).st_size; }

  void Close() override {
    // What some file systems only find out at the end (a full quota, a lost server) is told by close itself. The
    // descriptor is gone even then.
    if (file_.Close() != 0 && errno != EINTR) FailWithError(errno, "close", path_);
  }

 private:
  Descriptor file_;
  Access access_;
  Text path_;
};

int FlagsOf(Access access, Creation creation) {
  // Writing alone opens for both: a hold can only be taken on a file that is open for reading.
  const int flags = access == Access::kRead ? O_RDONLY : O_RDWR;
  return creation == Creation::kMustExist ? flags : flags | O_CREAT;
}

void CopyContents(OpenFile& from, OpenFile& to) {
  std::vector<std::byte> buffer(std::size_t{64} * 1024);
  for (long long offset = 0;;) {
    const std::size_t count = from.ReadAt(offset, buffer);
    if (count == 0) return;
    to.WriteAt(offset, std::span(buffer).first(count));
    offset += static_cast<long long>(count);
  }
}

// --- Searching -------------------------------------------------------------------------------------------------------

// Adds an entry of a folder to `found` where it is a file. One that went away meanwhile is none.
void AddWhereFile(const Text& folder, const Text& name, std::vector<FoundFile>& found) {
  struct stat status {};
  if (::stat((folder + name).c_str(), &status) != 0 || IsDirectory(status)) return;
  found.push_back({name, UniversalDate(status.st_mtim)});
}

}  // namespace

std::unique_ptr<OpenFile> PosixFileSystem::Open(const Text& path, Access access, Sharing sharing, Creation creation) {
  Descriptor file = OpenAndHold(path, FlagsOf(access, creation), StatementsOf(access, sharing), "open");
  // Emptied only now, when it is certain that nobody else has it.
  if (creation == Creation::kReplace && StatusOf(file, "open", path).st_size > 0 &&
      Uninterrupted([&] { return ::ftruncate(file.Number(), 0); }) != 0)
    FailWithError(errno, "empty", path);
  return std::make_unique<PosixFile>(std::move(file), access, path);
}

FileAttributes PosixFileSystem::Attributes(const Text& path) {
  struct stat status {};
  FileAttributes attributes;
  attributes.found = ::stat(NativePath(path).c_str(), &status) == 0;
  attributes.directory = attributes.found && IsDirectory(status);
  return attributes;
}

void PosixFileSystem::Delete(const Text& path) {
  const Descriptor held = HoldAlone(path, "delete");
  if (::unlink(NativePath(path).c_str()) != 0) FailToReach(errno, "delete", path);
}

void PosixFileSystem::Rename(const Text& old_path, const Text& new_path) {
  const Descriptor held = HoldAlone(old_path, "rename");
  const Text to = NativePath(new_path);
  const Text deed = "rename \"" + old_path + "\" to";
  if (::renameat2(AT_FDCWD, NativePath(old_path).c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return;
  if (errno != EINVAL && errno != ENOSYS) FailToReach(errno, deed, new_path);
  // This file system cannot refuse by itself to replace a file.
  if (Attributes(new_path).found) FailWithError(EEXIST, deed, new_path);
  if (::rename(NativePath(old_path).c_str(), to.c_str()) != 0) FailToReach(errno, deed, new_path);
}

void PosixFileSystem::Copy(const Text& from_path, const Text& to_path) {
  const auto from = Open(from_path, Access::kRead, Sharing::kLockWrite, Creation::kMustExist);
  const auto to = Open(to_path, Access::kWrite, Sharing::kLockReadWrite, Creation::kReplace);
  try {
    CopyContents(*from, *to);
    to->Close();
  } catch (const Failure&) {
    ::unlink(NativePath(to_path).c_str());
    throw;
  }
}

std::vector<FoundFile> PosixFileSystem::Find(const Text& pattern) {
  const Text native = NativePath(pattern);
  const std::size_t name_at = native.find_last_of('/') + 1;
  const Text folder = native.substr(0, name_at);
  const Text name_pattern = native.substr(name_at);
  const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.empty() ? "." : folder.c_str()), ::closedir);
  if (name_pattern.empty() || entries == nullptr) return {};

  std::vector<FoundFile> found;
  while (const dirent* const entry = ::readdir(entries.get()))
    if (MatchesWildcard(entry->d_name, name_pattern)) AddWhereFile(folder, entry->d_name, found);
  std::sort(found.begin(), found.end(),
            [](const FoundFile& file, const FoundFile& other) { return ComesBefore(file.name, other.name); });
  return found;
}

}  // namespace tallybook
