// An open file's number: closed once, on every way out.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <utility>

#include "platform/posix/Descriptor.h"

namespace tallybook::testing {
namespace {

int OpenNull() {
  return ::open("/dev/null", O_RDWR | O_CLOEXEC);
}

bool IsOpenInTheSystem(int number) {
  return ::fcntl(number, F_GETFD) != -1;
}

TEST(DescriptorTest, ClosesItsFileAtTheEndOfItsLife) {
  const int number = OpenNull();
  {
    const Descriptor file(number);
    EXPECT_TRUE(file.IsOpen());
    EXPECT_EQ(file.Number(), number);
  }
  EXPECT_FALSE(IsOpenInTheSystem(number));
}

TEST(DescriptorTest, IsNoneWhereTheOpeningFailed) {
  Descriptor file(::open("/dev/null/none", O_RDONLY | O_CLOEXEC));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.Close(), 0);
  EXPECT_FALSE(Descriptor().IsOpen());
}

TEST(DescriptorTest, IsClosedOnceWhoeverClosesIt) {
  Descriptor file(OpenNull());
  const int number = file.Number();
  EXPECT_EQ(file.Close(), 0);
  EXPECT_FALSE(IsOpenInTheSystem(number));
  EXPECT_FALSE(file.IsOpen());
  const Descriptor other(OpenNull());
  ASSERT_EQ(other.Number(), number) << "the lowest free number is given again";
  file.Close();
  EXPECT_TRUE(IsOpenInTheSystem(number)) << "it is another file's by now";
}

TEST(DescriptorTest, IsHandedOnByMovingAndByReleasing) {
  Descriptor first(OpenNull());
  const int number = first.Number();
  Descriptor second(std::move(first));
  EXPECT_EQ(second.Number(), number);
  Descriptor third;
  third = std::move(second);
  EXPECT_EQ(third.Number(), number);
  EXPECT_EQ(third.Release(), number);
  EXPECT_FALSE(third.IsOpen());
  EXPECT_TRUE(IsOpenInTheSystem(number));
  ::close(number);
}

}  // namespace
}  // namespace tallybook::testing
