// The input queue on Qt. One thread.
#pragma once

#include <QElapsedTimer>

#include "platform/InputQueue.h"

namespace tallybook::desktop {

class QtInputQueue : public InputQueue {
 public:
  // Qt does not tell what waits without running it: work is taken to wait whenever a few milliseconds have passed since
  // the last run. Whoever asks in a tight loop runs seldom then, and the window stays alive.
  [[nodiscard]] bool HasPending(Long mask) override;
  // Runs what waits and returns, also where nothing does. A failure in the answer to what the user did is raised here.
  void RunOnce() override;

 private:
  QElapsedTimer since_;
};

}  // namespace tallybook::desktop
