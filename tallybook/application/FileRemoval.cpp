#include "tallybook/application/FileRemoval.h"

#include <algorithm>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "base/Failure.h"
#include "tallybook/application/FileKind.h"

namespace tallybook::application {

namespace {

[[noreturn]] void Refuse(const Text& path, const Text& why) {
  throw Failure(FailureNumber::kPermissionDenied, path + ": " + why, "FileRemoval");
}

bool Permits(const Text& path, int rights) {
  return ::faccessat(AT_FDCWD, path.c_str(), rights, AT_EACCESS) == 0;
}

// In a folder such as /tmp everybody may make files, and only a file's owner may take it away.
bool BelongsToAnother(const Text& folder, const Text& path) {
  struct stat of_folder {};
  struct stat of_file {};
  if (::stat(folder.c_str(), &of_folder) != 0 || ::lstat(path.c_str(), &of_file) != 0) return false;
  const uid_t user = ::geteuid();
  return (of_folder.st_mode & S_ISVTX) != 0 && user != 0 && user != of_folder.st_uid && user != of_file.st_uid;
}

}  // namespace

void NeedRemovable(FileSystem& files, const Text& path) {
  NeedRegularFile(path);
  Text native = path;
  std::ranges::replace(native, '\\', '/');
  const std::filesystem::path parent = std::filesystem::path(native).parent_path();
  const Text folder = parent.empty() ? "." : parent.string();
  if (!Permits(folder, W_OK | X_OK)) Refuse(path, "its folder does not let it go");
  if (BelongsToAnother(folder, native)) Refuse(path, "it belongs to another user");
  // Whoever may not read a file cannot ask who holds it.
  if (Permits(native, R_OK)) files.Open(path, Access::kRead, Sharing::kLockReadWrite, Creation::kMustExist)->Close();
}

}  // namespace tallybook::application
