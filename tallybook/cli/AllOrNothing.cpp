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

std::vector<application::DisposalOutcome> KeepAtomic(application::AtomicImport& atomic, engine::Book& book,
                                                     application::ImportRecorder& recorder) {
  try {
    book.EndProgress();
    recorder.Save();
    return atomic.Keep();
  } catch (...) {
    const Failure failure = CurrentFailure();
    atomic.Drop();
    throw Failure(failure.Number(), failure.Description() + "; nothing of the import is kept", failure.Source());
  }
}

void TellNotDisposed(const std::vector<application::DisposalOutcome>& outcomes) {
  for (const application::DisposalOutcome& outcome : outcomes) {
    const bool as_meant = outcome.result == application::DisposalOutcome::Result::kDone && outcome.why.empty();
    if (!as_meant) WarnAfterCommit(application::DisposalText(outcome));
  }
}

void DropAtomic(Session& session, application::AtomicImport& atomic) {
  atomic.Drop();
  const bool warning = true;
  session.Note("nothing of the import is kept: figures and files are as they were", warning);
}

}  // namespace tallybook::cli
