// The end of the process where going on would do harm, and who is told of it before. One thread.
#pragma once

#include "base/Failure.h"

namespace tallybook {

// Told of a record that cannot be read while figures are written or exported, right before the process ends
// (StopProgram). It may tell the user and write what he waits for, a report or a log; the database is not to be
// touched.
class StopWitness {
 public:
  virtual ~StopWitness() = default;
  virtual void ProgramStops(const StopReason& reason) = 0;
};

// Ends the process at once, without unwinding or flushing: the answer to a record that cannot be read while figures are
// written or exported. The platform's stop witness is told before. Tests see it as a death.
[[noreturn]] void StopProgram(const StopReason& reason = {});

}  // namespace tallybook
