// Changes an exchange definition by what the command line says of it, and keeps it with its archive copy.
#pragma once

#include <optional>
#include <vector>

#include "base/Types.h"
#include "exchange/CDataExchange.h"
#include "tallybook/engine/Book.h"

namespace tallybook::cli {

// What is to become of a definition; what is not set stays as it is.
struct DefinitionChanges {
  std::optional<Text> title;
  std::optional<Text> file;       // the exchange file: a path, wildcards allowed
  std::optional<Integer> after;   // kDispDelete, kDispRename, kDispKeep
  std::optional<Text> accounts;   // "one-for-one", "all-to-one:CODE", "manual"
  std::optional<Integer> fields;  // kOneForOne, kManually
  std::vector<Text> map_account;  // "FROM=TO": a code in the file and a code here
  std::vector<Text> map_field;    // "N=M": a field's number in the file and here
};

// What is wrong with the changes whatever the book holds: WrongUse. Mappings need their table to be matched manually.
void CheckChanges(const DefinitionChanges& changes);

// Applies the changes to the definition that `exchange` has selected, which is new or was read from its file.
//   fails   Failure 5 that names the value: a code or number that the book or the exchange file does not have, account
//           rows without an exchange file that can be read. Nothing has been written then.
void ApplyChanges(const DefinitionChanges& changes, CDataExchange& exchange, engine::Book& book);

// Copies the selected definition's exchange file to its archive copy, with which later imports compare. Does nothing
// where there is no file of exactly that name, as with wildcards.
void BackupQdxFile(const CDataExchange& exchange);

}  // namespace tallybook::cli
