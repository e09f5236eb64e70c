#include "tallybook/desktop/forms/QtKeyboard.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include "forms/Keys.h"
#include "tallybook/desktop/forms/KeyCodes.h"

namespace tallybook::desktop {

namespace {

Integer ShiftBit(Integer key) {
  if (key == kShiftKey) return kShiftState;
  if (key == kControlKey) return kControlState;
  return key == kAltKey ? kAltState : Integer{0};
}

// Where a key of the user's would go.
QWidget* Target() {
  if (QWidget* const popup = QApplication::activePopupWidget())
    return popup->focusWidget() != nullptr ? popup->focusWidget() : popup;
  if (QWidget* const focused = QApplication::focusWidget()) return focused;
  QWidget* const window = QApplication::activeWindow();
  return window != nullptr && window->focusWidget() != nullptr ? window->focusWidget() : window;
}

}  // namespace

// Something that events can be posted to.
struct QtKeyboard::Runner : QObject {};

QtKeyboard::QtKeyboard() : runner_(std::make_unique<Runner>()) {}

QtKeyboard::~QtKeyboard() = default;

Integer QtKeyboard::LayoutKey(std::uint8_t character) {
  return LayoutKeyOf(character);
}

void QtKeyboard::Deliver(std::span<const KeyRecord> records) {
  for (const KeyRecord& record : records) Queue(FromKeyRecord(record));
}

void QtKeyboard::Press(Integer key, Long flags) {
  Queue({.key = static_cast<std::uint16_t>(key), .scan = 0, .flags = flags});
}

// Each key takes a turn of its own, so that the focus which one key moves is where the next one goes.
void QtKeyboard::Queue(const KeyEvent& event) {
  waiting_.push_back(event);
  QMetaObject::invokeMethod(
      runner_.get(), [this] { CarryOutNext(); }, Qt::QueuedConnection);
}

void QtKeyboard::CarryOutNext() {
  if (waiting_.empty()) return;
  const KeyEvent event = waiting_.front();
  waiting_.pop_front();
  const Integer bit = ShiftBit(static_cast<Integer>(event.key));
  const bool released = (event.flags & kReleasedKey) != 0;
  shift_ = static_cast<Integer>(released ? shift_ & ~bit : shift_ | bit);
  QWidget* const target = Target();
  if (bit != 0 || target == nullptr) return;
  const auto press = ToQtEvent(event, shift_);
  QApplication::sendEvent(target, press.get());
}

bool QtKeyboard::IsDown(Integer key) {
  const Qt::MouseButtons buttons = QGuiApplication::mouseButtons();
  const Qt::KeyboardModifiers held = QGuiApplication::queryKeyboardModifiers();
  switch (key) {
    case kLeftButton:
      return buttons.testFlag(Qt::LeftButton);
    case kRightButton:
      return buttons.testFlag(Qt::RightButton);
    case kMiddleButton:
      return buttons.testFlag(Qt::MiddleButton);
    case kShiftKey:
      return held.testFlag(Qt::ShiftModifier);
    case kControlKey:
      return held.testFlag(Qt::ControlModifier);
    case kAltKey:
      return held.testFlag(Qt::AltModifier);
    default:
      return false;
  }
}

}  // namespace tallybook::desktop
