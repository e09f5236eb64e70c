// The file of --summary, for runs that nobody watches: the balance of an import as JSON.
#pragma once

#include <optional>
#include <vector>

#include "tallybook/application/ImportBalance.h"
#include "tallybook/cli/Arguments.h"
#include "tallybook/cli/Session.h"

namespace tallybook::cli {

// --summary of a command that imports.
void AddSummary(CommandTable& command, Text& path);

class SummaryFile {
 public:
  // Looks at the place, where one is given, so that one that takes no file shows before any work is done: fails as
  // Session::AddOutput and WholeFiles::Announce. WrongUse for standard output, which has the report.
  SummaryFile(Session& session, const Text& path);
  SummaryFile(const SummaryFile&) = delete;
  SummaryFile& operator=(const SummaryFile&) = delete;

  // Once the import is over, however it ended. A summary that cannot be written takes back no figure, and is warned of.
  void Write(const std::vector<application::FileBalance>& balances, bool done);

 private:
  Text path_;
  std::optional<application::WholeOutput> output_;
};

}  // namespace tallybook::cli
