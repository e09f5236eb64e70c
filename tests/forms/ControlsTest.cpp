// The event rules of every control kind (forms/Control.h): what a program sets, what the user does, and what
// each of them raises.
#include <gmock/gmock.h>
#include <memory>
#include <utility>
#include <vector>

#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class ControlsTest : public ::testing::Test {
 protected:
  ControlsTest() { form_.Show(); }
  // Counts what an event tells.
  template <typename Source>
  static std::shared_ptr<int> Count(Source& event) {
    auto count = std::make_shared<int>(0);
    event.Connect([count](auto&&...) { ++*count; });
    return count;
  }

  ScriptedPlatform platform_{FilesIn::kMemory};
  Form form_{"frmTest"};
};

// --- All kinds -------------------------------------------------------------------------------------------------------

using ControlTest = ControlsTest;

TEST_F(ControlTest, EachChangeOfWhatItShowsRaisesChangedAndNoOther) {
  Label label(form_, "Label1");
  Frame frame(form_, "Frame1");
  const auto changed = Count(label.Changed);
  int expected = 0;
  const auto twice = [&](const auto& set) {
    set();
    EXPECT_EQ(*changed, ++expected);
    set();
    EXPECT_EQ(*changed, expected) << "what is set already changes nothing";
  };
  twice([&] { label.SetCaption("&Title"); });
  twice([&] { label.SetHint("what it is"); });
  twice([&] { label.SetEnabled(false); });
  twice([&] { label.SetVisible(false); });
  twice([&] { label.SetContainer(&frame); });
}

TEST_F(ControlTest, KnowsItsFormNameAndIndex) {
  const Label label(form_, "Label1", 3);
  EXPECT_EQ(&label.Parent(), &form_);
  EXPECT_EQ(label.Name(), "Label1");
  EXPECT_EQ(label.Index(), 3);
  EXPECT_EQ(Label(form_, "Label2").Index(), kNoIndex);
}

TEST_F(ControlTest, IsReachedOnlyWhereItAndAllAroundItAreEnabledAndVisible) {
  Frame outer(form_, "Frame1");
  Frame inner(form_, "Frame2");
  CommandButton button(form_, "Command1");
  button.SetContainer(&inner);
  inner.SetContainer(&outer);
  const auto clicks = Count(button.Click);
  EXPECT_TRUE(button.UserClick());
  for (Control* const around : std::initializer_list<Control*>{&button, &inner, &outer}) {
    around->SetEnabled(false);
    EXPECT_FALSE(button.UserClick()) << around->Name();
    around->SetEnabled(true);
    around->SetVisible(false);
    EXPECT_FALSE(button.UserClick()) << around->Name();
    around->SetVisible(true);
  }
  form_.SetEnabled(false);
  EXPECT_FALSE(button.UserClick());
  form_.SetEnabled(true);
  form_.Hide();
  EXPECT_FALSE(button.UserClick());
  form_.Show();
  EXPECT_TRUE(button.UserClick());
  EXPECT_EQ(*clicks, 2);
}

TEST_F(ControlTest, TheFocusMovesAndBothAreTold) {
  TextBox first(form_, "Text1");
  TextBox second(form_, "Text2");
  std::vector<Text> told;
  first.GotFocus.Connect([&] { told.emplace_back("first got"); });
  first.LostFocus.Connect([&] { told.emplace_back("first lost"); });
  second.GotFocus.Connect([&] { told.emplace_back("second got"); });
  first.SetFocus();
  EXPECT_TRUE(first.HasFocus());
  first.SetFocus();
  EXPECT_TRUE(second.UserFocus());
  EXPECT_FALSE(first.HasFocus());
  EXPECT_EQ(form_.ActiveControl(), &second);
  EXPECT_THAT(told, ElementsAre("first got", "first lost", "second got"));
}

TEST_F(ControlTest, AControlThatCannotBeReachedRefusesTheFocus) {
  TextBox box(form_, "Text1");
  box.SetEnabled(false);
  EXPECT_THAT([&] { box.SetFocus(); }, FailsWith(FailureNumber::kInvalidArgument, "Text1"));
  EXPECT_FALSE(box.UserFocus());
  EXPECT_EQ(form_.ActiveControl(), nullptr);
}

TEST_F(ControlTest, AControlThatGoesLeavesTheFocusToNone) {
  auto box = std::make_unique<TextBox>(form_, "Text1");
  box->SetFocus();
  box.reset();
  EXPECT_EQ(form_.ActiveControl(), nullptr);
  EXPECT_EQ(form_.Find("Text1"), nullptr);
}

TEST_F(ControlTest, AKeyIsHeardByTheFormFirstWhichMayConsumeIt) {
  TextBox box(form_, "Text1");
  std::vector<Text> heard;
  form_.KeyDown.Connect([&](Integer& key, Integer shift) {
    heard.push_back("form " + std::to_string(key) + " " + std::to_string(shift));
    if (key == 112) key = 0;
  });
  box.KeyDown.Connect([&](Integer& key, Integer /*shift*/) { heard.push_back("box " + std::to_string(key)); });
  EXPECT_TRUE(box.UserKeyDown(13, 2));
  EXPECT_FALSE(box.UserKeyDown(112));
  EXPECT_THAT(heard, ElementsAre("form 13 2", "box 13", "form 112 0"));
}

TEST_F(ControlTest, RepaintAsksForItAtOnce) {
  Label label(form_, "Label1");
  const auto repainted = Count(label.Repainted);
  const auto changed = Count(label.Changed);
  label.Repaint();
  EXPECT_EQ(*repainted, 1);
  EXPECT_EQ(*changed, 0);
}

TEST_F(ControlTest, ASetFontIsKept) {
  Label label(form_, "Label1");
  label.SetFont("Fixed", 9);
  EXPECT_EQ(label.FontName(), "Fixed");
  EXPECT_EQ(label.FontSize(), 9);
}

TEST_F(ControlTest, ListenersAreCalledInTheOrderInWhichTheyConnected) {
  CommandButton button(form_, "Command1");
  std::vector<int> called;
  button.Click.Connect([&] {
    called.push_back(1);
    button.Click.Connect([&] { called.push_back(3); });
  });
  button.Click.Connect([&] { called.push_back(2); });
  button.UserClick();
  EXPECT_THAT(called, ElementsAre(1, 2)) << "who connects meanwhile hears the next one";
}

TEST_F(ControlTest, AListenerMayTakeNothingOfWhatIsTold) {
  TextBox box(form_, "Text1");
  int heard = 0;
  box.KeyDown.Connect([&] { ++heard; });
  box.KeyDown.Connect([&](Integer& key, Integer /*shift*/) { heard += key; });
  box.UserKeyDown(10);
  EXPECT_EQ(heard, 11);
}

TEST_F(ControlTest, ItsPlaceIsToldToTheRendererAndToTheDialog) {
  Label label(form_, "Label1");
  std::vector<Change> changes;
  label.Changed.Connect([&](const Change& change) { changes.push_back(change); });
  const auto moved = Count(label.Moved);
  label.SetPlace({1, 2, 30, 40});
  label.SetPlace({1, 2, 30, 40});
  EXPECT_EQ(label.Place(), (Place{1, 2, 30, 40}));
  EXPECT_THAT(changes, ElementsAre(Change{Change::Kind::kPlace}));
  EXPECT_EQ(*moved, 1);
  label.BringToFront();
  EXPECT_EQ(changes.back(), Change{Change::Kind::kFront});
}

TEST_F(ControlTest, KeepsTheHandleOfAWindowOfItsOwn) {
  Label label(form_, "Label1");
  EXPECT_EQ(label.Hwnd(), 0);
  label.SetHwnd(4711);
  EXPECT_EQ(label.Hwnd(), 4711);
}

TEST_F(ControlTest, ACharacterIsHeardByAnyControlUnlessItIsConsumedOrOutOfReach) {
  CommandButton button(form_, "Command1");
  std::vector<Integer> pressed;
  button.KeyPress.Connect([&](Integer& code) {
    pressed.push_back(code);
    if (code == '*') code = 0;
  });
  EXPECT_TRUE(button.UserKeyPress('a'));
  EXPECT_FALSE(button.UserKeyPress('*'));
  button.SetEnabled(false);
  EXPECT_FALSE(button.UserKeyPress('a'));
  EXPECT_THAT(pressed, ElementsAre('a', '*'));
}

// --- Check box, scroll bar, menu entry, picture ----------------------------------------------------------------------

using CheckBoxTest = ControlsTest;

TEST_F(CheckBoxTest, EveryChangeRaisesClickByProgramAndByTheUser) {
  CheckBox box(form_, "Check1");
  const auto clicks = Count(box.Click);
  box.SetChecked(false);
  EXPECT_EQ(*clicks, 0);
  box.SetChecked(true);
  EXPECT_EQ(*clicks, 1);
  EXPECT_TRUE(box.UserClick());
  EXPECT_FALSE(box.Checked());
  EXPECT_EQ(*clicks, 2);
  box.SetEnabled(false);
  EXPECT_FALSE(box.UserClick());
  EXPECT_FALSE(box.Checked());
}

using ScrollBarTest = ControlsTest;

TEST_F(ScrollBarTest, IsHeldToItsLimitsAndTellsRealChanges) {
  ScrollBar bar(form_, "VScroll1");
  bar.SetMin(1);
  bar.SetMax(10);
  const auto changes = Count(bar.Change);
  bar.SetValue(20);
  EXPECT_EQ(bar.Value(), 10);
  bar.SetValue(11);
  EXPECT_EQ(*changes, 1) << "10 is 10 again";
  EXPECT_TRUE(bar.UserScroll(-5));
  EXPECT_EQ(bar.Value(), 1);
  EXPECT_EQ(*changes, 2);
  bar.SetVisible(false);
  EXPECT_FALSE(bar.UserScroll(5));
}

TEST_F(ScrollBarTest, LimitsThatAreTheWrongWayRoundHoldAsWell) {
  ScrollBar bar(form_, "VScroll1");
  bar.SetMin(10);
  bar.SetMax(0);
  bar.SetValue(50);
  EXPECT_EQ(bar.Value(), 10);
}

using MenuItemTest = ControlsTest;

TEST_F(MenuItemTest, AClickIsTheUsersAloneAndATickTellsNothing) {
  MenuItem entry(form_, "mnuFile", 0);
  const auto clicks = Count(entry.Click);
  entry.SetChecked(true);
  EXPECT_EQ(*clicks, 0);
  EXPECT_TRUE(entry.UserClick());
  EXPECT_TRUE(entry.Checked());
  entry.SetEnabled(false);
  EXPECT_FALSE(entry.UserClick());
  EXPECT_EQ(*clicks, 1);
}

// --- Text box --------------------------------------------------------------------------------------------------------

class TextBoxTest : public ControlsTest {
 protected:
  TextBoxTest() {
    box_.Change.Connect([this] { told_.push_back(box_.Text()); });
  }
  void Type(const std::string& codes) {
    for (const char code : codes) box_.UserType(static_cast<unsigned char>(code));
  }

  TextBox box_{form_, "Text1"};
  std::vector<Text> told_;
};

TEST_F(TextBoxTest, ARealChangeRaisesChangeByProgramAndByTheUser) {
  box_.SetText("a");
  box_.SetText("a");
  EXPECT_TRUE(box_.UserSetText("b"));
  EXPECT_TRUE(box_.UserSetText("b"));
  EXPECT_THAT(told_, ElementsAre("a", "b"));
}

TEST_F(TextBoxTest, SettingTheTextMovesTheSelectionToItsStart) {
  box_.SetText("abc");
  box_.SetSelection(1, 2);
  box_.SetText("abd");
  EXPECT_EQ(box_.SelStart(), 0);
  EXPECT_EQ(box_.SelLength(), 0);
}

TEST_F(TextBoxTest, ASelectionBeyondTheTextIsKeptAsItWasGivenAndNoneBeginsBelowZero) {
  box_.SetText("abc");
  box_.SetSelection(0, 4);
  EXPECT_EQ(box_.SelLength(), 4);
  box_.SetSelection(-2, -1);
  EXPECT_EQ(box_.SelStart(), 0);
  EXPECT_EQ(box_.SelLength(), 0);
}

TEST_F(TextBoxTest, TypingReplacesTheSelectionCharacterByCharacter) {
  box_.SetText("M\xC3\xBCller");
  box_.SetSelection(1, 1);
  EXPECT_TRUE(box_.UserType('u'));
  EXPECT_EQ(box_.Text(), "Muller");
  EXPECT_EQ(box_.SelStart(), 2);
  EXPECT_TRUE(box_.UserType(0xFC));
  EXPECT_EQ(box_.Text(), "Mu\xC3\xBCller");
  box_.SetSelection(0, 99);
  EXPECT_TRUE(box_.UserType('x'));
  EXPECT_EQ(box_.Text(), "x");
}

TEST_F(TextBoxTest, BackspaceTakesTheSelectionOrTheCharacterBefore) {
  box_.SetText(
      "a\xC3\xBC"
      "bc");
  box_.SetSelection(2, 0);
  Type("\b");
  EXPECT_EQ(box_.Text(), "abc");
  box_.SetSelection(1, 2);
  Type("\b");
  EXPECT_EQ(box_.Text(), "a");
  box_.SetSelection(0, 0);
  EXPECT_FALSE(box_.UserType('\b'));
  EXPECT_EQ(box_.Text(), "a");
  EXPECT_EQ(box_.SelStart(), 0);
}

TEST_F(TextBoxTest, KeysWithoutACharacterChangeNothing) {
  EXPECT_FALSE(box_.UserType(13));
  EXPECT_FALSE(box_.UserType(27));
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(TextBoxTest, KeyPressMayChangeOrDropTheCharacter) {
  std::vector<Integer> pressed;
  box_.KeyPress.Connect([&](Integer& key) {
    pressed.push_back(key);
    if (key == 'a') key = 'A';
    if (key == 'x') key = 0;
  });
  EXPECT_TRUE(box_.UserType('a'));
  EXPECT_FALSE(box_.UserType('x'));
  EXPECT_EQ(box_.Text(), "A");
  EXPECT_THAT(pressed, ElementsAre('a', 'x'));
}

TEST_F(TextBoxTest, ALockedBoxTakesTheFocusAndTheKeysButNoText) {
  box_.SetLocked(true);
  const auto pressed = Count(box_.KeyPress);
  EXPECT_FALSE(box_.UserType('a'));
  EXPECT_FALSE(box_.UserSetText("b"));
  EXPECT_EQ(*pressed, 1);
  EXPECT_TRUE(box_.HasFocus());
  box_.SetText("by program");
  EXPECT_EQ(box_.Text(), "by program");
}

TEST_F(TextBoxTest, TheUserCannotGoBeyondTheMostCharacters) {
  box_.SetMaxLength(3);
  EXPECT_TRUE(box_.UserSetText("\xC3\xBC\xC3\xBC\xC3\xBC\xC3\xBC"));
  EXPECT_EQ(box_.Text(), "\xC3\xBC\xC3\xBC\xC3\xBC");
  EXPECT_FALSE(box_.UserType('a'));
  box_.SetSelection(0, 1);
  EXPECT_TRUE(box_.UserType('a'));
  EXPECT_EQ(box_.Text(), "a\xC3\xBC\xC3\xBC");
  box_.SetText("by program");
  EXPECT_EQ(box_.Text(), "by program");
}

TEST_F(TextBoxTest, ATextThatAProgramMadeTooLongMayBeShortened) {
  box_.SetText("12345");
  box_.SetMaxLength(3);
  box_.SetSelection(9, 0);
  EXPECT_TRUE(box_.UserType('\b')) << "the caret stands at the text's end";
  EXPECT_EQ(box_.Text(), "1234");
  EXPECT_FALSE(box_.UserType('5'));
}

TEST_F(TextBoxTest, ADisabledBoxTakesNothing) {
  box_.SetEnabled(false);
  const auto pressed = Count(box_.KeyPress);
  EXPECT_FALSE(box_.UserType('a'));
  EXPECT_FALSE(box_.UserSetText("a"));
  EXPECT_EQ(*pressed, 0);
}

// --- Lists -----------------------------------------------------------------------------------------------------------

class ListTest : public ControlsTest {
 protected:
  ListTest() {
    list_.Click.Connect([this] { chosen_.push_back(list_.ListIndex()); });
  }
  void Fill() {
    for (const char* text : {"b", "a", "c"}) list_.AddItem(text);
  }
  [[nodiscard]] std::vector<Text> Entries() const {
    std::vector<Text> texts;
    for (Integer index = 0; index < list_.ListCount(); ++index) texts.push_back(list_.List(index));
    return texts;
  }

  ListBox list_{form_, "List1"};
  Long tag_ = 0;
  std::vector<Integer> chosen_;
};

TEST_F(ListTest, ASelectionByProgramIsToldWhereItChangesToAnEntry) {
  Fill();
  list_.SetListIndex(1);
  list_.SetListIndex(1);
  list_.SetListIndex(kNoEntry);
  list_.SetListIndex(2);
  EXPECT_THAT(chosen_, ElementsAre(1, 2));
}

TEST_F(ListTest, AUserWhoChoosesTheSelectedEntryAgainIsHeardAgain) {
  Fill();
  EXPECT_TRUE(list_.UserChoose(1));
  EXPECT_TRUE(list_.UserChoose(1));
  EXPECT_THAT(chosen_, ElementsAre(1, 1));
  EXPECT_EQ(list_.SelectedText(), "a");
}

TEST_F(ListTest, AnIndexWithoutAnEntryIsAFailure) {
  Fill();
  for (const Integer index : std::vector<Integer>{-2, 3}) {
    EXPECT_THAT([&] { list_.SetListIndex(index); }, FailsWith(FailureNumber::kInvalidArgument));
    EXPECT_THAT([&] { (void)list_.List(index); }, FailsWith(FailureNumber::kInvalidArgument, "List1"));
    EXPECT_THAT([&] { (void)list_.ItemData(index); }, FailsWith(FailureNumber::kInvalidArgument));
    EXPECT_THAT([&] { list_.SetItemData(index, 1); }, FailsWith(FailureNumber::kInvalidArgument));
    EXPECT_THAT([&] { list_.RemoveItem(index); }, FailsWith(FailureNumber::kInvalidArgument));
    EXPECT_THAT([&] { list_.UserChoose(index); }, FailsWith(FailureNumber::kInvalidArgument));
  }
  EXPECT_THAT(chosen_, IsEmpty());
}

TEST_F(ListTest, TheSelectedEntryStaysSelectedWhenOthersComeAndGo) {
  list_.SetSorted(true);
  Fill();
  EXPECT_THAT(Entries(), ElementsAre("a", "b", "c"));
  list_.SetListIndex(1);
  EXPECT_EQ(list_.AddItem("A2"), 1);
  EXPECT_EQ(list_.SelectedText(), "b");
  list_.RemoveItem(0);
  EXPECT_EQ(list_.SelectedText(), "b");
  list_.RemoveItem(2);
  EXPECT_EQ(list_.SelectedText(), "b");
  EXPECT_THAT(chosen_, ElementsAre(1)) << "it is the same entry: nothing was chosen";
}

TEST_F(ListTest, ASelectedEntryThatGoesLeavesNoneSelectedInSilence) {
  Fill();
  list_.SetListIndex(1);
  list_.RemoveItem(1);
  EXPECT_EQ(list_.ListIndex(), kNoEntry);
  list_.SetListIndex(1);
  list_.Clear();
  EXPECT_EQ(list_.ListIndex(), kNoEntry);
  EXPECT_EQ(list_.ListCount(), 0);
  EXPECT_EQ(list_.SelectedText(), "");
  EXPECT_THAT(chosen_, ElementsAre(1, 1));
}

TEST_F(ListTest, EqualTextsKeepTheOrderInWhichTheyCame) {
  list_.SetSorted(true);
  list_.AddItem("same", 1);
  list_.AddItem("SAME", 2);
  list_.AddItem("Same", 3);
  EXPECT_THAT(Entries(), ElementsAre("same", "SAME", "Same"));
}

TEST_F(ListTest, TagsBelongToTheirEntries) {
  list_.AddItem("a", 10);
  list_.AddItem("b");
  list_.SetItemData(1, -2);
  EXPECT_EQ(list_.ItemData(0), 10);
  EXPECT_EQ(list_.ItemData(1), -2);
}

TEST_F(ListTest, ASearchFindsTheFirstFromTheStartWithoutRegardToCaseSortedOrNot) {
  for (const bool sorted : {false, true}) {
    list_.Clear();
    list_.SetSorted(sorted);
    for (const char* text : {"1000", "Bread", "100", "bREAD", "\xC3\xA4pfel", "100"}) list_.AddItem(text, ++tag_);
    EXPECT_EQ(list_.List(list_.FindPrefix("1")), sorted ? "100" : "1000");
    EXPECT_EQ(list_.ItemData(list_.FindExact("100")), sorted ? 9 : 3);
    EXPECT_EQ(list_.List(list_.FindPrefix("BR")), "Bread") << "the first of two equal ones";
    EXPECT_EQ(list_.List(list_.FindExact("bread")), "Bread");
    EXPECT_EQ(list_.List(list_.FindPrefix("\xC3\x84P")), "\xC3\xA4pfel");
    EXPECT_EQ(list_.FindPrefix("2"), kNoEntry);
    EXPECT_EQ(list_.FindPrefix("10000"), kNoEntry);
    EXPECT_EQ(list_.FindExact("Brea"), kNoEntry);
    EXPECT_EQ(list_.FindPrefix("zz"), kNoEntry);
    EXPECT_EQ(list_.FindPrefix(""), 0);
  }
}

TEST_F(ListTest, LeadingEntriesStayInFrontOfASortedList) {
  list_.SetSorted(true, 1);
  for (int pass = 0; pass < 2; ++pass) {
    list_.Clear();
    list_.AddItem(" (none)", 0);
    for (const char* text : {"b", "", " ", "a"}) list_.AddItem(text, 1);
    EXPECT_THAT(Entries(), ElementsAre(" (none)", "", " ", "a", "b"));
    EXPECT_EQ(list_.FindExact(""), 1);
    EXPECT_EQ(list_.FindPrefix(" "), 0);
    EXPECT_EQ(list_.FindPrefix("a"), 3);
  }
  list_.RemoveItem(0);
  list_.AddItem(" (none)");
  EXPECT_THAT(Entries(), ElementsAre("", " ", " (none)", "a", "b")) << "one that is removed leads no more";
}

TEST_F(ListTest, ATagIsFoundAtItsFirstEntryWhateverHasHappenedToTheList) {
  list_.SetSorted(true);
  list_.AddItem("b", 5);
  EXPECT_EQ(list_.FindTag(5), 0);
  list_.AddItem("c", 5);
  list_.AddItem("a", 6);
  EXPECT_EQ(list_.FindTag(5), 1);
  EXPECT_EQ(list_.FindTag(7), kNoEntry);
  list_.SetItemData(0, 7);
  EXPECT_EQ(list_.FindTag(7), 0);
  list_.RemoveItem(1);
  EXPECT_EQ(list_.FindTag(5), 1);
  list_.Clear();
  EXPECT_EQ(list_.FindTag(5), kNoEntry);
}

TEST_F(ListTest, EntriesThatGoMakeRoomForOthers) {
  list_.SetSorted(true);
  Fill();
  list_.RemoveItem(1);
  list_.RemoveItem(0);
  for (const char* text : {"e", "d", "b"}) list_.AddItem(text);
  EXPECT_THAT(Entries(), ElementsAre("b", "c", "d", "e"));
  EXPECT_EQ(list_.FindExact("D"), 2);
}

TEST_F(ListTest, HoldsNoMoreEntriesThanHaveAnIndex) {
  for (int i = 0; i < 32'767; ++i) list_.AddItem("");
  EXPECT_THAT([&] { list_.AddItem(""); }, FailsWith(FailureNumber::kOverflow));
  EXPECT_EQ(list_.ListCount(), 32'767);
}

TEST_F(ListTest, AChangeTellsTheEntryThatHasComeGoneOrBeenSelected) {
  std::vector<Change> changes;
  list_.Changed.Connect([&](const Change& change) { changes.push_back(change); });
  Fill();
  list_.SetListIndex(2);
  list_.RemoveItem(0);
  using Kind = Change::Kind;
  EXPECT_THAT(changes, ElementsAre(Change{Kind::kAdded, 0, 0}, Change{Kind::kAdded, 1, 1}, Change{Kind::kAdded, 2, 2},
                                   Change{Kind::kSelection, kNoEntry, 2}, Change{Kind::kRemoved, 0, 0}));
}

TEST_F(ListTest, ArrowsAndPageKeysChooseAndStayAtTheEnds) {
  for (char text = 'a'; text <= 'z'; ++text) list_.AddItem(Text(1, text));
  list_.SetPageLength(10);
  for (const Integer key :
       {kUpKey, kDownKey, kPageDownKey, kPageDownKey, kPageDownKey, kDownKey, kPageUpKey, kUpKey, kHomeKey, kEndKey}) {
    EXPECT_TRUE(list_.UserKeyDown(key));
  }
  EXPECT_THAT(chosen_, ElementsAre(0, 1, 11, 21, 25, 15, 14, 0, 25));
}

TEST_F(ListTest, AKeyThatIsConsumedOrHeldWithAShiftKeyMovesNothing) {
  Fill();
  bool consumes = true;
  list_.KeyDown.Connect([&](Integer& key, Integer /*shift*/) {
    if (consumes) key = 0;
  });
  EXPECT_FALSE(list_.UserKeyDown(kDownKey));
  consumes = false;
  for (Integer shift = 1; shift <= 7; ++shift) list_.UserKeyDown(kDownKey, shift);
  EXPECT_THAT(chosen_, IsEmpty());
  list_.UserKeyDown(kDownKey);
  EXPECT_THAT(chosen_, ElementsAre(0));
}

TEST_F(ListTest, AltWithAnArrowDropsItDownAndAChoiceEnterOrEscapeCloseIt) {
  Fill();
  const auto drop = [&] {
    list_.UserKeyDown(kDownKey, kAltState);
    EXPECT_TRUE(list_.DroppedDown());
  };
  drop();
  list_.UserKeyDown(kUpKey, kAltState);
  EXPECT_FALSE(list_.DroppedDown());
  for (const Integer key : {kEnterKey, kEscapeKey}) {
    drop();
    list_.UserKeyDown(key);
    EXPECT_FALSE(list_.DroppedDown());
  }
  EXPECT_TRUE(list_.UserDropDown(true));
  list_.UserKeyDown(kDownKey);
  EXPECT_TRUE(list_.DroppedDown()) << "an arrow moves in it";
  list_.UserChoose(1);
  EXPECT_FALSE(list_.DroppedDown());
  list_.SetEnabled(false);
  EXPECT_FALSE(list_.UserDropDown(true));
}

TEST_F(ListTest, ADoubleClickChoosesFirst) {
  Fill();
  std::vector<Text> told;
  list_.Click.Connect([&] { told.emplace_back("click"); });
  list_.DoubleClick.Connect([&] { told.emplace_back("double"); });
  EXPECT_TRUE(list_.UserDoubleClick(2));
  EXPECT_THAT(told, ElementsAre("click", "double"));
  list_.SetEnabled(false);
  EXPECT_FALSE(list_.UserDoubleClick(1));
  EXPECT_EQ(list_.ListIndex(), 2);
}

// --- Options ---------------------------------------------------------------------------------------------------------

class OptionGroupTest : public ControlsTest {
 protected:
  OptionGroupTest() {
    options_.Click.Connect([this](Integer index) { chosen_.push_back(index); });
  }
  OptionGroup options_{form_, "optLength", 1, 8};
  std::vector<Integer> chosen_;
};

TEST_F(OptionGroupTest, OneAtMostIsOnAndAnOptionThatWasOffIsTold) {
  EXPECT_EQ(options_.Selected(-1), -1);
  options_.SetValue(3, true);
  options_.SetValue(3, true);
  options_.SetValue(5, true);
  EXPECT_FALSE(options_.Value(3));
  EXPECT_EQ(options_.Selected(), 5);
  EXPECT_THAT(chosen_, ElementsAre(3, 5));
}

TEST_F(OptionGroupTest, TurningAnOptionOffTellsNothing) {
  options_.SetValue(3, true);
  options_.SetValue(3, false);
  EXPECT_EQ(options_.Selected(), 0);
  EXPECT_THAT(chosen_, ElementsAre(3));
}

TEST_F(OptionGroupTest, AUserWhoClicksTheOptionThatIsOnChoosesNothing) {
  std::vector<Integer> clicked_again;
  options_.ClickAgain.Connect([&](Integer index) { clicked_again.push_back(index); });
  EXPECT_TRUE(options_(2).UserClick());
  EXPECT_TRUE(options_(2).UserClick());
  EXPECT_THAT(chosen_, ElementsAre(2));
  EXPECT_THAT(clicked_again, ElementsAre(2));
  EXPECT_TRUE(options_(2).HasFocus());
}

TEST_F(OptionGroupTest, ADisabledOptionCannotBeChosenByTheUserButByProgram) {
  options_(8).SetEnabled(false);
  EXPECT_FALSE(options_(8).UserClick());
  EXPECT_THAT(chosen_, IsEmpty());
  options_.SetValue(8, true);
  EXPECT_THAT(chosen_, ElementsAre(8));
}

TEST_F(OptionGroupTest, HasTheIndexesThatItWasMadeWithAndNoOthers) {
  EXPECT_EQ(options_.First(), 1);
  EXPECT_EQ(options_.Last(), 8);
  EXPECT_EQ(form_.Find("optLength", 8), &options_(8));
  for (const Integer index : std::vector<Integer>{0, 9}) {
    EXPECT_THAT([&] { options_.SetValue(index, true); }, FailsWith(FailureNumber::kRange));
    EXPECT_THAT([&] { (void)options_.Value(index); }, FailsWith(FailureNumber::kRange));
  }
}

// --- The host's controls ---------------------------------------------------------------------------------------------

class NumberBoxTest : public ControlsTest {
 protected:
  NumberBoxTest() {
    box_.Configure(0, 99, 0.5, 1, true);
    box_.Change.Connect([this] { told_.push_back(box_.Value()); });
  }
  NumberBox box_{form_, "NumberBox1"};
  std::vector<Double> told_;
};

TEST_F(NumberBoxTest, HoldsAValueToItsLimitsAndDecimalsAndTellsRealChanges) {
  box_.SetValue(12.25);
  box_.SetValue(12.2);
  box_.SetValue(120);
  EXPECT_TRUE(box_.UserSetValue(-3));
  EXPECT_THAT(told_, ElementsAre(12.2, 99, 0)) << "ties go to the even number";
}

TEST_F(NumberBoxTest, TheSpinnerGoesStepByStepWithinTheLimits) {
  EXPECT_TRUE(box_.UserSpin(1));
  EXPECT_TRUE(box_.UserSpin(1));
  EXPECT_TRUE(box_.UserSpin(-1));
  EXPECT_TRUE(box_.UserSpin(-1));
  EXPECT_TRUE(box_.UserSpin(-1));
  EXPECT_THAT(told_, ElementsAre(0.5, 1, 0.5, 0));
  box_.Configure(0, 99, 1, 0, false);
  EXPECT_FALSE(box_.UserSpin(1));
}

TEST_F(NumberBoxTest, ADisabledBoxTakesNothing) {
  box_.SetEnabled(false);
  EXPECT_FALSE(box_.UserSetValue(5));
  EXPECT_FALSE(box_.UserSpin(1));
  EXPECT_EQ(box_.Value(), 0);
}

using SaveButtonsTest = ControlsTest;

TEST_F(SaveButtonsTest, TellWhichOfThemWasClickedWhateverCancelWouldLose) {
  SaveButtons buttons(form_, "SaveButtons1");
  std::vector<Integer> clicked;
  buttons.Click.Connect([&](Integer button) { clicked.push_back(button); });
  for (const bool loses : {true, false}) {
    buttons.SetCancelEnabled(loses);
    EXPECT_TRUE(buttons.UserClick(SaveButtons::kMainButton));
    EXPECT_TRUE(buttons.UserClick(SaveButtons::kCancelButton));
  }
  EXPECT_THAT(clicked, ElementsAre(1, 0, 1, 0));
  buttons.SetEnabled(false);
  EXPECT_FALSE(buttons.UserClick(SaveButtons::kCancelButton));
}

class CalendarBoxTest : public ControlsTest {
 protected:
  CalendarBoxTest() {
    box_.SetMinDate(100);
    box_.SetMaxDate(200);
    box_.DateChanged.Connect([this] { told_.push_back(box_.Date()); });
  }
  CalendarBox box_{form_, "axCalendar1"};
  std::vector<Date> told_;
};

TEST_F(CalendarBoxTest, ADateSetByProgramIsNotToldAndNotHeldToTheLimits) {
  box_.SetDate(150);
  box_.SetDate(500);
  EXPECT_EQ(box_.Date(), 500);
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(CalendarBoxTest, TheUserChoosesWithinTheLimitsBothEndsIncluded) {
  EXPECT_TRUE(box_.UserChoose(100));
  EXPECT_TRUE(box_.UserChoose(200));
  EXPECT_TRUE(box_.UserChoose(200)) << "again";
  EXPECT_FALSE(box_.UserChoose(99));
  EXPECT_FALSE(box_.UserChoose(201));
  EXPECT_THAT(told_, ElementsAre(100, 200, 200));
  box_.SetEnabled(false);
  EXPECT_FALSE(box_.UserChoose(150));
}

// --- Grid and tabs ---------------------------------------------------------------------------------------------------

class GridTest : public ControlsTest {
 protected:
  GridTest() { grid_.SetSize(3, 2); }
  Grid grid_{form_, "Grid1"};
};

TEST_F(GridTest, CellsThatStayKeepTheirText) {
  grid_.SetCell(2, 1, "kept");
  grid_.SetCell(1, 0, "lost");
  grid_.SetSize(5, 4);
  EXPECT_EQ(grid_.Cell(2, 1), "kept");
  EXPECT_EQ(grid_.Cell(4, 3), "");
  grid_.SetSize(1, 1);
  grid_.SetSize(2, 1);
  EXPECT_EQ(grid_.Cell(1, 0), "");
}

TEST_F(GridTest, TheCurrentCellIsToldWhereItMoves) {
  const auto moves = Count(grid_.RowColChange);
  grid_.SetCurrent(0, 0);
  EXPECT_EQ(*moves, 0);
  grid_.SetCurrent(2, 1);
  EXPECT_EQ(*moves, 1);
  EXPECT_EQ(grid_.Row(), 2);
  EXPECT_EQ(grid_.Column(), 1);
}

TEST_F(GridTest, AClickMovesTheCurrentCellFirst) {
  std::vector<Text> told;
  grid_.RowColChange.Connect([&] { told.emplace_back("moved"); });
  grid_.Click.Connect([&] { told.emplace_back("clicked"); });
  EXPECT_TRUE(grid_.UserClick(1, 1));
  EXPECT_TRUE(grid_.UserClick(1, 1));
  EXPECT_THAT(told, ElementsAre("moved", "clicked", "clicked"));
  grid_.SetEnabled(false);
  EXPECT_FALSE(grid_.UserClick(0, 0));
  EXPECT_EQ(grid_.Row(), 1);
}

TEST_F(GridTest, ACellOrAColumnOutsideItIsAFailure) {
  EXPECT_THAT([&] { (void)grid_.Cell(3, 0); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { (void)grid_.Cell(0, -1); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.SetCell(0, 2, ""); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.SetCurrent(-1, 0); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.SetColumnWidth(2, 10); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { (void)grid_.ColumnWidth(-1); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.UserClick(3, 0); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.SetSize(-1, 2); }, FailsWith(FailureNumber::kRange));
}

TEST_F(GridTest, ACurrentCellThatTheGridLosesMovesIntoItWithoutAWord) {
  grid_.SetCurrent(2, 1);
  const auto moves = Count(grid_.RowColChange);
  grid_.SetSize(2, 1);
  EXPECT_EQ(grid_.Row(), 1);
  EXPECT_EQ(grid_.Column(), 0);
  EXPECT_EQ(*moves, 0);
  grid_.SetSize(0, 0);
  EXPECT_EQ(grid_.Row(), 0);
  EXPECT_EQ(grid_.Column(), 0);
}

class HeadedGridTest : public GridTest {
 protected:
  // Ten rows of 20 below a head of 25, of which the grid shows six as a whole; two columns, the first of them fixed.
  HeadedGridTest() {
    grid_.SetSize(11, 3);
    grid_.SetFixedRows(1);
    grid_.SetFixedColumns(1);
    grid_.SetUsualRowHeight(20);
    grid_.SetRowFactor(0, 1.25);
    grid_.SetPlace({10, 100, 300, 160});
    for (Long column = 0; column < 3; ++column) grid_.SetColumnWidth(column, 50 + column);
    grid_.LeaveCell.Connect([this] { Note("leaves"); });
    grid_.EnterCell.Connect([this] { Note("enters"); });
    grid_.Scroll.Connect([this] { told_.push_back("scrolls to " + std::to_string(grid_.TopRow())); });
  }
  void Note(const char* what) {
    told_.push_back(Text(what) + " " + std::to_string(grid_.Row()) + "," + std::to_string(grid_.Column()));
  }
  [[nodiscard]] std::vector<Text> Told() { return std::exchange(told_, {}); }

  std::vector<Text> told_;
};

TEST_F(HeadedGridTest, TheCellIsLeftBeforeItMovesAndEnteredAfterwards) {
  grid_.SetCurrent(2, 1);
  EXPECT_THAT(Told(), ElementsAre("leaves 1,1", "enters 2,1"));
  grid_.SetCurrent(2, 1);
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(HeadedGridTest, AClickEntersOnceAndOnThePresentCellLeavesNothing) {
  EXPECT_TRUE(grid_.UserClick(3, 2));
  EXPECT_THAT(Told(), ElementsAre("leaves 1,1", "enters 3,2"));
  EXPECT_TRUE(grid_.UserClick(3, 2));
  EXPECT_THAT(Told(), ElementsAre("enters 3,2"));
}

TEST_F(HeadedGridTest, TheCurrentCellIsNeverAFixedOne) {
  EXPECT_EQ(grid_.Row(), 1);
  EXPECT_EQ(grid_.Column(), 1);
  EXPECT_THAT([&] { grid_.SetCurrent(0, 1); }, FailsWith(FailureNumber::kRange));
  EXPECT_THAT([&] { grid_.SetCurrent(1, 0); }, FailsWith(FailureNumber::kRange));
  EXPECT_TRUE(grid_.UserClick(0, 2));
  EXPECT_TRUE(grid_.UserClick(4, 0));
  EXPECT_THAT(Told(), ElementsAre("enters 1,1", "enters 1,1"));
  grid_.SetSize(1, 3);
  EXPECT_FALSE(grid_.HasCurrentCell());
  EXPECT_TRUE(grid_.UserClick(0, 2));
  EXPECT_THAT(Told(), IsEmpty());
  grid_.SetSize(2, 3);
  EXPECT_EQ(grid_.Row(), 1);
}

TEST_F(HeadedGridTest, ItsHeadIsHigherByAQuarterAndCellsHaveTheirPlaces) {
  EXPECT_EQ(grid_.RowHeight(0), 25);
  EXPECT_EQ(grid_.RowHeight(1), 20);
  EXPECT_EQ(grid_.CellPlace(0, 0), (Place{10, 100, 50, 25}));
  EXPECT_EQ(grid_.CellPlace(1, 2), (Place{111, 125, 52, 20}));
  EXPECT_EQ(grid_.CellPlace(3, 1), (Place{60, 165, 51, 20}));
  grid_.SetTopRow(3);
  EXPECT_EQ(grid_.CellPlace(3, 1), (Place{60, 125, 51, 20}));
  EXPECT_EQ(grid_.CellPlace(2, 1), (Place{60, 105, 51, 20})) << "above what is shown";
  EXPECT_EQ(grid_.CellPlace(0, 1), (Place{60, 100, 51, 25}));
}

TEST_F(HeadedGridTest, CountsTheRowsOfItsHeightAndKnowsWhichAreInSight) {
  EXPECT_EQ(grid_.WholeRows(), 8);
  const auto seen = [&] {
    std::vector<Long> rows;
    for (Long row = 0; row < grid_.Rows(); ++row)
      if (grid_.IsRowVisible(row)) rows.push_back(row);
    return rows;
  };
  EXPECT_THAT(seen(), ElementsAre(0, 1, 2, 3, 4, 5, 6)) << "row 7 is cut";
  grid_.SetTopRow(9);
  EXPECT_THAT(seen(), ElementsAre(0, 9, 10));
  grid_.SetPlace({});
  EXPECT_EQ(grid_.WholeRows(), 0);
  EXPECT_THAT(seen(), ElementsAre(0, 9)) << "the first row shown always is";
}

TEST_F(HeadedGridTest, AMoveBringsTheRowIntoSightBeforeItIsEnteredAndScrollsNoFarther) {
  std::vector<Long> tops;
  grid_.EnterCell.Connect([&] { tops.push_back(grid_.TopRow()); });
  for (const Long row : {6, 7, 8, 4, 2, 10, 1}) grid_.MoveCurrent(row, 1);
  EXPECT_THAT(tops, ElementsAre(1, 2, 3, 3, 2, 5, 1));
  EXPECT_THAT(told_, Not(Contains(StartsWith("scrolls"))));
}

TEST_F(HeadedGridTest, ACellThatIsMerelySetLeavesWhatIsShown) {
  grid_.SetCurrent(10, 1);
  EXPECT_EQ(grid_.TopRow(), 1);
}

TEST_F(HeadedGridTest, AScrollIsToldByProgramAndByTheUserAndMovesNoCell) {
  grid_.SetTopRow(4);
  grid_.SetTopRow(4);
  EXPECT_TRUE(grid_.UserScroll(10));
  EXPECT_THAT(Told(), ElementsAre("scrolls to 4", "scrolls to 10"));
  EXPECT_EQ(grid_.Row(), 1);
  for (const Long row : {0, 11, -1}) {
    EXPECT_THAT([&] { grid_.SetTopRow(row); }, FailsWith(FailureNumber::kRange)) << row;
  }
  grid_.SetEnabled(false);
  EXPECT_FALSE(grid_.UserScroll(2));
  grid_.SetSize(3, 3);
  EXPECT_EQ(grid_.TopRow(), 2);
}

TEST_F(HeadedGridTest, AChangeTellsTheRowsThatAreToBeDrawn) {
  std::vector<Change> changes;
  grid_.Changed.Connect([&](const Change& change) { changes.push_back(change); });
  grid_.SetCell(4, 2, "new");
  grid_.SetCell(4, 2, "new");
  grid_.SetCurrent(5, 1);
  grid_.SetTopRow(3);
  grid_.SetColumnWidth(1, 51);
  using Kind = Change::Kind;
  EXPECT_THAT(changes,
              ElementsAre(Change{Kind::kRows, 4, 4}, Change{Kind::kSelection, 1, 5}, Change{Kind::kScroll, 1, 3}));
}

TEST_F(HeadedGridTest, TellsOnceOfManyChangesWhileItIsNotDrawn) {
  const auto changes = Count(grid_.Changed);
  grid_.SetRedraw(false);
  for (Long row = 1; row < 11; ++row) grid_.SetCell(row, 1, "x");
  EXPECT_EQ(*changes, 0);
  grid_.SetRedraw(true);
  EXPECT_EQ(*changes, 1);
}

TEST_F(GridTest, AFormatGivesHeadsSidesAndFirstWidths) {
  grid_.SetCell(1, 1, "kept");
  grid_.SetCharacterWidth(10);
  grid_.SetFormat("<Code   |>Number|^Middle |plain");
  EXPECT_EQ(grid_.Columns(), 4);
  EXPECT_EQ(grid_.Cell(0, 0), "Code");
  EXPECT_EQ(grid_.Cell(0, 3), "plain");
  EXPECT_EQ(grid_.Cell(1, 1), "kept");
  EXPECT_EQ(grid_.ColumnWidth(0), 70);
  EXPECT_EQ(grid_.ColumnWidth(1), 60);
  EXPECT_EQ(grid_.ColumnAlignment(0), Alignment::kLeft);
  EXPECT_EQ(grid_.ColumnAlignment(1), Alignment::kRight);
  EXPECT_EQ(grid_.ColumnAlignment(2), Alignment::kCentre);
  EXPECT_EQ(grid_.ColumnAlignment(3), Alignment::kLeft);
  grid_.SetColumnShaded(2, true);
  EXPECT_TRUE(grid_.ColumnShaded(2));
  EXPECT_FALSE(grid_.ColumnShaded(1));
}

using TabStripTest = ControlsTest;

TEST_F(TabStripTest, ATabIsToldWhereItChangesByProgramAndEachTimeByTheUser) {
  TabStrip tabs(form_, "TabStrip1");
  tabs.SetTabs({"&General", "&Accounts", "&Fields"});
  std::vector<Integer> told;
  tabs.Click.Connect([&] { told.push_back(tabs.Selected()); });
  EXPECT_EQ(tabs.Selected(), 1);
  tabs.SetSelected(1);
  tabs.SetSelected(3);
  EXPECT_TRUE(tabs.UserChoose(2));
  EXPECT_TRUE(tabs.UserChoose(2));
  EXPECT_THAT(told, ElementsAre(3, 2, 2));
  for (const Integer tab : std::vector<Integer>{0, 4}) {
    EXPECT_THAT([&] { tabs.SetSelected(tab); }, FailsWith(FailureNumber::kRange));
  }
}

TEST_F(TabStripTest, LeftAndRightChooseTheNeighbour) {
  TabStrip tabs(form_, "TabStrip1");
  tabs.SetTabs({"&General", "&Accounts", "&Fields"});
  std::vector<Integer> told;
  tabs.Click.Connect([&] { told.push_back(tabs.Selected()); });
  for (const Integer key : {kLeftKey, kRightKey, kRightKey, kRightKey, kLeftKey}) tabs.UserKeyDown(key);
  tabs.UserKeyDown(kRightKey, kShiftState);
  EXPECT_THAT(told, ElementsAre(2, 3, 2));
}

}  // namespace
}  // namespace tallybook::testing
