#include "tallybook/cli/BookLookUp.h"

#include <fmt/format.h>
#include <limits>

#include "base/Dates.h"
#include "base/Failure.h"

namespace tallybook::cli {

Long AccountNumberOf(const engine::Book& book, const Text& code) {
  const Integer position = book.AccountPositionOfCode(code);
  if (position > 0) return book.AccountNumber(position);
  throw Failure(FailureNumber::kInvalidArgument, fmt::format("{}: no account has the code '{}'", book.Path(), code));
}

void NeedField(const engine::Book& book, Long field_number) {
  const bool fits = field_number > 0 && field_number <= std::numeric_limits<Integer>::max();
  if (fits && book.FieldPosition(static_cast<Integer>(field_number)) > 0) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: no field has the number {}", book.Path(), field_number));
}

void NeedFreeCode(const engine::Book& book, const Text& code, Long besides) {
  const Integer position = book.AccountPositionOfCode(code);
  if (position == 0 || book.AccountNumber(position) == besides) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: the account at position {} has the code '{}' already", book.Path(), position, code));
}

void NeedFreeField(const engine::Book& book, Integer field_number) {
  const Integer position = field_number > 0 ? book.FieldPosition(field_number) : Integer{0};
  if (position == 0) return;
  throw Failure(FailureNumber::kInvalidArgument, fmt::format("{}: the field at position {} has the number {} already",
                                                             book.Path(), position, field_number));
}

void NeedDate(const engine::Book& book, Date date) {
  const Date last = book.CalendarRules().LastRecordDate();
  if (date >= book.FirstDate() && date < last + 1) return;
  throw Failure(FailureNumber::kInvalidArgument,
                fmt::format("{}: the date {} is outside the book, which holds {} to {}", book.Path(), DateText(date),
                            DateText(book.FirstDate()), DateText(last)));
}

}  // namespace tallybook::cli
