// Locks on bytes of open files, between two openings of one process and between processes.
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileLock.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

constexpr FileBytes kFar{.start = 1'000'000, .count = 10};

class FileLockTest : public ::testing::Test {
 protected:
  [[nodiscard]] Descriptor Open() const {
    return Descriptor(::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
  }

  TempFolder folder_;
  const Text path_ = folder_.Path("file");
  const Descriptor first_ = Open();
  const Descriptor second_ = Open();
};

TEST_F(FileLockTest, KeepsOutAnotherOpeningOfTheSameProcess) {
  EXPECT_TRUE(TryLock(first_.Number(), kFar));
  EXPECT_FALSE(TryLock(second_.Number(), kFar));
  EXPECT_TRUE(errno == EAGAIN || errno == EACCES) << errno;
  EXPECT_TRUE(TryLock(first_.Number(), kFar)) << "it is not in its own way";
}

TEST_F(FileLockTest, StandsAlsoWhereOtherOpeningsOfTheFileAreClosed) {
  EXPECT_TRUE(TryLock(first_.Number(), kFar));
  Open().Close();
  EXPECT_FALSE(TryLock(second_.Number(), kFar));
}

TEST_F(FileLockTest, IsSharedByThoseWhoWantItShared) {
  EXPECT_TRUE(TryLock(first_.Number(), kFar, LockKind::kShared));
  EXPECT_TRUE(TryLock(second_.Number(), kFar, LockKind::kShared));
  EXPECT_FALSE(TryLock(second_.Number(), kFar, LockKind::kAlone));
}

TEST_F(FileLockTest, IsOnItsBytesAlone) {
  EXPECT_TRUE(TryLock(first_.Number(), kFar));
  EXPECT_TRUE(TryLock(second_.Number(), {.start = kFar.start + kFar.count, .count = 1}));
  EXPECT_FALSE(TryLock(second_.Number(), {.start = kFar.start + kFar.count - 1, .count = 1}));
}

TEST_F(FileLockTest, EndsWithUnlockAndWithItsOpening) {
  EXPECT_TRUE(TryLock(first_.Number(), kFar));
  Unlock(first_.Number(), kFar);
  {
    const Descriptor third = Open();
    EXPECT_TRUE(TryLock(third.Number(), kFar));
    EXPECT_FALSE(TryLock(first_.Number(), kFar));
  }
  EXPECT_TRUE(TryLock(first_.Number(), kFar));
}

TEST_F(FileLockTest, TellsThatSomebodyElseHasTheBytes) {
  ASSERT_TRUE(HolderOf(second_.Number(), kFar).has_value());
  EXPECT_FALSE(HolderOf(second_.Number(), kFar)->exists);
  EXPECT_TRUE(TryLock(first_.Number(), kFar, LockKind::kShared));
  EXPECT_TRUE(HolderOf(second_.Number(), kFar)->exists);
  EXPECT_FALSE(HolderOf(first_.Number(), kFar)->exists) << "nobody else";
}

TEST_F(FileLockTest, TellsNothingOfWhatIsNotOpen) {
  EXPECT_FALSE(TryLock(-1, kFar));
  EXPECT_FALSE(HolderOf(-1, kFar).has_value());
  EXPECT_EQ(errno, EBADF);
}

// Opened apart in the child, so that nothing of the parent's goes over.
TEST_F(FileLockTest, KeepsOutAnotherProcess) {
  EXPECT_TRUE(TryLock(first_.Number(), kMakersByte));
  const pid_t child = ::fork();
  if (child == 0) ::_exit(TryLock(Open().Number(), kMakersByte) ? 1 : 0);
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace tallybook::testing
