#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include "base/CodePage.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

TEST(CodePageTest, AsciiStaysAsItIs) {
  EXPECT_EQ(FromCodePage("Front of shop"), "Front of shop");
  EXPECT_EQ(ToCodePage("Front of shop"), "Front of shop");
  EXPECT_EQ(FromCodePage(std::string_view("\0\x7F", 2)), Text("\0\x7F", 2));
}

TEST(CodePageTest, BytesAboveAsciiAreTheirCharacters) {
  EXPECT_EQ(FromCodePage("Caf\xE9"), "Café");
  EXPECT_EQ(FromCodePage("\x80 5"), "€ 5");
  EXPECT_EQ(FromCodePage("\x93quoted\x94"), "“quoted”");
  EXPECT_EQ(FromCodePage("\xFF\x9F\x8A"), "ÿŸŠ");
  EXPECT_EQ(ToCodePage("Müller & Söhne, 5 €"), "M\xFCller & S\xF6hne, 5 \x80");
}

TEST(CodePageTest, BytesWithoutACharacterKeepACodePointOfTheSameValue) {
  EXPECT_EQ(FromCodePage("\x81\x8D\x8F\x90\x9D"), "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D");
  EXPECT_EQ(ToCodePage("\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D"), "\x81\x8D\x8F\x90\x9D");
}

TEST(CodePageTest, EachOfTheBytesSurvivesTheRoundTrip) {
  for (int value = 0; value < 256; ++value) {
    const std::string byte(1, static_cast<char>(value));
    EXPECT_EQ(ToCodePage(FromCodePage(byte)), byte) << value;
    EXPECT_EQ(CharacterCount(FromCodePage(byte)), 1) << value;
  }
}

TEST(CodePageTest, ACharacterThatThePageLacksIsAFailureThatShowsTheText) {
  EXPECT_THAT([] { (void)ToCodePage("Łódź"); }, FailsWith(FailureNumber::kInvalidArgument, "Łódź"));
  EXPECT_THAT([] { (void)ToCodePage("ab日"); }, FailsWith(FailureNumber::kInvalidArgument, "U+65E5"));
  EXPECT_THAT([] { (void)ToCodePage("é😀"); }, FailsWith(FailureNumber::kInvalidArgument, "character 2 of"));
  EXPECT_THAT([] { (void)ToCodePage("\xC2\x80"); }, FailsWith(FailureNumber::kInvalidArgument, "U+0080"))
      << "the byte 0x80 is the euro sign's";
}

TEST(CodePageTest, BytesThatAreNoUtf8AreAFailure) {
  EXPECT_THAT([] { (void)ToCodePage("Caf\xE9"); }, FailsWith(FailureNumber::kInvalidArgument, "Caf\\xE9"));
  EXPECT_THAT([] { (void)ToCodePage("\xC3"); }, FailsWith(FailureNumber::kInvalidArgument, "\\xC3"));
}

TEST(CodePageTest, CountsCharactersAndNotBytes) {
  EXPECT_EQ(CharacterCount(""), 0);
  EXPECT_EQ(CharacterCount("abc"), 3);
  EXPECT_EQ(CharacterCount("é€😀"), 3);
}

TEST(CodePageTest, KnowsUtf8FromOtherBytes) {
  for (const char* text : {"", "plain", "Café", "€", "😀", "\xED\x9F\xBF", "\xEE\x80\x80", "\xF4\x8F\xBF\xBF"})
    EXPECT_TRUE(IsUtf8(text)) << text;
  EXPECT_FALSE(IsUtf8("Caf\xE9")) << "a lone byte";
  EXPECT_FALSE(IsUtf8("\x80")) << "a continuation without a start";
  EXPECT_FALSE(IsUtf8("\xC3")) << "cut short";
  EXPECT_FALSE(IsUtf8("\xE2\x82")) << "cut short";
  EXPECT_FALSE(IsUtf8("\xF0\x9F\x98")) << "cut short";
  EXPECT_FALSE(IsUtf8("\xC0\xAF")) << "overlong";
  EXPECT_FALSE(IsUtf8("\xC1\xBF")) << "overlong";
  EXPECT_FALSE(IsUtf8("\xE0\x9F\xBF")) << "overlong";
  EXPECT_FALSE(IsUtf8("\xF0\x8F\xBF\xBF")) << "overlong";
  EXPECT_FALSE(IsUtf8("\xED\xA0\x80")) << "a surrogate";
  EXPECT_FALSE(IsUtf8("\xED\xBF\xBF")) << "a surrogate";
  EXPECT_FALSE(IsUtf8("\xF4\x90\x80\x80")) << "above U+10FFFF";
  EXPECT_FALSE(IsUtf8("\xF5\x80\x80\x80"));
  EXPECT_FALSE(IsUtf8("\xC3\x28")) << "a start without its continuation";
}

RC_GTEST_PROP(CodePageProperties, AllBytesSurviveTheRoundTrip, (const std::string& bytes)) {
  const Text text = FromCodePage(bytes);
  RC_ASSERT(IsUtf8(text));
  RC_ASSERT(ToCodePage(text) == bytes);
  RC_ASSERT(static_cast<std::size_t>(CharacterCount(text)) == bytes.size());
}

RC_GTEST_PROP(CodePageProperties, WhatIsNoUtf8IsNeverWritten, (const std::vector<unsigned char>& values)) {
  const std::string bytes(values.begin(), values.end());
  if (IsUtf8(bytes)) return;
  RC_ASSERT_THROWS_AS((void)ToCodePage(bytes), Failure);
}

TEST(Utf16Test, CharactersAreUnitsAndThoseAboveFFFFPairs) {
  EXPECT_EQ(ToUtf16(""), u"");
  EXPECT_EQ(ToUtf16("a\xC3\xA4\xE2\x82\xAC\xEF\xBF\xBF"), u"a\u00E4\u20AC\uFFFF");
  EXPECT_EQ(ToUtf16("\xF0\x90\x80\x80\xF0\x9F\x93\x92\xF4\x8F\xBF\xBF"), u"\U00010000\U0001F4D2\U0010FFFF");
}

TEST(Utf16Test, WayBackGivesTheTextAgain) {
  for (char32_t character = 1; character <= 0x10FFFF; character += 0x3FD) {
    if (character >= 0xD800 && character <= 0xDFFF) continue;
    std::u16string units(1, static_cast<char16_t>(character));
    if (character >= 0x10000)
      units = {static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)),
               static_cast<char16_t>(0xDC00 + (character & 0x3FF))};
    EXPECT_EQ(ToUtf16(FromUtf16(units)), units) << static_cast<unsigned>(character);
  }
}

TEST(Utf16Test, HalfAPairIsTheReplacementCharacter) {
  const char16_t high = 0xD83D;
  const char16_t low = 0xDCD2;
  const Text replaced = "\xEF\xBF\xBD";
  EXPECT_EQ(FromUtf16(std::u16string{high}), replaced);
  EXPECT_EQ(FromUtf16(std::u16string{low, u'a'}), replaced + "a");
  EXPECT_EQ(FromUtf16(std::u16string{high, u'a'}), replaced + "a");
  EXPECT_EQ(FromUtf16(std::u16string{high, high, low}), replaced + "\xF0\x9F\x93\x92");
}

TEST(Utf16Test, BytesThatAreNoUtf8AreAnInvalidArgument) {
  for (const char* const text : {"a\x80", "\xC3", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
    EXPECT_THAT([&] { (void)ToUtf16(text); }, FailsWith(FailureNumber::kInvalidArgument)) << text;
}

}  // namespace
}  // namespace tallybook::testing
