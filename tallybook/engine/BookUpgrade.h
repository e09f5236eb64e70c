// The one chain of steps that brings an older book to the present format (docs/book-file.md, "Older books").
#pragma once

#include "base/Types.h"
#include "tallybook/engine/Database.h"

namespace tallybook::engine {

// Runs the missing steps in one transaction, after a backup beside the book. The connection must have the right to
// write, and no statement may stand on a row.
//   format  what the file has
//   gives   the path of the backup: the book's path and "-v" and its format, with a number behind that where such a
//           file is there already
//   fails   57 for a damaged book (what is damaged is not given a checksum), 61 no room, 75 where the backup cannot be
//           made; the file is as it was then, and no backup is left
Text UpgradeBook(Database& database, Long format);

}  // namespace tallybook::engine
