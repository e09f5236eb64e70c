// A message box as a window: title, icon, the text, its buttons, and behind a fold what there is to copy besides. Made
// for one question and asked once. The text is never touched: it stands word for word, can be selected, and scrolls
// where it is longer than the screen has room for.
//
//   Enter           the default button; Escape and the close box: the button that refuses
//   a letter        the button whose mnemonic it is, with Alt or without
//   Ctrl+C          copies title, text and details, or what is selected
#pragma once

#include <QDialog>

#include "base/Types.h"

class QAbstractButton;
class QDialogButtonBox;
class QGridLayout;
class QLabel;

namespace tallybook::desktop {

struct Message {
  Text text;
  Long style = 0;  // a sum of the bits in platform/MessageBoxes.h
  Text title;
  Text details = {};  // behind the fold; empty: no fold
};

class MessageWindow : public QDialog {
 public:
  // `owner` may be null. Nothing is shown yet.
  MessageWindow(const Message& message, QWidget* owner);

  // Shows it over its owner, waits, and gives the number of the button pressed.
  [[nodiscard]] Integer Ask();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void reject() override;

 private:
  void AddText(QGridLayout& layout);
  void AddDetails(QGridLayout& layout);
  void AddButtons(QGridLayout& layout);
  void Copy() const;

  Message message_;
  QLabel* text_ = nullptr;
  QDialogButtonBox* buttons_ = nullptr;
};

}  // namespace tallybook::desktop
