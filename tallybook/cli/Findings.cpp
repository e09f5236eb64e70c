#include "tallybook/cli/Findings.h"

#include <fmt/format.h>

#include "tallybook/cli/Lines.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

ExitStatus StatusOfFindings(const Text& file, long long count, const Text& one) {
  if (count == 0) return ExitStatus::kDone;
  Warn(fmt::format("{}: {}", file, Counted(count, one)));
  return ExitStatus::kFailed;
}

}  // namespace tallybook::cli
