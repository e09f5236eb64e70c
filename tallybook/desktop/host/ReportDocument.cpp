#include "tallybook/desktop/host/ReportDocument.h"

#include <QFontDatabase>
#include <QTextBlockFormat>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>
#include <algorithm>

#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/report/TextRenderer.h"

namespace tallybook::desktop {

namespace {

constexpr int kLineLetters = 100;  // of a page of lines
constexpr double kTextPoints = 9;
constexpr double kLinePoints = 7.5;
constexpr double kTitlePoints = 15;

std::size_t RowsOf(const report::Blocks& blocks) {
  std::size_t rows = 0;
  for (const report::Block& block : blocks) {
    if (const auto* const table = std::get_if<report::Table>(&block)) rows += table->head.size() + table->body.size();
  }
  return rows;
}

class Setter {
 public:
  explicit Setter(QTextDocument& document) : cursor_(&document) {}

  void Title(const report::Report& report) {
    QTextCharFormat large;
    large.setFontPointSize(kTitlePoints);
    large.setFontWeight(QFont::Bold);
    cursor_.insertText(ShownLine(report.title), large);
    NewLine();
    cursor_.insertText(ShownLine(report.created), {});
    NewLine();
  }

  void Set(const report::Blocks& blocks) {
    for (const report::Block& block : blocks) std::visit([this](const auto& part) { Set(part); }, block);
  }

  void Lines(const Text& text) {
    QTextCharFormat pitch;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(kLinePoints);
    pitch.setFont(font);
    cursor_.insertText(ToQt(text), pitch);
  }

 private:
  void Set(const report::Line& line) {
    cursor_.insertText(ShownLine(line.text), {});
    NewLine();
  }

  void Set(const report::PageBreak& /*page*/) {
    QTextBlockFormat format;
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    cursor_.mergeBlockFormat(format);
  }

  void Set(const report::Table& table) {
    const auto rows = static_cast<int>(table.head.size() + table.body.size());
    const auto columns = static_cast<int>(table.widths.size());
    if (rows == 0 || columns == 0) return;
    QTextTable* const set = cursor_.insertTable(rows, columns, FormatOf(table));
    int row = 0;
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    for (const report::Cells& cells : table.head) SetRow(*set, row++, cells, bold);
    for (const report::Cells& cells : table.body) SetRow(*set, row++, cells, {});
    cursor_.movePosition(QTextCursor::End);
  }

  static QTextTableFormat FormatOf(const report::Table& table) {
    QTextTableFormat format;
    format.setHeaderRowCount(static_cast<int>(table.head.size()));
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    format.setBorderStyle(QTextFrameFormat::BorderStyle_None);
    format.setCellSpacing(0);
    format.setCellPadding(table.look.close_rows ? 1 : 3);
    double total = 0;
    for (const Single width : table.widths) total += static_cast<double>(std::max(0.0F, width));
    QVector<QTextLength> widths;
    for (const Single width : table.widths) {
      const double share = total > 0 ? static_cast<double>(std::max(0.0F, width)) / total * 100 : 0;
      widths.append(QTextLength(QTextLength::PercentageLength, share));
    }
    format.setColumnWidthConstraints(widths);
    return format;
  }

  static void SetRow(QTextTable& table, int row, const report::Cells& cells, const QTextCharFormat& format) {
    const int columns = std::min(table.columns(), static_cast<int>(cells.size()));
    for (int column = 0; column < columns; ++column) {
      table.cellAt(row, column)
          .firstCursorPosition()
          .insertText(ShownLine(cells[static_cast<std::size_t>(column)]), format);
    }
  }

  void NewLine() { cursor_.insertBlock(QTextBlockFormat(), QTextCharFormat()); }

  QTextCursor cursor_;
};

}  // namespace

std::unique_ptr<QTextDocument> NewReportDocument(const report::Report& report, const report::Blocks& head) {
  auto document = std::make_unique<QTextDocument>();
  document->setUndoRedoEnabled(false);
  QFont font = document->defaultFont();
  font.setPointSizeF(kTextPoints);
  document->setDefaultFont(font);
  Setter setter(*document);
  setter.Title(report);
  if (RowsOf(report.blocks) > kMostTableRows) {
    setter.Lines(ReportBody(report, head, kLineLetters));
  } else {
    setter.Set(head);
    setter.Set(report.blocks);
  }
  return document;
}

Text ReportBody(const report::Report& report, const report::Blocks& head, int width) {
  constexpr int kLinesAbove = 3;  // title, rule, moment
  const Text text = report::TextRenderer(width).Render(report, [&](int) -> const report::Blocks& { return head; });
  std::size_t at = 0;
  for (int line = 0; line < kLinesAbove; ++line) at = std::min(text.find('\n', at), text.size() - 1) + 1;
  const std::size_t first = text.find_first_not_of('\n', at);
  return first == Text::npos ? Text() : text.substr(first);
}

}  // namespace tallybook::desktop
