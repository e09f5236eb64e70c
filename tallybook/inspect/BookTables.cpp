#include "tallybook/inspect/BookTables.h"

#include "base/Narrow.h"
#include "host/AccountRecord.h"
#include "host/FieldRecord.h"
#include "host/Masterfile.h"

namespace tallybook::inspect {

namespace {

Long Find(const std::unordered_map<Long, Long>& positions, Long number) {
  const auto found = positions.find(number);
  return found == positions.end() ? 0 : found->second;
}

}  // namespace

BookTables::BookTables(Masterfile& masterfile) : system_fields_(masterfile.MaxFields()) {
  const auto account = masterfile.NewAccountRecord();
  for (Long i = 1; i <= masterfile.NumAccounts(); ++i) {
    account->SetSelect(masterfile.AccountNumber(ToInteger(i)));
    codes_.Add(account->Code());
    numbers_.push_back(account->Number());
    accounts_.emplace(account->Number(), i);
  }
  const auto field = masterfile.NewFieldRecord();
  for (Long i = 1; i <= masterfile.NumFields(); ++i) {
    const Integer number = masterfile.FieldNumber(ToInteger(i));
    field->SetSelect(number);
    fields_.emplace(number, i);
    if (field->SystemMaintained()) system_fields_.Mark(number);
  }
}

Long BookTables::AccountOfCode(const Text& code) const {
  const Long position = codes_.PositionOf(code);
  return position == 0 ? 0 : numbers_[static_cast<std::size_t>(position - 1)];
}

Long BookTables::AccountPosition(Long number) const {
  return Find(accounts_, number);
}

Long BookTables::FieldPosition(Long number) const {
  return Find(fields_, number);
}

}  // namespace tallybook::inspect
