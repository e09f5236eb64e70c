// The clock of the machine, and the moment now. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

class Clock {
 public:
  virtual ~Clock() = default;
  [[nodiscard]] virtual Date Now() = 0;  // local time
  // Universal time, which no change of the local clock sets back: what a file's time of modification is held against.
  [[nodiscard]] virtual Date UniversalNow() = 0;
  // Milliseconds since some moment, which no change of the clock sets back or makes jump: for how long something took.
  [[nodiscard]] virtual long long Ticks() = 0;
  virtual void Sleep(Single seconds) = 0;              // gives the machine to others meanwhile
  [[nodiscard]] virtual Text LongDate(Date date) = 0;  // the user's long date format
};

// The moment now, by the installed platform's clock, in local time.
[[nodiscard]] Date Now();

}  // namespace tallybook
