#include "tallybook/desktop/host/ListRows.h"

#include <QFont>
#include <algorithm>
#include <numeric>

#include "base/Narrow.h"
#include "base/Texts.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

void ListRows::AddColumn(const Text& caption, bool numeric) {
  beginResetModel();
  columns_.push_back({ShownLine(caption), numeric});
  endResetModel();
}

void ListRows::Clear() {
  rows_.clear();
  last_is_there_ = false;
  stale_ = true;
}

void ListRows::Add(Row row) {
  rows_.push_back(std::move(row));
  last_is_there_ = true;
  stale_ = true;
}

void ListRows::AddCell(const Text& text) {
  if (!last_is_there_) return;
  rows_.back().cells.push_back(text);
  stale_ = true;
}

bool ListRows::Remove(const Text& key) {
  const auto found = std::ranges::find(rows_, key, &Row::key);
  if (found == rows_.end()) return false;
  if (found + 1 == rows_.end()) last_is_there_ = false;
  rows_.erase(found);
  stale_ = true;
  return true;
}

void ListRows::Update() {
  if (!stale_) return;
  beginResetModel();
  MakeOrder();
  stale_ = false;
  endResetModel();
}

void ListRows::Sort(std::optional<Order> order) {
  if (order && order->column >= columnCount()) order.reset();
  sorting_ = order;
  stale_ = true;
  Update();
}

void ListRows::SetMarked(std::vector<Text> keys) {
  marked_ = std::move(keys);
  stale_ = true;
  Update();
}

const Text& ListRows::Cell(const Row& row, int column) const {
  static const Text none;
  const auto index = static_cast<std::size_t>(column);
  return index < row.cells.size() ? row.cells[index] : none;
}

bool ListRows::IsBefore(const Row& left, const Row& right) const {
  const Text& one = Cell(left, sorting_->column);
  const Text& other = Cell(right, sorting_->column);
  if (columns_[static_cast<std::size_t>(sorting_->column)].numeric) return LeadingNumber(one) < LeadingNumber(other);
  return QString::localeAwareCompare(ToQt(one).toLower(), ToQt(other).toLower()) < 0;
}

void ListRows::MakeOrder() {
  order_.resize(rows_.size());
  std::iota(order_.begin(), order_.end(), std::size_t{0});
  if (!sorting_) return;
  std::ranges::stable_sort(order_, [&](std::size_t left, std::size_t right) {
    return sorting_->descending ? IsBefore(rows_[right], rows_[left]) : IsBefore(rows_[left], rows_[right]);
  });
}

int ListRows::PlaceOf(const Text& key) const {
  for (int place = 0; place < rowCount(); ++place) {
    if (At(place).key == key) return place;
  }
  return -1;
}

int ListRows::PlaceOfRecord(Integer record) const {
  for (int place = 0; place < rowCount(); ++place) {
    if (At(place).record == record) return place;
  }
  return -1;
}

int ListRows::Find(const QString& beginning, int column, int start) const {
  const int count = rowCount();
  for (int step = 0; step < count; ++step) {
    const int place = (start + step) % count;
    if (ToQt(TrimBoth(Cell(At(place), column))).startsWith(beginning, Qt::CaseInsensitive)) return place;
  }
  return -1;
}

int ListRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(order_.size());
}

int ListRows::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListRows::data(const QModelIndex& index, int role) const {
  // Between a change and the update a view may still ask for what was there.
  if (!index.isValid() || stale_ || index.row() >= rowCount()) return {};
  const Row& row = At(index.row());
  switch (role) {
    case Qt::DisplayRole:
      return AsWritten(ShownLine(Cell(row, index.column())));
    case Qt::ToolTipRole:
    case Qt::AccessibleTextRole:
      return ShownLine(Cell(row, index.column()));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(Qt::Alignment(
          (columns_[static_cast<std::size_t>(index.column())].numeric ? Qt::AlignRight : Qt::AlignLeading) |
          Qt::AlignVCenter));
    case Qt::FontRole: {
      QFont font;
      font.setBold(std::ranges::find(marked_, row.key) != marked_.end());
      return font.bold() ? QVariant(font) : QVariant();
    }
    default:
      return {};
  }
}

QVariant ListRows::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  const Column& column = columns_[static_cast<std::size_t>(section)];
  switch (role) {
    case Qt::DisplayRole:
      return column.caption;
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(
          Qt::Alignment((column.numeric ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter));
    case Qt::ToolTipRole:
      if (section < 9) return tr("Sort by this column: click, or Ctrl+%1").arg(section + 1);
      return tr("Sort by this column: click");
    default:
      return {};
  }
}

}  // namespace tallybook::desktop
