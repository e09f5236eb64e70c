#include "tallybook/application/StandardStreams.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iostream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemError.h"
#include "platform/posix/WriteAll.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "StandardStreams";

[[noreturn]] void Fail(int error, const Text& what) {
  throw Failure(FailureNumberOf(error), what + ": " + WordsOfError(error), kSource);
}

// Copies from where the descriptors stand to the end of the input.
void CopyAll(int from, int to, const Text& reading, const Text& writing) {
  std::array<char, std::size_t{64} * 1024> buffer{};
  for (;;) {
    const ssize_t count = ::read(from, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(errno, reading);
    if (count == 0) return;
    if (const int error = WriteAll(to, buffer.data(), static_cast<std::size_t>(count))) Fail(error, writing);
  }
}

// A terminal ends when its user says so, and the null device at once; any other device may go on for ever.
bool HasAnEnd(const struct stat& input) {
  struct stat null {};
  if (!S_ISCHR(input.st_mode)) return !S_ISBLK(input.st_mode);
  return ::isatty(STDIN_FILENO) == 1 || (::stat("/dev/null", &null) == 0 && null.st_rdev == input.st_rdev);
}

bool IsClosed(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) < 0 && errno == EBADF;
}

}  // namespace

void HoldClosedStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (!IsClosed(stream)) continue;
    // Open for what the stream is not for. The lowest free number is given, which is this one.
    if (::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) != stream) std::_Exit(1);
  }
}

PrivateFolder::PrivateFolder() {
  std::error_code error;
  Text name = (fs::temp_directory_path(error) / "tallybook-XXXXXX").string();
  if (error) name = "/tmp/tallybook-XXXXXX";
  if (::mkdtemp(name.data()) == nullptr) Fail(errno, name + ": a private folder cannot be made");
  path_ = name;
}

PrivateFolder::~PrivateFolder() {
  std::error_code ignored;  // the system clears its folder for temporary files, sooner or later
  fs::remove_all(path_, ignored);
}

void SpoolStandardInput(const Text& to_path) {
  constexpr mode_t kOwnerOnly = 0600;
  struct stat input {};
  if (::fstat(STDIN_FILENO, &input) != 0) Fail(errno, "standard input cannot be read");
  if (S_ISDIR(input.st_mode)) throw Failure(FailureNumber::kPathOrAccess, "standard input is a folder", kSource);
  if (!HasAnEnd(input))
    throw Failure(FailureNumber::kPathOrAccess, "standard input is a device that may have no end", kSource);
  Descriptor file(::open(to_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly));
  const Text writing = to_path + " cannot take standard input";
  if (!file.IsOpen()) Fail(errno, writing);
  CopyAll(STDIN_FILENO, file.Number(), "standard input cannot be read", writing);
  if (file.Close() != 0) Fail(errno, writing);
}

void CopyToStandardOutput(const Text& from_path) {
  std::cout << std::flush;
  const Descriptor file(::open(from_path.c_str(), O_RDONLY | O_CLOEXEC));
  const Text reading = from_path + " cannot be read";
  if (!file.IsOpen()) Fail(errno, reading);
  CopyAll(file.Number(), STDOUT_FILENO, reading, "standard output cannot be written");
}

}  // namespace tallybook::application
