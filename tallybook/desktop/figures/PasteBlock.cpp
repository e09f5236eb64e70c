#include "tallybook/desktop/figures/PasteBlock.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <fmt/format.h>
#include <set>

#include "base/Dates.h"
#include "base/ModParse.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"

namespace tallybook::desktop {

namespace {

using application::Counted;
using application::FigureChange;

constexpr std::size_t kMostTroubles = 20;

using Cells = std::vector<std::vector<Text>>;

Text WithoutReturns(Text text) {
  std::erase(text, '\r');
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

// A spreadsheet puts a cell in quotes where it holds what separates cells.
Text Unquoted(const Text& cell) {
  const bool quoted = cell.size() > 1 && cell.front() == '"' && cell.back() == '"';
  return quoted ? cell.substr(1, cell.size() - 2) : cell;
}

Cells CellsOf(const Text& clipboard) {
  Cells cells;
  for (const Text& line : SplitText(WithoutReturns(clipboard), "\n")) {
    std::vector<Text>& row = cells.emplace_back();
    for (const Text& cell : SplitText(line, "\t")) row.push_back(Unquoted(cell));
    if (row.empty()) row.emplace_back();
  }
  return cells;
}

class Layer {
 public:
  Layer(FigureTable& table, const NumberStyle& style) : table_(table), style_(style) {}

  PasteBlock Lay(const CellRange& selection, Cells cells) {
    if (cells.empty()) block_.troubles.emplace_back("There is nothing to paste.");
    if (cells.size() == 1 && cells.front().size() == 1) Fill(selection, cells);
    CheckSize(selection, cells);
    if (!block_.troubles.empty()) return block_;
    for (std::size_t row = 0; row < cells.size(); ++row) {
      for (std::size_t column = 0; column < cells[row].size(); ++column) {
        const int cell_row = selection.first_row + static_cast<int>(row);
        const int cell_column = selection.first_column + static_cast<int>(column);
        Put(cell_row, cell_column, cells[row][column], fmt::format("Row {}, column {}", row + 1, column + 1));
      }
    }
    return block_;
  }

 private:
  static void Fill(const CellRange& selection, Cells& cells) {
    const Text cell = cells.front().front();
    const auto columns = static_cast<std::size_t>(selection.last_column - selection.first_column) + 1;
    const auto rows = static_cast<std::size_t>(selection.last_row - selection.first_row) + 1;
    cells.assign(rows, std::vector<Text>(columns, cell));
  }

  void CheckSize(const CellRange& selection, const Cells& cells) {
    std::size_t columns = 0;
    for (const auto& row : cells) columns = std::max(columns, row.size());
    const int rows_left = table_.Rows() - selection.first_row;
    const int columns_left = table_.Columns() - selection.first_column;
    if (static_cast<int>(cells.size()) > rows_left) {
      Trouble(fmt::format("The block has {}, and the table has {} from here on.",
                          Counted(static_cast<long long>(cells.size()), "row"), rows_left));
    }
    if (static_cast<int>(columns) > columns_left) {
      Trouble(fmt::format("The block has {}, and the table has {} from here on.",
                          Counted(static_cast<long long>(columns), "column"), columns_left));
    }
  }

  void Put(int row, int column, const Text& cell, const Text& where) {
    const Text why_not = table_.WhyNotTyped(row, column);
    if (!why_not.empty()) return Trouble(why_not);
    const ReadFigure read = ParseFigure(cell, style_);
    if (read.value) {
      block_.figures.push_back({row, column, table_.Value(row, column), *read.value});
    } else {
      Trouble(fmt::format("{} of the block: {}.", where, application::Shown(read.why)));
    }
  }

  // Each once: a whole column may be wrong in the same way.
  void Trouble(const Text& text) {
    const bool known = std::ranges::find(block_.troubles, text) != block_.troubles.end();
    if (!known && block_.troubles.size() < kMostTroubles) block_.troubles.push_back(text);
  }

  FigureTable& table_;
  const NumberStyle& style_;
  PasteBlock block_;
};

Text ShortestText(Double value) {
  std::array<char, 40> text{};
  const auto end = std::to_chars(text.begin(), text.end(), value).ptr;
  return {text.begin(), end};
}

}  // namespace

int PasteBlock::RowsChanged() const {
  std::set<int> rows;
  for (const PastedFigure& figure : figures) {
    if (figure.Changes()) rows.insert(figure.row);
  }
  return static_cast<int>(rows.size());
}

int PasteBlock::FiguresChanged() const {
  return static_cast<int>(std::ranges::count_if(figures, &PastedFigure::Changes));
}

PasteBlock LayOnTable(FigureTable& table, const CellRange& selection, const Text& clipboard, const NumberStyle& style) {
  return Layer(table, style).Lay(selection, CellsOf(clipboard));
}

FigureChange ChangeOf(const FigureTable& table, int row, int column, Double value) {
  const FigurePlace place = table.PlaceOf(row, column);
  return {table.Account(place.account).number, table.DateOf(place), table.Field(place.field).number, value};
}

std::vector<FigureChange> ChangesOf(const PasteBlock& block, const FigureTable& table) {
  std::vector<FigureChange> changes;
  for (const PastedFigure& figure : block.figures) {
    if (figure.Changes()) changes.push_back(ChangeOf(table, figure.row, figure.column, figure.after));
  }
  return changes;
}

Text WhatRan(const FigureTable& table, const std::vector<FigureChange>& changes) {
  if (changes.size() != 1) return fmt::format("paste {}", Counted(static_cast<long long>(changes.size()), "figure"));
  const FigureChange& change = changes.front();
  const auto& accounts = table.Accounts();
  const auto account = std::ranges::find(accounts, change.account, &engine::AccountDescription::number);
  return fmt::format("set {} {} {} {}", account->code, DateText(change.date), change.field, ShortestText(change.value));
}

}  // namespace tallybook::desktop
