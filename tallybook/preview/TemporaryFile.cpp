#include "tallybook/preview/TemporaryFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"

namespace tallybook::preview {

namespace {

[[noreturn]] void Fail(const Text& folder, const Text& what, int error) {
  throw Failure(FailureNumberOf(error), "A temporary file in " + folder + " " + what + ": " + WordsOfError(error),
                "TemporaryFile");
}

// The folder for large temporary files; that for small ones often lies in memory.
Text Folder() {
  const char* named = std::getenv("TMPDIR");
  if (named != nullptr && *named != '\0') return named;
  return ::access("/var/tmp", W_OK | X_OK) == 0 ? "/var/tmp" : "/tmp";
}

// A file system that knows no files without a name gets one that loses it at once.
int OpenWithoutName(const Text& folder) {
  constexpr mode_t kOwnerOnly = 0600;
  const int file = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kOwnerOnly);
  if (file >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT)) return file;
  Text name = folder + "/tallybook-XXXXXX";
  const int named = ::mkostemp(name.data(), O_CLOEXEC);
  if (named >= 0) ::unlink(name.c_str());
  return named;
}

}  // namespace

TemporaryFile::~TemporaryFile() {
  if (file_ >= 0) ::close(file_);
}

void TemporaryFile::Make() {
  folder_ = Folder();
  file_ = OpenWithoutName(folder_);
  if (file_ < 0) Fail(folder_, "cannot be made", errno);
}

void TemporaryFile::WriteAt(long long offset, std::span<const std::byte> from) {
  if (file_ < 0) Make();
  while (!from.empty()) {
    const ssize_t count = ::pwrite(file_, from.data(), from.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(folder_, "cannot be written", errno);
    from = from.subspan(static_cast<std::size_t>(count));
    offset += count;
    size_ = std::max(size_, offset);
  }
}

void TemporaryFile::ReadAt(long long offset, std::span<std::byte> into) const {
  while (!into.empty()) {
    const ssize_t count = file_ < 0 ? 0 : ::pread(file_, into.data(), into.size(), static_cast<off_t>(offset));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(folder_, "cannot be read", errno);
    if (count == 0) Fail(folder_, "is shorter than what was written", EIO);
    into = into.subspan(static_cast<std::size_t>(count));
    offset += count;
  }
}

}  // namespace tallybook::preview
