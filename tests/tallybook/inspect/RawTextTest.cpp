#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "base/Failure.h"
#include "tallybook/inspect/RawText.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::inspect {
namespace {

const Text kPath = "/in.txt";

TEST(RawTextTest, LinesEndInEitherCharacterOrInBoth) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  platform.memory.Put(kPath, "a\rb\nc\r\n\r\n\n\rd");
  RawText raw(kPath);
  std::vector<std::string> lines;
  std::vector<long long> numbers;
  for (;;) {
    numbers.push_back(raw.Line());
    const std::string line(raw.TakeLine());
    if (line.empty()) break;
    lines.push_back(line);
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"a\r", "b\n", "c\r\n", "\r\n", "\n", "\r", "d"}));
  EXPECT_EQ(numbers, (std::vector<long long>{1, 2, 3, 4, 5, 6, 7, 7}));
}

// The pair of line ends may be cut in two by an offset.
RC_GTEST_PROP(RawTextProperties, LinesAreNumberedAlikeWhereverTheBytesAreCut, ()) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  const auto bytes = *rc::gen::container<std::string>(rc::gen::element('a', '\r', '\n'));
  platform.memory.Put(kPath, bytes);
  RawText by_line(kPath);
  RawText by_offset(kPath);
  std::string whole;
  while (whole.size() < bytes.size()) {
    whole += by_line.TakeLine();
    const auto cut = *rc::gen::inRange<long long>(0, static_cast<long long>(whole.size()) + 1);
    static_cast<void>(by_offset.TakeTo(cut));
    static_cast<void>(by_offset.TakeTo(static_cast<long long>(whole.size())));
    RC_ASSERT(by_offset.Line() == by_line.Line());
  }
  RC_ASSERT(whole == bytes);
}

TEST(RawTextTest, ALineMayBeLongerThanWhatIsReadAtOnce) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  const std::string line(300'000, 'x');
  platform.memory.Put(kPath, line + "\r\n" + line);
  RawText raw(kPath);
  EXPECT_EQ(raw.TakeLine().size(), line.size() + 2);
  EXPECT_EQ(raw.TakeLine(), line);
  EXPECT_TRUE(raw.TakeLine().empty());
}

TEST(RawTextTest, AMissingFileIsToldWithItsPath) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  EXPECT_THAT([] { const RawText raw("/none.txt"); }, testing::FailsWith(FailureNumber::kFileNotFound));
}

}  // namespace
}  // namespace tallybook::inspect
