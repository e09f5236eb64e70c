// The end of a command that looks for something wrong and prints what it finds.
#pragma once

#include "base/Types.h"
#include "tallybook/cli/ExitStatus.h"

namespace tallybook::cli {

// Done where nothing was found. Otherwise failed, and standard error says how many, for whoever keeps only that.
//   file    what was looked at
//   one     the word for one of them: "finding"
[[nodiscard]] ExitStatus StatusOfFindings(const Text& file, long long count, const Text& one);

}  // namespace tallybook::cli
