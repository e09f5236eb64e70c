#include "forms/Grid.h"

#include <algorithm>
#include <utility>

#include "base/CodePage.h"
#include "base/FixedTable.h"
#include "base/ModParse.h"
#include "base/Narrow.h"
#include "base/Texts.h"

namespace tallybook {

namespace {

// The side that a column's text is put to, by the sign in front of its head.
Alignment SideOf(char sign) {
  if (sign == '>') return Alignment::kRight;
  return sign == '^' ? Alignment::kCentre : Alignment::kLeft;
}

// A current position held to the cells that are not fixed, or, where there are none, to those there are.
Long Held(Long position, Long fixed, Long count) {
  return std::max(std::min(std::max(position, fixed), count - 1), Long{0});
}

}  // namespace

// --- Size ------------------------------------------------------------------------------------------------------------

void Grid::SetSize(Long rows, Long columns) {
  if (rows < 0) FailOutsideTable(rows, Rows());
  if (columns < 0) FailOutsideTable(columns, Columns());
  cells_.resize(static_cast<std::size_t>(rows));
  for (auto& row : cells_) row.resize(static_cast<std::size_t>(columns));
  factors_.resize(static_cast<std::size_t>(rows), 1);
  columns_.resize(static_cast<std::size_t>(columns));
  HoldToSize();
}

void Grid::SetFixedRows(Long rows) {
  fixed_rows_ = rows;
  HoldToSize();
}

void Grid::SetFixedColumns(Long columns) {
  fixed_columns_ = columns;
  HoldToSize();
}

void Grid::HoldToSize() {
  row_ = Held(row_, fixed_rows_, Rows());
  column_ = Held(column_, fixed_columns_, Columns());
  top_row_ = Held(top_row_, fixed_rows_, Rows());
  Tell({});
}

// --- Cells -----------------------------------------------------------------------------------------------------------

void Grid::Tell(const Change& change) const {
  if (redraw_) Changed.Raise(change);
}

void Grid::SetRedraw(bool redraw) {
  if (redraw_ == redraw) return;
  redraw_ = redraw;
  Tell({});
}

void Grid::ExpectRow(Long row) const {
  if (row < 0 || row >= Rows()) FailOutsideTable(row, Rows());
}

const Grid::ColumnLooks& Grid::At(Long column) const {
  if (column < 0 || column >= Columns()) FailOutsideTable(column, Columns());
  return columns_[static_cast<std::size_t>(column)];
}

const tallybook::Text& Grid::Cell(Long row, Long column) const {
  ExpectRow(row);
  (void)At(column);
  return cells_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

void Grid::SetCell(Long row, Long column, const tallybook::Text& text) {
  if (Cell(row, column) == text) return;
  cells_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] = text;
  Tell({Change::Kind::kRows, row, row});
}

// --- Looks -----------------------------------------------------------------------------------------------------------

template <typename Value>
void Grid::SetLooks(Long column, Value ColumnLooks::*looks, Value value) {
  if (At(column).*looks == value) return;
  columns_[static_cast<std::size_t>(column)].*looks = value;
  Tell({});
}

void Grid::SetColumnWidth(Long column, Long width) {
  SetLooks(column, &ColumnLooks::width, width);
}

void Grid::SetColumnAlignment(Long column, Alignment alignment) {
  SetLooks(column, &ColumnLooks::alignment, alignment);
}

void Grid::SetColumnShaded(Long column, bool shaded) {
  SetLooks(column, &ColumnLooks::shaded, shaded);
}

void Grid::SetFormat(const tallybook::Text& format) {
  const std::vector<tallybook::Text> columns = SplitText(format, "|");
  SetSize(Rows(), static_cast<Long>(columns.size()));
  for (Long column = 0; column < Columns(); ++column) {
    tallybook::Text head = columns[static_cast<std::size_t>(column)];
    const char sign = head.empty() ? ' ' : head.front();
    if (sign == '<' || sign == '>' || sign == '^') head.erase(0, 1);
    SetColumnAlignment(column, SideOf(sign));
    SetColumnWidth(column, CharacterCount(head) * character_width_);
    if (Rows() > 0) SetCell(0, column, TrimRight(head));
  }
}

void Grid::SetRowFactor(Long row, Double factor) {
  ExpectRow(row);
  factors_[static_cast<std::size_t>(row)] = factor;
  Tell({});
}

Long Grid::RowHeight(Long row) const {
  ExpectRow(row);
  return RoundToLong(usual_height_ * factors_[static_cast<std::size_t>(row)]);
}

// --- What is in sight ------------------------------------------------------------------------------------------------

Long Grid::HeightOf(Long first, Long end) const {
  Long height = 0;
  for (Long row = first; row < end; ++row) height += RowHeight(row);
  return height;
}

Long Grid::RoomForRows() const {
  return Place().height - HeightOf(0, std::min(fixed_rows_, Rows()));
}

Long Grid::WholeRows() const {
  const Long height = Rows() > 0 ? RowHeight(row_) : usual_height_;
  return height > 0 ? Place().height / height : 0;
}

bool Grid::IsRowVisible(Long row) const {
  ExpectRow(row);
  if (row < fixed_rows_ || row == top_row_) return true;
  return row > top_row_ && HeightOf(top_row_, row + 1) <= RoomForRows();
}

tallybook::Place Grid::CellPlace(Long row, Long column) const {
  ExpectRow(row);
  tallybook::Place place{Place().left, Place().top, ColumnWidth(column), RowHeight(row)};
  for (Long before = 0; before < column; ++before) place.left += ColumnWidth(before);
  if (row < fixed_rows_) {
    place.top += HeightOf(0, row);
  } else {
    place.top += HeightOf(0, fixed_rows_) + HeightOf(top_row_, row) - HeightOf(row, top_row_);
  }
  return place;
}

void Grid::BringIntoSight(Long row) {
  Long top = std::min(top_row_, row);
  if (row > top_row_) {
    // As far up from the row as there is room, but no farther than what is shown now.
    Long room = RoomForRows() - RowHeight(row);
    for (top = row; top > top_row_ && room >= RowHeight(top - 1); --top) room -= RowHeight(top - 1);
  }
  const Long before = std::exchange(top_row_, top);
  if (before != top) Tell({Change::Kind::kScroll, before, top});
}

void Grid::SetTopRow(Long row) {
  if (row < fixed_rows_ || row >= Rows()) FailOutsideTable(row, Rows());
  const Long before = std::exchange(top_row_, row);
  if (before == row) return;
  Tell({Change::Kind::kScroll, before, row});
  Scroll.Raise();
}

// --- The current cell ------------------------------------------------------------------------------------------------

void Grid::Move(Long row, Long column, bool into_sight) {
  ExpectRow(row);
  (void)At(column);
  if (IsFixed(row, column)) FailOutsideTable(row < fixed_rows_ ? row : column, Rows());
  if (row == row_ && column == column_) return;
  LeaveCell.Raise();
  const Long before = std::exchange(row_, row);
  column_ = column;
  Tell({Change::Kind::kSelection, before, row});
  if (into_sight) BringIntoSight(row);
  EnterCell.Raise();
  RowColChange.Raise();
}

void Grid::SetCurrent(Long row, Long column) {
  Move(row, column, false);
}

void Grid::MoveCurrent(Long row, Long column) {
  Move(row, column, true);
}

bool Grid::UserClick(Long row, Long column) {
  ExpectRow(row);
  (void)At(column);
  if (!UserFocus()) return false;
  const bool moves = !IsFixed(row, column) && (row != row_ || column != column_);
  if (moves) {
    MoveCurrent(row, column);
  } else if (HasCurrentCell()) {
    EnterCell.Raise();
  }
  Click.Raise();
  return true;
}

bool Grid::UserScroll(Long top_row) {
  if (!IsReachable()) return false;
  SetTopRow(top_row);
  return true;
}

void TabStrip::SetTabs(std::vector<tallybook::Text> captions) {
  tabs_ = std::move(captions);
  selected_ = 1;
  Changed.Raise({});
}

void TabStrip::Expect(Integer tab) const {
  if (tab < 1 || static_cast<std::size_t>(tab) > tabs_.size()) FailOutsideTable(tab, static_cast<Long>(tabs_.size()));
}

void TabStrip::SetSelected(Integer tab) {
  Expect(tab);
  if (Set(selected_, tab)) Click.Raise();
}

void TabStrip::PressOwnKey(Integer key, Integer shift) {
  const int step = key == kRightKey ? 1 : key == kLeftKey ? -1 : 0;
  const int tab = selected_ + step;
  if (step == 0 || shift != 0 || tab < 1 || static_cast<std::size_t>(tab) > tabs_.size()) return;
  UserChoose(static_cast<Integer>(tab));
}

bool TabStrip::UserChoose(Integer tab) {
  Expect(tab);
  if (!UserFocus()) return false;
  Set(selected_, tab);
  Click.Raise();
  return true;
}

}  // namespace tallybook
