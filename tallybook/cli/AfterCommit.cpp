#include "tallybook/cli/AfterCommit.h"

#include <fmt/format.h>
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

void TellWhatStays(const application::JournalMark& mark, const engine::Book& book) {
  switch (mark.LeftHalfWay()) {
    case application::JournalMark::Left::kNothing:
      return;
    case application::JournalMark::Left::kForGood:
      return Warn("the import ended half way, and what it wrote stays");
    case application::JournalMark::Left::kUndoable:
      Warn(fmt::format("the import ended half way; `tallybook journal undo {}` takes {} back", book.Path(),
                       mark.Since().size() > 1 ? "all of it" : "it"));
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
