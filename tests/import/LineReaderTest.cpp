#include <gmock/gmock.h>
#include <string>
#include <vector>

#include "import/LineReader.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::size_t kBlock = 32'767;
const Text kPath = "/in/a.txt";
// Long lines are compared as a whole: nobody wants to read them in a message.
using Strings = std::vector<std::string>;

class LineReaderTest : public ::testing::Test {
 protected:
  FileStream& Open(const std::string& bytes) {
    platform_.memory.Put(kPath, bytes);
    stream_ = std::make_unique<FileStream>(
        platform_.files.Open(kPath, Access::kRead, Sharing::kShared, Creation::kMustExist));
    return *stream_;
  }
  static std::vector<std::string> AllOf(LineReader& reader) {
    std::vector<std::string> lines;
    std::string_view line;
    while (reader.Next(line)) lines.emplace_back(line);
    return lines;
  }
  std::vector<std::string> Lines(const std::string& bytes, long long start = 0) {
    LineReader reader(Open(bytes), start);
    return AllOf(reader);
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<FileStream> stream_;
};

TEST_F(LineReaderTest, LinesEndWithACarriageReturn) {
  EXPECT_THAT(Lines("ab\rcd\r"), ElementsAre("ab", "cd"));
}

TEST_F(LineReaderTest, ALineFeedStaysAtTheStartOfTheNextLine) {
  EXPECT_THAT(Lines("ab\r\ncd\r\nef\r\n"), ElementsAre("ab", "\ncd", "\nef")) << "and the last one is dropped";
}

TEST_F(LineReaderTest, AFileOfLineFeedsAloneIsOneLine) {
  EXPECT_THAT(Lines("ab\ncd\nef\n"), ElementsAre("ab\ncd\nef\n"));
}

TEST_F(LineReaderTest, EmptyLinesArePassedOver) {
  EXPECT_THAT(Lines("\r\rab\r\r\rcd\r\r"), ElementsAre("ab", "cd"));
}

TEST_F(LineReaderTest, ALineThatHoldsOnlyALineFeedIsNotEmpty) {
  EXPECT_THAT(Lines("ab\r\n\r\ncd\r\n"), ElementsAre("ab", "\n", "\ncd"));
}

TEST_F(LineReaderTest, WhatIsLeftBehindTheLastCarriageReturnIsALine) {
  EXPECT_THAT(Lines("ab\rcd"), ElementsAre("ab", "cd"));
  EXPECT_THAT(Lines("abcd"), ElementsAre("abcd"));
}

TEST_F(LineReaderTest, ARemainderOfOneSingleCharacterIsDropped) {
  EXPECT_THAT(Lines("ab\rc"), ElementsAre("ab"));
  EXPECT_THAT(Lines("a"), IsEmpty());
  EXPECT_THAT(Lines("a\r"), ElementsAre("a")) << "with its carriage return it is a line";
}

TEST_F(LineReaderTest, AnEmptyFileHasNoLine) {
  EXPECT_THAT(Lines(""), IsEmpty());
  EXPECT_THAT(Lines("\r"), IsEmpty());
  EXPECT_THAT(Lines("\r\n"), IsEmpty());
}

TEST_F(LineReaderTest, TheFirstLineFeedOfTheFileIsDropped) {
  EXPECT_THAT(Lines("\nab\rcd\r"), ElementsAre("ab", "cd"));
}

TEST_F(LineReaderTest, ALineFeedBehindABlocksLastCarriageReturnIsDropped) {
  const std::string first(kBlock - 1, 'a');
  EXPECT_TRUE(Lines(first + "\r\nbc\r\nde\r\n") == Strings({first, "bc", "\nde"}));
}

TEST_F(LineReaderTest, ALineFeedOneByteEarlierStays) {
  const std::string first(kBlock - 2, 'a');
  EXPECT_TRUE(Lines(first + "\r\nbc\r\n") == Strings({first, "\nbc"}));
}

// Nobody looks whether a carriage return ended the block before.
TEST_F(LineReaderTest, ALineFeedThatBeginsABlockIsDroppedInTheMiddleOfALineToo) {
  EXPECT_TRUE(Lines(std::string(kBlock, 'a') + "\nbc\r") == Strings({std::string(kBlock, 'a') + "bc"}));
}

TEST_F(LineReaderTest, ALineMayLieAcrossManyBlocks) {
  const std::string longest(3 * kBlock + 17, 'x');
  EXPECT_TRUE(Lines("ab\r" + longest + "\rcd\r") == Strings({"ab", longest, "cd"}));
}

TEST_F(LineReaderTest, ReadsTheSameWhereverABlockEnds) {
  for (std::size_t before = kBlock - 6; before <= kBlock + 1; ++before) {
    const std::string first(before, 'a');
    EXPECT_TRUE(Lines(first + "\rbc\rde\r") == Strings({first, "bc", "de"})) << before;
  }
}

TEST_F(LineReaderTest, BeginsBehindAByteOrderMarkWhereTold) {
  EXPECT_THAT(Lines("\xEF\xBB\xBF"
                    "ab\r",
                    3),
              ElementsAre("ab"));
}

TEST_F(LineReaderTest, RewindsToItsStart) {
  LineReader reader(Open("xyab\rcd\r"), 2);
  EXPECT_THAT(AllOf(reader), ElementsAre("ab", "cd"));
  reader.Rewind();
  EXPECT_THAT(AllOf(reader), ElementsAre("ab", "cd"));
}

TEST_F(LineReaderTest, RewindsInTheMiddleOfABlockWithoutItsRest) {
  LineReader reader(Open("ab\rcd\r"), 0);
  std::string_view line;
  ASSERT_TRUE(reader.Next(line));
  reader.Rewind();
  EXPECT_THAT(AllOf(reader), ElementsAre("ab", "cd"));
}

TEST_F(LineReaderTest, TellsHowFarTheFileHasBeenRead) {
  LineReader reader(Open(std::string(kBlock, 'a') + "\rcd\r"), 0);
  EXPECT_EQ(reader.Size(), static_cast<long long>(kBlock) + 4);
  EXPECT_EQ(reader.Position(), 0);
  platform_.memory.Put(kPath, std::string(10, 'a') + "\r" + std::string(kBlock, 'b') + "\r");
  LineReader other(*stream_, 0);
  std::string_view line;
  ASSERT_TRUE(other.Next(line));
  EXPECT_EQ(other.Position(), static_cast<long long>(kBlock)) << "a whole block, whatever the line took of it";
}

TEST_F(LineReaderTest, AtTheEndItStaysAtTheEnd) {
  LineReader reader(Open("ab\r"), 0);
  EXPECT_THAT(AllOf(reader), SizeIs(1));
  EXPECT_THAT(AllOf(reader), IsEmpty());
}

TEST_F(LineReaderTest, AReadThatFailedCanBeRepeatedWithoutLoss) {
  const std::string first(kBlock + 100, 'a');
  const std::string bytes = first + "\rbc\r" + first + "\r";
  LineReader reader(Open(bytes), 0);
  platform_.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError);
  std::vector<std::string> lines;
  for (int failures = 0;;) {
    std::string_view line;
    try {
      if (!reader.Next(line)) {
        EXPECT_EQ(failures, 1);
        break;
      }
      lines.emplace_back(line);
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), FailureNumber::kDeviceError);
      ++failures;
    }
  }
  EXPECT_TRUE(lines == Strings({first, "bc", first}));
}

TEST_F(LineReaderTest, AFileThatBecameShorterIsAFailure) {
  LineReader reader(Open(std::string(100, 'a')), 0);
  platform_.memory.Put(kPath, "a");
  std::string_view line;
  EXPECT_THAT([&] { (void)reader.Next(line); }, FailsWith(FailureNumber::kReadPastEnd, "became shorter"));
}

}  // namespace
}  // namespace tallybook::testing
