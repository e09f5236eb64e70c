// Comma-separated values after RFC 4180: UTF-8 without a byte-order mark, lines ended by CR LF. Texts stand in quotes,
// always, so that a reader can tell the account code "007" from a number. Dates are written 2004-02-03, figures with
// the column's decimals. The titles are a row like any other: the caller sets them.
#include <span>
#include <utility>

#include "base/Dates.h"
#include "support/FileStream.h"
#include "tallybook/tables/TableWriter.h"

namespace tallybook::tables {

namespace {

void AppendQuoted(const Text& text, std::string& out) {
  out += '"';
  for (const char c : text) {
    if (c == '"') out += '"';
    out += c;
  }
  out += '"';
}

class CsvWriter : public TableWriter {
 public:
  explicit CsvWriter(std::unique_ptr<FileStream> file) : file_(std::move(file)) {}

  void Begin(const std::vector<Column>& columns) override {
    columns_ = columns;
    spelled_.resize(columns.size());
  }

  void WriteRow(const std::vector<Cell>& cells) override {
    line_.clear();
    for (std::size_t i = 0; i < cells.size(); ++i) {
      // Date and account code stay the same over many rows; they are spelled once.
      if (cells[i].changed) Spell(cells[i], columns_[i], spelled_[i]);
      if (i > 0) line_ += ',';
      line_ += spelled_[i];
    }
    line_ += "\r\n";
    file_->Write(std::as_bytes(std::span(line_)));
  }

  void Close() override { file_->Close(); }

 private:
  static void Spell(const Cell& cell, const Column& column, std::string& out) {
    out.clear();
    switch (cell.kind) {
      case CellKind::kEmpty:
        break;
      case CellKind::kWhole:
        AppendWhole(cell.whole, out);
        break;
      case CellKind::kFigure:
        AppendFigure(cell, column, out);
        break;
      case CellKind::kDate:
        out = DateText(cell.date);
        break;
      case CellKind::kText:
        AppendQuoted(cell.text, out);
        break;
    }
  }

  std::unique_ptr<FileStream> file_;
  std::vector<Column> columns_;
  std::vector<std::string> spelled_;  // each cell as it stood in the last row
  std::string line_;
};

}  // namespace

std::unique_ptr<TableWriter> NewCsvWriter(const Text& path, const Text& /*table_name*/) {
  return std::make_unique<CsvWriter>(NewFile(path));
}

}  // namespace tallybook::tables
