// Imports that are done wholly or not at all: --atomic, and what is told of it. What it is stands in
// application/AtomicImport.
#pragma once

#include <memory>
#include <vector>

#include "tallybook/application/AtomicImport.h"
#include "tallybook/application/ImportBalance.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

// --atomic of a command that imports and has --preview.
void AddAtomic(CommandTable& command, bool& atomic);

// The import that begins now; nothing where `atomic` is not set.
[[nodiscard]] std::unique_ptr<application::AtomicImport> BeginAtomic(Session& session, engine::Book& book, bool atomic);

// Where the bytes of a file are by now that the import knows by this path.
[[nodiscard]] Text PlaceOf(Session& session, const application::AtomicImport* atomic, const Text& path);

// Says which files are not deleted or renamed as they were to be.
void TellNotDisposed(const std::vector<application::DisposalOutcome>& outcomes);
// Says that nothing of the import stays.
void TellNothingKept(Session& session);

// The printed reports of such an import, which tell its end as well: from here on they wait for it.
class WaitingReports {
 public:
  explicit WaitingReports(Session& session) : session_(session) { session_.Factory().HoldReports(); }
  // Where the end was not told nothing is kept.
  ~WaitingReports();
  WaitingReports(const WaitingReports&) = delete;
  WaitingReports& operator=(const WaitingReports&) = delete;

  // Writes them with what became of the import; says where one cannot be written.
  void End(const std::vector<application::FileBalance>& balances, bool kept);

 private:
  Session& session_;
  bool ended_ = false;
};

}  // namespace tallybook::cli
