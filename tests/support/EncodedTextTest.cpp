#include <gtest/gtest.h>
#include <optional>
#include <span>
#include <string>

#include "support/EncodedText.h"
#include "support/FileStream.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

const std::string kMark = "\xEF\xBB\xBF";

class TextEncodingTest : public ::testing::Test {
 protected:
  EncodedText& Open(const std::string& bytes, TextEncoding wanted = TextEncoding::kDetect) {
    platform_.memory.Put("/in/a.txt", bytes);
    stream_.emplace(platform_.files.Open("/in/a.txt", Access::kRead, Sharing::kShared, Creation::kMustExist));
    return text_.emplace(*stream_, wanted);
  }
  TextEncoding Detected(const std::string& bytes) { return Open(bytes).Encoding(); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::optional<FileStream> stream_;
  std::optional<EncodedText> text_;
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
  EncodedText& text = Open(kMark + "abc");
  EXPECT_EQ(text.Encoding(), TextEncoding::kUtf8);
  EXPECT_EQ(text.Start(), 3);
  EXPECT_EQ(stream_->Position(), 3);
}

TEST_F(TextEncodingTest, WithoutAMarkTheTextBeginsAtOnce) {
  EXPECT_EQ(Open("abc").Start(), 0);
  EXPECT_EQ(stream_->Position(), 0);
  EXPECT_EQ(Open("\xEF\xBB").Start(), 0) << "two bytes are no mark";
  EXPECT_EQ(stream_->Position(), 0);
}

TEST_F(TextEncodingTest, AMarkBeforeTextOfTheCodePageIsText) {
  EncodedText& text = Open(kMark + "M\xFCller");
  EXPECT_EQ(text.Encoding(), TextEncoding::kCodePage);
  EXPECT_EQ(text.Start(), 0);
  EXPECT_EQ(stream_->Position(), 0);
}

TEST_F(TextEncodingTest, AChoiceThatIsFixedIsNotFoundOut) {
  EXPECT_EQ(Open("M\xC3\xBCller", TextEncoding::kCodePage).Encoding(), TextEncoding::kCodePage);
  EXPECT_EQ(Open(kMark + "a", TextEncoding::kCodePage).Start(), 0);
  EXPECT_EQ(Open("M\xFCller", TextEncoding::kUtf8).Encoding(), TextEncoding::kUtf8);
  EXPECT_EQ(Open(kMark + "M\xFCller", TextEncoding::kUtf8).Start(), 3);
}

TEST_F(TextEncodingTest, AReadThatFailsIsHandedOn) {
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_THAT([&] { Open("abc"); }, FailsWith(FailureNumber::kDeviceError));
  platform_.files.FailNth(FileCall::kRead, 2, FailureNumber::kDeviceError);
  EncodedText& text = Open("abc");
  EXPECT_THAT([&] { static_cast<void>(text.Encoding()); }, FailsWith(FailureNumber::kDeviceError));
}

TEST_F(TextEncodingTest, BytesBecomeTextOfTheEncoding) {
  EXPECT_EQ(Open("", TextEncoding::kCodePage).Decode("M\xFCller \x80"), "M\xC3\xBCller \xE2\x82\xAC");
  EXPECT_EQ(Open("", TextEncoding::kUtf8).Decode("M\xC3\xBCller"), "M\xC3\xBCller");
  EXPECT_EQ(Open("M\xFCller").Decode("M\xFCller"), "M\xC3\xBCller");
  EXPECT_EQ(Open("M\xC3\xBCller").Decode("M\xC3\xBCller"), "M\xC3\xBCller");
}

TEST_F(TextEncodingTest, DetectionLeavesThePositionWhereItWas) {
  std::string bytes(200'000, 'a');
  bytes +=
      "\xFC"
      "bbbbbbbbbb";
  EncodedText& text = Open(bytes);
  stream_->Seek(100'000);
  EXPECT_EQ(text.Decode("\xFC"), "\xC3\xBC");
  EXPECT_EQ(stream_->Position(), 100'000);
  std::string rest(100'011, ' ');
  EXPECT_TRUE(stream_->ReadWhole(std::as_writable_bytes(std::span(rest))));
  EXPECT_EQ(rest, bytes.substr(100'000));
}

// The file is not read through for a text that is the same in every encoding.
TEST_F(TextEncodingTest, PlainTextAsksForNoDetection) {
  EncodedText& text = Open(std::string(200'000, 'a'));
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_EQ(text.Decode("plain"), "plain");
  EXPECT_THAT([&] { static_cast<void>(text.Decode("\xFC")); }, FailsWith(FailureNumber::kDeviceError));
}

}  // namespace
}  // namespace tallybook::testing
