// What imports of exchange files came to, for the application to tell: their reports have no counts, and of what stops
// them they have little or nothing.
#pragma once

#include <optional>
#include <set>
#include <vector>

#include "base/Failure.h"
#include "base/Types.h"
#include "import/FieldTally.h"

namespace tallybook {

// How the body of a file ended.
enum class BodyEnd {
  kUnread,  // it was not read to its end, or not at all
  kMarked,  // by the writer's mark
  kCut,     // with the file, before that mark: the file is shorter than it was to be, or its export was cancelled
  kStray,   // at an account index outside the file's table; what lies behind was passed over
};

struct QDXFileImport {
  Text file = {};
  bool done = false;
  bool begun = false;  // figures have been zeroed or applied, or were about to be
  bool stored =
      false;  // all of them are with the database, and its journal entry is closed: what fails then is no loss
  std::optional<StopReason> stays = {};  // why the file was not deleted or renamed, where the definition has it so
  // Of the database: what figures of the file were applied to. Numbers rise and are told once each.
  std::vector<Long> accounts = {};
  std::vector<Long> fields = {};
  std::set<Date> dates = {};
  // Figures. Those read are those applied, not mapped and refused together.
  long long read = 0;
  long long applied = 0;
  long long not_mapped = 0;         // of accounts and fields that the definition sends nowhere
  long long refused = 0;            // not applied because the run failed at them or before them
  FieldTallies field_tallies = {};  // by the fields' places in the file
  long long zeroed = 0;             // figures set to 0 before
  BodyEnd body_end = BodyEnd::kUnread;
  long long body_end_at = 0;  // in bytes from the start of the file
  // By the file's header.
  Date first_date = kNoDate;
  Date last_date = kNoDate;
};

struct QDXDefinitionImport {
  Text title = {};
  Text pattern = {};                      // of the definition's files
  std::vector<QDXFileImport> files = {};  // those that were begun; empty where none matched
  std::optional<StopReason> stop = {};    // of the last of them
  std::vector<Text> not_begun = {};       // those behind it, which were not looked at
};

// A run of one definition or of several.
struct QDXImportRecord {
  std::vector<QDXDefinitionImport> definitions;  // in the order in which they ran
  std::optional<StopReason> stop;                // of the run itself, outside all of them
};

}  // namespace tallybook
