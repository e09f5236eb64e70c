// A flexible grid: rows and columns of text cells, the first of which may be fixed as heads.
#pragma once

#include <vector>

#include "forms/Control.h"

namespace tallybook {

// Rows and columns count from 0. A cell outside the grid is failure 9.
class Grid : public Control {
 public:
  using Control::Control;

  // Cells that stay keep their text. A current cell that the grid loses moves to the nearest that it has, without a
  // word. A size below 0 is failure 9.
  void SetSize(Long rows, Long columns);
  [[nodiscard]] Long Rows() const { return static_cast<Long>(cells_.size()); }
  [[nodiscard]] Long Columns() const { return columns_; }
  [[nodiscard]] Long FixedRows() const { return fixed_rows_; }
  void SetFixedRows(Long rows) { Set(fixed_rows_, rows); }
  [[nodiscard]] Long FixedColumns() const { return fixed_columns_; }
  void SetFixedColumns(Long columns) { Set(fixed_columns_, columns); }

  [[nodiscard]] const tallybook::Text& Cell(Long row, Long column) const;
  void SetCell(Long row, Long column, const tallybook::Text& text);
  // In the units of the screen; 0 lets the renderer choose.
  [[nodiscard]] Long ColumnWidth(Long column) const;
  void SetColumnWidth(Long column, Long width);

  // The current cell. Setting it raises RowColChange where it changes.
  [[nodiscard]] Long Row() const { return row_; }
  [[nodiscard]] Long Column() const { return column_; }
  void SetCurrent(Long row, Long column);
  // The first row that is shown below the fixed ones.
  [[nodiscard]] Long TopRow() const { return top_row_; }
  void SetTopRow(Long row) { Set(top_row_, row); }

  // Off while many cells change together.
  [[nodiscard]] bool Redraw() const { return redraw_; }
  void SetRedraw(bool redraw) { Set(redraw_, redraw); }

  Event<> RowColChange;
  Event<> Click;
  // The user clicks a cell, which becomes the current one.
  bool UserClick(Long row, Long column);

 private:
  void Expect(Long row, Long column) const;

  std::vector<std::vector<tallybook::Text>> cells_;
  std::vector<Long> widths_;
  Long columns_ = 0;
  Long fixed_rows_ = 0;
  Long fixed_columns_ = 0;
  Long row_ = 0;
  Long column_ = 0;
  Long top_row_ = 0;
  bool redraw_ = true;
};

// A strip of tabs over pages. Tabs count from 1; the selection starts at the first.
class TabStrip : public Control {
 public:
  using Control::Control;

  void SetTabs(std::vector<tallybook::Text> captions);
  [[nodiscard]] const std::vector<tallybook::Text>& Tabs() const { return tabs_; }
  [[nodiscard]] Integer Selected() const { return selected_; }
  // Raises Click where it changes. A tab that there is not is failure 9.
  void SetSelected(Integer tab);

  Event<> Click;
  // The user chooses a tab, which may be the selected one.
  bool UserChoose(Integer tab);

 private:
  void Expect(Integer tab) const;

  std::vector<tallybook::Text> tabs_;
  Integer selected_ = 1;
};

}  // namespace tallybook
