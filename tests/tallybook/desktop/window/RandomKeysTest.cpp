// Keys without sense: whoever leans on the keyboard, or lets a child at it, loses nothing and ends nothing. Each walk
// is the same every time.
#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <gtest/gtest.h>
#include <random>
#include <vector>

#include "tallybook/engine/BookCheck.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

struct Stroke {
  Qt::Key key;
  Qt::KeyboardModifiers modifiers = Qt::NoModifier;
  int weight = 1;
};

const std::vector<Stroke>& Strokes() {
  static const std::vector<Stroke> strokes = {
      {Qt::Key_Down, Qt::NoModifier, 6},
      {Qt::Key_Up, Qt::NoModifier, 4},
      {Qt::Key_Left, Qt::NoModifier, 4},
      {Qt::Key_Right, Qt::NoModifier, 4},
      {Qt::Key_PageDown, Qt::NoModifier, 2},
      {Qt::Key_PageUp, Qt::NoModifier, 2},
      {Qt::Key_End},
      {Qt::Key_Home},
      {Qt::Key_End, Qt::ControlModifier},
      {Qt::Key_Home, Qt::ControlModifier},
      {Qt::Key_Down, Qt::ShiftModifier, 2},
      {Qt::Key_Right, Qt::ShiftModifier, 2},
      {Qt::Key_Left, Qt::ControlModifier, 2},
      {Qt::Key_Right, Qt::ControlModifier, 2},
      {Qt::Key_1, Qt::ControlModifier, 2},
      {Qt::Key_2, Qt::ControlModifier, 2},
      {Qt::Key_3, Qt::ControlModifier, 2},
      {Qt::Key_T, Qt::ControlModifier},
      {Qt::Key_F, Qt::ControlModifier, 2},
      {Qt::Key_K, Qt::ControlModifier},
      {Qt::Key_L, Qt::ControlModifier},
      {Qt::Key_A, Qt::ControlModifier},
      {Qt::Key_C, Qt::ControlModifier, 2},
      {Qt::Key_X, Qt::ControlModifier},
      {Qt::Key_V, Qt::ControlModifier, 2},
      {Qt::Key_Z, Qt::ControlModifier, 3},
      {Qt::Key_G, Qt::ControlModifier},
      {Qt::Key_J, Qt::ControlModifier},
      {Qt::Key_D, Qt::ControlModifier},
      {Qt::Key_N, Qt::ControlModifier},
      {Qt::Key_O, Qt::ControlModifier},
      {Qt::Key_F1},
      {Qt::Key_F2, Qt::NoModifier, 2},
      {Qt::Key_F5},
      {Qt::Key_Delete, Qt::NoModifier, 2},
      {Qt::Key_Backspace, Qt::NoModifier, 2},
      {Qt::Key_Return, Qt::NoModifier, 5},
      {Qt::Key_Tab, Qt::NoModifier, 3},
      {Qt::Key_Backtab, Qt::ShiftModifier, 2},
      {Qt::Key_Escape, Qt::NoModifier, 4},
      {Qt::Key_Space, Qt::NoModifier, 2},
      {Qt::Key_0},
      {Qt::Key_1, Qt::NoModifier, 4},
      {Qt::Key_7, Qt::NoModifier, 4},
      {Qt::Key_Minus, Qt::NoModifier, 2},
      {Qt::Key_Period, Qt::NoModifier, 2},
      {Qt::Key_X},
  };
  return strokes;
}

// Whatever stands in front gets the next key; a window that was opened is left by Escape after some.
class RandomKeysTest : public testing::DeskFixture, public ::testing::WithParamInterface<unsigned> {
 protected:
  RandomKeysTest() : chance_(GetParam()) {
    for (const Stroke& stroke : Strokes()) weights_.push_back(stroke.weight);
    pick_ = std::discrete_distribution<std::size_t>(weights_.begin(), weights_.end());
    // What waits for its user has a loop of its own, in which the walk goes on; behind the timer's own turn, since a
    // timer does not fire within itself.
    QObject::connect(&nested_, &QTimer::timeout, &window_,
                     [this] { QTimer::singleShot(0, &window_, [this] { PressInOther(); }); });
    nested_.start(5);
  }

  void Walk(int strokes) {
    for (int stroke = 0; stroke < strokes; ++stroke) {
      nested_stroke_ = 0;
      if (OtherWindow() == nullptr) {
        ASSERT_TRUE(testing::BringToFront(window_));
      }
      PressNext();
      QApplication::processEvents();
    }
    EXPECT_TRUE(testing::WaitUntil(
        [this] {
          if (QWidget* const other = OtherWindow()) other->close();
          return OtherWindow() == nullptr;
        },
        "all windows are closed again"));
  }

 private:
  QWidget* InFront() {
    if (QWidget* const popup = QApplication::activePopupWidget()) return popup;
    // What a modal window keeps the keys from has the focus until that is in front.
    QWidget* const modal = QApplication::activeModalWidget();
    QWidget* const focus = QApplication::focusWidget();
    if (modal != nullptr && (focus == nullptr || focus->window() != modal)) return modal;
    return focus != nullptr ? focus : static_cast<QWidget*>(&window_);
  }
  void PressNext() {
    const Stroke& stroke = Strokes()[pick_(chance_)];
    QTest::keyClick(InFront(), stroke.key, stroke.modifiers);
  }
  // What asks whether to stay is not left by Escape.
  void PressAButton(QWidget& window) {
    QList<QAbstractButton*> buttons;
    for (auto* button : window.findChildren<QAbstractButton*>()) {
      if (button->isVisible() && button->isEnabled()) buttons.push_back(button);
    }
    if (buttons.isEmpty()) return static_cast<void>(window.close());
    buttons[static_cast<int>(chance_() % static_cast<unsigned>(buttons.size()))]->click();
  }
  void PressInOther() {
    QWidget* const modal = QApplication::activeModalWidget();
    QWidget* const front = modal != nullptr ? modal : OtherWindow();
    if (front == nullptr) return;
    constexpr int kKeysOfAWindow = 12;
    if (++nested_stroke_ < kKeysOfAWindow) return PressNext();
    QTest::keyClick(InFront(), Qt::Key_Escape);
    if (nested_stroke_ > 3 * kKeysOfAWindow) PressAButton(*front);
  }

  std::mt19937 chance_;
  std::vector<int> weights_;
  std::discrete_distribution<std::size_t> pick_;
  QTimer nested_;
  int nested_stroke_ = 0;
};

TEST_P(RandomKeysTest, EndNothingAndLeaveABookThatIsWhole) {
  Walk(250);
  EXPECT_TRUE(window_.isVisible());
  const bool deep = true;
  const engine::BookCheckResult check = engine::CheckBook(BookPath(), deep);
  EXPECT_TRUE(check.findings.empty()) << check.findings.front().what;
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomKeysTest, ::testing::Range(1U, 9U));

}  // namespace
}  // namespace tallybook::desktop
