// A flexible grid: rows and columns of text cells, the first of which may be fixed as heads.
#pragma once

#include <vector>

#include "forms/Control.h"

namespace tallybook {

enum class Alignment { kLeft, kCentre, kRight };

// Rows and columns count from 0. A cell outside the grid is failure 9. Widths and heights are in the units of the
// screen.
//
// One cell is the current one, and never a fixed one; a grid that has none but fixed cells has no current cell. Where
// it moves, the cell that is left is told first, the cell that is entered afterwards.
class Grid : public Control {
 public:
  using Control::Control;

  // Cells that stay keep their text. A current cell that the grid loses moves to the nearest that it has, without a
  // word; so does the first row shown. A size below 0 is failure 9.
  void SetSize(Long rows, Long columns);
  [[nodiscard]] Long Rows() const { return static_cast<Long>(cells_.size()); }
  [[nodiscard]] Long Columns() const { return static_cast<Long>(columns_.size()); }
  [[nodiscard]] Long FixedRows() const { return fixed_rows_; }
  void SetFixedRows(Long rows);
  [[nodiscard]] Long FixedColumns() const { return fixed_columns_; }
  void SetFixedColumns(Long columns);

  [[nodiscard]] const tallybook::Text& Cell(Long row, Long column) const;
  // Raises Changed for the row.
  void SetCell(Long row, Long column, const tallybook::Text& text);

  // Columns out of one text: for each of them, parted by "|", a sign for the side ("<", ">" or "^"), and its head,
  // whose width with all blanks is the first width. Heads go into row 0, where there is one. Cells that stay keep their
  // text.
  void SetFormat(const tallybook::Text& format);
  // 0 lets the renderer choose.
  [[nodiscard]] Long ColumnWidth(Long column) const { return At(column).width; }
  void SetColumnWidth(Long column, Long width);
  [[nodiscard]] Alignment ColumnAlignment(Long column) const { return At(column).alignment; }
  void SetColumnAlignment(Long column, Alignment alignment);
  // In the colour of a button's face, as cells that cannot be changed.
  [[nodiscard]] bool ColumnShaded(Long column) const { return At(column).shaded; }
  void SetColumnShaded(Long column, bool shaded);

  // The height of a usual row and the width of a usual character: the renderer's to set, by the font.
  [[nodiscard]] Long UsualRowHeight() const { return usual_height_; }
  void SetUsualRowHeight(Long height) { Set(usual_height_, height); }
  [[nodiscard]] Long CharacterWidth() const { return character_width_; }
  void SetCharacterWidth(Long width) { character_width_ = width; }
  // So many times the usual height; 1 at first.
  void SetRowFactor(Long row, Double factor);
  [[nodiscard]] Long RowHeight(Long row) const;
  // What the grid's edge takes on each side.
  static constexpr Long kBorder = 2;

  // How many rows as high as the current one, the heads' place included, go into the grid's height as a whole.
  [[nodiscard]] Long WholeRows() const;
  // Whether the row is shown as a whole. The fixed rows and the first row shown always are.
  [[nodiscard]] bool IsRowVisible(Long row) const;
  // Where the cell is drawn, within what stands around the grid; beyond the grid's edges where it is out of sight.
  [[nodiscard]] tallybook::Place CellPlace(Long row, Long column) const;

  // The current cell. Where it changes, LeaveCell is raised before and EnterCell and RowColChange after it; what is
  // shown stays in its place. A fixed cell is failure 9.
  [[nodiscard]] bool HasCurrentCell() const { return Rows() > fixed_rows_ && Columns() > fixed_columns_; }
  [[nodiscard]] Long Row() const { return row_; }
  [[nodiscard]] Long Column() const { return column_; }
  void SetCurrent(Long row, Long column);
  // The same, as a key does it: before the cell is told to be entered, its row is brought into sight, and Scroll is not
  // raised for that.
  void MoveCurrent(Long row, Long column);
  // The first row that is shown below the fixed ones. Raises Scroll where it changes. A row that cannot be the first is
  // failure 9.
  [[nodiscard]] Long TopRow() const { return top_row_; }
  void SetTopRow(Long row);

  // Off while many cells change together: Changed is raised once when it goes on again.
  [[nodiscard]] bool Redraw() const { return redraw_; }
  void SetRedraw(bool redraw);

  Event<> LeaveCell;  // the current cell is about to move from here
  Event<> EnterCell;  // it has moved here, or the user has clicked it
  Event<> RowColChange;
  Event<> Scroll;
  Event<> Click;
  // The user clicks a cell, which becomes the current one and is entered, once. The current cell is entered again and
  // not left; so it is by a click on a fixed cell.
  bool UserClick(Long row, Long column);
  // The user moves the scroll bar.
  bool UserScroll(Long top_row);

 private:
  struct ColumnLooks {
    Long width = 0;
    Alignment alignment = Alignment::kLeft;
    bool shaded = false;
  };

  void ExpectRow(Long row) const;
  [[nodiscard]] const ColumnLooks& At(Long column) const;
  void Tell(const Change& change) const;
  void HoldToSize();
  [[nodiscard]] bool IsFixed(Long row, Long column) const { return row < fixed_rows_ || column < fixed_columns_; }
  template <typename Value>
  void SetLooks(Long column, Value ColumnLooks::*looks, Value value);
  [[nodiscard]] Long HeightOf(Long first, Long end) const;
  [[nodiscard]] Long RoomForRows() const;
  void BringIntoSight(Long row);
  void Move(Long row, Long column, bool into_sight);

  std::vector<std::vector<tallybook::Text>> cells_;
  std::vector<Double> factors_;  // of the rows' heights
  std::vector<ColumnLooks> columns_;
  Long fixed_rows_ = 0;
  Long fixed_columns_ = 0;
  Long row_ = 0;
  Long column_ = 0;
  Long top_row_ = 0;
  Long usual_height_ = 16;
  Long character_width_ = 7;
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
  // The user chooses a tab, which may be the selected one. Left and Right choose the neighbour.
  bool UserChoose(Integer tab);

 protected:
  void PressOwnKey(Integer key, Integer shift) override;

 private:
  void Expect(Integer tab) const;

  std::vector<tallybook::Text> tabs_;
  Integer selected_ = 1;
};

}  // namespace tallybook
