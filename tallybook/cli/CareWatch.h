// Long work on a whole book as the command shows it: the progress line, and Ctrl-C as the user's cancel, while one of
// these lives. The work ends with engine::WorkCancelled then, which the command line takes for the status of a cancel.
// One thread.
#pragma once

#include "tallybook/cli/ConsoleProgress.h"
#include "tallybook/cli/Terminal.h"
#include "tallybook/engine/WorkWatch.h"

namespace tallybook::cli {

class CareWatch final : public engine::WorkWatch {
 public:
  // `progress` outlives it.
  CareWatch(ConsoleProgress& progress, const Text& title);
  ~CareWatch() override;
  CareWatch(const CareWatch&) = delete;
  CareWatch& operator=(const CareWatch&) = delete;

  void Done(Single fraction) override { progress_.Fraction(fraction); }
  [[nodiscard]] bool IsCancelled() override { return progress_.Cancelled(); }

 private:
  CancelKey key_;
  ConsoleProgress& progress_;
};

}  // namespace tallybook::cli
