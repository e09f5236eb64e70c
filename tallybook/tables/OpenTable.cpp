#include "tallybook/tables/OpenTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "base/CodePage.h"
#include "base/Dates.h"

namespace tallybook::tables {

namespace {

constexpr const char* kSource = "ExportLibrary";
constexpr Integer kMostTextWidth = 32'767;

[[noreturn]] void Refuse(const Text& reason) {
  throw Failure(FailureNumber::kInvalidArgument, reason, kSource);
}

const char* WordFor(ColumnType type) {
  switch (type) {
    case ColumnType::kSmallNumber:
      return "small number";
    case ColumnType::kInteger:
      return "whole number";
    case ColumnType::kDouble:
      return "figure";
    case ColumnType::kDate:
      return "date";
    case ColumnType::kText:
      return "text";
  }
  return nullptr;
}

void CheckColumn(const Column& column) {
  if (WordFor(column.type) == nullptr)
    Refuse("Column \"" + column.name + "\" has the type " + std::to_string(static_cast<int>(column.type)) +
           "; types are 3, 4, 7, 8 and 9");
  if (column.name.empty()) Refuse("A column needs a name");
  if (column.width < 1 || column.width > kMostTextWidth)
    Refuse("Column \"" + column.name + "\" cannot be " + std::to_string(column.width) + " characters wide");
  if (column.decimals < 0 || column.decimals > kMostDecimals)
    Refuse("Column \"" + column.name + "\" cannot have " + std::to_string(column.decimals) + " decimals");
}

// A column that gets more decimals than it was made for grows by them, so that the same figures fit before the point.
void ApplyStyle(const FigureStyle& style, int widest, Column& column) {
  if (column.type != ColumnType::kDouble || !style.decimals) return;
  const int more = std::max(0, *style.decimals - column.decimals);
  column.width = std::max(column.width, std::min(column.width + more, widest));
  column.decimals = *style.decimals;
}

}  // namespace

OpenTable::OpenTable(Text path, const Format& format, const Text& table_name, Integer columns, const FigureStyle& style)
    : path_(std::move(path)),
      takes_titles_((format.description.capability & kWantsTitleRow) == kWantsTitleRow),
      style_(style),
      widest_figure_(format.widest_figure) {
  if (style_.decimals == kEveryDecimal && !format.holds_every_decimal)
    Refuse(path_ + ": " + format.description.code +
           " has columns of fixed width, which cannot hold every decimal of a figure");
  if (columns < 1)
    Refuse(path_ + ": a table needs a column at least, and " + std::to_string(columns) + " were asked for");
  const auto count = static_cast<std::size_t>(columns);
  columns_.resize(count);
  defined_.resize(count);
  cells_.resize(count);
  try {
    writer_ = format.new_writer(path_, table_name);
  } catch (const Failure& failure) {
    FailWithPlace(failure, {});
  }
}

// The same failure with the file, and the place in it, in front of its words.
void OpenTable::FailWithPlace(const Failure& failure, const Text& place) const {
  throw Failure(failure.Number(), path_ + ": " + place + failure.Description(), failure.Source());
}

std::size_t OpenTable::IndexOf(Integer position) const {
  if (position < 1 || static_cast<std::size_t>(position) > columns_.size())
    throw Failure(FailureNumber::kRange,
                  path_ + ": the table has " + std::to_string(columns_.size()) + " columns, and no column " +
                      std::to_string(position),
                  kSource);
  return static_cast<std::size_t>(position - 1);
}

void OpenTable::AddColumn(Integer position, Column column) {
  const std::size_t index = IndexOf(position);
  if (begun_) Refuse(path_ + ": column \"" + column.name + "\" comes behind the first row");
  CheckColumn(column);
  ApplyStyle(style_, widest_figure_, column);
  columns_[index] = std::move(column);
  defined_[index] = true;
}

// Sets one cell; what refuses it is kept, so that the row is not written without it.
template <typename Operation>
void OpenTable::Set(Integer position, Operation&& operation) {
  try {
    operation();
  } catch (const Failure& failure) {
    if (!refused_)
      refused_.emplace(failure.Number(), "column " + std::to_string(position) + ": " + failure.Description(),
                       failure.Source());
    throw;
  }
}

Cell& OpenTable::CellFor(Integer position, ColumnType type) {
  const std::size_t index = IndexOf(position);
  const Column& column = columns_[index];
  const bool title = takes_titles_ && type == ColumnType::kText;
  if (!defined_[index]) Refuse("the column is not defined yet");
  if (column.type != type && !title)
    Refuse(Text("\"") + column.name + "\" is a " + WordFor(column.type) + " and takes no " + WordFor(type));
  Cell& cell = cells_[index];
  cell.changed = true;
  return cell;
}

void OpenTable::SetWhole(Integer position, ColumnType type, Integer value) {
  Set(position, [&] {
    Cell& cell = CellFor(position, type);
    cell.kind = CellKind::kWhole;
    cell.whole = value;
  });
}

void OpenTable::SetFigure(Integer position, Double value, Integer decimals) {
  Set(position, [&] {
    Cell& cell = CellFor(position, ColumnType::kDouble);
    if (!std::isfinite(value)) Refuse(std::to_string(value) + " is no figure");
    if (decimals < 0 || decimals > kMostDecimals)
      Refuse("a figure cannot have " + std::to_string(decimals) + " decimals");
    cell.kind = CellKind::kFigure;
    cell.figure = value;
    cell.decimals = style_.decimals.value_or(decimals);
  });
}

void OpenTable::SetDate(Integer position, Date value) {
  static const Date first = DateFromParts(1, 1, 1);
  static const Date last = DateFromParts(9999, 12, 31);
  Set(position, [&] {
    Cell& cell = CellFor(position, ColumnType::kDate);
    const Date day = std::floor(value);
    if (!(day >= first && day <= last)) Refuse(std::to_string(value) + " is no date of the years 1 to 9999");
    cell.kind = CellKind::kDate;
    cell.date = day;
  });
}

void OpenTable::SetText(Integer position, const Text& value) {
  Set(position, [&] {
    Cell& cell = CellFor(position, ColumnType::kText);
    if (!IsUtf8(value)) Refuse("the text \"" + value + "\" is no UTF-8");
    cell.kind = CellKind::kText;
    cell.text = value;
  });
}

void OpenTable::BeginOnce() {
  if (begun_) return;
  for (std::size_t i = 0; i < defined_.size(); ++i) {
    if (!defined_[i]) Refuse("column " + std::to_string(i + 1) + " was never defined");
  }
  writer_->Begin(columns_);
  begun_ = true;
}

// True for a row that has figures, all of them zero. Its cells stay marked as changed for the row that comes.
bool OpenTable::IsLeftOut() const {
  if (!style_.leaves_out_zeros) return false;
  bool has_figure = false;
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (cells_[i].kind != CellKind::kFigure) continue;
    if (!RoundsToZero(cells_[i], columns_[i])) return false;
    has_figure = true;
  }
  return has_figure;
}

void OpenTable::Commit() {
  if (failure_) throw Failure(*failure_);
  try {
    BeginOnce();
    if (refused_) throw Failure(*refused_);
    if (IsLeftOut()) return;
    writer_->WriteRow(cells_);
  } catch (...) {
    const Failure failure = CurrentFailure();
    failure_.emplace(failure.Number(), path_ + ": row " + std::to_string(rows_ + 1) + ": " + failure.Description(),
                     failure.Source());
    throw Failure(*failure_);
  }
  for (Cell& cell : cells_) cell.changed = false;
  ++rows_;
}

void OpenTable::Close() {
  try {
    BeginOnce();
    writer_->Close();
  } catch (...) {
    // Meant: a table that failed has told its reason already, and the first reason stays the only one.
    if (failure_) return;
    FailWithPlace(CurrentFailure(), "the table cannot be closed: ");
  }
}

}  // namespace tallybook::tables
