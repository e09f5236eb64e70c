// What an import of exchange files came to, in words: what was applied, and what was left out without a word of the
// report.
#pragma once

#include <cstddef>
#include <vector>

#include "base/Types.h"
#include "import/QDXImportRecord.h"
#include "import/TextImport.h"

namespace tallybook::application {

// A line for the user. A warning tells of something that is not as he may think.
struct ImportNote {
  Text text = {};
  bool warning = false;
  bool no_file = false;  // it tells of a definition that no file matched
};

// A line for each file that is stored, "Imported year.QDX: 2 accounts, 1 field, 12 dates; 20 figures applied, 4 not
// mapped.", with a warning behind it where the file is shorter than its header's range or has more than was read, or
// could not be deleted or renamed as it was to be; a warning for each definition that no file matched; where some files
// are stored and others not, a warning with what became of each; and where several are stored, their sum.
[[nodiscard]] std::vector<ImportNote> NotesOf(const QDXImportRecord& record);

// That an imported file could not be deleted or renamed, and why.
[[nodiscard]] Text StaysText(const Text& file, const StopReason& why);

// A text import that is done: "Imported day.csv: 2 records, 2 accounts, 1 field, 1 date.". Dates are those of the
// database's records.
[[nodiscard]] Text AppliedText(const Text& file, const TextImportTally& tally, Masterfile& masterfile);

// Whether a run of so many definitions is stored, all of it: what stopped it then came behind its last figure, and the
// import is done. False also where there was nothing to store.
[[nodiscard]] bool IsStored(const QDXImportRecord& record, std::size_t definitions);

// Whether a definition of the run had no file.
[[nodiscard]] bool LacksFiles(const QDXImportRecord& record);

// What stopped the run, in the order in which it happened: a failing definition does not stop those behind it.
[[nodiscard]] std::vector<StopReason> StopsOf(const QDXImportRecord& record);

}  // namespace tallybook::application
