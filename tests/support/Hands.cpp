#include "tests/support/Hands.h"

#include <gtest/gtest.h>

#include "base/CodePage.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook::testing {

namespace {

Stage*& StageInUse() {
  static Stage* stage = nullptr;
  return stage;
}

}  // namespace

bool Hands::Click(Control& control, Integer index) {
  if (auto* const buttons = dynamic_cast<SaveButtons*>(&control)) return buttons->UserClick(index);
  if (auto* const button = dynamic_cast<CommandButton*>(&control)) return button->UserClick();
  if (auto* const box = dynamic_cast<CheckBox*>(&control)) return box->UserClick();
  if (auto* const option = dynamic_cast<OptionButton*>(&control)) return option->UserClick();
  if (auto* const entry = dynamic_cast<MenuItem*>(&control)) return entry->UserClick();
  ADD_FAILURE() << control.Name() << " is nothing that can be clicked";
  return true;
}

bool Hands::Replace(TextBox& box, const Text& text) {
  return box.UserSetText(text);
}

// A key that the box's own filter drops changes nothing, which is for the test to look at.
bool Hands::TypeKeys(TextBox& box, const Text& keys) {
  if (!box.UserFocus()) return false;
  for (const char code : ToCodePage(keys)) box.UserType(static_cast<unsigned char>(code));
  return true;
}

bool Hands::Choose(ListControl& list, Integer entry) {
  return list.UserChoose(entry);
}

bool Hands::ChooseTab(TabStrip& tabs, Integer tab) {
  return tabs.UserChoose(tab);
}

bool Hands::ChooseDate(CalendarBox& calendar, Date date) {
  return calendar.UserChoose(date);
}

bool Hands::TypeAt(ListControl& list, const Text& keys) {
  for (const char code : ToCodePage(keys)) list.UserKeyPress(static_cast<unsigned char>(code));
  return list.IsReachable();
}

// A key that a listener consumes is pressed all the same.
bool Hands::Press(Control& control, Integer key, Integer shift) {
  if (!control.UserFocus()) return false;
  control.UserKeyDown(key, shift);
  return true;
}

void Hands::Key(Form& form, Integer key, Integer shift, Integer character) {
  form.UserKey(key, shift, character);
}

// A form that refuses to be unloaded hides itself as a rule, so that the answer says nothing.
void Hands::Close(Form& form) {
  form.UserClose();
}

void UseStage(Stage* stage) {
  StageInUse() = stage;
}

Stage* TheStage() {
  return StageInUse();
}

Hands& TheHands() {
  static Hands plain;
  return StageInUse() == nullptr ? plain : *StageInUse();
}

}  // namespace tallybook::testing
