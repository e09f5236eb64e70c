#include "tallybook/desktop/figures/FigureModel.h"

#include <QtCore/QTimer>
#include <QtGui/QGuiApplication>
#include <QtGui/QPalette>
#include <algorithm>
#include <cmath>
#include <utility>

#include "base/Failure.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kSumWords = "Total of the rows shown";
constexpr const char* kAddingWords = "\u2026";

QColor FaintText() {
  return QGuiApplication::palette().color(QPalette::PlaceholderText);
}

int RightAligned() {
  return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter | Qt::AlignAbsolute);
}

}  // namespace

FigureModel::FigureModel(FigureTable& table, LocaleStyle style) : table_(table), style_(std::move(style)) {
  TakeAnew();
}

void FigureModel::TakeAnew() {
  beginResetModel();
  in_trouble_ = false;
  decimals_.resize(table_.Reader().Description().fields.size(), 0);
  endResetModel();
}

void FigureModel::ShowAnew() {
  in_trouble_ = false;
  const int rows = rowCount({});
  const int columns = columnCount({});
  if (rows == 0 || columns == 0) return;
  Q_EMIT dataChanged(index(0, 0), index(rows - 1, columns - 1));
}

void FigureModel::SetStyle(LocaleStyle style) {
  style_ = std::move(style);
  TakeAnew();
}

int FigureModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() || table_.Columns() == 0 ? 0 : table_.Rows();
}

int FigureModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() || table_.Rows() == 0 ? 0 : table_.Columns();
}

// --- Marks -----------------------------------------------------------------------------------------------------------

FigureModel::Key FigureModel::KeyOf(int row, int column) const {
  const application::FigureChange change{table_.Account(table_.PlaceOf(row, column).account).number,
                                         table_.DateOf(table_.PlaceOf(row, column)),
                                         table_.Field(table_.PlaceOf(row, column).field).number, 0};
  return {change.account, change.date, change.field};
}

// A sum is no figure that could have been typed.
const FigureModel::Marked* FigureModel::MarkOf(int row, int column) const {
  if (marks_.empty() || table_.Choice().level != table_.Reader().Description().data_level) return nullptr;
  const auto found = marks_.find(KeyOf(row, column));
  return found == marks_.end() ? nullptr : &found->second;
}

void FigureModel::Mark(int row, int column, const QString& typed, const Text& words) {
  const bool waits = false;
  marks_[KeyOf(row, column)] = {typed, words, waits};
  Q_EMIT dataChanged(index(row, column), index(row, column));
}

void FigureModel::MarkWaiting(const std::vector<application::FigureChange>& changes, const Text& words) {
  const auto gone = std::erase_if(marks_, [](const auto& mark) { return mark.second.waits; });
  const bool waits = true;
  for (const application::FigureChange& change : changes) {
    marks_[{change.account, change.date, change.field}] = {ToQt(TypedText(change.value, style_.numbers)), words, waits};
  }
  if (gone > 0 || !changes.empty()) ShowAnew();
}

void FigureModel::Unmark(int row, int column) {
  if (marks_.erase(KeyOf(row, column)) > 0) Q_EMIT dataChanged(index(row, column), index(row, column));
}

// --- Cells -----------------------------------------------------------------------------------------------------------

void FigureModel::Trouble(const Text& words) const {
  if (std::exchange(in_trouble_, true) || !trouble_listener_) return;
  QTimer::singleShot(0, this, [this, words] { trouble_listener_(words); });
}

Double FigureModel::ValueOf(int row, int column) const {
  if (in_trouble_) return 0;
  try {
    const Double value = table_.Value(row, column);
    NoteDecimals(column, value);
    return value;
  } catch (const Failure& failure) {
    Trouble(failure.Description());
    return 0;
  }
}

int FigureModel::DecimalsOf(int column) const {
  const auto field = static_cast<std::size_t>(table_.PlaceOf(0, column).field - 1);
  return field < decimals_.size() ? decimals_[field] : 0;
}

// The cells that have been drawn with fewer are drawn again, once for all that grow at a time.
void FigureModel::NoteDecimals(int column, Double value) const {
  const auto field = static_cast<std::size_t>(table_.PlaceOf(0, column).field - 1);
  const int needed = DecimalsNeeded(value);
  if (field >= decimals_.size() || needed <= decimals_[field]) return;
  decimals_[field] = needed;
  if (std::exchange(decimals_grew_, true)) return;
  auto* self = const_cast<FigureModel*>(this);  // NOLINT(cppcoreguidelines-pro-type-const-cast): told when this is over
  QTimer::singleShot(0, this, [self] {
    self->decimals_grew_ = false;
    self->ShowAnew();
  });
}

QString FigureModel::TextOf(int row, int column) const {
  const Double value = ValueOf(row, column);
  if (in_trouble_) return "?";
  return Upright(ToQt(NumberText(value, DecimalsOf(column), style_.numbers)));
}

QString FigureModel::Hint(int row, int column) const {
  if (const Marked* marked = MarkOf(row, column)) return ToQt(marked->words);
  return ToQt(table_.WhyNotTyped(row, column));
}

// What a screen reader says: the number alone would leave open which one it is.
QString FigureModel::SpokenText(int row, int column) const {
  const Marked* marked = MarkOf(row, column);
  const QString number = marked != nullptr           ? marked->typed + ", " + ToQt(marked->words)
                         : ValueOf(row, column) == 0 ? QString("0")
                                                     : TextOf(row, column);
  return QString("%1, %2: %3")
      .arg(ToQt(table_.RowHead(row, style_.dates)), ToQt(table_.ColumnHead(column, style_.dates)), number);
}

QVariant FigureModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const int row = index.row();
  const int column = index.column();
  const Marked* marked = MarkOf(row, column);
  switch (role) {
    case Qt::DisplayRole:
      return marked != nullptr ? marked->typed : TextOf(row, column);
    case Qt::EditRole:
      return marked != nullptr ? marked->typed : ToQt(TypedText(ValueOf(row, column), style_.numbers));
    case Qt::TextAlignmentRole:
      return RightAligned();
    case Qt::ForegroundRole:
      return marked == nullptr && ValueOf(row, column) == 0 ? QVariant(FaintText()) : QVariant();
    case Qt::ToolTipRole:
      return Hint(row, column);
    case Qt::AccessibleTextRole:
      return SpokenText(row, column);
    case kMarkRole:
      return marked != nullptr ? QVariant(ToQt(marked->words)) : QVariant();
    default:
      return {};
  }
}

QVariant FigureModel::headerData(int section, Qt::Orientation orientation, int role) const {
  const bool is_column = orientation == Qt::Horizontal;
  if (role == Qt::TextAlignmentRole) {
    return is_column ? RightAligned() : static_cast<int>(Qt::AlignLeading | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole && role != Qt::ToolTipRole && role != Qt::AccessibleTextRole) return {};
  return ToQt(is_column ? table_.ColumnHead(section, style_.dates) : table_.RowHead(section, style_.dates));
}

Qt::ItemFlags FigureModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  const bool can_be_typed = index.isValid() && writable_ && table_.WhyNotTyped(index.row(), index.column()).empty();
  if (can_be_typed) flags |= Qt::ItemIsEditable;
  return flags;
}

bool FigureModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid() || !(flags(index) & Qt::ItemIsEditable)) return false;
  const QString typed = value.toString();
  const ReadFigure read = ParseFigure(FromQt(typed), style_.numbers);
  if (!read.value) {
    Mark(index.row(), index.column(), typed, read.why);
    return false;
  }
  Unmark(index.row(), index.column());
  if (*read.value != ValueOf(index.row(), index.column()) && typed_) typed_(index.row(), index.column(), *read.value);
  return true;
}

// --- Totals ----------------------------------------------------------------------------------------------------------

void TotalsModel::TakeAnew() {
  beginResetModel();
  endResetModel();
}

void TotalsModel::ShowAnew() {
  if (columnCount({}) > 0) Q_EMIT dataChanged(index(0, 0), index(0, columnCount({}) - 1));
}

int TotalsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : figures_.columnCount({});
}

QVariant TotalsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const auto total = totals_.Of(index.column());
  if (role == Qt::TextAlignmentRole) return RightAligned();
  if (role == Qt::ToolTipRole) return QString(total ? kSumWords : "The rows are being added up");
  if (role == Qt::ForegroundRole && total && *total == 0) return FaintText();
  if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return {};
  if (!total) return QString(kAddingWords);
  if (!std::isfinite(*total)) return QString("too large");
  const int decimals = std::max(figures_.DecimalsOf(index.column()), std::min(DecimalsNeeded(*total), kMostDecimals));
  return Upright(ToQt(NumberText(*total, decimals, figures_.Style().numbers)));
}

QVariant TotalsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation == Qt::Horizontal) return figures_.headerData(section, orientation, role);
  if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) return QString("Total");
  if (role == Qt::ToolTipRole) return QString(kSumWords);
  if (role == Qt::TextAlignmentRole) return static_cast<int>(Qt::AlignLeading | Qt::AlignVCenter);
  return {};
}

}  // namespace tallybook::desktop
