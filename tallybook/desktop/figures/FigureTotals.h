// The sums of a table's columns over the rows that it shows, added up a part at a time, so that a window stays alive
// while 9,999 accounts are gone through. One thread. The table must outlive it.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/figures/FigureTable.h"

namespace tallybook::desktop {

class FigureTotals {
 public:
  explicit FigureTotals(FigureTable& table) : table_(table) {}

  // Begins anew with what the table shows now.
  void Start();
  // Goes on for about so long; an account at least. True while there is more to do. Fails as FigureSums::At; what was
  // added up then counts for nothing, and Start is due.
  bool Work(std::chrono::milliseconds time);
  [[nodiscard]] bool IsDone() const { return next_account_ > last_account_; }
  // Of a column, once the work is done.
  [[nodiscard]] std::optional<Double> Of(int column) const;

 private:
  void AddAccount(Integer account);

  FigureTable& table_;
  std::vector<Double> sums_;  // by column
  Integer next_account_ = 1;
  Integer last_account_ = 0;
  Long figures_seen_ = 0;
};

}  // namespace tallybook::desktop
