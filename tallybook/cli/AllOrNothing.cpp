#include "tallybook/cli/AllOrNothing.h"

#include "base/Failure.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/KnownFiles.h"

namespace tallybook::cli {

void AddAtomic(CommandTable& command, bool& atomic) {
  AddFlag(command, "--atomic", atomic, "Import all of it, or leave figures and files as they are");
  Exclude(command, "--atomic", "--preview");
}

std::unique_ptr<application::AtomicImport> BeginAtomic(Session& session, engine::Book& book, bool atomic) {
  if (!atomic) return nullptr;
  return std::make_unique<application::AtomicImport>(book, session.Files(),
                                                     [&session](const Text& path) { session.NeedRemovable(path); });
}

Text PlaceOf(Session& session, const application::AtomicImport* atomic, const Text& path) {
  return PlaceOf(session, atomic == nullptr ? path : atomic->PlaceOf(path));
}

void TellNotDisposed(const std::vector<application::DisposalOutcome>& outcomes) {
  for (const Text& text : application::NotDisposedTexts(outcomes)) WarnAfterCommit(text);
}

void TellNothingKept(Session& session) {
  const bool warning = true;
  session.Note(application::NothingKeptText(), warning);
}

WaitingReports::~WaitingReports() {
  try {
    if (!ended_) session_.Factory().WriteHeldReports({application::NothingKeptLine()});
  } catch (...) {
    return;  // meant: the failure that led here is what is told
  }
}

void WaitingReports::End(const std::vector<application::FileBalance>& balances, bool kept) {
  ended_ = true;
  try {
    session_.Factory().WriteHeldReports(application::ClosingLines(balances, kept));
  } catch (...) {
    const StopReason why = ReasonOf(CurrentFailure());
    kept ? WarnAfterCommit(why.words) : session_.TellStop(why);
  }
}

}  // namespace tallybook::cli
