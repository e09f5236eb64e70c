#include <filesystem>
#include <gmock/gmock.h>
#include <new>
#include <stdexcept>
#include <system_error>

#include "base/Failure.h"

namespace tallybook::testing {
namespace {

template <typename Thrown>
Failure AsFailure(const Thrown& thrown) {
  try {
    throw thrown;
  } catch (...) {
    return CurrentFailure();
  }
}

FailureNumber NumberOf(std::errc code) {
  return AsFailure(std::filesystem::filesystem_error("open", "book.tbk", std::make_error_code(code))).Number();
}

TEST(FailureTest, KeepsWhatItWasTold) {
  Failure failure(FailureNumber::kDiskFull, "No room for 7 bytes", "Exporter");
  failure.SetStatement(130);
  EXPECT_EQ(failure.Number(), FailureNumber::kDiskFull);
  EXPECT_EQ(failure.Code(), 61);
  EXPECT_EQ(failure.Description(), "No room for 7 bytes");
  EXPECT_EQ(failure.Source(), "Exporter");
  EXPECT_EQ(failure.Statement(), 130);
  EXPECT_STREQ(failure.what(), "No room for 7 bytes");
}

TEST(FailureTest, SourceIsTheSystemWhereNoneIsGiven) {
  EXPECT_EQ(Failure(FailureNumber::kRange, "x").Source(), "Tallybook");
  EXPECT_EQ(Failure(FailureNumber::kRange, "x").Statement(), 0);
}

TEST(FailureTest, NumbersThatUsersSeeNeverChange) {
  const auto code = [](FailureNumber number) { return Failure(number, "").Code(); };
  EXPECT_EQ(code(FailureNumber::kInvalidArgument), 5);
  EXPECT_EQ(code(FailureNumber::kOverflow), 6);
  EXPECT_EQ(code(FailureNumber::kOutOfMemory), 7);
  EXPECT_EQ(code(FailureNumber::kRange), 9);
  EXPECT_EQ(code(FailureNumber::kDivisionByZero), 11);
  EXPECT_EQ(code(FailureNumber::kTypeMismatch), 13);
  EXPECT_EQ(code(FailureNumber::kInternal), 51);
  EXPECT_EQ(code(FailureNumber::kBadFileNumber), 52);
  EXPECT_EQ(code(FailureNumber::kFileNotFound), 53);
  EXPECT_EQ(code(FailureNumber::kDeviceError), 57);
  EXPECT_EQ(code(FailureNumber::kReadPastEnd), 62);
  EXPECT_EQ(code(FailureNumber::kPermissionDenied), 70);
  EXPECT_EQ(code(FailureNumber::kFeatureUnavailable), 73);
  EXPECT_EQ(code(FailureNumber::kPathOrAccess), 75);
  EXPECT_EQ(code(FailureNumber::kPathNotFound), 76);
  EXPECT_EQ(code(FailureNumber::kObjectNotSet), 91);
}

TEST(FailureTest, CurrentFailureKeepsAFailureAsItIs) {
  const Failure failure = AsFailure(Failure(FailureNumber::kRange, "Position 3", "Host"));
  EXPECT_EQ(failure.Number(), FailureNumber::kRange);
  EXPECT_EQ(failure.Source(), "Host");
}

TEST(FailureTest, StandardExceptionsBecomeTheFailureThatFits) {
  EXPECT_EQ(AsFailure(std::bad_alloc()).Number(), FailureNumber::kOutOfMemory);
  EXPECT_EQ(AsFailure(std::runtime_error("odd")).Number(), FailureNumber::kInternal);
  EXPECT_EQ(AsFailure(std::runtime_error("odd")).Description(), "odd");
  EXPECT_EQ(AsFailure(42).Number(), FailureNumber::kInternal);
  EXPECT_EQ(NumberOf(std::errc::no_such_file_or_directory), FailureNumber::kFileNotFound);
  EXPECT_EQ(NumberOf(std::errc::permission_denied), FailureNumber::kPermissionDenied);
  EXPECT_EQ(NumberOf(std::errc::no_space_on_device), FailureNumber::kDiskFull);
  EXPECT_EQ(NumberOf(std::errc::is_a_directory), FailureNumber::kPathOrAccess);
}

}  // namespace
}  // namespace tallybook::testing
