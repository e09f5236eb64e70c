// The table of figures as Qt's views ask for it: cell by cell, as they come into view. What was typed and is not in the
// book stands here, by account, date and field, with the reason in words, until it is typed anew or given up.
//
// A book that cannot be read shows nothing in its cells and tells why once, to whoever set OnTrouble. One thread; the
// table must outlive the model.
#pragma once

#include <QtCore/QAbstractTableModel>
#include <functional>
#include <map>
#include <tuple>
#include <vector>

#include "tallybook/application/FigureChanges.h"
#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/desktop/figures/FigureTotals.h"
#include "tallybook/desktop/forms/LocaleStyle.h"

namespace tallybook::desktop {

// Beside Qt's own roles: what is wrong with what was typed, or what it waits for; nothing where the cell shows the
// book.
inline constexpr int kMarkRole = Qt::UserRole;

class FigureModel final : public QAbstractTableModel {
 public:
  FigureModel(FigureTable& table, LocaleStyle style);

  // Takes a figure that was typed into a cell, or the words for why it was not.
  using Taker = std::function<void(int row, int column, Double value)>;
  void OnTyped(Taker taker) { typed_ = std::move(taker); }
  void OnTrouble(std::function<void(const Text& words)> listener) { trouble_listener_ = std::move(listener); }
  // Nothing can be typed while this is false.
  void SetWritable(bool writable) { writable_ = writable; }
  [[nodiscard]] bool IsWritable() const { return writable_; }

  // The table shows something else, or its figures may be others.
  void TakeAnew();
  void ShowAnew();
  // Of a column: as many as its figures that have been seen need.
  [[nodiscard]] int DecimalsOf(int column) const;

  // Leaves a text in a cell, marked with why it could not be read.
  void Mark(int row, int column, const QString& typed, const Text& words);
  // Shows the changes that are to be written yet, and none that were so before.
  void MarkWaiting(const std::vector<application::FigureChange>& changes, const Text& words);
  void Unmark(int row, int column);
  [[nodiscard]] bool HasMarks() const { return !marks_.empty(); }

  // A figure, and 0 where the book cannot be read.
  [[nodiscard]] Double ValueOf(int row, int column) const;
  [[nodiscard]] QString TextOf(int row, int column) const;
  [[nodiscard]] const LocaleStyle& Style() const { return style_; }
  void SetStyle(LocaleStyle style);

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  using Key = std::tuple<Long, Date, Integer>;  // account, date, field
  struct Marked {
    QString typed;
    Text words;
    bool waits = false;
  };

  [[nodiscard]] Key KeyOf(int row, int column) const;
  [[nodiscard]] const Marked* MarkOf(int row, int column) const;
  [[nodiscard]] QString Hint(int row, int column) const;
  [[nodiscard]] QString SpokenText(int row, int column) const;
  void NoteDecimals(int column, Double value) const;
  void Trouble(const Text& words) const;

  FigureTable& table_;
  LocaleStyle style_;
  Taker typed_;
  std::function<void(const Text&)> trouble_listener_;
  bool writable_ = true;
  std::map<Key, Marked> marks_;
  // Grow while cells are asked for.
  mutable std::vector<int> decimals_;  // by field position from 0
  mutable bool decimals_grew_ = false;
  mutable bool in_trouble_ = false;
};

// The row of totals below it. Both must outlive it.
class TotalsModel final : public QAbstractTableModel {
 public:
  TotalsModel(const FigureModel& figures, const FigureTotals& totals) : figures_(figures), totals_(totals) {}
  void TakeAnew();
  void ShowAnew();

  [[nodiscard]] int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : 1; }
  [[nodiscard]] int columnCount(const QModelIndex& parent) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const FigureModel& figures_;
  const FigureTotals& totals_;
};

}  // namespace tallybook::desktop
