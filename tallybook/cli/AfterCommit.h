// What a command still does when its work is done and committed: telling it, closing the file. It has been done
// whatever happens to these, so that what fails here is a warning on standard error and no reason for another status.
#pragma once

#include <functional>
#include <optional>

#include "base/Failure.h"
#include "base/Types.h"
#include "tallybook/application/JournalMark.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// Commits what an operation wrote, to be asked once before it is told as done. Where that fails nothing of it is kept
// for a later commit, and the failure goes on.
void CommitOrAbandon(engine::Book& book);

// The same for an operation that failed half way, where what it wrote stays: why that could not be committed.
[[nodiscard]] std::optional<StopReason> CommitWhatStays(engine::Book& book);

// Of an import that failed: says on standard error what it left half way, with the command that takes it back.
void TellWhatStays(const application::JournalMark& mark, const engine::Book& book);

// Does it; what fails is warned of.
void DoAfterCommit(const std::function<void()>& act);

// Says on standard error that it is done, but.
void WarnAfterCommit(const Text& what);

}  // namespace tallybook::cli
