// The delimited import (docs/formats.md, "Delimited import"): one line for a date and an account, with any number of
// datafields and values. The file is audited in a first pass and applied in a second.
#pragma once

#include "base/Types.h"
#include "import/TextImport.h"

namespace tallybook {

class Masterfile;

// How the parts of a date are ordered; every other value counts as year, month, day.
inline constexpr Integer kMonthDayYear = 1;
inline constexpr Integer kDayMonthYear = 2;
inline constexpr Integer kYearMonthDay = 3;

struct DelimitedImportRequest {
  Text file_name;
  eMath math = eMath::mDefault;  // mAdd, mSubtract or mReplace; anything else is refused
  Integer date_order = kMonthDayYear;
  Integer date_fields = 0;  // 0: the date stands in three fields; otherwise in one
  bool can_import_system_fields = false;
  bool write_rollback = true;  // keep a journal
};

// Runs the import. True: the file was applied to its end; then `tally` tells what was touched. False: the user gave up,
// or something was refused, and that has been told by message.
//   renames   the file to its whole name plus ".bak" on nearly every way out, as long as no audit error was counted:
//             meant, also where the user chose Cancel or a run-time failure ended the run
//   stops     the process where the database cannot read a record (StopProgram)
//   failures  from the first line on, a run-time failure ends the run with the box "Error:", number, ":", statement,
//             "Information not imported."; before that the single step is passed over: meant. What has been written in
//             the second pass stays, and the journal stays open
[[nodiscard]] bool ImportDelimited(Masterfile& masterfile, const DelimitedImportRequest& request,
                                   TextImportTally& tally);

}  // namespace tallybook
