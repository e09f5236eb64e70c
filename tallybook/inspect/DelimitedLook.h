// A look at a delimited file before it is imported (docs/formats.md, "Delimited import"): all that the import's audit
// would ask about, what its second pass would end at though the audit lets it pass, and what both let pass in silence.
// The lines are cut by the import's own reader, and nothing is written.
#pragma once

#include "base/Types.h"
#include "import/DelimitedImport.h"
#include "tallybook/inspect/DelimitedFile.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

struct DelimitedLookRequest {
  Text file;
  eMath math = eMath::mAdd;
  Integer date_order = kMonthDayYear;
  bool system_fields = false;  // fields that the system keeps by itself are let in
  DelimitedForm form = {};
};

// Tells `listener` of all findings and pieces, in the file's order; each piece is a line. Moves the book's calendar,
// and shows progress. A file whose lines end in LF, which are not to be read so, has this one finding.
//   fails  53, 70, 75, 76 with the path, where the file cannot be opened; 57 where it cannot be read
LookTally LookAtDelimited(Masterfile& masterfile, const DelimitedLookRequest& request, FindingListener& listener);

}  // namespace tallybook::inspect
