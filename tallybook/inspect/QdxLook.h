// A look at an exchange file before it is imported by a definition (docs/exchange-file.md): all that breaks the rules
// of the format, what the import would refuse the file for or ask about, what would end it half way, and what it takes,
// joins or leaves out in silence. The tables are read and matched by the import's own units, and nothing is written.
#pragma once

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "import/QDXImport.h"
#include "tallybook/inspect/Finding.h"

namespace tallybook {
class Masterfile;
}

namespace tallybook::inspect {

struct QdxLookRequest {
  Text file;
  DefinitionRecord definition = {};                  // as it stands on the disk
  Integer math = static_cast<Integer>(eMath::mAdd);  // as the exchange object has it
  Text archive_copy = {};                            // of the file that was imported last; no file: nothing is compared
};

// What a look at an exchange file came to. Its records are dates of accounts.
struct QdxLookTally : LookTally {
  bool begins_as_one = false;  // else it is no exchange file at all, which the first finding tells
  long long accounts = 0;      // blocks of them
  // Figures of the file. Those applied are those that the definition sends somewhere, where nothing refuses the file or
  // ends the import; the others are sent nowhere. Neither counts where the import is to read no figure.
  long long figures = 0;
  long long applied = 0;
  long long not_mapped = 0;
};

// Tells `listener` of all findings; of pieces there are none. Those about figures come in the file's order, those about
// the whole behind them. Moves the book's calendar and current record, and shows progress.
//   fails  53, 70, 75, 76 with the path, where the file cannot be opened; 57 where it, or the book, cannot be read
QdxLookTally LookAtQdx(Masterfile& masterfile, const QdxLookRequest& request, FindingListener& listener);

}  // namespace tallybook::inspect
