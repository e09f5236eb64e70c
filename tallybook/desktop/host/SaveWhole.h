// Files that the application writes on the user's word: a report, a picture of a chart.
#pragma once

#include <functional>
#include <string>

#include "base/Types.h"

namespace tallybook {
class FileStream;
}

namespace tallybook::application {
class OutputRules;
}

namespace tallybook::desktop {

// Writes the bytes to `path` whole: until they are on the disk the old file stands as it was. Never onto a book, a
// companion of one, or an exchange definition.
//   fails  as application::OutputRules::Check and application::WholeFile do, each with the path
void SaveWhole(const Text& path, const std::string& bytes);
// The same by rules of the caller's, for what does not fit into memory.
void SaveWhole(const Text& path, const application::OutputRules& rules,
               const std::function<void(FileStream& into)>& write);

}  // namespace tallybook::desktop
