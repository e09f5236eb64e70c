#include "tallybook/application/FileKind.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>

#include "base/Failure.h"
#include "platform/posix/SystemError.h"

namespace tallybook::application {

namespace {

namespace fs = std::filesystem;

Text NativePath(Text path) {
  std::ranges::replace(path, '\\', '/');
  return path;
}

FileKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::kRegular;
  if (S_ISDIR(mode)) return FileKind::kFolder;
  if (S_ISFIFO(mode)) return FileKind::kPipe;
  if (S_ISSOCK(mode)) return FileKind::kSocket;
  return FileKind::kDevice;
}

[[noreturn]] void FailToLook(int error, const Text& path) {
  throw Failure(FailureNumberOf(error), path + " cannot be looked at: " + WordsOfError(error), "FileSystem");
}

}  // namespace

Text WordsFor(FileKind kind) {
  switch (kind) {
    case FileKind::kMissing:
      return "nothing";
    case FileKind::kRegular:
      return "a file";
    case FileKind::kFolder:
      return "a folder";
    case FileKind::kDevice:
      return "a device";
    case FileKind::kPipe:
      return "a pipe";
    case FileKind::kSocket:
      return "a socket";
  }
  return {};
}

FileLook LookAt(const Text& path) {
  struct stat status {};
  if (::stat(NativePath(path).c_str(), &status) == 0)
    return {.kind = KindOf(status.st_mode),
            .identity = {.device = status.st_dev, .inode = status.st_ino},
            .names = status.st_nlink};
  if (errno == ENOENT || errno == ENOTDIR) return {};
  FailToLook(errno, path);
}

Text ResolveLinks(const Text& path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  fs::path resolved = NativePath(path);
  for (int links = 0; links < kMostLinks && fs::is_symlink(fs::symlink_status(resolved, error)); ++links) {
    const fs::path target = fs::read_symlink(resolved, error);
    if (error) break;
    resolved = target.is_absolute() ? target : resolved.parent_path() / target;
  }
  const fs::path folder = fs::canonical(resolved.has_parent_path() ? resolved.parent_path() : fs::path("."), error);
  return error ? path : (folder / resolved.filename()).string();
}

void NeedRegularFile(const Text& path) {
  const FileKind kind = LookAt(path).kind;
  if (kind == FileKind::kRegular || kind == FileKind::kMissing) return;
  throw Failure(FailureNumber::kPathOrAccess, path + " is " + WordsFor(kind) + "; a file is wanted", "FileSystem");
}

void NeedListable(const Text& folder) {
  std::error_code error;
  const fs::directory_iterator first(NativePath(folder), error);
  if (!error || error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory) return;
  const bool denied = error == std::errc::permission_denied;
  throw Failure(denied ? FailureNumber::kPermissionDenied : FailureNumber::kDeviceError,
                "the folder " + folder + " cannot be listed: " + error.message(), "FileSystem");
}

}  // namespace tallybook::application
