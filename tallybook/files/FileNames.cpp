#include "tallybook/files/FileNames.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"

namespace tallybook::files {

namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

}  // namespace

std::error_code RenameToFreeName(const Text& from, const Text& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return LastError();
  // A second name every file system refuses to give where a file has it.
  if (::link(from.c_str(), to.c_str()) != 0 || ::unlink(from.c_str()) != 0) return LastError();
  return {};
}

void StoreFolder(const Text& folder) {
  const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.IsOpen()) ::fsync(descriptor.Number());
}

}  // namespace tallybook::files
