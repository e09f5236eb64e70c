// An exchange definition on disk: a text file of comma-separated lines (docs/exchange-file.md, "Definition files"). The
// order of the items is written once, for reading, writing and the conversion of older files alike.
#pragma once

#include <functional>

#include "base/Types.h"
#include "import/DefinitionRecord.h"

namespace tallybook {

enum class TablesWanted { kRead, kSkip };

// The code that is written for an account row, by its position in the file's account table and its number here.
struct RowCodes {
  std::function<Text(Integer account_from)> from_code;
  std::function<Text(Integer account_to)> to_code;
};

// Reads a definition into `record`, which `clear` blanks once the file is open. With tables skipped AcctAll is not of
// use: it holds the first number behind the counts.
//   gives  false where the file cannot be opened (the record is untouched then), ends early or holds more rows than a
//          table has, or a number beyond 16 bits; what was read before stays
//   meant  a file that ends behind the account rows has AcctAll 0; a number that is none reads as 0. An item belongs to
//          its line: one with too few items gives 0 or an empty text for the rest, one with too many loses the surplus
[[nodiscard]] bool ReadDefinition(const Text& path, TablesWanted tables, DefinitionRecord& record,
                                  const std::function<void()>& clear);

// Creates or replaces the file. Fails with a Failure; the file is closed then, and may stand half-written.
//   meant  a text that holds a double quote is written raw, and reads back split there
void WriteDefinition(const Text& path, const DefinitionRecord& record, const RowCodes& codes);

// Copies a definition of the older kind to the newer: the title gets capital letters, the source name ".QDX" added, and
// the last line stays out.
enum class Conversion { kDone, kCannotRead, kCannotWrite };
[[nodiscard]] Conversion ConvertDefinition(const Text& old_path, const Text& new_path);

}  // namespace tallybook
