#include "tallybook/desktop/host/FigureListPane.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>
#include <QVBoxLayout>
#include <utility>

#include "tallybook/application/Counts.h"
#include "tallybook/desktop/host/FigureNames.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/RowsView.h"

namespace tallybook::desktop {

namespace {

using application::FigureLine;
using application::FigureList;

constexpr int kAll = -1;  // of a choice of fields or files
constexpr int kFieldLetters = 24;

QString CountedFigures(long long count) {
  return QString::fromStdString(application::WithCommas(count));
}

QComboBox* NewFilter(const char* name, const QString& all) {
  auto* const box = new QComboBox;
  box->setObjectName(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  box->setMinimumContentsLength(kFieldLetters);
  box->addItem(all, kAll);
  return box;
}

bool IsFigure(FigureList::Column column) {
  return column == FigureList::Column::kFirst || column == FigureList::Column::kSecond ||
         column == FigureList::Column::kDifference;
}

Qt::Alignment AlignmentOf(int column) {
  const bool is_figure = IsFigure(static_cast<FigureList::Column>(column));
  return (is_figure ? Qt::AlignRight : Qt::AlignLeading) | Qt::AlignVCenter;
}

}  // namespace

// The columns are those of FigureList::Column.
class FigureListPane::Model final : public QAbstractTableModel {
 public:
  Model(const Shown& shown, QObject* parent) : QAbstractTableModel(parent), shown_(shown) {
    heads_ = QStringList{"Account", "Date", "Field"} + shown_.heads + QStringList{"File"};
  }

  // The list has others, or has them in another order.
  void Reset() {
    beginResetModel();
    endResetModel();
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(shown_.list.Size());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(heads_.size());
  }
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(index.column()));
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    const FigureLine& line = shown_.list.At(static_cast<std::size_t>(index.row()));
    return TextOf(line, static_cast<FigureList::Column>(index.column()));
  }
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (orientation != Qt::Horizontal) return {};
    if (role == Qt::TextAlignmentRole) return static_cast<int>(AlignmentOf(section));
    return role == Qt::DisplayRole ? QVariant(heads_.at(section)) : QVariant();
  }

 private:
  [[nodiscard]] QString TextOf(const FigureLine& line, FigureList::Column column) const {
    switch (column) {
      case FigureList::Column::kAccount:
        return AccountName(shown_.book, line.account_position);
      case FigureList::Column::kDate:
        return DateIn(line.date);
      case FigureList::Column::kField:
        return FieldName(shown_.book, line.field_position);
      case FigureList::Column::kFirst:
        return FigureIn(line.first);
      case FigureList::Column::kSecond:
        return FigureIn(line.second);
      case FigureList::Column::kDifference:
        return FigureIn(line.Difference());
      case FigureList::Column::kFile:
        return AsWritten(shown_.files[line.file]);
    }
    return {};
  }

  const Shown& shown_;
  QStringList heads_;
};

class FigureListPane::Table final : public QTableView {
 public:
  explicit Table(FigureListPane& pane) : pane_(pane) {
    connect(this, &QTableView::doubleClicked, this, [this] {
      if (pane_.chosen_) pane_.chosen_();
    });
  }

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enters && pane_.chosen_ && currentIndex().isValid()) return pane_.chosen_();
    QTableView::keyPressEvent(event);
  }

 private:
  FigureListPane& pane_;
};

FigureListPane::FigureListPane(Shown shown, QWidget* parent) : QWidget(parent), shown_(std::move(shown)) {
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(NewFilters());
  BuildTable();
  layout->addWidget(table_);
  count_ = new QLabel;
  count_->setObjectName("count");
  count_->setTextFormat(Qt::PlainText);
  count_->setWordWrap(true);
  layout->addWidget(count_);
  setFocusProxy(table_);
  Choose();
}

FigureListPane::~FigureListPane() = default;

QWidget* FigureListPane::NewFilters() {
  account_ = new QLineEdit;
  account_->setObjectName("account");
  account_->setClearButtonEnabled(true);
  field_ = NewFilter("field", "All fields");
  for (const Integer position : shown_.fields)
    field_->addItem(FieldName(shown_.book, position), static_cast<int>(position));
  file_ = NewFilter("file", "All files");
  for (std::size_t file = 0; file < shown_.files.size(); ++file)
    file_->addItem(shown_.files[file], static_cast<int>(file));
  auto* const filters = new QWidget;
  auto* const row = new QHBoxLayout(filters);
  row->setContentsMargins(0, 0, 0, 0);
  const auto add = [row](const QString& words, QWidget* part, int stretch) {
    auto* const label = new QLabel(words);
    label->setBuddy(part);
    part->setAccessibleName(QString(words).remove('&'));
    row->addWidget(label);
    row->addWidget(part, stretch);
  };
  add("&Account", account_, 2);
  add("&Field", field_, 1);
  add("Fil&e", file_, 1);
  connect(account_, &QLineEdit::textChanged, this, [this] { Choose(); });
  for (QComboBox* const box : {field_, file_}) connect(box, &QComboBox::activated, this, [this] { Choose(); });
  return filters;
}

void FigureListPane::BuildTable() {
  model_ = new Model(shown_, this);
  table_ = new Table(*this);
  table_->setObjectName("changes");
  table_->setAccessibleName(shown_.name);
  table_->setModel(model_);
  ShowAsRows(*table_, {28, 14, 22, 14, 14, 14});
  table_->setTextElideMode(Qt::ElideMiddle);
  QHeaderView* const heads = table_->horizontalHeader();
  heads->setSectionsClickable(true);
  connect(heads, &QHeaderView::sectionClicked, this, [this](int column) { SortBy(column); });
}

void FigureListPane::Choose() {
  FigureList::Filter filter;
  filter.account = FromQt(account_->text());
  const int field = field_->currentData().toInt();
  if (field != kAll) filter.field_position = static_cast<Integer>(field);
  const int file = file_->currentData().toInt();
  if (file != kAll) filter.file = static_cast<std::uint32_t>(file);
  shown_.list.Choose(filter);
  ShowAnew();
  Count();
}

// A click on the head that sorts turns the order round.
void FigureListPane::SortBy(int column) {
  descending_ = column == sorted_by_ && !descending_;
  sorted_by_ = column;
  shown_.list.Sort(static_cast<FigureList::Column>(column), descending_);
  table_->horizontalHeader()->setSortIndicatorShown(true);
  table_->horizontalHeader()->setSortIndicator(column, descending_ ? Qt::DescendingOrder : Qt::AscendingOrder);
  ShowAnew();
}

void FigureListPane::ShowAnew() {
  model_->Reset();
  table_->setCurrentIndex(model_->index(0, 0));
}

void FigureListPane::Count() {
  const FigureList& list = shown_.list;
  QString said = QString("%1 of %2 figures, together %3")
                     .arg(CountedFigures(static_cast<long long>(list.Size())), CountedFigures(list.Figures()),
                          FigureIn(list.NetDifference()));
  if (list.NotKept() > 0) said += QString("; the last %1 are not listed").arg(CountedFigures(list.NotKept()));
  count_->setText(said);
}

const FigureLine* FigureListPane::Current() const {
  const QModelIndex index = table_->currentIndex();
  return index.isValid() ? &shown_.list.At(static_cast<std::size_t>(index.row())) : nullptr;
}

}  // namespace tallybook::desktop
