#include "tallybook/engine/LogCheck.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::testing {
namespace {

using engine::LogTrouble;
using ::testing::HasSubstr;

constexpr std::size_t kHead = 32;
constexpr std::size_t kFrame = 24 + 16'384;

class LogCheckTest : public BookFixture {
 protected:
  // The log of a writer that has not ended.
  void SetUp() override {
    const auto book = CreateAndOpen();
    for (const int day : {1, 2, 3}) {
      Put(*book, 101, Day(2003, 1, day), 1, day);
      book->Commit();
    }
    log = folder.Read("North.tbk-wal");
    ASSERT_GT(log.size(), kHead + 2 * kFrame);
    ASSERT_EQ((log.size() - kHead) % kFrame, 0U);
  }
  Text Trouble(const std::string& bytes) {
    folder.Write("log", bytes);
    return LogTrouble(folder.Path("log"));
  }
  [[nodiscard]] std::string Flipped(std::size_t place) const {
    std::string bytes = log;
    bytes[place] = static_cast<char>(bytes[place] ^ 1);
    return bytes;
  }

  std::string log;
};

TEST_F(LogCheckTest, FindsNothingWhereThereIsNothingWrong) {
  EXPECT_EQ(Trouble(log), "");
  EXPECT_EQ(Trouble(""), "");
  EXPECT_EQ(LogTrouble(folder.Path("none")), "");
}

TEST_F(LogCheckTest, FindsDamageInAnyByteOfTheHead) {
  // The last bit of the mark says in which order sums take their numbers.
  for (std::size_t place = 0; place < kHead; ++place) EXPECT_NE(Trouble(Flipped(place)), "") << place;
}

TEST_F(LogCheckTest, FindsDamageInAFrame) {
  for (const std::size_t place : {0U, 4U, 16U, 20U, 24U, 5000U, 16'407U}) {
    EXPECT_THAT(Trouble(Flipped(kHead + place)), HasSubstr("what was written last is lost")) << place;
    EXPECT_NE(Trouble(Flipped(kHead + kFrame + place)), "") << place;
  }
}

TEST_F(LogCheckTest, FindsALogThatWasCutWithinAPage) {
  EXPECT_NE(Trouble(log.substr(0, 20)), "");
  EXPECT_NE(Trouble(log.substr(0, kHead + kFrame + 2000)), "");
  EXPECT_EQ(Trouble(log.substr(0, kHead + kFrame)), "");
}

TEST_F(LogCheckTest, EndsWhereThePagesOfAnEarlierRoundBegin) {
  std::string rest = log.substr(kHead, kFrame);
  rest[8] = static_cast<char>(rest[8] ^ 1);
  rest[100] = 'x';
  EXPECT_EQ(Trouble(log + rest), "");
}

TEST_F(LogCheckTest, EndsWhateverTheHeadSaysOfPages) {
  std::string odd = log;
  odd[9] = '\x7F';
  EXPECT_NE(Trouble(odd), "");
  EXPECT_NE(Trouble(std::string(5000, 'x')), "");
}

}  // namespace
}  // namespace tallybook::testing
