#include "tallybook/settings/SettingsFile.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Failure.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemError.h"
#include "platform/posix/WriteAll.h"
#include "tallybook/settings/IniText.h"

namespace tallybook::settings {

namespace {

constexpr mode_t kNewFileMode = 0644;

// A file that is to be made has no folder where its name is missing.
FailureNumber NumberOf(int error) {
  return error == ENOENT ? FailureNumber::kPathNotFound : FailureNumberOf(error);
}

[[noreturn]] void Fail(const char* what, const Text& path, int error) {
  throw Failure(NumberOf(error), Text("The settings file ") + path + " cannot be " + what + ": " + WordsOfError(error),
                "SettingsFile");
}

// A pipe would be waited for, and a device may have no end.
void NeedRegularFile(const Descriptor& file, const Text& path) {
  struct stat status {};
  if (::fstat(file.Number(), &status) != 0) Fail("read", path, errno);
  if (S_ISREG(status.st_mode)) return;
  throw Failure(FailureNumber::kPathOrAccess, "The settings file " + path + " cannot be read: it is no regular file",
                "SettingsFile");
}

// The bytes of a file; empty where there is none.
Text ReadFile(const Text& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file.IsOpen()) {
    if (errno == ENOENT) return {};
    Fail("read", path, errno);
  }
  NeedRegularFile(file, path);
  Text bytes;
  char buffer[8192];
  for (;;) {
    const ssize_t count = ::read(file.Number(), buffer, sizeof buffer);
    if (count == 0) return bytes;
    if (count > 0) {
      bytes.append(buffer, static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      Fail("read", path, errno);
    }
  }
}

// The file behind a symbolic link, so that the link itself stays; any other path as it is.
Text FileBehind(const Text& path) {
  std::error_code error;
  const auto target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

// A new file beside `path`, removed again unless it was renamed into place.
class FileBeside {
 public:
  explicit FileBeside(const Text& path)
      : path_(path), name_(path + ".XXXXXX"), file_(::mkostemp(name_.data(), O_CLOEXEC)) {
    if (!file_.IsOpen()) Fail("written", path_, errno);
  }
  ~FileBeside() {
    if (!in_place_) ::unlink(name_.c_str());
  }
  FileBeside(const FileBeside&) = delete;
  FileBeside& operator=(const FileBeside&) = delete;

  void Write(const Text& bytes) {
    struct stat old {};
    const mode_t mode = ::stat(path_.c_str(), &old) == 0 ? old.st_mode & 07777U : kNewFileMode;
    if (::fchmod(file_.Number(), mode) != 0) Fail("written", path_, errno);
    if (const int error = WriteAll(file_.Number(), bytes.data(), bytes.size())) Fail("written", path_, error);
    // The bytes must be on the disk before the name is, or a crash could leave an empty file under it.
    if (::fsync(file_.Number()) != 0 || file_.Close() != 0) Fail("written", path_, errno);
  }

  void PutInPlace() {
    if (::rename(name_.c_str(), path_.c_str()) != 0) Fail("replaced", path_, errno);
    in_place_ = true;
  }

 private:
  const Text& path_;
  Text name_;
  Descriptor file_;
  bool in_place_ = false;
};

}  // namespace

Text SettingsFile::ReadValue(const Text& key, const Text& default_value) const {
  if (path_.empty()) return default_value;
  return IniText(ReadFile(path_)).Get(section_, key).value_or(default_value);
}

void SettingsFile::WriteValue(const Text& key, const Text& value) {
  const Text path = FileBehind(path_);
  IniText text(ReadFile(path));
  text.Set(section_, key, value);
  // Renaming needs rights on the folder alone; a file that its owner has locked against writing is not replaced either.
  if (std::filesystem::exists(path) && ::access(path.c_str(), W_OK) != 0) Fail("written", path, errno);
  FileBeside fresh(path);
  fresh.Write(text.ToText());
  fresh.PutInPlace();
}

}  // namespace tallybook::settings
