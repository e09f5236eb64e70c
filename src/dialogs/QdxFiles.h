// The exchange files that definitions name: how many there are behind a name, which one it stands for, and the copy
// that is kept of the one a definition was made with. One thread.
#pragma once

#include "base/Types.h"

namespace tallybook {

class CDataExchange;
class Masterfile;

// The files of a name that may hold wildcards: 1 where a file of exactly that name exists, otherwise how many match it.
// A search that fails finds none.
[[nodiscard]] Long CountMatchingFiles(const Text& pattern);

// The file that stands for a name which may hold wildcards: the name itself where it exists or nothing matches it,
// otherwise the first match of the search, with its folder.
[[nodiscard]] Text ResolveQdxFileName(const Text& name);

// Replaces the archive copy of the open definition by its exchange file; does nothing where there is no file of just
// that name, and where the definition names the copy itself. A copy that fails is logged with " - BackupQdxFile".
void BackupQdxFile(const CDataExchange& exchange, Masterfile& masterfile);

}  // namespace tallybook
