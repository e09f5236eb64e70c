// How tests act in windows that wait for the user: an act is put down before the window is opened, and is done when the
// window stands there. Nothing hangs: what does not happen within the limit fails the test with the name of the window
// that waits, which is closed.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTest>
#include <QTimer>
#include <QWidget>
#include <deque>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace tallybook::desktop::testing {

inline constexpr int kLimit = 10'000;  // milliseconds

// Lets events run until it holds; false, with the test failed, where it does not within the limit.
inline bool WaitUntil(const std::function<bool()>& holds, const char* what) {
  const bool held = QTest::qWaitFor(holds, kLimit);
  EXPECT_TRUE(held) << "it never happened: " << what;
  return held;
}

// Does acts one behind the other, each as soon as a window of its title is in front and enabled. The last one must have
// been done when it ends.
class WhenShown {
 public:
  using Act = std::function<void(QWidget& window)>;

  WhenShown() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Look(); });
  }
  ~WhenShown() {
    EXPECT_TRUE(acts_.empty()) << "never shown: " << (acts_.empty() ? "" : acts_.front().title.toStdString());
  }
  WhenShown(const WhenShown&) = delete;
  WhenShown& operator=(const WhenShown&) = delete;

  // `title` is the whole title of the window, or its beginning.
  WhenShown& Then(const QString& title, Act act) {
    acts_.push_back({title, std::move(act)});
    waited_.start();
    timer_.start(kLookEvery);
    return *this;
  }

 private:
  static constexpr int kLookEvery = 10;
  struct Step {
    QString title;
    Act act;
  };

  static QWidget* Shown(const QString& title) {
    QWidget* const modal = QApplication::activeModalWidget();
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      const bool blocked = modal != nullptr && window != modal;
      if (!window->isVisible() || blocked || !window->windowTitle().startsWith(title)) continue;
      // A list tells so while it answers what came before, and takes no keys.
      if (window->property("busy").toBool()) continue;
      // Keys that reach a window before it is in front are not those that a user presses.
      if (window->isActiveWindow()) return window;
      window->activateWindow();
    }
    return nullptr;
  }

  void Look() {
    if (acts_.empty()) return LookForTheEnd();
    if (QWidget* const window = Shown(acts_.front().title)) {
      const Act act = acts_.front().act;
      acts_.pop_front();
      waited_.start();
      act(*window);
      return;
    }
    if (waited_.elapsed() < kLimit) return;
    QWidget* const waits =
        QApplication::activeModalWidget() != nullptr ? QApplication::activeModalWidget() : QApplication::activeWindow();
    ADD_FAILURE() << "waited for " << acts_.front().title.toStdString()
                  << " while this window waits: " << (waits == nullptr ? "none" : waits->windowTitle().toStdString())
                  << WordsIn(waits);
    acts_.clear();
    CloseAll();
  }

  // All is done, and whoever shows the window has not come back.
  void LookForTheEnd() {
    if (waited_.elapsed() < kLimit) return;
    QWidget* const waits = QApplication::activeModalWidget();
    ADD_FAILURE() << "still waiting: " << (waits == nullptr ? "no dialog" : waits->windowTitle().toStdString());
    waited_.start();
    CloseAll();
  }

  // What a window says, for whoever reads the failure.
  static std::string WordsIn(const QWidget* window) {
    std::string words;
    if (window == nullptr) return words;
    for (const QLabel* const label : window->findChildren<QLabel*>()) words += "\n  " + label->text().toStdString();
    return words;
  }

  static void CloseAll() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible()) window->close();
    }
  }

  std::deque<Step> acts_;
  QElapsedTimer waited_;
  QTimer timer_;
};

// The part of a window with an object name; the test fails where there is none.
template <typename Widget>
Widget& Part(const QWidget& window, const char* name) {
  auto* const part = window.findChild<Widget*>(name);
  if (part == nullptr) {
    ADD_FAILURE() << window.windowTitle().toStdString() << " has no part " << name;
    std::abort();
  }
  return *part;
}

}  // namespace tallybook::desktop::testing
