// A display that hands everything on to another and holds the work at a step that a test names, however fast the
// machine is: the work stands there, with events let in, until the test has done what it came for.
#pragma once

#include <QElapsedTimer>
#include <QTest>
#include <functional>
#include <gtest/gtest.h>

#include "tallybook/desktop/host/ProgressWindow.h"
#include "tests/tallybook/desktop/Waiting.h"

namespace tallybook::desktop::testing {

// Lets the display below show itself and events come in until `done` holds; the test fails where it does not in time.
inline void HoldUntil(ProgressWindow& below, const std::function<bool()>& done) {
  QElapsedTimer waited;
  waited.start();
  for (Single fraction = 0.5F; !done() && waited.elapsed() < kLimit; fraction = 1 - fraction) {
    below.Fraction(fraction == 0.5F ? 0.25F : fraction);
    QTest::qSleep(1);
  }
  EXPECT_TRUE(done()) << "the work was held, and nobody let it go on";
}

class HeldProgress : public engine::ProgressDisplay {
 public:
  explicit HeldProgress(ProgressWindow& below) : below_(below) {}

  // The `step`th call under a title that begins so, 1 being the first behind its beginning, waits until `done` holds.
  void HoldAt(const tallybook::Text& title, int step, std::function<bool()> done) {
    title_ = title;
    step_ = step;
    done_ = std::move(done);
  }

  void Begin(const tallybook::Text& title) override {
    steps_ = title.starts_with(title_) ? 0 : -1;
    below_.Begin(title);
  }
  void Fraction(Single fraction) override {
    below_.Fraction(fraction);
    Step();
  }
  void Text(const tallybook::Text& text) override { below_.Text(text); }
  void CancelEnabled(bool enabled) override { below_.CancelEnabled(enabled); }
  [[nodiscard]] bool Cancelled() override {
    Step();
    return below_.Cancelled();
  }
  void End() override { below_.End(); }

 private:
  void Step() {
    if (steps_ < 0 || ++steps_ != step_ || !done_) return;
    HoldUntil(below_, done_);
  }

  ProgressWindow& below_;
  tallybook::Text title_;
  int step_ = 0;
  int steps_ = -1;
  std::function<bool()> done_;
};

}  // namespace tallybook::desktop::testing
