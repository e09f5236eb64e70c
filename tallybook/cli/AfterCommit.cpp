#include "tallybook/cli/AfterCommit.h"

#include <iostream>

#include "base/Failure.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

void CommitOrAbandon(engine::Book& book) {
  try {
    book.EndProgress();
  } catch (...) {
    book.Abandon();
    throw;
  }
}

std::optional<StopReason> CommitWhatStays(engine::Book& book) {
  const Text path = book.Path();
  try {
    CommitOrAbandon(book);
    return std::nullopt;
  } catch (...) {
    StopReason reason = ReasonOf(CurrentFailure());
    reason.words += "; what was not committed before is not kept, `tallybook journal list " + path + "` shows what was";
    return reason;
  }
}

void WarnAfterCommit(const Text& what) {
  Warn("it is done, but " + what);
}

void DoAfterCommit(const std::function<void()>& act) {
  try {
    act();
  } catch (...) {
    WarnAfterCommit(CurrentFailure().Description());
  }
  if (std::cout.flush()) return;
  std::cout.clear();
  WarnAfterCommit("standard output cannot be written");
}

}  // namespace tallybook::cli
