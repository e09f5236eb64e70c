// Whether the log beside a book is read to its end. What is damaged in a log, and all behind that, is passed over in
// silence by whoever opens the book: the checksums of the book agree then, with an earlier state.
#pragma once

#include "base/Types.h"

namespace tallybook::engine {

// What is wrong with a write-ahead log (SQLite file format, "The WAL File Format"), a sentence; empty where nothing is,
// and where there is no log. A log that was cut between two of its pages cannot be told from one that is whole. Nothing
// is locked, and the file must not be open in this process.
[[nodiscard]] Text LogTrouble(const Text& path);

}  // namespace tallybook::engine
