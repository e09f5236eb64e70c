// The file for what does not fit into memory.
#include <cstdlib>
#include <filesystem>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "tallybook/preview/TemporaryFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TempFolder.h"

namespace tallybook::preview {
namespace {

using testing::FailsWith;

std::span<const std::byte> BytesOf(const Text& text) {
  return std::as_bytes(std::span(text));
}

class TemporaryFileTest : public ::testing::Test {
 protected:
  TemporaryFileTest() { ::setenv("TMPDIR", folder_.Path().c_str(), 1); }
  ~TemporaryFileTest() override { ::unsetenv("TMPDIR"); }

  [[nodiscard]] Text Read(TemporaryFile& file, long long offset, std::size_t count) const {
    Text text(count, '\0');
    file.ReadAt(offset, std::as_writable_bytes(std::span(text)));
    return text;
  }

  testing::TempFolder folder_;
};

TEST_F(TemporaryFileTest, GivesBackWhatWasWritten) {
  TemporaryFile file;
  file.WriteAt(3, BytesOf("tomato"));
  file.WriteAt(0, BytesOf("pot"));
  EXPECT_EQ(Read(file, 0, 9), "pottomato");
  EXPECT_EQ(file.Size(), 9);
}

TEST_F(TemporaryFileTest, HasNoName) {
  TemporaryFile file;
  file.WriteAt(0, BytesOf("here"));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.Path()));
}

TEST_F(TemporaryFileTest, NamesTheFolderThatTakesNoFile) {
  ::setenv("TMPDIR", folder_.Path("missing").c_str(), 1);
  TemporaryFile file;
  EXPECT_THAT([&] { file.WriteAt(0, BytesOf("x")); }, FailsWith(FailureNumber::kFileNotFound, folder_.Path("missing")));
}

TEST_F(TemporaryFileTest, SaysThatItHasNoRoom) {
  TemporaryFile file;
  file.WriteAt(0, BytesOf("first"));
  const testing::FileSizeLimit limit(1024);
  const Text much(4096, 'x');
  EXPECT_THAT([&] { file.WriteAt(0, BytesOf(much)); }, FailsWith(FailureNumber::kDiskFull, folder_.Path()));
}

TEST_F(TemporaryFileTest, RefusesToReadWhatWasNeverWritten) {
  TemporaryFile file;
  EXPECT_THAT([&] { (void)Read(file, 0, 1); }, FailsWith(FailureNumber::kDeviceError));
  file.WriteAt(0, BytesOf("ab"));
  EXPECT_THAT([&] { (void)Read(file, 1, 2); }, FailsWith(FailureNumber::kDeviceError));
}

}  // namespace
}  // namespace tallybook::preview
