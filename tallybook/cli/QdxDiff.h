// Compares two exchange files: their headers item by item, their accounts by code, fields by number, and their figures
// by account code, date and field number. When each was made does not count.
#pragma once

#include <functional>

#include "base/Types.h"

namespace tallybook::cli {

// Tells a line for each difference and gives their number.
//   fails  as opening does, and Failure 57 with path, byte and reason for a file that cannot be followed to its end
[[nodiscard]] long long DiffQdxFiles(const Text& first_path, const Text& second_path,
                                     const std::function<void(const Text& line)>& tell);

}  // namespace tallybook::cli
