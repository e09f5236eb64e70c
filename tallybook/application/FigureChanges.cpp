#include "tallybook/application/FigureChanges.h"

#include <algorithm>
#include <fmt/format.h>

#include "base/Dates.h"
#include "base/Failure.h"
#include "tallybook/engine/Book.h"

namespace tallybook::application {

namespace {

Text CodeOf(const engine::Book& book, Long account) {
  const Integer position = book.AccountPosition(account);
  if (position == 0) return std::to_string(account);
  return book.Description().accounts[static_cast<std::size_t>(position - 1)].code;
}

Double Change(engine::Book& book, const FigureChange& change) {
  if (!book.ReadRecord(change.account, change.date)) {
    throw Failure(FailureNumber::kInternal,
                  fmt::format("{}: the record of account '{}' and {} cannot be read", book.Path(),
                              CodeOf(book, change.account), DateText(change.date)));
  }
  const Double before = book.FieldValue(change.field);
  book.SetFieldValue(change.field, change.value);
  book.WriteRecord();
  return before;
}

void BeginEntry(engine::Book& book, const std::vector<FigureChange>& changes) {
  const auto [first, last] = std::ranges::minmax(changes, {}, &FigureChange::date);
  const Date first_record = book.FiscalCalendar().LevelDate(first.date, kOwnLevel);
  const Date last_record = book.FiscalCalendar().LevelDate(last.date, kOwnLevel);
  book.BeginRollback(first_record, last_record);
}

}  // namespace

std::vector<Double> ChangeFigures(engine::Book& book, const Text& what_ran, const std::vector<FigureChange>& changes) {
  std::vector<Double> before;
  if (changes.empty()) return before;
  try {
    book.SetOperation(engine::JournalKind::kSet, what_ran);
    BeginEntry(book, changes);
    for (const FigureChange& change : changes) before.push_back(Change(book, change));
    book.EndRollback();
    return before;
  } catch (...) {
    book.Abandon();
    throw;
  }
}

}  // namespace tallybook::application
