#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tallybook/inspect/QdxLines.h"
#include "tests/import/ExchangeFile.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::inspect {
namespace {

using ::testing::ElementsAre;
using testing::ExchangeFile;

const Text kShownFile = "/DAY.QDX";

ExchangeFile ShownFile() {
  ExchangeFile file;
  file.first = DateFromParts(2003, 2, 3);
  file.last = DateFromParts(2003, 2, 4);
  file.accounts = {{"100", "Front"}, {"200", "Back"}};
  file.fields = {{1, "Sales"}, {7, "Hours"}};
  file.blocks = {{1, {{file.first, {{1, 7.5}, {2, 3}}}, {file.last, {{2, 1}}}}}, {2, {{file.last, {{1, 9}}}}}};
  return file;
}

std::vector<Text> LinesOf(const QdxLines::Place& place) {
  std::vector<Text> texts;
  for (std::size_t at = 0; at < place.lines.size(); ++at)
    texts.push_back((at == place.at ? "> " : "") + place.lines[at].text);
  return texts;
}

class QdxLinesTest : public ::testing::Test {
 protected:
  // Counted from the first byte of the figures.
  std::vector<Text> About(const ExchangeFile& file, long long byte_of_body, int before, int behind) {
    platform_.memory.Put(kShownFile, file.Bytes());
    QdxLines lines(kShownFile);
    return LinesOf(
        lines.About(static_cast<long long>((file.Head() + file.Tables()).size()) + byte_of_body, before, behind));
  }
  testing::ScriptedPlatform platform_{testing::FilesIn::kMemory};
};

TEST_F(QdxLinesTest, NameAccountsAndFieldsByTheFilesTables) {
  constexpr long long kSecondValue = 2 + 8 + 10;
  EXPECT_THAT(About(ShownFile(), kSecondValue, 5, 99),
              ElementsAre("field table 1: 1, \"Sales\"", "field table 2: 7, \"Hours\"", "account 100  Front",
                          "  2003-02-03, 2 figures", "    1  Sales: 7.5", ">     7  Hours: 3", "  2003-02-04, 1 figure",
                          "    7  Hours: 1", "  end of the account", "account 200  Back", "  2003-02-04, 1 figure",
                          "    1  Sales: 9", "  end of the account", "end of the figures"));
}

TEST_F(QdxLinesTest, AreAsManyAsAreAskedForAroundTheByte) {
  constexpr long long kWithinTheFirstValue = 2 + 8 + 5;
  EXPECT_THAT(
      About(ShownFile(), kWithinTheFirstValue, 1, 2),
      ElementsAre("  2003-02-03, 2 figures", ">     1  Sales: 7.5", "    7  Hours: 3", "  2003-02-04, 1 figure"));
}

TEST_F(QdxLinesTest, BeginWithTheHeaderAndEndWithTheLastItem) {
  EXPECT_EQ(About(ShownFile(), -100'000, 5, 0).size(), 1U);
  EXPECT_THAT(About(ShownFile(), 100'000, 1, 9), ElementsAre("  end of the account", "> end of the figures"));
}

TEST_F(QdxLinesTest, TellWhatTheTablesDoNotHave) {
  ExchangeFile file = ShownFile();
  file.blocks[0].days[0].values[1].field_position = 9;
  EXPECT_THAT(About(file, 20, 0, 0), ElementsAre(">     no field of the table, 9: 3"));
}

TEST_F(QdxLinesTest, AFileThatIsNoneIsShownAsFarAsItCanBe) {
  platform_.memory.Put(kShownFile, "no exchan");
  EXPECT_THAT(LinesOf(QdxLines(kShownFile).About(0, 5, 5)), ElementsAre("> magic: \"no exchan\""));
  platform_.memory.Put(kShownFile, "");
  EXPECT_TRUE(QdxLines(kShownFile).About(0, 5, 5).lines.empty());
  EXPECT_THAT([] { QdxLines lines("/gone.QDX"); }, testing::FailsWith(FailureNumber::kFileNotFound));
}

// Beyond what is remembered of where dates begin, whichever byte is asked for first.
RC_GTEST_PROP(QdxLinesProperties, AreTheSameWhateverWasAskedForBefore, ()) {
  testing::ScriptedPlatform platform(testing::FilesIn::kMemory);
  ExchangeFile file = ShownFile();
  const int days = *rc::gen::inRange(1, 6000);
  for (ExchangeFile::Block& block : file.blocks)
    block.days.assign(static_cast<std::size_t>(days), {file.first, {{1, 1}, {2, 2}}});
  const std::string bytes = file.Bytes();
  platform.memory.Put(kShownFile, bytes);
  QdxLines again(kShownFile);
  for (int time = 0; time < 4; ++time) {
    const long long offset = *rc::gen::inRange<long long>(0, static_cast<long long>(bytes.size()));
    const int before = *rc::gen::inRange(0, 60);
    QdxLines fresh(kShownFile);
    const auto expected = fresh.About(offset, before, 9);
    RC_ASSERT(LinesOf(again.About(offset, before, 9)) == LinesOf(expected));
    RC_ASSERT(expected.lines[expected.at].offset <= offset);
    const bool is_last = expected.at + 1 == expected.lines.size();
    RC_ASSERT(is_last || expected.lines[expected.at + 1].offset > offset);
  }
}

}  // namespace
}  // namespace tallybook::inspect
