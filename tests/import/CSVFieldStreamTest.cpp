#include <gmock/gmock.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <string>
#include <vector>

#include "import/CSVFieldStream.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Text kPath = "/in/a.csv";

class CSVFieldStreamTest : public ::testing::Test {
 protected:
  CSVFieldStream& Open(const std::string& bytes, TextEncoding wanted = TextEncoding::kDetect) {
    platform_.memory.Put(kPath, bytes);
    file_ = std::make_unique<FileStream>(
        platform_.files.Open(kPath, Access::kRead, Sharing::kShared, Creation::kMustExist));
    fields_ = std::make_unique<CSVFieldStream>(*file_, wanted);
    return *fields_;
  }
  static Text NextText(CSVFieldStream& fields) { return fields.Encoding().Decode(fields.Next()); }
  static std::vector<Text> AllOf(CSVFieldStream& fields) {
    std::vector<Text> all;
    while (!fields.AtEnd()) all.push_back(NextText(fields));
    return all;
  }
  std::vector<Text> Fields(const std::string& bytes) { return AllOf(Open(bytes)); }
  Double Number(const std::string& bytes) { return Open(bytes).NextDouble(); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  std::unique_ptr<FileStream> file_;
  std::unique_ptr<CSVFieldStream> fields_;
};

TEST_F(CSVFieldStreamTest, CommaAndEveryKindOfLineEndEndAField) {
  EXPECT_THAT(Fields("a,b\rc\nd\r\ne"), ElementsAre("a", "b", "c", "d", "e"));
}

TEST_F(CSVFieldStreamTest, ALastLineEndBeginsNoFurtherField) {
  for (const char* end : {"", "\r", "\n", "\r\n", ","}) {
    EXPECT_THAT(Fields(std::string("a,b") + end), ElementsAre("a", "b")) << "end of " << std::string(end).size();
  }
}

TEST_F(CSVFieldStreamTest, AnEmptyLineIsAnEmptyField) {
  EXPECT_THAT(Fields("a\r\n\r\nb"), ElementsAre("a", "", "b"));
  EXPECT_THAT(Fields("\n\n"), ElementsAre("", ""));
  EXPECT_THAT(Fields("a\n\rb"), ElementsAre("a", "", "b")) << "in this order they are two line ends";
  EXPECT_THAT(Fields("a,\nb"), ElementsAre("a", "", "b"));
}

TEST_F(CSVFieldStreamTest, BlanksAroundAFieldAreDropped) {
  EXPECT_THAT(Fields("  a b  , c\r\n   \nd  "), ElementsAre("a b", "c", "", "d"));
}

TEST_F(CSVFieldStreamTest, QuotesMayHoldCommasBlanksAndLineEnds) {
  EXPECT_THAT(Fields("\"a,b\", \" c \" ,\"d\r\ne\",f"), ElementsAre("a,b", " c ", "d\r\ne", "f"));
}

TEST_F(CSVFieldStreamTest, AQuoteThatNeverClosesRunsToTheEnd) {
  EXPECT_THAT(Fields("a,\"b,c\r\nd"), ElementsAre("a", "b,c\r\nd"));
  EXPECT_THAT(Fields("a,\""), ElementsAre("a", ""));
}

TEST_F(CSVFieldStreamTest, WhatFollowsAClosingQuoteIsAFieldOfItsOwn) {
  EXPECT_THAT(Fields("\"a\"b,c"), ElementsAre("a", "b", "c"));
  EXPECT_THAT(Fields("\"a\"\"b\",c"), ElementsAre("a", "b", "c"));
}

TEST_F(CSVFieldStreamTest, AQuoteWithinAFieldIsACharacter) {
  EXPECT_THAT(Fields("a\"b,c\"d"), ElementsAre("a\"b", "c\"d"));
}

TEST_F(CSVFieldStreamTest, QuotesAroundANumberAreDropped) {
  EXPECT_EQ(Number("\"12.5\""), 12.5);
  EXPECT_EQ(Number("\" -3\""), -3);
}

TEST_F(CSVFieldStreamTest, ANumberIsWhatTheFieldBeginsWith) {
  EXPECT_EQ(Number("12.5kg"), 12.5);
  EXPECT_EQ(Number("-.5"), -0.5);
  EXPECT_EQ(Number("+7"), 7);
  EXPECT_EQ(Number("1e3"), 1000);
  EXPECT_EQ(Number("2E-2x"), 0.02);
  EXPECT_EQ(Number("\t4"), 4);
  EXPECT_EQ(Number("abc"), 0);
  EXPECT_EQ(Number("- 5"), 0);
  EXPECT_EQ(Number("1,000"), 1) << "a comma ends the field";
  EXPECT_EQ(Number(","), 0) << "an empty field";
}

TEST_F(CSVFieldStreamTest, WholeNumbersAreRoundedTiesToTheEvenOne) {
  CSVFieldStream& fields = Open("0.5,1.5,2.5,-0.5,-1.5,2.51");
  std::vector<Integer> numbers;
  while (!fields.AtEnd()) numbers.push_back(fields.NextInteger());
  EXPECT_THAT(numbers, ElementsAre(0, 2, 2, 0, -2, 3));
  CSVFieldStream& longs = Open("100000.5,100001.5");
  EXPECT_EQ(longs.NextLong(), 100000);
  EXPECT_EQ(longs.NextLong(), 100002);
}

TEST_F(CSVFieldStreamTest, ANumberBeyondItsWidthIsAnOverflow) {
  EXPECT_EQ(Open("32767.4").NextInteger(), 32767);
  EXPECT_THAT([&] { (void)Open("32767.5").NextInteger(); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(Open("-32768").NextInteger(), -32768);
  EXPECT_THAT([&] { (void)Open("-32769").NextInteger(); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(Open("2147483647").NextLong(), 2147483647);
  EXPECT_THAT([&] { (void)Open("2147483648").NextLong(); }, FailsWith(FailureNumber::kOverflow));
}

TEST_F(CSVFieldStreamTest, ANumberIsPassedOverUnlessItIsTooLarge) {
  const std::string many(299, '9');
  CSVFieldStream& fields = Open("12.5,1e300,kg,,-" + many + ",1e999,-2E308x," + many + "0123456789,last");
  for (int i = 0; i < 5; ++i) fields.PassDouble();
  for (const char* what : {"\"1e999\"", "\"-2E308x\"", "90123456789\""}) {
    EXPECT_THAT([&] { fields.PassDouble(); }, FailsWith(FailureNumber::kOverflow, what));
  }
  EXPECT_EQ(NextText(fields), "last");
}

TEST_F(CSVFieldStreamTest, AFieldThatWouldBeginAtTheEndIsAFailedRead) {
  CSVFieldStream& fields = Open("a\n");
  EXPECT_EQ(NextText(fields), "a");
  EXPECT_TRUE(fields.AtEnd());
  EXPECT_THAT([&] { (void)fields.Next(); }, FailsWith(FailureNumber::kReadPastEnd, "byte 2"));
  EXPECT_TRUE(Open("").AtEnd());
}

TEST_F(CSVFieldStreamTest, BlanksAtTheEndAreAField) {
  EXPECT_THAT(Fields("a,  "), ElementsAre("a", ""));
}

TEST_F(CSVFieldStreamTest, AFieldOfManyBlocksIsReadWhole) {
  const std::string longest(300'000, 'x');
  EXPECT_TRUE(Fields("a," + longest + ",\"" + longest + ",\",b") ==
              std::vector<Text>({"a", longest, longest + ",", "b"}));
}

TEST_F(CSVFieldStreamTest, ReadsTheSameWhereverABlockEnds) {
  for (std::size_t before = 64 * 1024 - 12; before <= 64 * 1024 + 1; ++before) {
    const std::string first(before, 'a');
    EXPECT_TRUE(Fields(first + "\r\n\"b,\" , c\r\rd") == std::vector<Text>({first, "b,", "c", "", "d"})) << before;
  }
}

TEST_F(CSVFieldStreamTest, TellsPositionAndSizeInBytes) {
  CSVFieldStream& fields = Open(
      "\xEF\xBB\xBF"
      "ab,c\r\nd");
  EXPECT_EQ(fields.Size(), 10);
  EXPECT_EQ(fields.Position(), 3);
  EXPECT_EQ(NextText(fields), "ab");
  EXPECT_EQ(fields.Position(), 6);
  EXPECT_EQ(NextText(fields), "c");
  EXPECT_EQ(fields.Position(), 9);
}

TEST_F(CSVFieldStreamTest, RewindsBehindTheByteOrderMark) {
  CSVFieldStream& fields = Open(
      "\xEF\xBB\xBF"
      "a,b");
  EXPECT_THAT(AllOf(fields), ElementsAre("a", "b"));
  fields.Rewind();
  EXPECT_EQ(fields.Position(), 3);
  EXPECT_THAT(AllOf(fields), ElementsAre("a", "b"));
}

TEST_F(CSVFieldStreamTest, TextIsReadInTheFilesEncoding) {
  EXPECT_THAT(Fields("M\xFCll,\x80"), ElementsAre("M\xC3\xBCll", "\xE2\x82\xAC"));
  EXPECT_THAT(Fields("M\xC3\xBCll"), ElementsAre("M\xC3\xBCll"));
  EXPECT_EQ(NextText(Open("\xC3\xBC", TextEncoding::kCodePage)), "\xC3\x83\xC2\xBC");
}

TEST_F(CSVFieldStreamTest, AReadThatFailedCanBeRepeatedWithoutLoss) {
  const std::string first(70'000, 'a');
  const std::string second(70'000, 'b');
  CSVFieldStream& fields = Open(first + "," + second + ",c");
  platform_.files.FailNth(FileCall::kRead, 1, FailureNumber::kDeviceError);
  EXPECT_THROW((void)fields.Next(), Failure);
  EXPECT_TRUE(AllOf(fields) == std::vector<Text>({first, second, "c"}));
}

// Any fields, written in any of the allowed ways, come back.
RC_GTEST_FIXTURE_PROP(CSVFieldStreamTest, WhatIsWrittenComesBack, ()) {
  const auto plain = rc::gen::container<std::string>(rc::gen::elementOf(std::string("abc019.-\";\t")));
  const auto quoted = rc::gen::container<std::string>(rc::gen::elementOf(std::string("ab ,\r\n;")));
  std::string bytes;
  std::vector<Text> wanted;
  const int count = *rc::gen::inRange(0, 40);
  for (int i = 0; i < count; ++i) {
    const bool quotes = *rc::gen::arbitrary<bool>();
    std::string field = quotes ? *quoted : *plain;
    if (!quotes && !field.empty() && field.front() == '"') field.front() = 'q';
    wanted.push_back(field);
    const std::string blanks(static_cast<std::size_t>(*rc::gen::inRange(0, 3)), ' ');
    const std::string end = *rc::gen::elementOf(std::vector<std::string>{",", "\r\n"});
    bytes += blanks + (quotes ? "\"" + field + "\"" : field) + blanks + end;
  }
  RC_ASSERT(Fields(bytes) == wanted);
}

}  // namespace
}  // namespace tallybook::testing
