#include "tallybook/engine/FileState.h"

#include <chrono>
#include <sys/stat.h>

namespace tallybook::engine {

namespace {

// Longer than the step of any clock that the system stamps changes with.
constexpr std::int64_t kStep = 50'000'000;

std::int64_t Nanoseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileState StateOf(const struct stat& status) {
  return {.exists = true,
          .device = status.st_dev,
          .inode = status.st_ino,
          .size = status.st_size,
          .changed = Nanoseconds(status.st_mtim)};
}

}  // namespace

FileState StateAt(const Text& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? StateOf(status) : FileState{};
}

FileState StateBehind(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 ? StateOf(status) : FileState{};
}

bool IsSettled(const FileState& state) {
  timespec now{};
  ::clock_gettime(CLOCK_REALTIME, &now);
  const std::int64_t age = Nanoseconds(now) - state.changed;
  return !state.exists || age < 0 || age > kStep;
}

}  // namespace tallybook::engine
