#include "dialogs/dlgRepSaveAs.h"

#include "forms/modAllUI.h"

namespace tallybook {

namespace {

constexpr const char* kTitle = "Save as New";
constexpr Long kQuestionStockIcon = 32514;
// Pairs of characters, each a range. Of the printable ones only the double quote lies in none.
constexpr const char* kTitleCharacters = " !#&'~¡ÿ";

constexpr Integer kCancelIndex = 0;
constexpr Integer kOkIndex = 1;
constexpr Integer kControlA = 1;
constexpr Integer kEnter = 13;

}  // namespace

dlgRepSaveAs::dlgRepSaveAs() : Form("dlgRepSaveAs") {
  SetCaption(kTitle);
  Label1[0].SetCaption("OK to Save this report under the new Title shown below?");
  Label1[1].SetCaption("New Title:");
  Command1[kCancelIndex].SetCaption("&Cancel");
  Command1[kOkIndex].SetCaption("&OK");
  Listen();
}

void dlgRepSaveAs::Listen() {
  Activate.Connect([this] {
    SetCaption(kTitle);
    cancelled_ = true;
  });
  for (CommandButton& button : Command1) {
    button.Click.Connect([this, index = button.Index()] { Command1_Click(index); });
  }
  OnCloseBox([this] { Command1_Click(kCancelIndex); });
  Picture1.Paint.Connect([this] { DrawStandardIcon(Picture1, kQuestionStockIcon); });
  OnF1([] {});
  Text1.KeyPress.Connect([this](Integer& key) { Text1_KeyPress(key); });
}

void dlgRepSaveAs::Command1_Click(Integer index) {
  cancelled_ = index != kOkIndex;
  HideLikeModal(*this);
}

void dlgRepSaveAs::Text1_KeyPress(Integer& key) {
  // Before the filter, which would refuse it with a sound.
  if (key == kEnter) {
    key = 0;
    return;
  }
  key = FilterKey(key, kTitleCharacters);
  if (key != kControlA) return;
  SelectAllText(Text1);
  key = 0;
}

}  // namespace tallybook
