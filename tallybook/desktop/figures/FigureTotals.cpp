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
  engine::Book& book = table_.Reader().Read();
  const FigureUnits& units = table_.Units();
  const int last_row = table_.RowsAreDates() ? table_.Rows() - 1 : 0;
  const FigurePlace first = table_.PlaceOf(0, 0);
  const FigurePlace last = table_.PlaceOf(last_row, table_.Columns() - 1);
  engine::FigureQuery query{units.At(first.unit).first, units.At(last.unit).last, {book.AccountNumber(account)}, {}};
  if (table_.ColumnsAreDates()) query.fields = {book.FieldNumber(first.field)};
  std::size_t unit = first.unit;
  book.VisitFigures(query, [&](const engine::Figure& figure) {
    while (unit < last.unit && units.At(unit).last < figure.date) ++unit;
    const auto column =
        table_.ColumnsAreDates() ? unit - first.unit : static_cast<std::size_t>(figure.field_position - 1);
    sums_[column] += figure.value;
    return true;
  });
}

std::optional<Double> FigureTotals::Of(int column) const {
  const auto index = static_cast<std::size_t>(column);
  if (!IsDone() || column < 0 || index >= sums_.size()) return std::nullopt;
  return sums_[index];
}

}  // namespace tallybook::desktop
