// The companion files of a book whose file does not end in ".tbk": its definitions (TBQDX1.NAME), exchange file archives
// (TBQDBU1.NAME) and settings (NAME.ini). Such a book bore a name without all that follows the last point while its
// format was 1, so that shop.2024 and shop.2025 had one set of companions. Now NAME is the whole name of the file.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::engine {

// True where a book of format 1 has taken its name: its two names are one, or there is NAME.ini, which tells that, so
// that whoever deletes a copy later does not get it again.
[[nodiscard]] bool HasTakenItsName(const Text& path);
// True where there are companions under the older name. They may be another book's besides.
[[nodiscard]] bool HasOlderCompanions(const Text& path);

// Copies them to the book's name, the settings last, which are made where there were none. What has the new name already
// stays as it is; those of before stay for whoever else uses them. Gives the names of the files that were copied.
//   fails   70, 61, 57 with the path; what was copied by then is whole, and the call can be repeated
std::vector<Text> CopyOlderCompanions(const Text& path);

}  // namespace tallybook::engine
