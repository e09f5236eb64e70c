// Files that stand in the book's history when they are to be imported, or that the run has twice: --again, the question
// about them, and what is told of those that are left alone. The rule itself is application/ImportHistory.
#pragma once

#include "base/Types.h"
#include "tallybook/application/EntryFacts.h"
#include "tallybook/application/ImportHistory.h"
#include "tallybook/application/ImportRecorder.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

// --again of a command that imports.
void AddAgain(CommandTable& command, bool& again);

class KnownFiles {
 public:
  // Both outlive this. With `again` no file is known.
  KnownFiles(Session& session, engine::Book& book, bool again);

  // Whether a file is to be imported. One that is known is asked about on a terminal, where `may_ask`; neither --yes
  // nor --answer answers that. Where it is to be left alone, that has been told, and the command's status is another
  // than 0.
  [[nodiscard]] bool MayImport(const Text& path, const application::EntryFacts& way, bool may_ask);

 private:
  Session& session_;
  std::optional<application::ImportHistory> history_;
};

// Where the bytes of a file lie that the user or a definition names.
[[nodiscard]] Text PlaceOf(Session& session, const Text& path);

// Keeps what a run recorded, and says on standard error where that cannot be: the figures stand.
void SaveRecord(application::ImportRecorder& recorder);

}  // namespace tallybook::cli
