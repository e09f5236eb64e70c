// Writing until all is written.
#include <cerrno>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

#include "platform/posix/Descriptor.h"
#include "platform/posix/WriteAll.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace tallybook::testing {
namespace {

TEST(WriteAllTest, GoesOnWhereAPipeTakesAPartAtATime) {
  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
  const Descriptor out(ends[0]);
  Descriptor in(ends[1]);
  const std::string text(1'000'000, 'x');
  std::string got;
  std::thread reader([&] {
    char part[1000];
    for (ssize_t count = 0; (count = ::read(out.Number(), part, sizeof part)) > 0;)
      got.append(part, static_cast<std::size_t>(count));
  });
  EXPECT_EQ(WriteAll(in.Number(), text.data(), text.size()), 0);
  in.Close();
  reader.join();
  EXPECT_EQ(got, text);
}

TEST(WriteAllTest, TellsTheErrorThatEndedIt) {
  const TempFolder folder;
  const Descriptor file(::open(folder.Path("full").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
  const FileSizeLimit limit(10);
  EXPECT_EQ(WriteAll(file.Number(), "0123456789abc", 13), EFBIG);
  EXPECT_EQ(::lseek(file.Number(), 0, SEEK_END), 10);
}

TEST(WriteAllTest, NothingIsWrittenAtOnce) {
  EXPECT_EQ(WriteAll(-1, "", 0), 0);
}

}  // namespace
}  // namespace tallybook::testing
