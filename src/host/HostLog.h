// The application's log. Owned by the application.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook {

class HostLog {
 public:
  virtual ~HostLog() = default;

  // Writes one error entry.
  //   message      the failure's source, then " - ", the class, ":" and the operation that caught it
  //   line_number  the statement position of the failure, 0 where it is unknown
  //   detail       always -1 from this component
  // The result is the log's own and is not looked at. An entry that cannot be written must not fail the caller.
  virtual Integer LogError(const Text& message, Long line_number, Integer detail) = 0;

  // Writes an audit entry: `who` did `what` to `subject`, with the details of `items`.
  // The delimited import tells by it that system fields were imported; `who` is then the name of the database's type,
  // `what` "Import", `subject` "System Fields", and `items` holds the import file's name.
  virtual Integer AuditEntry(const Text& who, const Text& what, const Text& subject,
                             const std::vector<Text>& items) = 0;
};

}  // namespace tallybook
