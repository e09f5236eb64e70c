// Holding an exchange definition against a file and the database: filling its tables for its mode, resolving codes, and
// warning when the file's tables differ from those of the file imported last time.
#pragma once

#include "base/Types.h"
#include "import/DefinitionRecord.h"
#include "qdx/HeaderRecord.h"

namespace tallybook {

class Masterfile;
class Printer;

// Fills the definition's tables from the file's where a mode says so: one-for-one takes each account's code for both
// sides, all-to-one the code of the account AcctAll as the target of every account, and any field mode but "manually"
// each field's number for both sides. A table that is too small for the file is failure 9. Codes only:
// MatchAccountCodes resolves them.
void FillTables(DefinitionRecord& definition, const HeaderRecord& header, Masterfile& masterfile);

// Works out AccountFrom and AccountTo of every account row from its codes, by exact comparison of trimmed codes, case
// included; the first match in list order wins on both sides. AccountFrom becomes 0 where the file has no such code;
// AccountTo keeps the number it had where the database has none: meant, both. An account number beyond 16 bits is
// failure 6. Lets pending input run before each row and moves the database's progress bar from 0 to one half. Each
// side's codes are looked at once, as far as the rows need them, so the cost does not grow with rows times accounts.
void MatchAccountCodes(DefinitionRecord& definition, const HeaderRecord& header, Masterfile& masterfile);

// Compares the tables of the file in `header` with those of `archive_name`, the copy of the file imported last time.
// Prints each difference on the report, and asks the user whether to go on where anything differs. False: the user
// cancelled. Nothing is compared where the definition matches all-to-one and one-for-one at once, or where there is no
// such copy or it cannot be read. Fields are compared row by row only where they are matched manually.
//   meant   a copy that is cut short is no failure: the comparison goes on with what was read before
[[nodiscard]] bool CompareWithLastImport(const DefinitionRecord& definition, const HeaderRecord& header,
                                         const Text& archive_name, Masterfile& masterfile, Printer& report);

}  // namespace tallybook
