// An exchange definition: how the exchange files of one source go into this database. Plain data, as the import engines
// are told it; the store that keeps it on disk lives in exchange/.
#pragma once

#include "base/FixedTable.h"
#include "base/Types.h"

namespace tallybook {

// Codes of a definition. They stand in definition files; never renumber them.
inline constexpr Integer kDispDelete = 1;  // what becomes of the file after the import
inline constexpr Integer kDispRename = 2;  // its last three characters become "XDQ"
inline constexpr Integer kDispKeep = 3;
inline constexpr Integer kManually = 0;    // the rows of the table stand as the user made them
inline constexpr Integer kOneForOne = -1;  // accounts of equal code, fields of equal number
inline constexpr Integer kAllToOne = -2;   // every account of the file goes to the account AcctAll

// The most rows of a definition's table that was read from disk.
inline constexpr Long kMaxDefinitionRows = 9999;

// A row of the account table. The codes are what a definition keeps; the two numbers are worked out for the file at
// hand.
struct AccountRow {
  Integer AccountFrom = 0;  // position in the file's account table; 0 not matched
  Integer AccountTo = 0;    // account number in this database; 0 not matched
  Text from_code;
  Text to_code;
};

// A row of the field table: datafield numbers in the file and in this database.
struct FieldRow {
  Integer FieldFrom = 0;
  Integer FieldTo = 0;
};

struct DefinitionRecord {
  Text Desc;
  Text QdxFileName;  // a path; its name part may hold wildcards
  Integer Disp = 0;
  Integer FldMatch = 0;
  Integer AcctMatch = 0;
  Integer NumFields = 0;    // rows in use of `fields`
  Integer NumAccounts = 0;  // rows in use of `accounts`
  Integer AcctAll = 0;      // number of the receiving account in the mode kAllToOne
  FixedTable<AccountRow> accounts;
  FixedTable<FieldRow> fields;
};

}  // namespace tallybook
