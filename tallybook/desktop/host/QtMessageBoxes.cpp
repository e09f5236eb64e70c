#include "tallybook/desktop/host/QtMessageBoxes.h"

#include <QApplication>
#include <QPointer>

#include "tallybook/desktop/host/MessageWindow.h"

namespace tallybook::desktop {

namespace {

// A box belongs to what the user has before him: a box over a box, a dialog, or the window in front.
QWidget* WindowInFront(const QtMessageBoxes::Owner& owner) {
  if (QWidget* const modal = QApplication::activeModalWidget()) return modal;
  if (QWidget* const active = QApplication::activeWindow()) return active;
  return owner ? owner() : nullptr;
}

}  // namespace

Integer QtMessageBoxes::Show(const Text& text, Long style, const Text& caption) {
  return Tell(text, style, caption, details_ ? details_() : Text());
}

Integer QtMessageBoxes::Tell(const Text& text, Long style, const Text& caption, const Text& details) {
  constexpr std::size_t kRemembered = 64;
  if (before_box_) before_box_();
  if (told_.size() >= kRemembered) told_.erase(told_.begin());
  told_.push_back(text);
  // Its owner may go while it waits, and takes it along.
  const Message message{.text = text, .style = style, .title = caption, .details = details};
  const QPointer<MessageWindow> window(new MessageWindow(message, WindowInFront(owner_)));
  ++depth_;
  const Integer answer = window->Ask();
  --depth_;
  const bool answered = !window.isNull();
  delete window.data();
  return answered ? answer : RefusingButton(style);
}

void QtMessageBoxes::PlaySound(const Text& /*name*/) {
  QApplication::beep();
}

}  // namespace tallybook::desktop
