#include <gmock/gmock.h>
#include <utility>
#include <vector>

#include "support/WinAPI.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

class MessageTest : public ::testing::Test {
 protected:
  ScriptedPlatform platform_{FilesIn::kMemory};
};

TEST_F(MessageTest, AskMessageShowsTheBoxAndGivesTheButton) {
  platform_.boxes.Answer({kYes});
  EXPECT_EQ(AskMessage("Continue?", kYesNo | kQuestionIcon | kSecondButtonDefault, "Audit"), kYes);
  EXPECT_THAT(platform_.boxes.Shown(),
              ElementsAre(ShownBox{"Continue?", kYesNo | kQuestionIcon | kSecondButtonDefault, "Audit", kYes}));
}

TEST_F(MessageTest, AnEmptyCaptionTakesTheApplicationsTitle) {
  ShowMessage("Done", kOkOnly, "");
  EXPECT_EQ(platform_.boxes.Shown().at(0).caption, ScriptedPlatform::kTitle);
}

TEST_F(MessageTest, TheSoundComesBeforeTheBox) {
  struct Order : MessageBoxes {
    Integer Show(const Text& text, Long /*style*/, const Text& /*caption*/) override {
      calls.push_back(text);
      return kOk;
    }
    void PlaySound(const Text& name) override { calls.push_back(name); }
    std::vector<Text> calls;
  } order;
  MessageBoxes* const before = std::exchange(ThePlatform().message_boxes, &order);
  ShowMessage("box", kStopIcon, "");
  ThePlatform().message_boxes = before;
  EXPECT_THAT(order.calls, ElementsAre("SystemHand", "box"));
}

TEST_F(MessageTest, EachIconHasItsSound) {
  for (const Long style : {0x10, 0x20, 0x30, 0x40, 0x00, 0x50, 0xF0}) PlayStyleSound(style);
  EXPECT_THAT(platform_.boxes.Sounds(),
              ElementsAre("SystemHand", "SystemQuestion", "SystemExclamation", "SystemAsterisk", "SystemDefault",
                          "SystemDefault", "SystemDefault"));
}

TEST_F(MessageTest, OnlyTheIconsBitsChooseTheSound) {
  PlayStyleSound(kQuestionIcon | kRetryCancel | kSecondButtonDefault);
  EXPECT_THAT(platform_.boxes.Sounds(), ElementsAre("SystemQuestion"));
}

TEST(ZeroTextTest, CutsAtTheFirstZeroCharacter) {
  EXPECT_EQ(CutAtNull(Text("ab\0cd\0", 6)), "ab");
  EXPECT_EQ(CutAtNull(Text("\0ab", 3)), "");
  EXPECT_EQ(CutAtNull("abc"), "abc");
  EXPECT_EQ(CutAtNull(""), "");
}

TEST(ZeroTextTest, TextIsWhatIsMoreThanBlanksBeforeTheZero) {
  EXPECT_TRUE(HasText("a"));
  EXPECT_TRUE(HasText("  a  "));
  EXPECT_TRUE(HasText("\t")) << "blanks are blanks, and a tab is none";
  EXPECT_FALSE(HasText(""));
  EXPECT_FALSE(HasText("   "));
  EXPECT_FALSE(HasText(Text("  \0abc", 6)));
}

TEST(ZeroTextTest, PointerTextEndsAtTheZeroOrAt512Characters) {
  EXPECT_EQ(StringFromPointer("abc"), "abc");
  EXPECT_EQ(StringFromPointer(""), "");
  EXPECT_EQ(StringFromPointer(nullptr), "");
  const Text longest(512, 'x');
  EXPECT_EQ(StringFromPointer(longest.c_str()), longest);
  EXPECT_EQ(StringFromPointer(Text(600, 'x').c_str()), longest);
}

}  // namespace
}  // namespace tallybook::testing
