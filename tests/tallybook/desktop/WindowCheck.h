// What every window must hold to, checked over the widgets that it shows now: nothing is cut off, nothing lies over
// something else, everything that can be acted on has an accessible name and can be reached by keyboard, and no two
// mnemonics are the same. Each fault is a sentence; none is found in a good window.
//
//   EXPECT_THAT(FaultsOf(window), IsEmpty());
//   EXPECT_THAT(FaultsOf(window, {.same_mnemonics = {"&Import", "&In"}}), IsEmpty());  // stated captions that collide
#pragma once

#include <string>
#include <vector>

class QWidget;

namespace tallybook::desktop::testing {

struct Allowed {
  // Captions that are stated and share letters: pressing one again and again goes round them. Any other caption with
  // such a letter is a fault.
  std::vector<std::string> same_mnemonics = {};
  // Object names of widgets that are laid over others on purpose.
  std::vector<std::string> floating = {};
};

[[nodiscard]] std::vector<std::string> FaultsOf(const QWidget& window, const Allowed& allowed = {});

// Saves what the window shows as PNG, as it is and on a dark palette, where the environment says so: TALLYBOOK_PICTURES
// names the folder.
void Picture(QWidget& window, const std::string& name);

// Lets Qt run until `done` or for so many milliseconds; whether it was done.
template <typename Done>
bool RunUntil(Done done, int limit = 5000);

// Lets Qt run until a window that is shown has the input; whether it got it. A window manager that was at work on a
// window that was going may not have heard the first wish, so that it is asked again and again.
[[nodiscard]] bool BringToFront(QWidget& window);

}  // namespace tallybook::desktop::testing

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

template <typename Done>
bool tallybook::desktop::testing::RunUntil(Done done, int limit) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() > limit) return false;
    QCoreApplication::processEvents();
    QThread::msleep(1);
  }
  return true;
}
