#include "tallybook/desktop/forms/GridModel.h"

#include <QBrush>
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
  if (first < grid_->FixedRows()) emit headerDataChanged(Qt::Horizontal, 0, columns_ - 1);
  if (bottom >= top) emit dataChanged(index(top, 0), index(bottom, columns_ - 1));
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

QVariant GridModel::data(const QModelIndex& index, int role) const {
  if (grid_ == nullptr) return {};
  const Long row = index.row() + grid_->FixedRows();
  const int column = index.column();
  // The grid may have shrunk and not been drawn anew yet.
  if (!index.isValid() || row >= grid_->Rows() || column >= grid_->Columns()) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
    case Qt::ToolTipRole:
      return ToQt(grid_->Cell(row, column)).trimmed();
    case Qt::TextAlignmentRole:
      return SideOf(grid_->ColumnAlignment(column));
    case Qt::BackgroundRole:
      return IsShaded(column) ? QVariant(QGuiApplication::palette().brush(QPalette::Button)) : QVariant();
    case Qt::ForegroundRole:
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
