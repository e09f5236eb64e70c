#include "platform/posix/FileLock.h"

#include <fcntl.h>

namespace tallybook {

namespace {

struct flock LockOn(FileBytes bytes, short type) {
  struct flock lock {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = bytes.start;
  lock.l_len = bytes.count;
  return lock;
}

}  // namespace

bool TryLock(int file, FileBytes bytes, LockKind kind) {
  struct flock lock = LockOn(bytes, kind == LockKind::kShared ? F_RDLCK : F_WRLCK);
  return ::fcntl(file, F_OFD_SETLK, &lock) == 0;
}

void Unlock(int file, FileBytes bytes) {
  struct flock lock = LockOn(bytes, F_UNLCK);
  ::fcntl(file, F_OFD_SETLK, &lock);
}

std::optional<LockHolder> HolderOf(int file, FileBytes bytes) {
  struct flock lock = LockOn(bytes, F_WRLCK);
  if (::fcntl(file, F_OFD_GETLK, &lock) != 0) return std::nullopt;
  if (lock.l_type == F_UNLCK) return LockHolder{};
  return LockHolder{.exists = true, .process = lock.l_pid};
}

}  // namespace tallybook
