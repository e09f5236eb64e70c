// Text in columns of fixed width: UTF-8, lines ended by CR LF, one blank between two columns. Numbers stand to the
// right of their column, texts to the left, and every line has the same number of characters. There is no date column:
// the format's capability asks for month, day and year.
#include <algorithm>
#include <span>
#include <utility>

#include "base/CodePage.h"
#include "base/Failure.h"
#include "support/FileStream.h"
#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

namespace {

class TextWriter : public TableWriter {
 public:
  explicit TextWriter(std::unique_ptr<FileStream> file) : file_(std::move(file)) {}

  void Begin(const std::vector<Column>& columns) override {
    for (const Column& column : columns) {
      if (column.type == ColumnType::kDate)
        throw Failure(FailureNumber::kInvalidArgument,
                      "Text of fixed width has no date column, as \"" + column.name + "\" would be", "ExportLibrary");
    }
    columns_ = columns;
    spelled_.resize(columns.size());
  }

  void WriteRow(const std::vector<Cell>& cells) override {
    line_.clear();
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (cells[i].changed) spelled_[i] = Spelled(cells[i], columns_[i]);
      if (i > 0) line_ += ' ';
      line_ += spelled_[i];
    }
    line_ += "\r\n";
    file_->Write(std::as_bytes(std::span(line_)));
  }

  void Close() override { file_->Close(); }

 private:
  static std::string Spelled(const Cell& cell, const Column& column) {
    std::string out;
    if (cell.kind == CellKind::kWhole) AppendWhole(cell.whole, out);
    if (cell.kind == CellKind::kFigure) AppendFigure(cell, column, out);
    if (cell.kind == CellKind::kText) out = cell.text;
    if (std::ranges::any_of(out, [](char c) { return c == '\r' || c == '\n'; }))
      throw Failure(FailureNumber::kInvalidArgument, "Text of fixed width cannot hold a line break: \"" + out + "\"",
                    "ExportLibrary");
    const int width = CharacterCount(out);
    if (width > column.width) FailTooWide(column, out);
    const bool left = cell.kind == CellKind::kText;
    out.insert(left ? out.size() : 0, static_cast<std::size_t>(column.width - width), ' ');
    return out;
  }

  std::unique_ptr<FileStream> file_;
  std::vector<Column> columns_;
  std::vector<std::string> spelled_;
  std::string line_;
};

}  // namespace

std::unique_ptr<TableWriter> NewTextWriter(const Text& path, const Text& /*table_name*/) {
  return std::make_unique<TextWriter>(NewFile(path));
}

}  // namespace tallybook::tables
