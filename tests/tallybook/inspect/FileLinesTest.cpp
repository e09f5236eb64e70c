#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/inspect/FileLines.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::inspect {
namespace {

const Text kShownPath = "/shown.txt";

class FileLinesTest : public ::testing::Test {
 protected:
  void Put(const std::string& bytes) { platform_.memory.Put(kShownPath, bytes); }
  static std::vector<Text> TextsOf(const std::vector<FileLines::Line>& lines) {
    std::vector<Text> texts;
    for (const FileLines::Line& line : lines) texts.push_back(std::to_string(line.number) + line.text + line.end);
    return texts;
  }
  testing::ScriptedPlatform platform_{testing::FilesIn::kMemory};
};

TEST_F(FileLinesTest, AreGivenWithTheirNumbersAndEnds) {
  Put("a\rb\nc\r\n\r\nlast");
  FileLines lines(kShownPath, TextEncoding::kDetect);
  EXPECT_EQ(TextsOf(lines.From(1, 9)), (std::vector<Text>{"1a\r", "2b\n", "3c\r\n", "4\r\n", "5last"}));
  EXPECT_EQ(TextsOf(lines.From(2, 2)), (std::vector<Text>{"2b\n", "3c\r\n"}));
  EXPECT_TRUE(lines.From(6, 2).empty());
  EXPECT_EQ(TextsOf(lines.From(5, 2)), (std::vector<Text>{"5last"}));
}

TEST_F(FileLinesTest, AreDecodedAsTheWholeFileIs) {
  Put("caf\xe9\r\nplain\r\n");
  FileLines lines(kShownPath, TextEncoding::kDetect);
  EXPECT_EQ(lines.From(1, 1).front().text, "café");
}

TEST_F(FileLinesTest, AreCutWhereTheyAreTooLongToBeShown) {
  Put(std::string(FileLines::kMostBytes + 1, 'x') + "\r\ny\r\n");
  FileLines lines(kShownPath, TextEncoding::kDetect);
  const auto shown = lines.From(1, 2);
  EXPECT_EQ(shown[0].text.size(), FileLines::kMostBytes);
  EXPECT_TRUE(shown[0].is_cut);
  EXPECT_EQ(shown[1].text, "y");
  EXPECT_FALSE(shown[1].is_cut);
}

TEST_F(FileLinesTest, AFileThatIsNotThereIsNamed) {
  EXPECT_THAT([] { FileLines lines("/gone.txt", TextEncoding::kDetect); },
              testing::FailsWith(FailureNumber::kFileNotFound));
}

// Beyond what is remembered of where lines begin, whichever is asked for first, and past the blocks that are read.
RC_GTEST_PROP(FileLinesProperties, AreThoseThatRawTextHas, ()) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  const int count = *rc::gen::inRange(1, 20'000);
  const auto ends = *rc::gen::container<std::vector<std::string>>(7, rc::gen::element<std::string>("\r", "\n", "\r\n"));
  std::string bytes;
  for (int line = 0; line < count; ++line) {
    bytes += "line " + std::to_string(line + 1) + ends[static_cast<std::size_t>(line) % ends.size()];
  }
  platform.memory.Put(kShownPath, bytes);
  FileLines lines(kShownPath, TextEncoding::kUtf8);
  for (int asked = 0; asked < 4; ++asked) {
    const int first = *rc::gen::inRange(1, count + 1);
    const auto shown = lines.From(first, 3);
    RC_ASSERT(shown.size() == static_cast<std::size_t>(std::min(3, count - first + 1)));
    RC_ASSERT(shown.front().number == first);
    RC_ASSERT(shown.front().text == "line " + std::to_string(first));
  }
}

Finding At(Integer column, const Text& text) {
  Finding finding;
  finding.line = 1;
  finding.column = column;
  finding.text = text;
  return finding;
}

TEST(SpanOfAFinding, IsItsTextInTheFieldThatItNames) {
  EXPECT_EQ(SpanOf(At(3, "1"), "1,1,1x", ","), (TextSpan{4, 1}));
  EXPECT_EQ(SpanOf(At(2, "1,5"), "100,\"1,5\",7", ","), (TextSpan{5, 3}));
  EXPECT_EQ(SpanOf(At(2, "b"), "a\tb", ",\t"), (TextSpan{2, 1}));
}

TEST(SpanOfAFinding, IsWhereItsTextIsFoundFirstWhereTheFieldHasItNot) {
  EXPECT_EQ(SpanOf(At(9, "x7"), "1,x7,x7", ","), (TextSpan{2, 2}));
}

TEST(SpanOfAFinding, IsTheFieldWhereThereIsNoText) {
  EXPECT_EQ(SpanOf(At(2, ""), "a,,c", ","), (TextSpan{2, 0}));
}

TEST(SpanOfAFinding, IsNoneWhereAllOfTheLineIsMeantOrTheLineHasItNot) {
  EXPECT_EQ(SpanOf(At(0, ""), "a,b", ","), std::nullopt);
  EXPECT_EQ(SpanOf(At(1, "z"), "a,b", ","), std::nullopt);
}

TEST(SpanOfAFinding, OfATextThatWasCutIsWhatIsLeftOfIt) {
  const Text whole(200, 'q');
  EXPECT_EQ(SpanOf(At(1, Cut(whole)), whole, ","), (TextSpan{0, 80}));
}

}  // namespace
}  // namespace tallybook::inspect
