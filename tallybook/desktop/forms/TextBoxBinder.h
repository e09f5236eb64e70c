// The binder of a box to type in. Characters that the code page of files has go through the control, whose dialog may
// change or refuse them; everything else (the caret, the clipboard, input methods, undo) is the widget's own, and what
// it makes of the text is handed in as a whole.
#pragma once

#include "tallybook/desktop/forms/ControlBinder.h"

class QLineEdit;

namespace tallybook {
class TextBox;
}

namespace tallybook::desktop {

class TextBoxBinder : public ControlBinder {
 public:
  TextBoxBinder(TextBox& box, QWidget& parent);
  void BeforeKey() override { TakeSelection(); }
  bool TakeKey(const KeyPress& press) override;

 protected:
  void Follow(const Change& change) override;

 private:
  void FollowText();
  void FollowSelection();
  void TakeText();
  void TakeSelection();

  TextBox& box_;
  QLineEdit& edit_;
};

}  // namespace tallybook::desktop
