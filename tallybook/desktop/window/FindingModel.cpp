#include "tallybook/desktop/window/FindingModel.h"

#include <QtGui/QFont>
#include <QtGui/QIcon>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyle>
#include <algorithm>
#include <array>
#include <span>

#include "tallybook/application/Counts.h"
#include "tallybook/desktop/host/FigureNames.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

using inspect::Effect;
using inspect::Finding;

struct Column {
  const char* head;
  int letters;
  bool is_number;
  QString (*cell)(const Finding& finding);
  bool (*is_less)(const Finding& one, const Finding& other);
};

QString CountIn(long long count) {
  return ToQt(application::WithCommas(count));
}

template <auto member>
bool IsLess(const Finding& one, const Finding& other) {
  return one.*member < other.*member;
}

constexpr Column kLine = {"Line", 8, true, [](const Finding& finding) { return CountIn(finding.line); },
                          IsLess<&Finding::line>};
constexpr Column kRecord = {
    "Record", 8, true, [](const Finding& finding) { return finding.record == 0 ? QString() : CountIn(finding.record); },
    IsLess<&Finding::record>};
constexpr Column kColumnName = {"Column", 12, false,
                                [](const Finding& finding) { return ShownLine(finding.column_name); },
                                IsLess<&Finding::column_name>};
constexpr Column kByte = {"Byte", 9, true,
                          [](const Finding& finding) { return finding.offset ? CountIn(*finding.offset) : QString(); },
                          IsLess<&Finding::offset>};
constexpr Column kAccount = {"Account", 10, false,
                             [](const Finding& finding) { return ShownLine(finding.account.value_or("")); },
                             IsLess<&Finding::account>};
constexpr Column kField = {
    "Field", 7, true,
    [](const Finding& finding) { return finding.field ? QString::number(*finding.field) : QString(); },
    IsLess<&Finding::field>};
constexpr Column kDate = {"Date", 14, false,
                          [](const Finding& finding) { return finding.date ? DateIn(*finding.date) : QString(); },
                          IsLess<&Finding::date>};
constexpr Column kText = {"Text", 18, false, [](const Finding& finding) { return AsWritten(ShownLine(finding.text)); },
                          IsLess<&Finding::text>};
constexpr Column kValue = {"Value", 11, true, kText.cell, kText.is_less};
constexpr Column kEffect = {"The import", 23, false,
                            [](const Finding& finding) { return ToQt(EffectWords(finding.effect)); },
                            IsLess<&Finding::effect>};
constexpr Column kReason = {"Reason", 50, false, [](const Finding& finding) { return ShownLine(finding.reason); },
                            IsLess<&Finding::reason>};
constexpr Column kHelp = {"What would help", 30, false, [](const Finding& finding) { return ShownLine(finding.help); },
                          IsLess<&Finding::help>};

constexpr std::array kOfText = {kLine, kRecord, kColumnName, kText, kEffect, kReason, kHelp};
constexpr std::array kOfExchange = {kByte, kAccount, kField, kDate, kValue, kEffect, kReason, kHelp};

std::span<const Column> ColumnsOf(const FileCheckResult* result) {
  if (result != nullptr && !result->IsOfText()) return kOfExchange;
  return kOfText;
}

const Column& ColumnAt(const FileCheckResult* result, int column) {
  return ColumnsOf(result)[static_cast<std::size_t>(column)];
}

QStyle::StandardPixmap PictureOf(Effect effect) {
  constexpr std::array kPictures = {QStyle::SP_MessageBoxCritical, QStyle::SP_MessageBoxCritical,
                                    QStyle::SP_MessageBoxWarning, QStyle::SP_MessageBoxInformation};
  return kPictures[static_cast<std::size_t>(effect)];
}

QVariant FontOf(const Finding& finding) {
  if (finding.effect != Effect::kNote) return {};
  QFont font = QApplication::font();
  font.setItalic(true);
  return font;
}

}  // namespace

void FindingModel::SetResult(const FileCheckResult* result) {
  beginResetModel();
  result_ = result;
  effect_.reset();
  part_.clear();
  column_.reset();
  rows_.clear();
  const std::size_t count = result == nullptr ? 0 : result->findings.size();
  for (std::size_t index = 0; index < count; ++index) rows_.push_back(index);
  Order();
  endResetModel();
}

void FindingModel::Choose(std::optional<Effect> effect, const QString& part) {
  beginResetModel();
  effect_ = effect;
  part_ = part;
  rows_.clear();
  const std::size_t count = result_ == nullptr ? 0 : result_->findings.size();
  for (std::size_t index = 0; index < count; ++index) {
    const Finding& finding = result_->findings[index];
    const bool is_chosen = (!effect_ || finding.effect == *effect_) && HasPart(finding);
    if (is_chosen) rows_.push_back(index);
  }
  Order();
  endResetModel();
}

bool FindingModel::HasPart(const Finding& finding) const {
  return part_.isEmpty() || std::ranges::any_of(ColumnsOf(result_), [&](const Column& column) {
           return column.cell(finding).contains(part_, Qt::CaseInsensitive);
         });
}

void FindingModel::SortBy(std::optional<int> column, Qt::SortOrder order) {
  beginResetModel();
  column_ = column;
  order_ = order;
  Order();
  endResetModel();
}

void FindingModel::Order() {
  std::ranges::sort(rows_);
  if (!column_) {
    const auto is_wrong = [&](std::size_t row) { return result_->findings[row].effect != Effect::kNote; };
    std::stable_partition(rows_.begin(), rows_.end(), is_wrong);
    return;
  }
  const auto is_less = ColumnAt(result_, *column_).is_less;
  std::ranges::stable_sort(rows_, [&](std::size_t one, std::size_t other) {
    const Finding& first = result_->findings[order_ == Qt::AscendingOrder ? one : other];
    const Finding& second = result_->findings[order_ == Qt::AscendingOrder ? other : one];
    return is_less(first, second);
  });
}

const Finding& FindingModel::At(int row) const {
  return result_->findings[rows_[static_cast<std::size_t>(row)]];
}

std::vector<int> FindingModel::Widths() const {
  std::vector<int> widths;
  for (const Column& column : ColumnsOf(result_).first(ColumnsOf(result_).size() - 1)) widths.push_back(column.letters);
  return widths;
}

int FindingModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int FindingModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(ColumnsOf(result_).size());
}

QVariant FindingModel::data(const QModelIndex& index, int role) const {
  const Finding& finding = At(index.row());
  const Column& column = ColumnAt(result_, index.column());
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return column.cell(finding);
    case Qt::TextAlignmentRole:
      return static_cast<int>((column.is_number ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter);
    case Qt::DecorationRole:
      return column.cell == kEffect.cell ? QVariant(QApplication::style()->standardIcon(PictureOf(finding.effect)))
                                         : QVariant();
    case Qt::FontRole:
      return FontOf(finding);
    default:
      return {};
  }
}

QVariant FindingModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  const Column& column = ColumnAt(result_, section);
  if (role == Qt::TextAlignmentRole)
    return static_cast<int>((column.is_number ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter);
  if (role == Qt::ToolTipRole) return QString("Sorts by this (Ctrl+%1)").arg(section + 1);
  return role == Qt::DisplayRole ? QVariant(column.head) : QVariant();
}

}  // namespace tallybook::desktop
