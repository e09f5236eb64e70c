// What the table of figures shows: one account (fields by dates), one date (accounts by fields) or one field (accounts
// by dates), at the book's own level or added up to a higher one. Rows and columns count from 0, as tables on a screen
// do; positions of accounts and fields count from 1. No widget; one thread. The reader must outlive it.
#pragma once

#include <memory>
#include <vector>

#include "base/Types.h"
#include "tallybook/desktop/figures/BookReader.h"
#include "tallybook/desktop/figures/FigureSums.h"
#include "tallybook/desktop/figures/FigureUnits.h"

namespace tallybook::desktop {

enum class FigureView { kAccount, kDate, kField };

struct FigureChoice {
  FigureView view = FigureView::kAccount;
  Integer level = kOwnLevel;       // of a row, column or date; kOwnLevel: the book's own
  Integer stretch = kPeriodLevel;  // how much time the dates of a table reach over: a level not below `level`
  Integer account = 1;             // position
  Integer field = 1;               // position
  Date date = kNoDate;             // any date of what is shown; kNoDate: the first one held
  bool operator==(const FigureChoice&) const = default;
};

// What a cell shows.
struct FigurePlace {
  Integer account = 0;
  std::size_t unit = 0;
  Integer field = 0;
  bool operator==(const FigurePlace&) const = default;
};

class FigureTable {
 public:
  explicit FigureTable(BookReader& reader);

  // Takes what fits the book: positions outside its lists, dates outside it and levels that it has not become the
  // nearest that are there.
  void Choose(const FigureChoice& choice);
  [[nodiscard]] const FigureChoice& Choice() const { return choice_; }
  // The stretches that can be chosen with the level: from the level itself up to all dates.
  [[nodiscard]] std::vector<Integer> Stretches() const;
  // Follows the reader, where it has taken other lists.
  void FollowLists();

  // Moves what is shown: by so many stretches, or by so many units where one date is shown. False where the book ends.
  bool Go(int steps);
  // What is shown: the unit of the stretch, or of the one date.
  [[nodiscard]] engine::DateSpan Shown() const;
  [[nodiscard]] Text ShownName(const DateWriter& write) const;

  [[nodiscard]] int Rows() const;
  [[nodiscard]] int Columns() const;
  [[nodiscard]] bool RowsAreDates() const { return choice_.view == FigureView::kAccount; }
  [[nodiscard]] bool ColumnsAreDates() const { return choice_.view == FigureView::kField; }
  [[nodiscard]] FigurePlace PlaceOf(int row, int column) const;
  // The row and the column that hold an account's, a date's or a field's figures; -1 for none.
  [[nodiscard]] int RowOf(const FigurePlace& place) const;
  [[nodiscard]] int ColumnOf(const FigurePlace& place) const;
  [[nodiscard]] Text RowHead(int row, const DateWriter& write) const;
  [[nodiscard]] Text ColumnHead(int column, const DateWriter& write) const;
  [[nodiscard]] const std::vector<engine::AccountDescription>& Accounts() const {
    return reader_.Description().accounts;
  }
  [[nodiscard]] const engine::AccountDescription& Account(Integer position) const;
  [[nodiscard]] const engine::FieldDescription& Field(Integer position) const;
  [[nodiscard]] const FigureUnits& Units() const { return sums_->Units(); }

  // Fails as FigureSums::At.
  [[nodiscard]] Double Value(int row, int column);
  [[nodiscard]] Double ValueAt(const FigurePlace& place) { return sums_->At(place.account, place.unit, place.field); }
  // Why a cell cannot be typed into, in words; empty where it can.
  [[nodiscard]] Text WhyNotTyped(int row, int column) const;
  // A date of the record that a cell of the book's own level stands for.
  [[nodiscard]] Date DateOf(const FigurePlace& place) const { return Units().At(place.unit).last; }

  [[nodiscard]] BookReader& Reader() { return reader_; }

 private:
  void TakeLevel();

  BookReader& reader_;
  FigureChoice choice_;
  std::unique_ptr<FigureSums> sums_;
  UnitRange shown_;
  std::size_t unit_ = 0;  // that holds the date
  Long lists_seen_ = 0;
};

}  // namespace tallybook::desktop
