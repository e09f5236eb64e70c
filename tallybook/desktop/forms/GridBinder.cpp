#include "tallybook/desktop/forms/GridBinder.h"

#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QScrollBar>
#include <QTableView>
#include <QWheelEvent>
#include <algorithm>

#include "forms/Grid.h"
#include "forms/Keys.h"
#include "tallybook/desktop/forms/Fonts.h"
#include "tallybook/desktop/forms/GridModel.h"
#include "views/View.h"

namespace tallybook::desktop {

class GridTable : public QTableView {
 public:
  explicit GridTable(QWidget* parent) : QTableView(parent) {
    setEditTriggers(NoEditTriggers);
    setSelectionMode(NoSelection);
    setTabKeyNavigation(false);
    setWordWrap(false);
    setVerticalScrollMode(ScrollPerItem);
    setHorizontalScrollMode(ScrollPerPixel);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    horizontalHeader()->setMinimumSectionSize(1);
    horizontalHeader()->setHighlightSections(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);  // the form counts with all of the height
  }

  [[nodiscard]] QSize sizeHint() const override { return minimumSize(); }

  // Scrolls by no more than is asked of the grid: Qt would bring a cell that is clicked into sight by itself.
  void scrollTo(const QModelIndex& /*index*/, ScrollHint /*hint*/) override {}
  using QTableView::sizeHintForColumn;
  using QTableView::updateGeometries;

 protected:
  // The wheel is the form's, which hears it before and scrolls by the grid's own rules.
  void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

GridBinder::GridBinder(Grid& grid, QWidget& parent)
    : ControlBinder(grid, *new GridTable(&parent)),
      grid_(grid),
      table_(static_cast<GridTable&>(Widget())),
      model_(*new GridModel(grid, &table_)) {
  table_.setModel(&model_);
  QObject::connect(&table_, &QTableView::pressed, &Receiver(), [this](const QModelIndex& index) {
    User([&] { grid_.UserClick(index.row() + grid_.FixedRows(), index.column()); });
    const Following following(*this);
    FollowCurrent();
  });
  QObject::connect(table_.horizontalHeader(), &QHeaderView::sectionPressed, &Receiver(), [this](int section) {
    User([&] {
      if (grid_.FixedRows() > 0) grid_.UserClick(0, section);
    });
  });
  QObject::connect(table_.verticalScrollBar(), &QScrollBar::valueChanged, &Receiver(),
                   [this](int value) { User([&] { grid_.UserScroll(value + grid_.FixedRows()); }); });
  for (Event<>* const moved : {&grid.GotFocus, &grid.LostFocus})
    moved->ConnectWhile(Life(), [this] {
      const Following following(*this);
      FollowCurrent();
    });
  // After a change of size the last page may begin at another row.
  QObject::connect(table_.verticalScrollBar(), &QScrollBar::rangeChanged, &Receiver(), [this] {
    const Following following(*this);
    FollowScroll();
  });
}

GridBinder::~GridBinder() {
  model_.LetGo();
}

void GridBinder::SetLeastSize(const views::Part& part) {
  MeasureRows();
  const int frame = 2 * table_.frameWidth();
  if (part.characters > 0) table_.setMinimumWidth(part.characters * CharacterWidth(table_) + frame);
  const int heads = grid_.FixedRows() > 0 && grid_.Rows() > 0 ? grid_.RowHeight(0) : 0;
  if (part.rows > 0) table_.setMinimumHeight(heads + part.rows * grid_.UsualRowHeight() + frame);
}

// With the line between rows. The form counts with the scroll bar's place there, so that it is kept free in any case.
void GridBinder::SetRoomForList(int height) {
  list_height_ = height + 1;
  table_.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  MeasureRows();
}

QLabel& GridBinder::CountMissing(const Text& text, QWidget& parent) {
  model_.SetMissing(text);
  count_label_ = new QLabel(&parent);
  count_label_->setObjectName(table_.objectName() + QStringLiteral("Count"));
  return *count_label_;
}

void GridBinder::CountAll() {
  if (count_label_ == nullptr) return;
  missing_.assign(static_cast<std::size_t>(grid_.Rows()), false);
  missing_count_ = 0;
  CountRows(grid_.FixedRows(), grid_.Rows() - 1);
}

void GridBinder::CountRows(Long first, Long last) {
  if (count_label_ == nullptr || missing_.size() != static_cast<std::size_t>(grid_.Rows())) return;
  for (Long row = std::max(first, grid_.FixedRows()); row <= last; ++row) {
    const auto place = missing_.begin() + row;
    missing_count_ -= *place ? 1 : 0;
    *place = model_.IsMissing(row);
    missing_count_ += *place ? 1 : 0;
  }
  ShowCount();
}

void GridBinder::ShowCount() {
  const QLocale locale;
  const Long rows = std::max(grid_.Rows() - grid_.FixedRows(), Long{0});
  count_label_->setText(
      QStringLiteral("%1 of %2 not sent").arg(locale.toString(missing_count_), locale.toString(rows)));
}

void GridBinder::MeasureRows() {
  const int font_height = table_.fontMetrics().height() + 2 * Unit(table_);
  grid_.SetCharacterWidth(CharacterWidth(table_));
  grid_.SetUsualRowHeight(std::max(font_height, list_height_));
}

// The cells begin within the frame; the scroll bar is the grid's.
QRect GridBinder::PlaceWithin(const QWidget& around) const {
  const int frame = table_.frameWidth();
  return ControlBinder::PlaceWithin(around).adjusted(frame, frame, -frame, -frame);
}

bool GridBinder::TakeKey(const KeyPress& press) {
  if (press.shift != 0 || !grid_.HasCurrentCell()) return true;
  const auto move = [this](Long row, Long column) {
    CarryOut([&] {
      grid_.MoveCurrent(std::clamp(row, grid_.FixedRows(), grid_.Rows() - 1),
                        std::clamp(column, grid_.FixedColumns(), grid_.Columns() - 1));
    });
  };
  const Long page = std::max(grid_.WholeRows() - 1, Long{1});
  switch (press.key) {
    case kUpKey:
      move(grid_.Row() - 1, grid_.Column());
      break;
    case kDownKey:
      move(grid_.Row() + 1, grid_.Column());
      break;
    case kLeftKey:
      move(grid_.Row(), grid_.Column() - 1);
      break;
    case kRightKey:
      move(grid_.Row(), grid_.Column() + 1);
      break;
    case kPageUpKey:
      move(grid_.Row() - page, grid_.Column());
      break;
    case kPageDownKey:
      move(grid_.Row() + page, grid_.Column());
      break;
    case kHomeKey:
      move(grid_.FixedRows(), grid_.Column());
      break;
    case kEndKey:
      move(grid_.Rows() - 1, grid_.Column());
      break;
    default:
      break;
  }
  return true;
}

void GridBinder::Follow(const Change& change) {
  const Following following(*this);
  switch (change.kind) {
    case Change::Kind::kRows:
      CountRows(change.first, change.last);
      return model_.TellRows(change.first, change.last);
    case Change::Kind::kSelection:
      return FollowCurrent();
    case Change::Kind::kScroll:
      FollowScroll();
      return HoldScroll();
    default:
      return FollowAll();
  }
}

void GridBinder::FollowAll() {
  if (!grid_.Redraw()) return;
  const bool has_heads = grid_.FixedRows() > 0 && grid_.Rows() > 0;
  table_.horizontalHeader()->setVisible(has_heads);
  if (has_heads) table_.horizontalHeader()->setFixedHeight(grid_.RowHeight(0));
  table_.verticalHeader()->setDefaultSectionSize(grid_.UsualRowHeight());
  if (model_.rowCount({}) != grid_.Rows() - grid_.FixedRows() || model_.columnCount({}) != grid_.Columns())
    model_.Reset();
  else
    model_.TellRows(0, grid_.Rows() - 1);
  CountAll();
  FollowColumns();
  table_.updateGeometries();
  FollowCurrent();
  FollowScroll();
}

void GridBinder::FollowColumns() {
  bool any_is_free = false;
  for (Long column = 0; column < grid_.Columns(); ++column) {
    const Long width = grid_.ColumnWidth(column);
    const bool is_last = column == grid_.Columns() - 1;
    any_is_free = any_is_free || width == 0;
    if (width > 0)
      table_.setColumnWidth(column, width);
    else if (!is_last)
      table_.setColumnWidth(column, table_.sizeHintForColumn(column) + 2 * Unit(table_));
  }
  // What the form leaves to the renderer: the first columns as wide as their texts, the last one the rest.
  table_.horizontalHeader()->setStretchLastSection(any_is_free);
}

void GridBinder::FollowCurrent() {
  const QModelIndex current =
      grid_.HasCurrentCell() ? model_.index(grid_.Row() - grid_.FixedRows(), grid_.Column()) : QModelIndex();
  // A grid that only shows has no row of its own as long as one is elsewhere.
  const bool shows_row = list_height_ > 0 || grid_.HasFocus();
  table_.selectionModel()->setCurrentIndex(
      current,
      shows_row ? QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows : QItemSelectionModel::Clear);
}

void GridBinder::FollowScroll() {
  if (grid_.Rows() > grid_.FixedRows()) table_.verticalScrollBar()->setValue(grid_.TopRow() - grid_.FixedRows());
}

// A table ends with its last row at its lower edge. Where the grid would go farther, it is told that it has not.
void GridBinder::HoldScroll() {
  if (!table_.isVisible()) return;
  const Long top = table_.verticalScrollBar()->value() + grid_.FixedRows();
  if (top != grid_.TopRow() && top < grid_.Rows()) CarryOut([&] { grid_.SetTopRow(top); });
}

}  // namespace tallybook::desktop
