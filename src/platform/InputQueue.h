// What the user does that has not been handled yet. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

// The user interface's queue of pending input.
class InputQueue {
 public:
  virtual ~InputQueue() = default;
  // True when work of the kinds in `mask` waits. The kinds that matter here are told at HandlePendingInput.
  [[nodiscard]] virtual bool HasPending(Long mask) = 0;
  // Lets the user interface run once.
  virtual void RunOnce() = 0;
};

}  // namespace tallybook
