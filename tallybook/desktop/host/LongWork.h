// Long work that a window begins and that runs within the window's own call: what closes the window meanwhile ends the
// work first, and the window closes behind it. One thread.
#pragma once

#include <QTimer>
#include <functional>
#include <utility>

namespace tallybook::desktop {

class LongWork {
 public:
  // `ask_to_end` asks the work to end; what cannot be ended yet is asked again.
  explicit LongWork(std::function<void()> ask_to_end) {
    QObject::connect(&asking_, &QTimer::timeout, std::move(ask_to_end));
  }

  [[nodiscard]] bool IsRunning() const { return is_running_; }

  // Runs it; it fails by telling the user, and throws nothing. True: the window was to be closed meanwhile, and is to
  // be now.
  template <typename Work>
  [[nodiscard]] bool Run(Work work) {
    is_running_ = true;
    work();
    is_running_ = false;
    const bool closes = asking_.isActive();
    asking_.stop();
    return closes;
  }
  // Whether the window must stay for now: the work has been asked to end.
  [[nodiscard]] bool HoldsWindow() {
    if (is_running_ && !asking_.isActive()) asking_.start(kAskEvery);
    return is_running_;
  }

 private:
  static constexpr int kAskEvery = 50;  // milliseconds

  QTimer asking_;
  bool is_running_ = false;
};

}  // namespace tallybook::desktop
