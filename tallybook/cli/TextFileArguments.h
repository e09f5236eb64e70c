// The arguments that tell how a text file is to be read and applied, for the commands that import one and that look
// through one.
#pragma once

#include "base/TextEncoding.h"
#include "import/QDXImport.h"
#include "tallybook/cli/Arguments.h"

namespace tallybook::cli {

// --math add|subtract|replace, and --encoding.
Argument& AddMath(CommandTable& command, eMath& math, const Text& what);
Argument& AddEncoding(CommandTable& command, TextEncoding& encoding);

// The order of a date's parts that is to be found out from the file.
inline constexpr Integer kFindDateOrder = 0;

// How a delimited file is written: --date-order (kFindDateOrder for auto), --line-ends, --date-parts and
// --system-fields.
struct DelimitedArguments {
  Integer& date_order;
  bool& any_line_end;
  bool& date_parts;
  bool& system_fields;
};
void AddDelimitedForm(CommandTable& command, const DelimitedArguments& form);

}  // namespace tallybook::cli
