#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

#include "support/Utility.h"
#include "tallybook/application/LineEnds.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/TempFolder.h"

namespace tallybook::application {
namespace {

class LineEndsTest : public ::testing::Test {
 protected:
  std::optional<Text> Look(const std::string& bytes) {
    folder_.Write("in.txt", bytes);
    return BadLineEnds(folder_.Path("in.txt"));
  }
  std::string Read(const Text& name) {
    const auto file =
        ThePlatform().files->Open(folder_.Path(name), Access::kRead, Sharing::kShared, Creation::kMustExist);
    std::array<std::byte, 100> bytes{};
    const std::size_t count = file->ReadAt(0, bytes);
    return {reinterpret_cast<const char*>(bytes.data()), count};
  }

  testing::ScriptedPlatform platform_;
  testing::TempFolder folder_;
};

TEST_F(LineEndsTest, CarriageReturnsAreWanted) {
  for (const char* bytes : {"", "a", "a\rb\r", "a\r\nb\r\n", "a\r\n\r\n\r\nb", "a\r\n \t\nb\r\n", "\na\r\n"}) {
    EXPECT_EQ(Look(bytes), std::nullopt) << bytes;
  }
}

TEST_F(LineEndsTest, LineFeedsAloneAreRefused) {
  for (const char* bytes : {"a\nb\n", "a\n", "\n\na\n"}) {
    EXPECT_EQ(Look(bytes), "lines end in LF; wanted are CR or CR LF") << bytes;
  }
}

TEST_F(LineEndsTest, OfMixedEndsTheFirstBadLineIsNamed) {
  EXPECT_EQ(Look("a\r\nb\nc\r\n"), "line 2 ends in LF; wanted are CR or CR LF");
  EXPECT_EQ(Look("a\nb\r\n"), "line 1 ends in LF; wanted are CR or CR LF");
}

TEST_F(LineEndsTest, ALineFeedIsFoundBeyondTheFirstBlock) {
  std::string bytes;
  for (int i = 0; i < 20'000; ++i) bytes += "1,2,3\r\n";
  EXPECT_EQ(Look(bytes), std::nullopt);
  EXPECT_EQ(Look(bytes + "a\nb\r\n"), "line 20,001 ends in LF; wanted are CR or CR LF");
}

TEST_F(LineEndsTest, TheSameIsFoundWhereverABlockEnds) {
  constexpr std::size_t kBlock = 64 * 1024;
  for (std::size_t length = kBlock - 6; length <= kBlock; ++length) {
    const std::string line = std::string(length, 'x');
    EXPECT_EQ(Look(line + "\r \n\t\nb\r\n"), std::nullopt) << length;
    EXPECT_EQ(Look("a\r" + line + " \t\nb\r"), "line 2 ends in LF; wanted are CR or CR LF") << length;
  }
}

TEST_F(LineEndsTest, ManyLineFeedsCostNoMoreThanOtherBytes) {
  EXPECT_EQ(Look("a\r" + std::string(2'000'000, '\n') + "b\r"), std::nullopt);
}

TEST_F(LineEndsTest, AFileThatCannotBeOpenedIsTheImportsToTell) {
  EXPECT_EQ(BadLineEnds(folder_.Path("none.txt")), std::nullopt);
}

TEST_F(LineEndsTest, EveryLineEndReadsAsACarriageReturnWhileAsked) {
  folder_.Write("in.txt", "a\nb\r\n\nc");
  {
    const AnyLineEnd any;
    EXPECT_EQ(Read("in.txt"), "a\rb\r\r\rc");
  }
  EXPECT_EQ(Read("in.txt"), "a\nb\r\n\nc");
  EXPECT_EQ(folder_.Read("in.txt"), "a\nb\r\n\nc");
}

TEST_F(LineEndsTest, TheFileOnDiskIsTheOneThatIsRenamed) {
  folder_.Write("in.txt", "a\nb\n");
  const AnyLineEnd any;
  EXPECT_TRUE(RenameFile(folder_.Path("in.txt"), folder_.Path("in.txt.bak")));
  EXPECT_EQ(folder_.Read("in.txt.bak"), "a\nb\n");
}

}  // namespace
}  // namespace tallybook::application
