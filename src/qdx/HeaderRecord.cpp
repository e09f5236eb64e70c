#include "qdx/HeaderRecord.h"

#include "base/Dates.h"

namespace tallybook {

Date HeaderRecord::StartDate() const {
  return DateFromParts(StartYear, StartMonth, StartDay);
}

Date HeaderRecord::LastDate() const {
  return DateFromParts(LastYear, LastMonth, LastDay);
}

HeaderRecord& SharedHeader() {
  static HeaderRecord record;
  return record;
}

void ResetSharedHeader() {
  SharedHeader() = HeaderRecord{};
}

}  // namespace tallybook
