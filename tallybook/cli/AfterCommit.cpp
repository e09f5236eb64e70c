#include "tallybook/cli/AfterCommit.h"

#include <iostream>

#include "base/Failure.h"

namespace tallybook::cli {

namespace {

void Warn(const Text& what) {
  std::cerr << "tallybook: it is done, but " << what << '\n' << std::flush;
}

}  // namespace

void DoAfterCommit(const std::function<void()>& act) {
  try {
    act();
  } catch (...) {
    Warn(CurrentFailure().Description());
  }
  if (std::cout.flush()) return;
  std::cout.clear();
  Warn("standard output cannot be written");
}

}  // namespace tallybook::cli
