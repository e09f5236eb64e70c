#include "tallybook/cli/AllOrNothing.h"

#include <string_view>

#include "base/Failure.h"
#include "tallybook/cli/AfterCommit.h"
#include "tallybook/cli/KnownFiles.h"

namespace tallybook::cli {

namespace {

constexpr std::string_view kNothingKept = "nothing of the import is kept: figures and files are as they were";

Text ClosingLine() {
  return "N" + Text(kNothingKept.substr(1)) + ".";
}

}  // namespace

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

AtomicEnd EndAtomic(application::AtomicImport& atomic, engine::Book& book, application::ImportRecorder& recorder,
                    bool done) {
  AtomicEnd end;
  if (done) {
    try {
      book.EndProgress();
      recorder.Save();
      end.outcomes = atomic.Keep();
      end.kept = true;
      return end;
    } catch (...) {
      end.lost = ReasonOf(CurrentFailure());
    }
  }
  atomic.Drop();
  return end;
}

void TellNotDisposed(const std::vector<application::DisposalOutcome>& outcomes) {
  for (const application::DisposalOutcome& outcome : outcomes) {
    const bool as_meant = outcome.result == application::DisposalOutcome::Result::kDone && outcome.why.empty();
    if (!as_meant) WarnAfterCommit(application::DisposalText(outcome));
  }
}

void TellNothingKept(Session& session) {
  const bool warning = true;
  session.Note(Text(kNothingKept), warning);
}

WaitingReports::~WaitingReports() {
  try {
    if (!ended_) session_.Factory().WriteHeldReports({ClosingLine()});
  } catch (...) {
    return;  // meant: the failure that led here is what is told
  }
}

void WaitingReports::End(const std::vector<application::FileBalance>& balances, bool kept) {
  ended_ = true;
  std::vector<Text> closing = application::BalanceLines(balances);
  if (!kept) closing.insert(closing.begin(), ClosingLine());
  try {
    session_.Factory().WriteHeldReports(closing);
  } catch (...) {
    const StopReason why = ReasonOf(CurrentFailure());
    kept ? WarnAfterCommit(why.words) : session_.TellStop(why);
  }
}

}  // namespace tallybook::cli
