// How a file is imported, as the journal keeps it and as files are known again by (application/ImportHistory.h): the
// same import by the command and by the desktop is the same way. Plain values.
#pragma once

#include <vector>

#include "base/Types.h"
#include "import/QDXImport.h"
#include "tallybook/application/EntryFacts.h"

namespace tallybook::application {

// By an exchange definition. `math` is that of the exchange object, whose default adds.
[[nodiscard]] EntryFacts WayOfDefinition(Integer number, const Text& title, Integer math);

// A comma-separated file; a math of mDefault is as its header tells, and fields of these numbers are cleared before.
[[nodiscard]] EntryFacts WayOfCsv(eMath math, const std::vector<Long>& cleared);

struct DelimitedWay {
  eMath math = eMath::mReplace;
  Integer date_order = 1;  // as the import counts them
  bool date_parts = false;
  bool system_fields = false;
  bool any_line_end = false;
};
[[nodiscard]] EntryFacts WayOfDelimited(const DelimitedWay& way);

// The math that an import ran with, in the words of EntryFacts; empty where nobody knows.
[[nodiscard]] const Text& MathThatRan(const EntryFacts& facts);
// Whether it cleared fields of the book before it did anything else.
[[nodiscard]] bool ClearsFields(const EntryFacts& facts);

}  // namespace tallybook::application
