// A cursor over the accounts of a database, moved by account number. Made fresh by Masterfile::NewAccountRecord and
// owned by whoever asked for it; it must not outlive the database.
#pragma once

#include "base/Types.h"

namespace tallybook {

class AccountRecord {
 public:
  virtual ~AccountRecord() = default;

  // Makes the account of `number` current. A number that no account has makes a blank record current: its code and
  // description are blank. `number` is the account's stable key, not its position in the list.
  virtual void SetSelect(Long number) = 0;

  // Code and description of the current account, padded on the right with blanks; callers trim.
  [[nodiscard]] virtual Text Code() const = 0;
  [[nodiscard]] virtual Text Description() const = 0;

  // The number that was last selected.
  [[nodiscard]] virtual Long Number() const = 0;

  // The highest account number in use: the bound of a loop over SetSelect.
  [[nodiscard]] virtual Long MaxNumber() const = 0;
};

}  // namespace tallybook
