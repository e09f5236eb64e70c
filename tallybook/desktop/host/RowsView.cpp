#include "tallybook/desktop/host/RowsView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QTableView>
#include <algorithm>

#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr int kLeastRowHeight = 24;
constexpr int kMostLettersOfAColumn = 48;

int HeightOfRow(const QFontMetrics& font) {
  return std::max(kLeastRowHeight, font.height() * 3 / 2);
}

// Rows that a pointer hits easily.
class HighRows final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize usual = QStyledItemDelegate::sizeHint(option, index);
    return {usual.width(), HeightOfRow(option.fontMetrics)};
  }
};

}  // namespace

RowsView::RowsView(const QString& name, QWidget* parent) : QTreeView(parent), rows_(new QStandardItemModel(this)) {
  setModel(rows_);
  setItemDelegate(new HighRows(this));
  setAccessibleName(name);
  setRootIsDecorated(false);
  setAlternatingRowColors(true);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setTabKeyNavigation(false);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  connect(this, &QTreeView::doubleClicked, this, [this] {
    if (chosen_) chosen_();
  });
}

void RowsView::SetColumns(const QStringList& heads, const std::set<int>& numbers) {
  numbers_ = numbers;
  rows_->clear();
  rows_->setHorizontalHeaderLabels(heads);
  // A number far from what it belongs to is not read with it.
  header()->setStretchLastSection(!numbers.contains(static_cast<int>(heads.size()) - 1));
  for (const int column : numbers) {
    rows_->horizontalHeaderItem(column)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  }
}

void RowsView::AddRow(const QStringList& cells) {
  QList<QStandardItem*> row;
  for (const QString& cell : cells) {
    auto* const item = new QStandardItem(AsWritten(cell));
    item->setToolTip(cell);
    if (numbers_.contains(static_cast<int>(row.size()))) item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row << item;
  }
  rows_->appendRow(row);
}

void RowsView::FitColumns() {
  const int widest = kMostLettersOfAColumn * fontMetrics().averageCharWidth();
  for (int column = 0; column < rows_->columnCount(); ++column) {
    resizeColumnToContents(column);
    header()->resizeSection(column, std::min(header()->sectionSize(column), widest));
  }
}

void RowsView::GoTo(int row) {
  setCurrentIndex(rows_->index(std::min(row, rows_->rowCount() - 1), 0));
}

int RowsView::RowCount() const {
  return rows_->rowCount();
}

QString RowsView::TextAt(int row, int column) const {
  return rows_->index(row, column).data().toString();
}

void RowsView::keyPressEvent(QKeyEvent* event) {
  const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enters && chosen_ && currentIndex().isValid()) return chosen_();
  QTreeView::keyPressEvent(event);
}

void RowsView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (row_) row_();
}

void ShowAsRows(QTableView& table, const std::vector<int>& widths) {
  table.setSelectionBehavior(QAbstractItemView::SelectRows);
  table.setEditTriggers(QAbstractItemView::NoEditTriggers);
  table.setTabKeyNavigation(false);
  table.setShowGrid(false);
  table.setAlternatingRowColors(true);
  table.setWordWrap(false);
  table.verticalHeader()->hide();
  table.verticalHeader()->setDefaultSectionSize(HeightOfRow(table.fontMetrics()));
  table.horizontalHeader()->setHighlightSections(false);
  table.horizontalHeader()->setStretchLastSection(true);
  const int letter = table.fontMetrics().averageCharWidth();
  for (std::size_t column = 0; column < widths.size(); ++column) {
    table.setColumnWidth(static_cast<int>(column), widths[column] * letter);
  }
}

}  // namespace tallybook::desktop
