// The progress of long work in a window: what is done, how much of it, how long it may still take, and Cancel where the
// work lets itself be cancelled, with words of what that leaves. It shows itself after half a second, and never takes
// the place of a question: who asks hides it meanwhile. Work of more than ten seconds tells the desktop when it ends,
// unless the user is looking.
//
// While it is open every call lets events in from time to time, so that no window of the application stands still. It
// is called once a figure by the largest imports, so a call that has nothing to do costs a comparison. One thread.
#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "tallybook/engine/ProgressDisplay.h"

class QWidget;

namespace tallybook::desktop {

class ProgressWindow : public engine::ProgressDisplay {
 public:
  static constexpr int kShownAfter = 500;          // milliseconds
  static constexpr int kToldAfter = 10'000;        // of work whose end the desktop is told
  static constexpr int kEventsEvery = 40;          // between two turns of the event loop
  static constexpr Single kSmallestStep = 0.001F;  // below it not even the clock is asked

  // The window that it stands over; asked each time it is shown, and may give null.
  using Owner = std::function<QWidget*()>;
  // Tells the desktop that work of this title has ended.
  using Teller = std::function<void(const tallybook::Text& title, const tallybook::Text& words)>;
  explicit ProgressWindow(Owner owner = {}, Teller teller = {});
  ~ProgressWindow() override;
  ProgressWindow(const ProgressWindow&) = delete;
  ProgressWindow& operator=(const ProgressWindow&) = delete;

  void Begin(const tallybook::Text& title) override;
  void Fraction(Single fraction) override {
    if (fraction - fraction_ < kSmallestStep && fraction >= fraction_ && ++calls_ % kCallsUnlooked != 0) return;
    Move(fraction);
  }
  void Text(const tallybook::Text& text) override;
  void CancelEnabled(bool enabled) override;
  // Each look lets events in too, if it is time.
  [[nodiscard]] bool Cancelled() override {
    if (++calls_ % kCallsUnlooked == 0) LetEventsIn();
    return cancelled_;
  }
  void End() override;

  // How much is done is not told: until it is, or the next Begin, the bar only shows that it goes on.
  void Busy(bool is_busy = true) { is_busy_ = is_busy; }
  // What a cancel leaves, as words below the button: "What was imported by then stays." Until it is set anew.
  void SetCancelWords(const tallybook::Text& words);
  // Done at each turn at which events could be let in, whether or not it is time for it; empty for nothing.
  void OnTurn(std::function<void()> act) { on_turn_ = std::move(act); }
  // Out of the way of a question, until work goes on.
  void Hide();
  // As the user's cancel, where the work offers it.
  void AskToCancel() {
    if (open_ && can_cancel_) Cancel();
  }

  [[nodiscard]] bool IsOpen() const { return open_; }
  // Some work since Forget was cancelled by the user.
  [[nodiscard]] bool WasCancelled() const { return was_cancelled_; }
  void Forget() { was_cancelled_ = false; }

 private:
  class Frame;
  static constexpr unsigned kCallsUnlooked = 256;

  void Move(Single fraction);
  void LetEventsIn();
  void ShowState();
  void Cancel();
  [[nodiscard]] long long Elapsed() const;

  Owner owner_;
  Teller teller_;
  std::function<void()> on_turn_;
  std::unique_ptr<Frame> frame_;
  tallybook::Text title_;
  tallybook::Text text_;
  tallybook::Text cancel_words_;
  Single fraction_ = 0;
  unsigned calls_ = 0;
  long long began_ = 0;  // by a clock that no change sets back, in milliseconds
  long long events_let_in_ = 0;
  bool open_ = false;
  bool is_busy_ = false;
  bool in_events_ = false;
  bool can_cancel_ = false;
  bool cancelled_ = false;
  bool was_cancelled_ = false;
};

// "about 2 minutes left"; empty as long as that cannot be told. `fraction` of the work took `elapsed` milliseconds.
[[nodiscard]] Text TimeLeft(long long elapsed, Single fraction);

}  // namespace tallybook::desktop
