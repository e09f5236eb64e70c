// A table that is being written: its columns, the cells of the row under way, and what has failed. It stands between
// the export library, which knows handles, and a TableWriter, which knows one format. One thread.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "tallybook/tables/Formats.h"

namespace tallybook::tables {

class OpenTable {
 public:
  // Makes the file. Fails with the platform's failures, or 5 for a table name that the format cannot have, and for a
  // style that it cannot keep.
  OpenTable(Text path, const Format& format, const Text& table_name, Integer columns, const FigureStyle& style);

  // Failure 9 for a position outside the table, 5 for a column that makes no sense or comes behind the first row.
  void AddColumn(Integer position, Column column);

  // A cell takes what its column's type says, and a text in formats with titles. Failure 5 for anything else; the row
  // under way is refused from then on.
  void SetWhole(Integer position, ColumnType type, Integer value);
  void SetFigure(Integer position, Double value, Integer decimals);
  void SetDate(Integer position, Date value);
  void SetText(Integer position, const Text& value);

  // Writes the row, or leaves it out where the style says so. After a failure every later call fails with the same
  // reason.
  void Commit();
  void Close();

 private:
  template <typename Operation>
  void Set(Integer position, Operation&& operation);
  Cell& CellFor(Integer position, ColumnType type);
  [[nodiscard]] std::size_t IndexOf(Integer position) const;
  void BeginOnce();
  [[nodiscard]] bool IsLeftOut() const;
  [[noreturn]] void FailWithPlace(const Failure& failure, const Text& place) const;

  Text path_;
  bool takes_titles_;
  FigureStyle style_;
  int widest_figure_;
  std::vector<Column> columns_;
  std::vector<bool> defined_;
  std::vector<Cell> cells_;
  std::unique_ptr<TableWriter> writer_;
  bool begun_ = false;              // the writer knows the columns
  Long rows_ = 0;                   // written so far
  std::optional<Failure> refused_;  // why the row under way cannot be written
  std::optional<Failure> failure_;  // why no row is taken any more
};

}  // namespace tallybook::tables
