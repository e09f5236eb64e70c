// A small table for the terminal: columns as wide as their widest cell, two blanks between them, headings above.
#pragma once

#include <vector>

#include "base/Types.h"
#include "tallybook/application/Counts.h"

namespace tallybook::cli {

enum class Align { kLeft, kRight };

class TextTable {
 public:
  struct Column {
    Text heading;
    Align align = Align::kLeft;
  };

  explicit TextTable(std::vector<Column> columns);
  // One text for each column, shown as a terminal may show it (application/Shown.h).
  void AddRow(std::vector<Text> cells);
  // To standard output. Each line begins with `indent` blanks and ends without any.
  void Print(int indent = 0) const;

 private:
  [[nodiscard]] Text LineOf(int indent, const std::vector<Text>& cells, const std::vector<Long>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<Text>> rows_;  // the headings first
};

using application::Counted;
using application::WithCommas;

}  // namespace tallybook::cli
