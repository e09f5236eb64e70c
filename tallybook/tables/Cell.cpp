#include "tallybook/tables/Cell.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

#include "base/Failure.h"

namespace tallybook::tables {

namespace {

// Sign, the digits of the greatest double, point, decimals.
using FigureBuffer = std::array<char, 1 + std::numeric_limits<Double>::max_exponent10 + 1 + 1 + kMostDecimals>;

// The figure in `buffer`; gives the end. Decimals beyond the cell's are left to the caller.
char* PrintFigure(const Cell& cell, const Column& column, FigureBuffer& buffer) {
  if (column.decimals == kEveryDecimal)
    return std::to_chars(buffer.data(), buffer.data() + buffer.size(), cell.figure).ptr;
  const int decimals = std::min(cell.decimals, column.decimals);
  return std::to_chars(buffer.data(), buffer.data() + buffer.size(), cell.figure, std::chars_format::fixed, decimals)
      .ptr;
}

bool IsZero(const char* first, const char* last) {
  return std::all_of(first, last, [](char c) { return c == '0' || c == '.' || c == '-'; });
}

}  // namespace

void AppendFigure(const Cell& cell, const Column& column, std::string& out) {
  FigureBuffer buffer;
  const char* const end = PrintFigure(cell, column, buffer);
  const char* start = buffer.data();
  if (*start == '-' && IsZero(start, end)) ++start;
  out.append(start, end);
  if (column.decimals == kEveryDecimal || cell.decimals >= column.decimals) return;
  if (cell.decimals == 0) out += '.';
  out.append(static_cast<std::size_t>(column.decimals - cell.decimals), '0');
}

Double RoundedFigure(const Cell& cell, const Column& column) {
  FigureBuffer buffer;
  const char* const end = PrintFigure(cell, column, buffer);
  Double value = 0;
  std::from_chars(buffer.data(), end, value);
  return value == 0 ? 0 : value;
}

// Nearly all figures are told apart by their size alone.
bool RoundsToZero(const Cell& cell, const Column& column) {
  return std::abs(cell.figure) < 1 && RoundedFigure(cell, column) == 0;
}

void AppendWhole(Long value, std::string& out) {
  std::array<char, std::numeric_limits<Long>::digits10 + 2> buffer{};
  const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
  out.append(buffer.data(), result.ptr);
}

void FailTooWide(const Column& column, const Text& text) {
  throw Failure(FailureNumber::kOverflow,
                "\"" + text + "\" is wider than the " + std::to_string(column.width) + " characters of column \"" +
                    column.name + "\"",
                "ExportLibrary");
}

}  // namespace tallybook::tables
