#include "tallybook/cli/Findings.h"

#include <fmt/format.h>
#include <iostream>

#include "tallybook/cli/Colours.h"
#include "tallybook/cli/Shown.h"
#include "tallybook/cli/TextTable.h"

namespace tallybook::cli {

ExitStatus StatusOfFindings(const Text& file, long long count, const Text& one) {
  if (count == 0) return ExitStatus::kDone;
  std::cout << std::flush;
  std::cerr << fmt::format("{} {}: {}\n", TroubleText("tallybook:"), Shown(file), Counted(count, one)) << std::flush;
  return ExitStatus::kFailed;
}

}  // namespace tallybook::cli
