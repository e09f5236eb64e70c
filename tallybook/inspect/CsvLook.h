// A look at a comma-separated file before it is imported (docs/formats.md, "Comma-separated import"): all that the
// import's audit would ask about, and what its rules let pass in silence. The file is read by the import's own reader,
// and nothing is written.
//
// Where each record of a file stands on a line of its own, as in nearly all of them, a line that holds more or fewer
// fields is told and passed over, and the next line is looked at for itself: to the import it would move all that
// follows. A file of another make is read as one run of fields.
#pragma once

#include "base/TextEncoding.h"
#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

struct CsvLookRequest {
  Text file;
  eMath math = eMath::mDefault;  // other than mDefault: what the header says of it does not count
  TextEncoding encoding = TextEncoding::kDetect;
};

// Tells `listener` of all findings and pieces, in the file's order. Moves the book's calendar, and shows progress.
//   fails  53, 70, 75, 76 with the path, where the file cannot be opened; 57 where it cannot be read
LookTally LookAtCsv(Masterfile& masterfile, const CsvLookRequest& request, FindingListener& listener);

}  // namespace tallybook::inspect
