// Imports that are done wholly or not at all: --atomic, and what is told of it. What it is stands in
// application/AtomicImport.
#pragma once

#include <memory>
#include <vector>

#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

// --atomic of a command that imports and has --preview.
void AddAtomic(CommandTable& command, bool& atomic);

// The import that begins now; nothing where `atomic` is not set.
[[nodiscard]] std::unique_ptr<application::AtomicImport> BeginAtomic(Session& session, engine::Book& book, bool atomic);

// Where the bytes of a file are by now that the import knows by this path.
[[nodiscard]] Text PlaceOf(Session& session, const application::AtomicImport* atomic, const Text& path);

// The import is done: keeps figures and record, then deletes and renames. Where they cannot be kept nothing of it is, and the
// failure says so.
[[nodiscard]] std::vector<application::DisposalOutcome> KeepAtomic(application::AtomicImport& atomic,
                                                                   engine::Book& book,
                                                                   application::ImportRecorder& recorder);
// Says which files are not deleted or renamed as they were to be.
void TellNotDisposed(const std::vector<application::DisposalOutcome>& outcomes);

// It is not done: nothing of it stays, and that is said.
void DropAtomic(Session& session, application::AtomicImport& atomic);

}  // namespace tallybook::cli
