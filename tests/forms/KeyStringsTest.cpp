// The language of key strings, held against the American layout of ScriptedKeyboard. Words of events: see there.
#include <gmock/gmock.h>

#include "base/ModParse.h"
#include "forms/Form.h"
#include "forms/KeyStrings.h"
#include "forms/TextBox.h"
#include "platform/Platform.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class KeyStringsTest : public ::testing::Test {
 protected:
  ~KeyStringsTest() override { ResetKeyNames(); }

  // The events that a string becomes.
  Text Sent(const Text& keys) {
    ScriptedPlatform platform;
    SendKeysEx(keys, false);
    EXPECT_LE(platform.keyboard.Batches().size(), 1U) << keys;
    return platform.keyboard.Events();
  }
};

// --- Characters ------------------------------------------------------------------------------------------------------

TEST_F(KeyStringsTest, CharactersArePressedAndReleasedOneAfterTheOther) {
  EXPECT_EQ(Sent("abc"), "a /a b /b c /c");
  EXPECT_EQ(Sent("7 "), "7 /7 [20] /[20]");
}

TEST_F(KeyStringsTest, ACharacterThatNeedsShiftGetsIt) {
  EXPECT_EQ(Sent("A"), "[10] a /a /[10]");
  EXPECT_EQ(Sent("!a"), "[10] 1 /1 /[10] a /a");
}

TEST_F(KeyStringsTest, TheWholeStringIsOneBatch) {
  ScriptedPlatform platform;
  SendKeysEx("a+(bc){DOWN 300}d", false);
  ASSERT_THAT(platform.keyboard.Batches(), SizeIs(1));
  EXPECT_THAT(platform.keyboard.Batches()[0], SizeIs(2 + 6 + 600 + 2));
}

TEST_F(KeyStringsTest, NothingDeliversNothing) {
  ScriptedPlatform platform;
  SendKeysEx("", false);
  SendKeysEx("(", false);
  EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
}

TEST_F(KeyStringsTest, ATildeIsItsKeyAndEnterInBraces) {
  EXPECT_EQ(Sent("~"), "[10] [C0] /[C0] /[10]");
  EXPECT_EQ(Sent("{~}"), "[0D] /[0D]");
}

TEST_F(KeyStringsTest, ACharacterAbove255IsACharacterEvent) {
  EXPECT_EQ(Sent("\xE2\x82\xAC"), "U+20AC /U+20AC");
  EXPECT_EQ(Sent("\xEF\xBF\xBC"), "U+FFFC /U+FFFC");
}

TEST_F(KeyStringsTest, ACharacterOfTwoUnitsIsTwoEvents) {
  EXPECT_EQ(Sent("\xF0\x9F\x93\x92"), "U+D83D /U+D83D U+DCD2 /U+DCD2");
}

TEST_F(KeyStringsTest, ACharacterThatTheLayoutLacksIsKeyFFWithShift) {
  EXPECT_EQ(Sent("\xC3\xA4"), "[10] [FF] /[FF] /[10]");
  EXPECT_EQ(Sent("+\xC3\xA4"), "[10] [FF] /[FF] /[10]");
}

TEST_F(KeyStringsTest, ATextThatIsNoUtf8IsAnInvalidArgument) {
  ScriptedPlatform platform;
  EXPECT_THAT([] { SendKeysEx("a\xFF", false); }, FailsWith(FailureNumber::kInvalidArgument, "\\xFF"));
  EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
}

// --- Shift, control, alt ---------------------------------------------------------------------------------------------

TEST_F(KeyStringsTest, EachSignHoldsItsKeyOverOneItem) {
  EXPECT_EQ(Sent("+ab"), "[10] a /a /[10] b /b");
  EXPECT_EQ(Sent("^ab"), "[11] a /a /[11] b /b");
  EXPECT_EQ(Sent("%ab"), "[12] a /a /[12] b /b");
}

TEST_F(KeyStringsTest, HoldsNest) {
  EXPECT_EQ(Sent("+^a"), "[10] [11] a /a /[11] /[10]");
  EXPECT_EQ(Sent("^%{DEL}"), "[11] [12] e[2E] /e[2E] /[12] /[11]");
}

TEST_F(KeyStringsTest, ShiftThatIsHeldIsNotPressedAgain) {
  EXPECT_EQ(Sent("+(ab)"), "[10] a /a b /b /[10]");
  EXPECT_EQ(Sent("+A"), "[10] a /a /[10]");
  EXPECT_EQ(Sent("^A"), "[11] [10] a /a /[10] /[11]");
}

TEST_F(KeyStringsTest, AfterItsItemAHoldIsOver) {
  EXPECT_EQ(Sent("+aA"), "[10] a /a /[10] [10] a /a /[10]");
  EXPECT_EQ(Sent("++A"), "[10] [10] a /a /[10] /[10]");
}

TEST_F(KeyStringsTest, AHoldAtTheEndIsPressedAndReleased) {
  EXPECT_EQ(Sent("a+"), "a /a [10] /[10]");
  EXPECT_EQ(Sent("+^"), "[10] [11] /[11] /[10]");
}

TEST_F(KeyStringsTest, AVeryLongRunOfSignsIsNoTrouble) {
  ScriptedPlatform platform;
  SendKeysEx(Text(200'000, '+'), false);
  ASSERT_THAT(platform.keyboard.Batches(), SizeIs(1));
  EXPECT_THAT(platform.keyboard.Batches()[0], SizeIs(400'000));
}

// --- Groups ----------------------------------------------------------------------------------------------------------

TEST_F(KeyStringsTest, InAGroupNothingHasAnotherMeaning) {
  EXPECT_EQ(Sent("(+{)"), "[10] [BB] /[BB] /[10] [10] [DB] /[DB] /[10]");
}

TEST_F(KeyStringsTest, AnEmptyGroupGivesItsEnd) {
  EXPECT_EQ(Sent("()"), "[10] 0 /0 /[10]");
  EXPECT_EQ(Sent("()a)"), "[10] 0 /0 /[10] a /a [10] 0 /0 /[10]");
}

TEST_F(KeyStringsTest, AGroupWithoutEndLosesItsBracketAlone) {
  EXPECT_EQ(Sent("(ab"), "a /a b /b");
  EXPECT_EQ(Sent("(+a"), "[10] a /a /[10]");
}

TEST_F(KeyStringsTest, AHoldOverABracketWithoutEndCoversTheBracketAlone) {
  EXPECT_EQ(Sent("+(a"), "[10] /[10] a /a");
}

// --- Named keys ------------------------------------------------------------------------------------------------------

TEST_F(KeyStringsTest, EveryNameHasItsKey) {
  struct Row {
    const char* names;
    const char* key;
  };
  const Row rows[] = {{"BACKSPACE BS BKSP", "[08]"},
                      {"BREAK", "e[13]"},
                      {"CAPSLOCK", "[14]"},
                      {"DELETE DEL", "e[2E]"},
                      {"DOWN", "e[28]"},
                      {"END", "e[23]"},
                      {"ENTER ~", "[0D]"},
                      {"ESC", "[1B]"},
                      {"HELP", "[2F]"},
                      {"HOME", "e[24]"},
                      {"INS INSERT", "e[2D]"},
                      {"LEFT", "e[25]"},
                      {"NUMLOCK", "e[90]"},
                      {"PGDN", "e[22]"},
                      {"PGUP", "e[21]"},
                      {"PAUSE", "[13]"},
                      {"PRINT", "e[2A]"},
                      {"PRTSC PRTSCN PRINTSCRN PRINTSCREEN", "e[2C]"},
                      {"RIGHT", "e[27]"},
                      {"SCROLLLOCK", "[91]"},
                      {"SELECT", "[29]"},
                      {"TAB", "[09]"},
                      {"UP", "e[26]"},
                      {"F1", "[70]"},
                      {"F2", "[71]"},
                      {"F9", "[78]"},
                      {"F10", "[79]"},
                      {"F16", "[7F]"}};
  for (const Row& row : rows) {
    for (const Text& name : SplitText(row.names, " "))
      EXPECT_EQ(Sent("{" + name + "}"), Text(row.key) + " /" + row.key) << name;
  }
}

TEST_F(KeyStringsTest, ANameIsKnownInAnyCase) {
  EXPECT_EQ(Sent("{down}"), Sent("{DOWN}"));
  EXPECT_EQ(Sent("{PgDn}"), "e[22] /e[22]");
}

TEST_F(KeyStringsTest, ACountRepeatsTheKey) {
  EXPECT_EQ(Sent("{DOWN 3}"), "e[28] /e[28] e[28] /e[28] e[28] /e[28]");
  EXPECT_EQ(Sent("{x 2}"), "x /x x /x");
  EXPECT_EQ(Sent("{X 2}"), "[10] x /x /[10] [10] x /x /[10]");
  EXPECT_EQ(Sent("{\xE2\x82\xAC 2}"), "U+20AC /U+20AC U+20AC /U+20AC");
}

TEST_F(KeyStringsTest, ACountBelowOneIsOneAndIsRoundedHalvesToEven) {
  for (const char* const count : {"0", "-3", "0.5", "many", ""}) EXPECT_EQ(Sent(Text("{x ") + count + "}"), "x /x");
  EXPECT_EQ(Sent("{x 1.5}"), "x /x x /x");
  EXPECT_EQ(Sent("{x 2.5}"), "x /x x /x");
  EXPECT_EQ(Sent("{x 2.6}"), "x /x x /x x /x");
}

TEST_F(KeyStringsTest, ACountBeyond16BitsIsAnOverflow) {
  ScriptedPlatform platform;
  EXPECT_THAT([] { SendKeysEx("{x 32768}", false); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_THAT([] { SendKeysEx("{x 1e999}", false); }, FailsWith(FailureNumber::kOverflow));
}

TEST_F(KeyStringsTest, OnlyTheSecondWordCounts) {
  EXPECT_EQ(Sent("{x  3}"), "x /x");  // between two blanks stands an empty word
  EXPECT_EQ(Sent("{x 2 3}"), "x /x x /x");
}

TEST_F(KeyStringsTest, AKeyWithoutANameIsItsFirstCharacter) {
  EXPECT_EQ(Sent("{+}"), "[10] [BB] /[BB] /[10]");
  EXPECT_EQ(Sent("{abc}"), "a /a");
  EXPECT_EQ(Sent("{ x}"), "[20] /[20]");
  EXPECT_EQ(Sent("{(}{)}"), "[10] 9 /9 /[10] [10] 0 /0 /[10]");
}

TEST_F(KeyStringsTest, EmptyBracesGiveTheirEnd) {
  EXPECT_EQ(Sent("{}"), "[10] [DD] /[DD] /[10]");
}

TEST_F(KeyStringsTest, BracesWithoutEndLoseTheBracketAlone) {
  EXPECT_EQ(Sent("{abc"), "a /a b /b c /c");
  EXPECT_EQ(Sent("{+a"), "[10] a /a /[10]");
}

TEST_F(KeyStringsTest, ANameThatIsAddedIsKnownBesideTheOthers) {
  AddKeyName(0x5D, "Menu", true);
  EXPECT_EQ(Sent("{MENU}{menu}{TAB}"), "e[5D] /e[5D] e[5D] /e[5D] [09] /[09]");
  AddKeyName(0x5E, "MENU", false);
  EXPECT_EQ(Sent("{menu}"), "[5E] /[5E]");
  ResetKeyNames();
  EXPECT_EQ(Sent("{menu}"), "m /m");
}

// --- The entry -------------------------------------------------------------------------------------------------------

using Pressed = ScriptedKeyboard::Pressed;

TEST_F(KeyStringsTest, ATabGoesByTheOlderCallAndLetsGoOfControl) {
  ScriptedPlatform platform;
  SendKeyString("{tab}");
  EXPECT_THAT(platform.keyboard.Presses(), ElementsAre(Pressed{0x11, 2}, Pressed{0x09, 0}, Pressed{0x09, 2}));
  EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
}

TEST_F(KeyStringsTest, ATabBackwardsHoldsShift) {
  ScriptedPlatform platform;
  SendKeyString("+{tab}");
  EXPECT_THAT(platform.keyboard.Presses(),
              ElementsAre(Pressed{0x10, 0}, Pressed{0x09, 0}, Pressed{0x09, 2}, Pressed{0x10, 2}));
  EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
}

TEST_F(KeyStringsTest, OnlyTheseTwoInTheseLettersGoThatWay) {
  ScriptedPlatform platform;
  SendKeyString("{TAB}");
  EXPECT_EQ(platform.keyboard.Events(), "[09] /[09]");
  SendKeyString("{tab}a");
  EXPECT_THAT(platform.keyboard.Batches(), SizeIs(2));
  EXPECT_THAT(platform.keyboard.Presses(), IsEmpty());
}

TEST_F(KeyStringsTest, PendingInputIsHandledFirst) {
  for (const char* const keys : {"{tab}", "+{tab}", "a", ""}) {
    ScriptedPlatform platform;
    platform.input.SetPending(1);
    platform.input.OnRun([&] {
      EXPECT_THAT(platform.keyboard.Presses(), IsEmpty());
      EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
    });
    SendKeyString(keys);
    EXPECT_EQ(platform.input.Runs(), 1) << keys;
  }
}

TEST_F(KeyStringsTest, WhatIsSentReachesTheControlWithTheFocusWhenTheInputRuns) {
  ScriptedPlatform platform;
  Form form("frmTest");
  TextBox first(form, "Text1");
  TextBox second(form, "Text2");
  form.Show();
  first.SetFocus();
  SendKeyString("{tab}");
  EXPECT_TRUE(first.HasFocus()) << "not at once";
  platform.input.RunOnce();
  EXPECT_TRUE(second.HasFocus());
  SendKeyString("+(ab)c{BS}");
  platform.input.RunOnce();
  EXPECT_EQ(second.Text(), "AB");
  SendKeyString("+{tab}");
  platform.input.RunOnce();
  EXPECT_TRUE(first.HasFocus());
}

TEST_F(KeyStringsTest, WithoutAKeyboardNothingIsSentAndNothingFails) {
  ScriptedPlatform platform;
  ThePlatform().keyboard = nullptr;
  platform.input.SetPending(1);
  SendKeyString("{tab}");
  SendKeyString("abc");
  SendKeysEx("abc", true);
  DeliverKeyEvents(0, {});
  EXPECT_EQ(platform.input.Runs(), 1);
  EXPECT_THAT(platform.keyboard.Batches(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
