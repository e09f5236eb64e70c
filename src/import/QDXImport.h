// The import of a definition's exchange files into the database. For each file of the definition's pattern, oldest
// first: header and tables are read, compared with the last import, matched and validated; nothing is written before
// all of that passes. Then the target range is zeroed where the mode says so, the values are applied, and the file is
// disposed of.
//
// No import is atomic: what has been written stays, and the host's rollback journal is the way back. A run that fails
// leaves that journal open: meant.
#pragma once

#include <functional>
#include <vector>

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "import/QDXImportRecord.h"
#include "qdx/HeaderRecord.h"

namespace tallybook {

class Masterfile;
class Printer;

// How imported values combine with those present. The numbers are public and are never renumbered.
enum class eMath : Integer {
  mDefault = 0,   // added
  mAdd = 1,       // added
  mSubtract = 2,  // subtracted
  mReplace = 3,   // the target range is zeroed first, then values are added
};
// Beyond the enumeration, and accepted: the target range is zeroed and no value is read. Any value above zeroes and
// adds.
inline constexpr Integer kZeroOnly = 4;

// What an import works with, all owned by the exchange object.
struct QDXImportMeans {
  Masterfile& masterfile;
  DefinitionRecord& definition;  // its tables are overwritten by the modes that fill them
  HeaderRecord& header;          // the shared one
  Integer& file_number;          // the open exchange file; 0 when none
  std::vector<Text>& file_list;  // the files of one pattern
  Integer math = 0;              // an eMath value, kZeroOnly or more
  bool write_rollback = true;    // keep a journal
  // Opens the file and reads its header and tables into `header`, telling by itself what there is to tell; `why` is the
  // reason of a false.
  std::function<bool(const Text& filename, StopReason& why)> read_header;
  // The name of the copy of the file that was imported last time.
  std::function<Text()> archive_name;
};

// Fills `file_list` with the full paths of the files that match a pattern, oldest modification time first; files of
// equal time keep the directory's order. Gives their number.
Integer MatchFiles(const Text& pattern, std::vector<Text>& file_list);

// Runs the import; `report` receives all narration. True: every matching file was imported, or none matched. False: the
// run stopped; files handled before stay imported and disposed of, later ones stay untouched. What there was to tell
// has been told by message or on the report. `record` tells what came of each file, and what stopped the run.
//   failures  are logged with " - CDataExchange:ImportQDXFile" and the statement, then "Error reading QDX file" is
//             asked: Retry repeats exactly the statement that failed, so that no value is lost or doubled; Cancel ends
//             the run
//   stops     the process where the database cannot read a record (StopProgram)
[[nodiscard]] bool ImportQDX(QDXImportMeans& means, Printer& report, QDXDefinitionImport& record);

}  // namespace tallybook
