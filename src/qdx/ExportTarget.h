// The two shapes that an export can take, behind one face: what the walk over accounts and dates hands its values to.
// A target owns what it created and closes it at its end at the latest.
#pragma once

#include <memory>

#include "base/Types.h"

namespace tallybook {

class AccountRecord;
struct ExportMeans;
struct ExportRequest;

class ExportTarget {
 public:
  virtual ~ExportTarget() = default;

  // Creates the file with all that stands before the first row. False, or a Failure, where it cannot be created:
  // nothing is open then, and it may be tried again.
  [[nodiscard]] virtual bool Create() = 0;

  // Called once before the accounts: what an exchange file has for a header. `account` is the walk's own record.
  virtual void WriteHead(AccountRecord& account) = 0;
  // The account at `position` begins. `account` is left selected as the shape has it.
  virtual void BeginAccount(Integer position, AccountRecord& account) = 0;
  // The values of the database's current record, which holds the data of `date`.
  virtual void WriteDate(Date date) = 0;
  virtual void EndAccount() = 0;
  // After the last account, and after a cancel.
  virtual void WriteEnd() = 0;
  // Hands the last bytes out and closes. A failure means that the file is not whole.
  virtual void Close() = 0;
};

[[nodiscard]] std::unique_ptr<ExportTarget> NewExchangeFileTarget(const ExportMeans& means,
                                                                  const ExportRequest& request);
[[nodiscard]] std::unique_ptr<ExportTarget> NewTableTarget(const ExportMeans& means, const ExportRequest& request);

}  // namespace tallybook
