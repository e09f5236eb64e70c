// What the tests of real windows share: the platform of the tests with Qt's screen, input, keyboard and wheel in it.
// Message boxes and file dialogs are still answered from lists; the clock moves by hand.
#pragma once

#include <QApplication>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <utility>

#include "base/Types.h"
#include "forms/Control.h"
#include "forms/Form.h"
#include "platform/Platform.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/forms/QtInputQueue.h"
#include "tallybook/desktop/forms/QtKeyboard.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/desktop/forms/QtWheel.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "views/Views.h"

namespace tallybook::desktop::testing {

using tallybook::testing::ScriptedPlatform;

class FormsFixture : public ::testing::Test {
 protected:
  FormsFixture() {
    ThePlatform().screen = &screen;
    ThePlatform().input = &input;
    ThePlatform().keyboard = &keyboard;
    ThePlatform().wheel = &wheel;
  }
  // Puts a form of a test's own beside those of the component.
  void Describe(const views::Part& content, const Text& form = "frmTest") {
    own_views_[form] = {.form = form, .content = content};
  }
  // Shows a form and waits until its window has the input.
  FormWindow& Show(Form& form) {
    form.Show();
    FormWindow& window = WindowOf(form);
    EXPECT_TRUE(BringToFront(window)) << form.Name() << " is not active";
    QCoreApplication::processEvents();
    return window;
  }
  [[nodiscard]] FormWindow& WindowOf(const Form& form) const {
    FormWindow* const window = screen.WindowOf(form);
    if (window == nullptr) throw std::runtime_error(form.Name() + " has no window");
    return *window;
  }
  // The widget of a control, as one of a kind.
  template <typename Widget = QWidget>
  [[nodiscard]] Widget& WidgetOf(const Control& control) const {
    return dynamic_cast<Widget&>(*WindowOf(control.Parent()).WidgetOf(control));
  }
  // A window manager that is late with a window before may take the input from the one that is shown now.
  static void TakeInputBack() {
    if (QApplication::activeWindow() != nullptr) return;
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && dynamic_cast<FormWindow*>(window) != nullptr && BringToFront(*window)) return;
    }
  }
  // A key of the user's, wherever the focus is.
  static void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    TakeInputBack();
    QWidget* const popup = QApplication::activePopupWidget();
    QWidget* target = popup != nullptr ? popup->focusWidget() : QApplication::focusWidget();
    if (target == nullptr) target = popup != nullptr ? popup : QApplication::activeWindow();
    if (target == nullptr) throw std::runtime_error("no window has the input");
    QTest::keyClick(target, key, modifiers);
    QCoreApplication::processEvents();
  }
  static void Type(const char* text) {
    TakeInputBack();
    QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    QCoreApplication::processEvents();
  }
  static void Run() { ThePlatform().input->RunOnce(); }

  ScriptedPlatform platform;
  QtScreen screen{[this](const Text& form) -> const views::FormView& {
    const auto own = own_views_.find(form);
    return own == own_views_.end() ? views::ViewOf(form) : own->second;
  }};
  QtInputQueue input;
  QtKeyboard keyboard;
  QtWheel wheel{screen};

 private:
  std::map<Text, views::FormView> own_views_;
};

}  // namespace tallybook::desktop::testing
