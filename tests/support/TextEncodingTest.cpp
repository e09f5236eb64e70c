#include <gtest/gtest.h>
#include <string>

#include "support/FileStream.h"
#include "support/TextEncoding.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

const std::string kMark = "\xEF\xBB\xBF";

class TextEncodingTest : public ::testing::Test {
 protected:
  // What is found out about a file of these bytes. `position_` is where the stream stands afterwards.
  EncodedText Found(const std::string& bytes, TextEncoding wanted = TextEncoding::kDetect) {
    platform_.memory.Put("/in/a.txt", bytes);
    FileStream stream(platform_.files.Open("/in/a.txt", Access::kRead, Sharing::kShared, Creation::kMustExist));
    const EncodedText found = FindEncoding(stream, wanted);
    position_ = stream.Position();
    return found;
  }
  TextEncoding Detected(const std::string& bytes) { return Found(bytes).encoding; }

  ScriptedPlatform platform_{FilesIn::kMemory};
  long long position_ = -1;
};

TEST_F(TextEncodingTest, AFileThatIsValidUtf8ThroughoutIsReadAsSuch) {
  EXPECT_EQ(Detected("M\xC3\xBCller \xE2\x82\xAC \xF0\x9F\x93\x97"), TextEncoding::kUtf8);
  EXPECT_EQ(Detected("plain"), TextEncoding::kUtf8);
  EXPECT_EQ(Detected(""), TextEncoding::kUtf8);
}

TEST_F(TextEncodingTest, AnyOtherFileIsReadThroughTheCodePage) {
  EXPECT_EQ(Detected("M\xFCller"), TextEncoding::kCodePage);
  EXPECT_EQ(Detected("M\xC3\xBCller and M\xFCller"), TextEncoding::kCodePage);
  EXPECT_EQ(Detected("cut short \xE2\x82"), TextEncoding::kCodePage);
  EXPECT_EQ(Detected("too long a form \xC0\xAF"), TextEncoding::kCodePage);
  EXPECT_EQ(Detected("half a pair \xED\xA0\x80"), TextEncoding::kCodePage);
}

TEST_F(TextEncodingTest, OneStrayByteAtTheEndOfALongFileIsSeen) {
  std::string bytes(300'000, 'a');
  bytes += '\xFC';
  EXPECT_EQ(Detected(bytes), TextEncoding::kCodePage);
}

// A block of 64 KiB may end within a character, whatever the character's length.
TEST_F(TextEncodingTest, ACharacterMayLieAcrossTheBlocksOfTheReader) {
  for (const char* character : {"\xC3\xBC", "\xE2\x82\xAC", "\xF0\x9F\x93\x97"}) {
    for (std::size_t before = 64 * 1024 - 4; before <= 64 * 1024; ++before) {
      EXPECT_EQ(Detected(std::string(before, 'a') + character + "b"), TextEncoding::kUtf8) << before;
      EXPECT_EQ(Detected(std::string(before, 'a') + std::string(character).substr(0, 1) + "b"), TextEncoding::kCodePage)
          << before;
    }
  }
}

TEST_F(TextEncodingTest, AByteOrderMarkIsPassedOverInUtf8) {
  const EncodedText found = Found(kMark + "abc");
  EXPECT_EQ(found.encoding, TextEncoding::kUtf8);
  EXPECT_EQ(found.start, 3);
  EXPECT_EQ(position_, 3);
}

TEST_F(TextEncodingTest, WithoutAMarkTheTextBeginsAtOnce) {
  EXPECT_EQ(Found("abc").start, 0);
  EXPECT_EQ(position_, 0);
  EXPECT_EQ(Found("\xEF\xBB").start, 0) << "two bytes are no mark";
}

TEST_F(TextEncodingTest, AMarkBeforeTextOfTheCodePageIsText) {
  const EncodedText found = Found(kMark + "M\xFCller");
  EXPECT_EQ(found.encoding, TextEncoding::kCodePage);
  EXPECT_EQ(found.start, 0);
}

TEST_F(TextEncodingTest, AChoiceThatIsFixedIsNotFoundOut) {
  EXPECT_EQ(Found("M\xC3\xBCller", TextEncoding::kCodePage).encoding, TextEncoding::kCodePage);
  EXPECT_EQ(Found(kMark + "a", TextEncoding::kCodePage).start, 0);
  EXPECT_EQ(Found("M\xFCller", TextEncoding::kUtf8).encoding, TextEncoding::kUtf8);
  EXPECT_EQ(Found(kMark + "M\xFCller", TextEncoding::kUtf8).start, 3);
}

TEST_F(TextEncodingTest, AReadThatFailsIsHandedOn) {
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_THAT([&] { Found("abc"); }, FailsWith(FailureNumber::kDeviceError));
}

TEST_F(TextEncodingTest, BytesBecomeTextOfTheEncoding) {
  EXPECT_EQ(Decode("M\xFCller \x80", TextEncoding::kCodePage), "M\xC3\xBCller \xE2\x82\xAC");
  EXPECT_EQ(Decode("M\xC3\xBCller", TextEncoding::kUtf8), "M\xC3\xBCller");
}

}  // namespace
}  // namespace tallybook::testing
