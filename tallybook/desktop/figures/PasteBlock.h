// A block of cells from the clipboard, laid onto the table of figures: what each cell would become, or why the block
// cannot be pasted. Nothing is written here. Plain data.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/desktop/figures/FigureTable.h"
#include "tallybook/desktop/forms/NumberText.h"

namespace tallybook::desktop {

struct PastedFigure {
  int row = 0;
  int column = 0;
  Double before = 0;
  Double after = 0;
  [[nodiscard]] bool Changes() const { return before != after; }
};

struct PasteBlock {
  std::vector<PastedFigure> figures;  // row by row
  std::vector<Text> troubles;         // a sentence each; where there is one, nothing is to be pasted
  [[nodiscard]] bool IsGood() const { return troubles.empty() && !figures.empty(); }
  // How many rows have a figure that changes.
  [[nodiscard]] int RowsChanged() const;
  [[nodiscard]] int FiguresChanged() const;
};

// Part of a table, both ends included.
struct CellRange {
  int first_row = 0;
  int first_column = 0;
  int last_row = 0;
  int last_column = 0;
};

// Lays the cells of `clipboard` (lines of cells with tabs between, as spreadsheets give them) on the table from the
// upper left of `selection` on. A single cell fills all of the selection. Fails as FigureTable::Value.
[[nodiscard]] PasteBlock LayOnTable(FigureTable& table, const CellRange& selection, const Text& clipboard,
                                    const NumberStyle& style);

// The changes that a good block stands for; what stands already as it is to be is left out.
[[nodiscard]] std::vector<application::FigureChange> ChangesOf(const PasteBlock& block, const FigureTable& table);
// The change that one typed cell stands for.
[[nodiscard]] application::FigureChange ChangeOf(const FigureTable& table, int row, int column, Double value);
// What the journal calls them: "set 100 2003-01-05 1 12.5" for one figure, "paste 12 figures" for more.
[[nodiscard]] Text WhatRan(const FigureTable& table, const std::vector<application::FigureChange>& changes);

}  // namespace tallybook::desktop
