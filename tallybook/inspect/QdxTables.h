// The tables of an exchange file as an import reads them, and whether they have changed since the last import: the
// import asks about it (CompareWithLastImport).
#pragma once

#include <memory>

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/inspect/QdxMatch.h"

namespace tallybook::inspect {

// What a short file does not tell stays empty.
//   fails  5 for what is no exchange file, is of another version or has a text of negative length; 9 for a table that a
//          reader has no room for; 11 for fields without accounts; and as a file that cannot be opened or read
[[nodiscard]] std::unique_ptr<HeaderRecord> ReadTablesOf(const Text& path);

// Tells of each difference from the file that was imported last, of which `archive_copy` is the copy: counts, accounts
// row by row, and fields where they are matched by rows. Nothing where there is no copy that can be read, and for a
// definition that depends on nothing of the tables.
void TellChangedTables(const DefinitionRecord& definition, const Text& archive_copy, const HeaderRecord& header,
                       const TellFinding& tell);

}  // namespace tallybook::inspect
