// Columns and cells of a table under way, and how figures and dates are spelled. Plain data; nothing here knows a
// format.
#pragma once

#include <string>
#include <vector>

#include "host/DataExportObject.h"
#include "support/Types.h"

namespace tallybook::tables {

struct Column {
  Text name;
  ColumnType type = ColumnType::kText;
  int width = 0;     // in characters
  int decimals = 0;  // of a figure
};

enum class CellKind { kEmpty, kWhole, kFigure, kDate, kText };

// One cell of the row under way. Only the member that `kind` names counts.
struct Cell {
  CellKind kind = CellKind::kEmpty;
  bool changed = true;  // set since the last row: a writer may keep what it made of an unchanged cell
  Long whole = 0;
  Double figure = 0;
  int decimals = 0;  // the figure is rounded to so many, or to the column's where those are fewer
  Date date = kNoDate;
  Text text;
};

// The most decimals that a figure can be given.
inline constexpr int kMostDecimals = 15;

// Appends a figure with exactly the column's decimals, rounded to the cell's where those are fewer, with a point, and
// without grouping or exponent. A figure that rounds to zero has no sign.
void AppendFigure(const Cell& cell, const Column& column, std::string& out);
// The double nearest to the text that AppendFigure makes.
[[nodiscard]] Double RoundedFigure(const Cell& cell, const Column& column);

void AppendWhole(Long value, std::string& out);

// Raises failure 6: `text` takes more characters than the column is wide.
[[noreturn]] void FailTooWide(const Column& column, const Text& text);

}  // namespace tallybook::tables
