// The question before a definition is saved as a new one, with a box for the new title. The caller sets Text1 before
// the dialog is shown through ShowLikeModal, and reads Cancelled afterwards. One thread.
#pragma once

#include <array>

#include "base/Types.h"
#include "forms/Form.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"

namespace tallybook {

class dlgRepSaveAs : public Form {
 public:
  dlgRepSaveAs();

  // True from the activation until OK is pressed.
  [[nodiscard]] bool Cancelled() const { return cancelled_; }
  // 0 is Cancel, 1 is OK; either hides the window.
  void Command1_Click(Integer index);

  Picture Picture1{*this, "Picture1"};
  std::array<Label, 2> Label1{{{*this, "Label1", 0}, {*this, "Label1", 1}}};
  TextBox Text1{*this, "Text1"};
  std::array<CommandButton, 2> Command1{{{*this, "Command1", 0}, {*this, "Command1", 1}}};

 private:
  void Listen();
  void Text1_KeyPress(Integer& key);

  bool cancelled_ = true;
};

}  // namespace tallybook
