// A cursor over the datafields of a database, moved by field number. Made fresh by Masterfile::NewFieldRecord and
// owned by whoever asked for it; it must not outlive the database.
#pragma once

#include "base/Types.h"

namespace tallybook {

class FieldRecord {
 public:
  virtual ~FieldRecord() = default;

  // Makes the field of `number` current. A number that no field has makes a blank record current: no description,
  // not system-maintained.
  virtual void SetSelect(Integer number) = 0;

  [[nodiscard]] virtual Text Description() const = 0;

  // True for a field that the database keeps itself. An import touches such a field only when told that it may.
  [[nodiscard]] virtual bool SystemMaintained() const = 0;

  // The highest field number in use: the bound of a loop over SetSelect.
  [[nodiscard]] virtual Long MaxNumber() const = 0;
};

}  // namespace tallybook
