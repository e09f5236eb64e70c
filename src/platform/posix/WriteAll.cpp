#include "platform/posix/WriteAll.h"

#include <cerrno>
#include <unistd.h>

namespace tallybook {

int WriteAll(int file, const void* bytes, std::size_t count) {
  const char* rest = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = ::write(file, rest, count);
    if (written < 0 && errno != EINTR) return errno;
    if (written <= 0) continue;
    rest += written;
    count -= static_cast<std::size_t>(written);
  }
  return 0;
}

}  // namespace tallybook
