#include "tallybook/desktop/forms/GridModel.h"

#include <QBrush>
#include <QFont>
#include <QGuiApplication>
#include <QPalette>
#include <algorithm>

#include "forms/Grid.h"
#include "tallybook/desktop/forms/Words.h"

namespace tallybook::desktop {

namespace {

QVariant SideOf(Alignment alignment) {
  const Qt::Alignment side = alignment == Alignment::kRight    ? Qt::AlignRight
                             : alignment == Alignment::kCentre ? Qt::AlignHCenter
                                                               : Qt::AlignLeft;
  return QVariant::fromValue(side | Qt::AlignVCenter);
}

// Between text and ground, and still well read on it, in light and dark.
QColor FaintText() {
  constexpr int kOfText = 65;
  const QPalette palette = QGuiApplication::palette();
  const QColor text = palette.color(QPalette::Text);
  const QColor base = palette.color(QPalette::Base);
  const auto mixed = [](int one, int other) { return (one * kOfText + other * (100 - kOfText)) / 100; };
  return {mixed(text.red(), base.red()), mixed(text.green(), base.green()), mixed(text.blue(), base.blue())};
}

}  // namespace

void GridModel::Reset() {
  beginResetModel();
  rows_ = static_cast<int>(std::max(grid_->Rows() - grid_->FixedRows(), Long{0}));
  columns_ = grid_->Columns();
  endResetModel();
}

void GridModel::TellRows(Long first, Long last) {
  const int top = std::max(first - grid_->FixedRows(), Long{0});
  const int bottom = std::min(last - grid_->FixedRows(), Long{rows_ - 1});
  if (first < grid_->FixedRows()) headerDataChanged(Qt::Horizontal, 0, columns_ - 1);
  if (bottom >= top) dataChanged(index(top, 0), index(bottom, columns_ - 1));
}

bool GridModel::IsMissing(Long row) const {
  if (missing_.empty()) return false;
  for (Long column = 0; column < grid_->Columns(); ++column)
    if (grid_->Cell(row, column) == missing_) return true;
  return false;
}

int GridModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int GridModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : columns_;
}

bool GridModel::IsShaded(int column) const {
  return column < grid_->FixedColumns() || grid_->ColumnShaded(column);
}

// Not by colour alone.
QVariant GridModel::FontOfCell(Long row, Long column) const {
  if (missing_.empty() || grid_->Cell(row, column) != missing_) return {};
  QFont font;
  font.setItalic(true);
  return font;
}

QVariant GridModel::data(const QModelIndex& index, int role) const {
  if (grid_ == nullptr) return {};
  const Long row = index.row() + grid_->FixedRows();
  const int column = index.column();
  // The grid may have shrunk and not been drawn anew yet.
  if (!index.isValid() || row >= grid_->Rows() || column >= grid_->Columns()) return {};
  switch (role) {
    case Qt::DisplayRole:
      return AsWritten(ToQt(grid_->Cell(row, column)).trimmed());
    case Qt::AccessibleTextRole:
    case Qt::ToolTipRole:
      return ToQt(grid_->Cell(row, column)).trimmed();
    case Qt::TextAlignmentRole:
      return SideOf(grid_->ColumnAlignment(column));
    case Qt::BackgroundRole:
      return IsShaded(column) ? QVariant(QGuiApplication::palette().brush(QPalette::Button)) : QVariant();
    case Qt::FontRole:
      return FontOfCell(row, column);
    case Qt::ForegroundRole:
      if (!missing_.empty() && grid_->Cell(row, column) == missing_) return QBrush(FaintText());
      return IsShaded(column) ? QVariant(QGuiApplication::palette().brush(QPalette::ButtonText)) : QVariant();
    default:
      return {};
  }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (grid_ == nullptr || orientation != Qt::Horizontal || grid_->FixedRows() == 0 || section >= grid_->Columns())
    return {};
  if (role == Qt::DisplayRole) return ToQt(grid_->Cell(0, section)).trimmed();
  if (role == Qt::TextAlignmentRole) return SideOf(grid_->ColumnAlignment(section));
  return {};
}

Qt::ItemFlags GridModel::flags(const QModelIndex& index) const {
  return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

}  // namespace tallybook::desktop
