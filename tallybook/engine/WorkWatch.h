// Who watches long work on a whole book: backups, restores, checks, compacting and salvage tell how far they are, and
// end where they are not wanted any more. It is asked on the thread that works.
#pragma once

#include <exception>

#include "base/Types.h"

namespace tallybook::engine {

// The user does not want the work any more. It is no Failure, so that nothing goes on behind it as it does behind
// damage. What the work had made by then is taken away on the way out, and what was there before is as it was.
class WorkCancelled final : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "cancelled"; }
};

class WorkWatch {
 public:
  virtual ~WorkWatch() = default;

  // So much is done, from 0 to 1.
  virtual void Done(Single fraction) = 0;
  // From the user's cancel on. Asked often.
  [[nodiscard]] virtual bool IsCancelled() = 0;

  // Ends the work where it is not wanted any more: throws WorkCancelled.
  void EndIfCancelled() {
    if (IsCancelled()) throw WorkCancelled();
  }
  void Step(Single fraction) {
    Done(fraction);
    EndIfCancelled();
  }
};

// For work that nobody watches.
class NoWatch final : public WorkWatch {
 public:
  void Done(Single /*fraction*/) override {}
  [[nodiscard]] bool IsCancelled() override { return false; }
};
[[nodiscard]] inline WorkWatch& Unwatched() {
  static NoWatch nobody;
  return nobody;
}

// A part of the work that is watched: all of the part is done where the whole is at `to`. `whole` outlives it.
class WorkPart final : public WorkWatch {
 public:
  WorkPart(WorkWatch& whole, Single from, Single to) : whole_(whole), from_(from), to_(to) {}

  void Done(Single fraction) override { whole_.Done(from_ + (to_ - from_) * fraction); }
  [[nodiscard]] bool IsCancelled() override { return whole_.IsCancelled(); }

 private:
  WorkWatch& whole_;
  Single from_;
  Single to_;
};

}  // namespace tallybook::engine
