#include "tallybook/engine/PrivateCopy.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"

namespace tallybook::engine {

namespace {

constexpr const char* kSource = "Tallybook.Book";
constexpr int kTries = 30;
constexpr std::chrono::milliseconds kBetweenTries{100};

[[noreturn]] void Fail(int error, const Text& what) {
  throw Failure(FailureNumberOf(error), what + ": " + WordsOfError(error), kSource);
}

class File {
 public:
  explicit File(int descriptor) : descriptor_(descriptor) {}
  ~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  [[nodiscard]] int Descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

void WriteAll(int to, const std::vector<char>& bytes, std::size_t count, const Text& what) {
  for (std::size_t done = 0; done < count;) {
    const ssize_t written = ::write(to, bytes.data() + done, count - done);
    if (written < 0 && errno != EINTR) Fail(errno, what);
    if (written > 0) done += static_cast<std::size_t>(written);
  }
}

// Copies a file's bytes into a new one. `what` is said where that fails.
void CopyBytes(int from, const Text& to_path, const Text& what) {
  const File to(::open(to_path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (to.Descriptor() < 0) Fail(errno, what);
  std::vector<char> bytes(std::size_t{1} << 20);
  for (off_t offset = 0;;) {
    const ssize_t count = ::pread(from, bytes.data(), bytes.size(), offset);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(errno, what);
    if (count == 0) return;
    WriteAll(to.Descriptor(), bytes, static_cast<std::size_t>(count), what);
    offset += count;
  }
}

}  // namespace

PrivateCopy::PrivateCopy(const BookHold& book) {
  std::error_code error;
  const std::filesystem::path temporary = std::filesystem::temp_directory_path(error);
  folder_ = ((error ? std::filesystem::path("/tmp") : temporary) / "tallybook-look-XXXXXX").string();
  if (::mkdtemp(folder_.data()) == nullptr) {
    const int reason = errno;
    const Text wanted = folder_;
    folder_.clear();
    Fail(reason, book.Path() +
                     ": a writer left a log beside the book, and to read both a folder for a copy cannot be made (" +
                     wanted + ")");
  }
  try {
    for (int tries = 0; tries < kTries; ++tries) {
      const FileState file = book.State();
      const FileState log = StateAt(book.LogPath());
      if (IsSettled(file) && IsSettled(log)) {
        Copy(book);
        if (book.State() == file && StateAt(book.LogPath()) == log) return;
      }
      std::this_thread::sleep_for(kBetweenTries);
    }
  } catch (...) {
    Remove();
    throw;
  }
  Remove();
  throw Failure(
      FailureNumber::kPermissionDenied,
      book.Path() + ": a writer is at work in the book, which may only be read here; try again when it is done",
      kSource);
}

void PrivateCopy::Copy(const BookHold& book) const {
  const Text log_copy = Path() + "-wal";
  const Text what = book.Path() + ": a writer left a log beside the book, and the two cannot be copied to be read";
  CopyBytes(book.Descriptor(), Path(), what + " (" + folder_ + ")");
  ::unlink(log_copy.c_str());
  if (!StateAt(book.LogPath()).exists) return;
  const File log(::open(book.LogPath().c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  if (log.Descriptor() >= 0) {
    CopyBytes(log.Descriptor(), log_copy, what + " (" + folder_ + ")");
  } else if (errno != ENOENT) {
    Fail(errno, what + " (" + book.LogPath() + ")");
  }
}

void PrivateCopy::Remove() noexcept {
  if (folder_.empty()) return;
  for (const char* ending : {"", "-wal", "-shm", "-journal"}) ::unlink((Path() + ending).c_str());
  ::rmdir(folder_.c_str());
  folder_.clear();
}

}  // namespace tallybook::engine
