#include "tallybook/desktop/figures/FigureGrid.h"

#include <QtCore/QTimer>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QStyledItemDelegate>
#include <QtWidgets/QToolTip>
#include <algorithm>
#include <utility>

#include "tallybook/desktop/figures/FigureModel.h"

namespace tallybook::desktop {

namespace {

// Beyond so many columns each has the same width: nobody reads their heads one by one, and setting them takes long.
constexpr int kMostFittedColumns = 120;
constexpr int kLeastTarget = 24;  // what a pointer hits easily
constexpr int kDigitsOfAColumn = 11;
constexpr int kMostLettersOfAHead = 24;
constexpr int kMostLettersOfARow = 36;

class FigureDelegate final : public QStyledItemDelegate {
 public:
  // `move` goes to another cell behind a change; `widen` is told when a number does not fit into its column.
  FigureDelegate(QObject* parent, std::function<void(int, int)> move, std::function<void(int, int)> widen)
      : QStyledItemDelegate(parent), move_(std::move(move)), widen_(std::move(widen)) {}

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& /*option*/,
                        const QModelIndex& index) const override {
    auto* editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignRight | Qt::AlignAbsolute);
    editor->setAccessibleName(index.data(Qt::AccessibleTextRole).toString());
    return editor;
  }

  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    auto* line = static_cast<QLineEdit*>(editor);
    // Asked again whenever others have written: what was typed by then stays.
    if (!line->isModified()) line->setText(index.data(Qt::EditRole).toString());
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    model->setData(index, static_cast<QLineEdit*>(editor)->text(), Qt::EditRole);
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QString text = index.data(Qt::DisplayRole).toString();
    const int needed = option.fontMetrics.horizontalAdvance(text) + 4 * Margin(option);
    if (needed > option.rect.width()) widen_(index.column(), needed);
    QStyledItemDelegate::paint(painter, option, index);
    if (index.data(kMarkRole).isValid()) PaintMark(*painter, option);
  }

 protected:
  bool eventFilter(QObject* editor, QEvent* event) override {
    if (event->type() == QEvent::KeyPress && Leaves(*static_cast<QKeyEvent*>(event), editor)) return true;
    return QStyledItemDelegate::eventFilter(editor, event);
  }

 private:
  static int Margin(const QStyleOptionViewItem& option) { return std::max(2, option.fontMetrics.height() / 4); }

  // A frame and a sign, so that it is not told by colour alone.
  static void PaintMark(QPainter& painter, const QStyleOptionViewItem& option) {
    painter.save();
    const bool selected = (option.state & QStyle::State_Selected) != 0;
    const bool dark = option.palette.color(QPalette::Base).lightness() < 128;
    const QColor on_ground = dark ? QColor(255, 140, 120) : QColor(176, 32, 16);
    painter.setPen(QPen(selected ? option.palette.color(QPalette::HighlightedText) : on_ground, 2));
    painter.drawRect(option.rect.adjusted(1, 1, -2, -2));
    // Numbers stand at the right whichever way the words go.
    painter.drawText(option.rect.adjusted(Margin(option), 0, 0, 0),
                     static_cast<int>(Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter), "!");
    painter.restore();
  }

  // Whether the key ends the change and goes to a cell beside.
  bool Leaves(const QKeyEvent& key, QObject* editor) {
    switch (key.key()) {
      case Qt::Key_Return:
      case Qt::Key_Enter:
      case Qt::Key_Down:
        return Leave(editor, 1, 0);
      case Qt::Key_Up:
        return Leave(editor, -1, 0);
      case Qt::Key_Tab:
        return Leave(editor, 0, 1);
      case Qt::Key_Backtab:
        return Leave(editor, 0, -1);
      default:
        return false;
    }
  }
  bool Leave(QObject* editor, int rows, int columns) {
    auto* widget = static_cast<QWidget*>(editor);
    Q_EMIT commitData(widget);
    Q_EMIT closeEditor(widget, NoHint);
    move_(rows, columns);
    return true;
  }

  std::function<void(int, int)> move_;
  std::function<void(int, int)> widen_;
};

// The head of the current cell is bold.
QFontMetrics HeadMetrics(const QWidget& head) {
  QFont bold = head.font();
  bold.setBold(true);
  return QFontMetrics(bold);
}

// Heads that are too long end in an ellipsis, whichever side they stand on; the whole shows as a hint.
class HeadView final : public QHeaderView {
 public:
  using QHeaderView::QHeaderView;

 protected:
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override {
    QHeaderView::initStyleOptionForIndex(option, section);
    const int margins = 2 * style()->pixelMetric(QStyle::PM_HeaderMargin, option, this);
    const int width = orientation() == Qt::Horizontal ? sectionSize(section) : this->width();
    option->text = HeadMetrics(*this).elidedText(option->text, Qt::ElideRight, width - margins);
  }
};

}  // namespace

FigureGrid::FigureGrid(QWidget* parent) : QTableView(parent) {
  setItemDelegate(new FigureDelegate(
      this, [this](int rows, int columns) { Move(rows, columns); },
      [this](int column, int width) { WidenFor(column, width); }));
  setEditTriggers(AnyKeyPressed | EditKeyPressed | DoubleClicked);
  setHorizontalScrollMode(ScrollPerItem);
  setVerticalScrollMode(ScrollPerItem);
  setAlternatingRowColors(true);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  setAccessibleName("Figures");
  setFrameShape(NoFrame);
  setHorizontalHeader(new HeadView(Qt::Horizontal, this));
  setVerticalHeader(new HeadView(Qt::Vertical, this));
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  for (QHeaderView* heads : {horizontalHeader(), verticalHeader()}) {
    heads->setSectionsClickable(true);
    heads->setHighlightSections(true);
  }
}

CellRange FigureGrid::Selected() const {
  CellRange range{-1, -1, -1, -1};
  if (selectionModel() == nullptr) return range;
  for (const QItemSelectionRange& part : selectionModel()->selection()) {
    const bool is_first = range.first_row < 0;
    range.first_row = is_first ? part.top() : std::min(range.first_row, part.top());
    range.first_column = is_first ? part.left() : std::min(range.first_column, part.left());
    range.last_row = std::max(range.last_row, part.bottom());
    range.last_column = std::max(range.last_column, part.right());
  }
  if (range.first_row < 0 && currentIndex().isValid()) {
    range = {currentIndex().row(), currentIndex().column(), currentIndex().row(), currentIndex().column()};
  }
  return range;
}

void FigureGrid::FitColumns() {
  const QFontMetrics metrics = fontMetrics();
  const int padding = metrics.height();
  const int least = metrics.horizontalAdvance('0') * kDigitsOfAColumn + padding;
  const int most = metrics.averageCharWidth() * kMostLettersOfAHead + padding;
  const int row_height = std::max(metrics.height() * 3 / 2 + 2, kLeastTarget);
  verticalHeader()->setDefaultSectionSize(row_height);
  horizontalHeader()->setFixedHeight(row_height);
  verticalHeader()->setMaximumWidth(metrics.averageCharWidth() * kMostLettersOfARow + padding);
  const int columns = model() == nullptr ? 0 : model()->columnCount();
  const auto width_of = [&](int column) {
    const QString head = model()->headerData(column, Qt::Horizontal).toString();
    return std::clamp(HeadMetrics(*horizontalHeader()).horizontalAdvance(head) + padding, least, most);
  };
  horizontalHeader()->setDefaultSectionSize(columns == 0 ? least : width_of(0));
  if (columns > kMostFittedColumns) return;
  for (int column = 0; column < columns; ++column) setColumnWidth(column, width_of(column));
}

// Not while it is painted.
void FigureGrid::WidenFor(int column, int width) {
  QTimer::singleShot(0, this, [this, column, width] {
    if (model() != nullptr && column < model()->columnCount() && columnWidth(column) < width)
      setColumnWidth(column, width);
  });
}

void FigureGrid::GoTo(int row, int column) {
  if (model() == nullptr || model()->rowCount() == 0 || model()->columnCount() == 0) return;
  const QModelIndex index =
      model()->index(std::clamp(row, 0, model()->rowCount() - 1), std::clamp(column, 0, model()->columnCount() - 1));
  setCurrentIndex(index);
  // Qt leaves the selection alone while Ctrl is held down, as it is for many ways here.
  selectionModel()->select(index, QItemSelectionModel::ClearAndSelect);
  scrollTo(index);
}

void FigureGrid::TakeWhatIsTyped() {
  if (state() != EditingState) return;
  for (auto* editor : viewport()->findChildren<QLineEdit*>()) {
    if (!editor->isVisible()) continue;  // one that is about to go
    commitData(editor);
    // What was written may have shown the lists anew, which lets go of it.
    if (editor->isVisible()) QTableView::closeEditor(editor, QAbstractItemDelegate::NoHint);
  }
}

void FigureGrid::Move(int rows, int columns) {
  GoTo(currentIndex().row() + rows, currentIndex().column() + columns);
}

void FigureGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  // Escape in a cell whose text could not be read gives the book's figure back.
  if (hint == QAbstractItemDelegate::RevertModelCache && currentIndex().isValid()) {
    if (auto* figures = dynamic_cast<FigureModel*>(model()))
      figures->Unmark(currentIndex().row(), currentIndex().column());
  }
  QTableView::closeEditor(editor, hint);
}

QSize FigureGrid::sizeHint() const {
  const int unit = fontMetrics().height();
  return {unit * 48, unit * 20};
}

void FigureGrid::Refuse() {
  if (!currentIndex().isValid() || !refused_) return;
  const QString why = currentIndex().data(Qt::ToolTipRole).toString();
  QToolTip::showText(viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft()), why, viewport());
  refused_(why);
}

void FigureGrid::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) return copy_ ? copy_() : void();
  if (event->matches(QKeySequence::Paste)) return paste_ ? paste_() : void();
  if (event->matches(QKeySequence::Delete)) return clear_ ? clear_() : void();
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (enter && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier))) {
    return Move((event->modifiers() & Qt::ShiftModifier) != 0 ? -1 : 1, 0);
  }
  if (event->key() == Qt::Key_Escape && currentIndex().isValid() && currentIndex().data(kMarkRole).isValid()) {
    static_cast<FigureModel*>(model())->Unmark(currentIndex().row(), currentIndex().column());
    return;
  }
  const QString text = event->text();
  const bool types =
      !text.isEmpty() && text.front().isPrint() && !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier));
  const bool can_be_typed = currentIndex().isValid() && (currentIndex().flags() & Qt::ItemIsEditable) != 0;
  if ((types || event->key() == Qt::Key_F2) && !can_be_typed) return Refuse();
  QTableView::keyPressEvent(event);
}

}  // namespace tallybook::desktop
