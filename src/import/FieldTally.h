// What an import took from one field of a file, for the application to tell. Plain values.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook {

// Totals are of the figures as they came, whatever they were added to.
struct FieldTally {
  Long in_file = 0;       // the field's number in the file
  Long in_database = 0;   // that of the database; 0 where the field is sent nowhere
  long long applied = 0;  // figures
  Double applied_total = 0;
  long long not_mapped = 0;
  Double not_mapped_total = 0;

  bool operator==(const FieldTally&) const = default;
};

using FieldTallies = std::vector<FieldTally>;

}  // namespace tallybook
