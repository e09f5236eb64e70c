#include <gmock/gmock.h>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>

#include "import/TextImport.h"
#include "support/FileStream.h"
#include "tests/import/TextImportSetup.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class TextImportTest : public ::testing::Test {
 protected:
  TextImportSetup setup_;
  MemoryApp& app_ = setup_.host->app;
};

TEST_F(TextImportTest, AsksWhetherToGoOnWithNoAsTheDefault) {
  setup_.platform.boxes.Answer({kYes, kNo});
  EXPECT_TRUE(AskContinueAudit(app_, "Something is wrong"));
  EXPECT_FALSE(AskContinueAudit(app_, "Something else"));
  EXPECT_THAT(setup_.Boxes(),
              ElementsAre(ShownBox{"Something is wrong\r\n\r\nOk to continue auditing file?", 0x124, kCaption, kYes},
                          ShownBox{"Something else\r\n\r\nOk to continue auditing file?", 0x124, kCaption, kNo}));
  EXPECT_THAT(setup_.platform.boxes.Sounds(), ElementsAre("SystemQuestion", "SystemQuestion"));
}

TEST_F(TextImportTest, TellsWhatEndedARun) {
  TellNotImported(app_, 13, 107);
  EXPECT_THAT(setup_.Boxes(), ElementsAre(ShownBox{"Error:13:107\r\nInformation not imported.", 0x30, kCaption, kOk}));
  EXPECT_THAT(setup_.platform.boxes.Sounds(), ElementsAre("SystemExclamation"));
}

TEST_F(TextImportTest, MathHasThreeWords) {
  EXPECT_EQ(WordOfMath(1), "Add");
  EXPECT_EQ(WordOfMath(2), "Subtract");
  EXPECT_EQ(WordOfMath(3), "Replace");
  for (const Integer other : std::initializer_list<Integer>{0, 4, -1, 32767})
    EXPECT_EQ(WordOfMath(other), std::nullopt) << other;
}

TEST_F(TextImportTest, CodesAreComparedTrimmedPaddedAndInUpperCase) {
  EXPECT_EQ(CutCode("  ab1 "), "AB1       ");
  EXPECT_EQ(CutCode(""), "          ");
  EXPECT_EQ(CutCode("0123456789"), "0123456789");
  EXPECT_EQ(CutCode("0123456789x"), "0123456789");
  EXPECT_EQ(CutCode("m\xC3\xBCller"), "M\xC3\x9CLLER    ") << "ten characters, not bytes";
  EXPECT_EQ(CutCode("\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC"
                    "x"),
            "\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C\xC3\x9C");
}

TEST_F(TextImportTest, ACodeThatMustFitIsNotCut) {
  EXPECT_EQ(FittingCode(" 0123456789 "), "0123456789");
  EXPECT_EQ(FittingCode("m\xC3\xBCller"), "M\xC3\x9CLLER    ");
  EXPECT_THAT([] { (void)FittingCode("0123456789x"); }, FailsWith(FailureNumber::kInvalidArgument, "0123456789x"));
}

TEST_F(TextImportTest, CodesAreFoundByPositionAndTheFirstOfEqualOnesWins) {
  AccountCodeTable codes;
  for (const char* code : {"100       ", "200       ", "100       ", "300       "}) codes.Add(code);
  EXPECT_EQ(codes.PositionOf("100       "), 1);
  EXPECT_EQ(codes.PositionOf("200       "), 2);
  EXPECT_EQ(codes.PositionOf("300       "), 4);
  EXPECT_EQ(codes.PositionOf("100"), 0) << "padding counts";
  EXPECT_EQ(codes.PositionOf("400       "), 0);
}

class AccountFinderTest : public TextImportTest {
 protected:
  AccountFinderTest() {
    for (const char* code : {"100       ", "200       ", "M\xC3\x9CLLER    "}) codes_.Add(code);
    setup_.platform.memory.Put("/in/a.txt", "m\xFCller");
    stream_.emplace(setup_.platform.files.Open("/in/a.txt", Access::kRead, Sharing::kShared, Creation::kMustExist));
    encoding_.emplace(*stream_, TextEncoding::kDetect);
  }

  AccountCodeTable codes_;
  std::optional<FileStream> stream_;
  std::optional<EncodedText> encoding_;
};

TEST_F(AccountFinderTest, FindsCodesInWhateverFormAndOrderTheyCome) {
  AccountFinder finder(codes_, *encoding_, CutCode);
  for (int round = 0; round < 3; ++round) {
    for (const auto& [bytes, position] : std::initializer_list<std::pair<const char*, Long>>{
             {"100", 1}, {"200", 2}, {" 100 ", 1}, {"200", 2}, {"200", 2}, {"m\xFCller", 3}, {"999", 0}, {"100", 1}}) {
      EXPECT_EQ(finder.Find(bytes).position, position) << bytes;
    }
  }
  EXPECT_EQ(finder.Find("m\xFCller").code, "M\xC3\x9CLLER    ");
  EXPECT_EQ(finder.Find("999").code, "999       ");
}

TEST_F(AccountFinderTest, ABlankCodeIsNoCode) {
  AccountFinder finder(codes_, *encoding_, FittingCode);
  EXPECT_TRUE(finder.Find("").blank);
  EXPECT_TRUE(finder.Find("   ").blank);
  EXPECT_TRUE(finder.Find(std::string(100, ' ')).blank);
  EXPECT_FALSE(finder.Find("100").blank);
  EXPECT_FALSE(finder.Find("999").blank);
}

TEST_F(AccountFinderTest, ACodeThatFailsFailsEachTime) {
  AccountFinder finder(codes_, *encoding_, FittingCode);
  for (int round = 0; round < 2; ++round) {
    EXPECT_THAT([&] { finder.Find("0123456789x"); }, FailsWith(FailureNumber::kInvalidArgument, "0123456789x"));
    EXPECT_EQ(finder.Find("100").position, 1);
  }
}

TEST_F(AccountFinderTest, ALongCodeIsFoundLikeAnyOther) {
  AccountFinder finder(codes_, *encoding_, CutCode);
  const std::string blanks(100, ' ');
  EXPECT_EQ(finder.Find(blanks + "200" + blanks).position, 2);
  EXPECT_EQ(finder.Find(blanks + "100").position, 1);
  EXPECT_EQ(finder.Find("1" + std::string(100, '0')).position, 0);
}

TEST_F(AccountFinderTest, MoreCodesThanItRemembersAreFoundAllTheSame) {
  AccountFinder finder(codes_, *encoding_, CutCode);
  for (int number = 0; number < 150'000; ++number) {
    const Long expected = number == 100 ? 1 : number == 200 ? 2 : 0;
    ASSERT_EQ(finder.Find(std::to_string(number)).position, expected) << number;
  }
  EXPECT_EQ(finder.Find("100").position, 1);
  EXPECT_EQ(finder.Find("149999").position, 0);
}

TEST_F(TextImportTest, ATableGrowsForANumberThatIsTouched) {
  NumberTable table;
  table.Touch(0);
  table.Touch(7);
  table.Touch(2);
  EXPECT_THAT(table.Marked(), ElementsAre(2, 7)) << "there is no number 0";
}

TEST_F(TextImportTest, NumbersAreMarkedFromOneToTheHighest) {
  NumberTable table(5);
  EXPECT_EQ(table.Highest(), 5);
  EXPECT_THAT(table.Marked(), IsEmpty());
  table.Mark(1);
  table.Mark(5);
  EXPECT_THAT(table.Marked(), ElementsAre(1, 5));
  EXPECT_TRUE(table.Holds(5));
  for (const Long other : {-1, 0, 2, 6, 2147483647}) EXPECT_FALSE(table.Holds(other)) << other;
}

TEST_F(TextImportTest, ANumberOutsideTheTableCannotBeMarked) {
  NumberTable table(5);
  for (const Long outside : {-1, 0, 6}) {
    EXPECT_THAT([&] { table.Mark(outside); }, FailsWith(FailureNumber::kRange)) << outside;
  }
  NumberTable none(-3);
  EXPECT_EQ(none.Highest(), 0);
  EXPECT_FALSE(none.Holds(0));
}

}  // namespace
}  // namespace tallybook::testing
