#include "tallybook/desktop/figures/FigureTotals.h"

#include <algorithm>

#include "base/Narrow.h"

namespace tallybook::desktop {

void FigureTotals::Start() {
  sums_.assign(static_cast<std::size_t>(table_.Columns()), 0);
  const bool one_account = table_.RowsAreDates();
  const auto accounts = static_cast<long long>(table_.Reader().Description().accounts.size());
  next_account_ = one_account ? table_.Choice().account : Integer{1};
  last_account_ = one_account && accounts > 0 ? next_account_ : ToInteger(accounts);
  if (sums_.empty() || table_.Rows() == 0) last_account_ = 0;
  figures_seen_ = table_.Reader().FiguresSeen();
}

bool FigureTotals::Work(std::chrono::milliseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  do {
    if (IsDone()) return false;
    (void)table_.Reader().Read();
    if (figures_seen_ != table_.Reader().FiguresSeen()) Start();  // half of each of two states would be no sum
    AddAccount(next_account_);
    ++next_account_;
  } while (std::chrono::steady_clock::now() < end);
  return !IsDone();
}

void FigureTotals::AddAccount(Integer account) {
  const FigureUnits& units = table_.Units();
  const int last_row = table_.RowsAreDates() ? table_.Rows() - 1 : 0;
  const FigurePlace first = table_.PlaceOf(0, 0);
  const FigurePlace last = table_.PlaceOf(last_row, table_.Columns() - 1);
  const Date first_date = units.At(first.unit).first;
  const Date last_date = units.At(last.unit).last;
  const Integer field = table_.ColumnsAreDates() ? first.field : Integer{0};
  std::size_t unit = first.unit;
  table_.Reader().VisitAccount(account, first_date, last_date, field, [&](const BookReader::FigureSeen& figure) {
    while (unit < last.unit && units.At(unit).last < figure.date) ++unit;
    const auto column = table_.ColumnsAreDates() ? unit - first.unit : static_cast<std::size_t>(figure.field - 1);
    sums_[column] += figure.value;
  });
}

std::optional<Double> FigureTotals::Of(int column) const {
  const auto index = static_cast<std::size_t>(column);
  if (!IsDone() || column < 0 || index >= sums_.size()) return std::nullopt;
  return sums_[index];
}

}  // namespace tallybook::desktop
