#include "tallybook/application/ListEdits.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/Failure.h"
#include "qdx/HeaderRecord.h"
#include "tallybook/application/Counts.h"
#include "tallybook/engine/BookGrowth.h"
#include "tallybook/engine/Calendar.h"

namespace tallybook::application {

namespace {

using engine::AccountDescription;
using engine::BookDescription;
using engine::FieldDescription;
using engine::StoredDescription;

[[noreturn]] void Refuse(const Text& what) {
  throw Failure(FailureNumber::kInvalidArgument, what, "ListEdits");
}

template <typename Row>
auto PlaceOf(std::vector<Row>& rows, Long number) {
  return std::ranges::find_if(rows, [&](const Row& row) { return row.number == number; });
}

void NeedPosition(Long position, std::size_t last) {
  if (position >= 1 && position <= static_cast<Long>(last)) return;
  Refuse("position " + std::to_string(position) + " is outside the list; " +
         (last == 1 ? "there is position 1 alone" : "there are positions 1 to " + std::to_string(last)));
}

template <typename Row>
void Insert(std::vector<Row>& rows, const Row& row, std::optional<Long> position) {
  const Long place = position.value_or(static_cast<Long>(rows.size()) + 1);
  NeedPosition(place, rows.size() + 1);
  rows.insert(rows.begin() + (place - 1), row);
}

template <typename Row>
void Move(std::vector<Row>& rows, Long number, Long position) {
  NeedPosition(position, rows.size());
  const auto found = PlaceOf(rows, number);
  const Row row = *found;
  rows.erase(found);
  Insert(rows, row, position);
}

template <typename Number>
Number NeedFree(Number number, const Text& what, Long most) {
  if (number != 0) return number;
  Refuse("no number is free for another " + what + "; the limit of " + WithCommas(most) + " can be raised");
}

Text TooMany(const Text& what, long long count, Long most) {
  return WithCommas(count) + " " + what + "; an exchange file holds " + WithCommas(most) + " at most";
}

}  // namespace

BookDescription WithAccount(const StoredDescription& stored, AccountDescription account, std::optional<Long> position) {
  return WithAccounts(stored, {std::move(account)}, position);
}

BookDescription WithAccounts(const StoredDescription& stored, const std::vector<AccountDescription>& accounts,
                             std::optional<Long> position) {
  BookDescription book = stored.description;
  std::vector<AccountDescription> numbered = accounts;
  const auto free = FreeAccountNumbers(stored, accounts.size());
  auto next = free.begin();
  for (AccountDescription& account : numbered) {
    if (account.number != 0) continue;
    account.number = NeedFree(next == free.end() ? 0 : *next++, "account", book.max_accounts);
  }
  const Long place = position.value_or(static_cast<Long>(book.accounts.size()) + 1);
  NeedPosition(place, book.accounts.size() + 1);
  book.accounts.insert(book.accounts.begin() + (place - 1), numbered.begin(), numbered.end());
  return book;
}

BookDescription WithField(const StoredDescription& stored, FieldDescription field, std::optional<Long> position) {
  BookDescription book = stored.description;
  if (field.number == 0) field.number = NeedFree(FreeFieldNumber(stored), "field", book.max_fields);
  Insert(book.fields, field, position);
  return book;
}

BookDescription WithAccountEdited(const BookDescription& book, Long number, const std::optional<Text>& code,
                                  const std::optional<Text>& description) {
  BookDescription after = book;
  AccountDescription& account = *PlaceOf(after.accounts, number);
  if (code) account.code = *code;
  if (description) account.description = *description;
  return after;
}

BookDescription WithFieldEdited(const BookDescription& book, Integer number, const std::optional<Text>& description,
                                const std::optional<bool>& system) {
  BookDescription after = book;
  FieldDescription& field = *PlaceOf(after.fields, number);
  if (description) field.description = *description;
  if (system) field.system = *system;
  return after;
}

BookDescription WithAccountMoved(const BookDescription& book, Long number, Long position) {
  BookDescription after = book;
  Move(after.accounts, number, position);
  return after;
}

BookDescription WithFieldMoved(const BookDescription& book, Integer number, Long position) {
  BookDescription after = book;
  Move(after.fields, number, position);
  return after;
}

BookDescription WithoutAccount(const BookDescription& book, Long number) {
  BookDescription after = book;
  after.accounts.erase(PlaceOf(after.accounts, number));
  return after;
}

BookDescription WithoutField(const BookDescription& book, Integer number) {
  BookDescription after = book;
  after.fields.erase(PlaceOf(after.fields, number));
  return after;
}

BookDescription WithMoreYears(const BookDescription& book, Long years) {
  const Long most = engine::kMaxYears - book.calendar.years;
  if (years < 1 || years > most) {
    Refuse("a book that has " + Counted(book.calendar.years, "year") + " can be extended by 1 to " +
           std::to_string(most) + ", not by " + std::to_string(years));
  }
  BookDescription after = book;
  after.calendar.years = static_cast<Integer>(book.calendar.years + years);
  return after;
}

BookDescription WithYearsInUse(const BookDescription& book, Long years) {
  if (years < 1 || years > book.calendar.years) {
    Refuse("of " + Counted(book.calendar.years, "year") + " that the book has, " + std::to_string(years) +
           " cannot be in use");
  }
  BookDescription after = book;
  after.calendar.years_in_use = static_cast<Integer>(years);
  return after;
}

std::vector<Text> BeyondExchangeFiles(const BookDescription& book) {
  const engine::Calendar calendar(book.calendar, book.data_level);
  const auto accounts = static_cast<long long>(book.accounts.size());
  const auto fields = static_cast<long long>(book.fields.size());
  std::vector<Text> troubles;
  if (book.calendar.years > kMaxHeaderYears) {
    troubles.push_back(TooMany("years", book.calendar.years, kMaxHeaderYears));
  }
  if (calendar.NumPeriods() > kMaxHeaderPeriods) {
    troubles.push_back(TooMany("periods a year", calendar.NumPeriods(), kMaxHeaderPeriods));
  }
  if (accounts > kMaxHeaderAccounts) troubles.push_back(TooMany("accounts", accounts, kMaxHeaderAccounts));
  if (fields > kMaxHeaderFields) troubles.push_back(TooMany("fields", fields, kMaxHeaderFields));
  return troubles;
}

}  // namespace tallybook::application
