#include "forms/Grid.h"

#include <algorithm>
#include <utility>

#include "base/FixedTable.h"

namespace tallybook {

void Grid::SetSize(Long rows, Long columns) {
  if (rows < 0) FailOutsideTable(rows, Rows());
  if (columns < 0) FailOutsideTable(columns, columns_);
  cells_.resize(static_cast<std::size_t>(rows));
  for (auto& row : cells_) row.resize(static_cast<std::size_t>(columns));
  widths_.resize(static_cast<std::size_t>(columns));
  columns_ = columns;
  row_ = std::clamp(row_, Long{0}, std::max(rows - 1, Long{0}));
  column_ = std::clamp(column_, Long{0}, std::max(columns - 1, Long{0}));
  Changed.Raise();
}

void Grid::Expect(Long row, Long column) const {
  if (row < 0 || row >= Rows()) FailOutsideTable(row, Rows());
  if (column < 0 || column >= columns_) FailOutsideTable(column, columns_);
}

const tallybook::Text& Grid::Cell(Long row, Long column) const {
  Expect(row, column);
  return cells_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

void Grid::SetCell(Long row, Long column, const tallybook::Text& text) {
  Expect(row, column);
  Set(cells_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)], text);
}

Long Grid::ColumnWidth(Long column) const {
  if (column < 0 || column >= columns_) FailOutsideTable(column, columns_);
  return widths_[static_cast<std::size_t>(column)];
}

void Grid::SetColumnWidth(Long column, Long width) {
  if (column < 0 || column >= columns_) FailOutsideTable(column, columns_);
  Set(widths_[static_cast<std::size_t>(column)], width);
}

void Grid::SetCurrent(Long row, Long column) {
  Expect(row, column);
  const bool moves = row != row_ || column != column_;
  row_ = row;
  column_ = column;
  if (!moves) return;
  Changed.Raise();
  RowColChange.Raise();
}

bool Grid::UserClick(Long row, Long column) {
  Expect(row, column);
  if (!UserFocus()) return false;
  SetCurrent(row, column);
  Click.Raise();
  return true;
}

void TabStrip::SetTabs(std::vector<tallybook::Text> captions) {
  tabs_ = std::move(captions);
  selected_ = 1;
  Changed.Raise();
}

void TabStrip::Expect(Integer tab) const {
  if (tab < 1 || static_cast<std::size_t>(tab) > tabs_.size()) FailOutsideTable(tab, static_cast<Long>(tabs_.size()));
}

void TabStrip::SetSelected(Integer tab) {
  Expect(tab);
  if (Set(selected_, tab)) Click.Raise();
}

bool TabStrip::UserChoose(Integer tab) {
  Expect(tab);
  if (!UserFocus()) return false;
  Set(selected_, tab);
  Click.Raise();
  return true;
}

}  // namespace tallybook
