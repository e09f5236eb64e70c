#include "tallybook/files/FileModes.h"

#include <cerrno>
#include <sys/stat.h>

namespace tallybook::files {

std::error_code MakeNoMoreReadable(const Text& path, const Text& than) {
  struct stat own {};
  struct stat other {};
  const bool done = ::stat(path.c_str(), &own) == 0 && ::stat(than.c_str(), &other) == 0 &&
                    ::chmod(path.c_str(), (own.st_mode & other.st_mode & 0777U) | S_IRUSR | S_IWUSR) == 0;
  return done ? std::error_code() : std::error_code(errno, std::generic_category());
}

}  // namespace tallybook::files
