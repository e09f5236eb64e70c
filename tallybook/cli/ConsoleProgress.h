// The progress display of the command: one line on standard error, only where that is a terminal, redrawn at most ten
// times a second so that bulk work is not slowed; and Ctrl-C as the user's cancel, where a CancelKey lives.
//
// A cancel that nobody has polled yet outlives the end of the display and is met at the next place that polls. Once it
// has been seen it lasts until the display ends, as the display's contract says. One thread.
#pragma once

#include <chrono>

#include "tallybook/engine/ProgressDisplay.h"

namespace tallybook::cli {

class ConsoleProgress : public engine::ProgressDisplay {
 public:
  ConsoleProgress();
  ~ConsoleProgress() override { Hide(); }
  ConsoleProgress(const ConsoleProgress&) = delete;
  ConsoleProgress& operator=(const ConsoleProgress&) = delete;

  void Begin(const tallybook::Text& title) override;
  void Fraction(Single fraction) override {
    if (visible_) ShowFraction(fraction);
  }
  void Text(const tallybook::Text& text) override;
  // Ctrl-C is always offered.
  void CancelEnabled(bool /*enabled*/) override {}
  [[nodiscard]] bool Cancelled() override;
  void End() override;

  // Takes the line off the screen until the next redraw, for whoever is about to write to the terminal.
  void Hide();
  // True when an operation saw the user's cancel since the start.
  [[nodiscard]] bool WasCancelled() const { return was_cancelled_; }

 private:
  void ShowFraction(Single fraction);
  void Draw();

  bool visible_;
  bool open_ = false;
  bool drawn_ = false;
  bool cancel_seen_ = false;
  bool was_cancelled_ = false;
  tallybook::Text title_;
  Single fraction_ = 0;
  std::chrono::steady_clock::time_point last_drawn_;
};

}  // namespace tallybook::cli
