#include "tallybook/cli/TextTable.h"

#include <algorithm>

#include "base/CodePage.h"
#include "base/Texts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Lines.h"

namespace tallybook::cli {

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
  std::vector<Text> headings;
  for (const Column& column : columns_) headings.push_back(column.heading);
  rows_.push_back(std::move(headings));
}

void TextTable::AddRow(std::vector<Text> cells) {
  for (Text& cell : cells) cell = application::Shown(cell);
  rows_.push_back(std::move(cells));
}

void TextTable::Print(int indent) const {
  std::vector<Long> widths(columns_.size(), 0);
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], CharacterCount(row[i]));
  }
  PrintHeading(LineOf(indent, rows_.front(), widths));
  for (std::size_t i = 1; i < rows_.size(); ++i) PrintLine(LineOf(indent, rows_[i], widths));
}

Text TextTable::LineOf(int indent, const std::vector<Text>& cells, const std::vector<Long>& widths) const {
  Text line(static_cast<std::size_t>(indent), ' ');
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (i > 0) line += "  ";
    const bool right = columns_[i].align == Align::kRight;
    line += right ? PadLeft(cells[i], ' ', widths[i]) : PadRight(cells[i], ' ', widths[i]);
  }
  return TrimRight(line);
}

}  // namespace tallybook::cli
