#include <cerrno>
#include <gtest/gtest.h>

#include "platform/posix/SystemError.h"

namespace tallybook::testing {
namespace {

TEST(SystemErrorTest, EachKindOfErrorHasTheNumberOfItsFailure) {
  EXPECT_EQ(FailureNumberOf(ENOENT), FailureNumber::kFileNotFound);
  EXPECT_EQ(FailureNumberOf(ENOTDIR), FailureNumber::kPathNotFound);
  EXPECT_EQ(FailureNumberOf(EACCES), FailureNumber::kPermissionDenied);
  EXPECT_EQ(FailureNumberOf(EAGAIN), FailureNumber::kPermissionDenied);
  EXPECT_EQ(FailureNumberOf(ENOSPC), FailureNumber::kDiskFull);
  EXPECT_EQ(FailureNumberOf(ENOLCK), FailureNumber::kFeatureUnavailable);
  EXPECT_EQ(FailureNumberOf(ELOOP), FailureNumber::kPathOrAccess);
  EXPECT_EQ(FailureNumberOf(ENOMEM), FailureNumber::kOutOfMemory);
  EXPECT_EQ(FailureNumberOf(EIO), FailureNumber::kDeviceError);
}

TEST(SystemErrorTest, TheWordsAreTheSystems) {
  EXPECT_EQ(WordsOfError(ENOSPC), "No space left on device");
}

}  // namespace
}  // namespace tallybook::testing
