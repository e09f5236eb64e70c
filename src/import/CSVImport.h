// The comma-separated import (docs/formats.md, "Comma-separated import"): the whole file is audited, and only one that
// passes is applied, in a second pass over the same open file.
#pragma once

#include <vector>

#include "base/Types.h"
#include "import/TextImport.h"

namespace tallybook {

class Masterfile;

struct CSVImportRequest {
  Text file_name;
  bool no_prompts = false;  // leaves out the one confirmation, not the audit's questions
  // Position j from 1 is a flag for datafield number j: not 0 means that the field is cleared, on every account, at
  // each date of the file. Position 0 is never looked at; a list without it is no list, and failure 9 when it is
  // needed.
  std::vector<Integer> clear_fields = {0};
  eMath math = eMath::mDefault;  // mDefault takes the file's own, any other overrides it
  bool write_rollback = true;    // keep a journal
};

// Runs the import. True only after the whole file has been applied; then `tally` tells what was touched. False: the
// user gave up, or something was refused, and that has been told by message.
//   before the second pass   the database is as it was
//   in the second pass       what has been written stays, and the journal stays open: meant
//   run-time failures        from the audit's first record on end the run with the box "Error:", number, ":",
//                            statement, "Information not imported."; before that the single step is passed over: meant
[[nodiscard]] bool ImportCSV(Masterfile& masterfile, const CSVImportRequest& request, TextImportTally& tally);

}  // namespace tallybook
