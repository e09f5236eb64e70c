// Columns and cells of a table under way, and how figures and dates are spelled. Plain data; nothing here knows a
// format.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Types.h"
#include "host/DataExportObject.h"

namespace tallybook::tables {

// The most decimals that a figure can be given.
inline constexpr int kMostDecimals = 15;
// Decimals of a column whose figures are spelled in the shortest text that reads back to the same double.
inline constexpr int kEveryDecimal = -1;

// What the user wants of the figures of a table, whatever its columns were made for.
struct FigureStyle {
  std::optional<int> decimals;    // 0 to kMostDecimals, or kEveryDecimal; not set: as the column asks
  bool leaves_out_zeros = false;  // no row whose figures all are zero in the form in which they would be written
};

struct Column {
  Text name;
  ColumnType type = ColumnType::kText;
  int width = 0;     // in characters
  int decimals = 0;  // of a figure; or kEveryDecimal
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

// Appends a figure with exactly the column's decimals, rounded to the cell's where those are fewer, with a point, and
// without grouping or exponent. A column of kEveryDecimal takes the shortest text, which may have an exponent. A figure
// that is zero in that form has no sign.
void AppendFigure(const Cell& cell, const Column& column, std::string& out);
// The double nearest to the text that AppendFigure makes.
[[nodiscard]] Double RoundedFigure(const Cell& cell, const Column& column);
// True where that is zero.
[[nodiscard]] bool RoundsToZero(const Cell& cell, const Column& column);

void AppendWhole(Long value, std::string& out);

// Raises failure 6: `text` takes more characters than the column is wide.
[[noreturn]] void FailTooWide(const Column& column, const Text& text);

}  // namespace tallybook::tables
