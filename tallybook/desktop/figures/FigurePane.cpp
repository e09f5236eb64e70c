#include "tallybook/desktop/figures/FigurePane.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolButton>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "base/Failure.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigureTotals.h"
#include "tallybook/desktop/figures/FigureWriter.h"
#include "tallybook/desktop/figures/PastePreview.h"
#include "tallybook/desktop/forms/ElidedBox.h"

namespace tallybook::desktop {

namespace {

using application::Counted;
using application::WithCommas;

constexpr std::chrono::milliseconds kWatch{1000};        // between looks for what others have changed
constexpr std::chrono::milliseconds kRetry{300};         // between tries of what waits
constexpr std::chrono::milliseconds kSelectionWait{60};  // behind the last step of a selection that grows
constexpr std::chrono::milliseconds kTotalsPart{8};      // of adding up at a time
constexpr qint64 kRestAfter = 1500;                      // milliseconds without a cell being asked for
constexpr long long kMostAddedUp = 50'000;               // cells of a selection that are added up
constexpr long long kMostCopied = 1'000'000;
constexpr int kLeastTarget = 24;  // what a pointer hits easily

constexpr std::array kViewNames = {"One account", "One date", "One field"};

long long CellsOf(const CellRange& range) {
  if (range.first_row < 0) return 0;
  return static_cast<long long>(range.last_row - range.first_row + 1) * (range.last_column - range.first_column + 1);
}

// Words that may be longer than the room they have.
class Elided final : public QLabel {
 public:
  using QLabel::QLabel;
  [[nodiscard]] QSize minimumSizeHint() const override { return {0, QLabel::minimumSizeHint().height()}; }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    painter.drawText(rect(), static_cast<int>(Qt::AlignLeading | Qt::AlignVCenter),
                     fontMetrics().elidedText(text(), Qt::ElideRight, width()));
  }
};

QComboBox* NewChoice(const QString& name) {
  auto* box = new ElidedBox;
  box->setAccessibleName(name);
  box->setToolTip(name);
  box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
  return box;
}

QToolButton* NewStep(Qt::ArrowType arrow, const QString& name) {
  auto* button = new QToolButton;
  button->setArrowType(arrow);
  button->setAutoRaise(true);
  button->setMinimumSize(kLeastTarget, kLeastTarget);
  button->setAccessibleName(name);
  button->setToolTip(name);
  return button;
}

}  // namespace

class FigurePane::Parts {
 public:
  Parts(FigurePane& pane, HostApp& app, LocaleStyle style);

  void Open(std::unique_ptr<BookReader> reader);
  void CloseBook();
  void Choose(const FigureChoice& choice);
  void ShowChoice();
  void ShowBookAnew();
  void Refresh();
  void FollowLists();
  void Type(int row, int column, Double value);
  void Write();
  void Wait(const QString& words);
  void WriteBlock(const PasteBlock& block, const QString& what);
  bool Agreed(const PasteBlock& block, const QString& what);
  void Copy(bool with_heads);
  void Lay(const Text& cells, const QString& what);
  void Watch();
  void AddUp();
  void AddUpSelection();
  void Say(const QString& words) const {
    if (message) message(words);
  }
  void TellState() const {
    if (state) state();
  }
  void TellShown() const {
    if (shown) shown();
  }

  FigurePane& pane;
  HostApp& app;
  LocaleStyle style;

  std::unique_ptr<BookReader> reader;
  std::unique_ptr<FigureTable> table;
  std::unique_ptr<FigureTotals> totals;
  std::unique_ptr<FigureWriter> writer;
  std::unique_ptr<FigureModel> model;
  std::unique_ptr<TotalsModel> totals_model;

  QComboBox* view = nullptr;
  QLabel* subject = nullptr;
  QComboBox* field = nullptr;
  QToolButton* back = nullptr;
  QToolButton* when = nullptr;
  QToolButton* forth = nullptr;
  QLabel* stretch_label = nullptr;
  QComboBox* stretch = nullptr;
  QComboBox* level = nullptr;
  FigureGrid* grid = nullptr;
  QTableView* totals_row = nullptr;

  QTimer watch;
  QTimer retry;
  QTimer adding;
  QTimer selection_wait;
  QElapsedTimer since_use;
  QString selection_text;
  QString waiting_words;
  std::size_t changes_marked = 0;  // of those that wait
  bool writable = true;
  bool holds_lists = false;  // what is asked about stands in rows and columns

  std::function<void()> lists;
  std::function<void()> state;
  std::function<void()> shown;
  std::function<void(const QString&)> message;
  std::function<void()> ask_date;

 private:
  void BuildBar(QVBoxLayout& layout);
  void BuildTable(QVBoxLayout& layout);
  void Connect();
  void FollowColumns() const;
  [[nodiscard]] FigureChoice ChoiceOfBar() const;
  [[nodiscard]] int DecimalsOf(const QItemSelection& selection) const;
  // What the current cell shows, in terms that hold in every view.
  struct Spot {
    Integer account = 1;
    Date date = 0;
    Integer field = 1;
  };
  [[nodiscard]] Spot CurrentSpot() const;
  void FillBar();
};

FigurePane::Parts::Parts(FigurePane& owner, HostApp& host, LocaleStyle locale_style)
    : pane(owner), app(host), style(std::move(locale_style)) {
  auto* layout = new QVBoxLayout(&pane);
  layout->setContentsMargins(0, 0, 0, 0);
  BuildBar(*layout);
  BuildTable(*layout);
  Connect();
}

void FigurePane::Parts::BuildBar(QVBoxLayout& layout) {
  const int unit = pane.fontMetrics().height() / 4;
  auto* bar = new QHBoxLayout;
  bar->setContentsMargins(2 * unit, 2 * unit, 2 * unit, 0);
  bar->setSpacing(2 * unit);
  view = NewChoice("What the table shows");
  for (const char* name : kViewNames) view->addItem(name);
  subject = new Elided;
  subject->setTextFormat(Qt::PlainText);
  QFont bold = pane.font();
  bold.setBold(true);
  subject->setFont(bold);
  subject->setMinimumWidth(unit * 8);
  subject->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  field = NewChoice("Field");
  field->setMaximumWidth(unit * 80);
  back = NewStep(Qt::LeftArrow, "Earlier (Ctrl+Left)");
  when = new QToolButton;
  when->setAutoRaise(true);
  when->setToolTip("Go to a date (Ctrl+G)");
  forth = NewStep(Qt::RightArrow, "Later (Ctrl+Right)");
  stretch_label = new QLabel("Show");
  stretch = NewChoice("How much time the table shows");
  auto* level_label = new QLabel("Level");
  level = NewChoice("Level that figures are added up to");
  bar->addWidget(view);
  bar->addWidget(field);
  bar->addWidget(subject, 1);
  for (QWidget* part : std::initializer_list<QWidget*>{back, when, forth}) bar->addWidget(part);
  bar->addSpacing(2 * unit);
  for (QWidget* part : std::initializer_list<QWidget*>{stretch_label, stretch, level_label, level})
    bar->addWidget(part);
  layout.addLayout(bar);
}

void FigurePane::Parts::BuildTable(QVBoxLayout& layout) {
  grid = new FigureGrid(&pane);
  totals_row = new QTableView;
  totals_row->setAccessibleName("Totals of the rows shown");
  totals_row->horizontalHeader()->hide();
  totals_row->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  totals_row->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  totals_row->setEditTriggers(QAbstractItemView::NoEditTriggers);
  totals_row->setTabKeyNavigation(false);
  totals_row->setFocusPolicy(Qt::ClickFocus);
  totals_row->setCornerButtonEnabled(false);
  totals_row->setFrameShape(QFrame::NoFrame);
  totals_row->verticalHeader()->setSectionsClickable(false);
  QFont bold = pane.font();
  bold.setBold(true);
  totals_row->setFont(bold);
  totals_row->verticalHeader()->setFont(bold);
  layout.addWidget(grid, 1);
  layout.addWidget(totals_row);
}

void FigurePane::Parts::Connect() {
  const auto choose = [this] { Choose(ChoiceOfBar()); };
  for (QComboBox* box : {view, field, stretch, level}) QObject::connect(box, &QComboBox::activated, &pane, choose);
  QObject::connect(back, &QToolButton::clicked, &pane, [this] { pane.Go(-1); });
  QObject::connect(forth, &QToolButton::clicked, &pane, [this] { pane.Go(1); });
  QObject::connect(when, &QToolButton::clicked, &pane, [this] {
    if (ask_date) ask_date();
  });
  QObject::connect(grid->horizontalHeader(), &QHeaderView::sectionResized, &pane,
                   [this](int column, int, int width) { totals_row->setColumnWidth(column, width); });
  QObject::connect(grid->horizontalScrollBar(), &QScrollBar::valueChanged, &pane, [this] { FollowColumns(); });
  QObject::connect(grid->horizontalScrollBar(), &QScrollBar::rangeChanged, &pane, [this] { FollowColumns(); });
  QObject::connect(grid->verticalHeader(), &QHeaderView::geometriesChanged, &pane,
                   [this] { totals_row->verticalHeader()->setFixedWidth(grid->verticalHeader()->width()); });
  grid->OnRefused([this](const QString& why) { Say(why); });
  grid->OnCopy([this] { Copy(false); });
  grid->OnPaste([this] { pane.Paste(); });
  grid->OnClear([this] { pane.Clear(); });

  QObject::connect(&watch, &QTimer::timeout, &pane, [this] { Watch(); });
  QObject::connect(&retry, &QTimer::timeout, &pane, [this] { Write(); });
  QObject::connect(&adding, &QTimer::timeout, &pane, [this] { AddUp(); });
  selection_wait.setSingleShot(true);
  QObject::connect(&selection_wait, &QTimer::timeout, &pane, [this] { AddUpSelection(); });
}

void FigurePane::Parts::Open(std::unique_ptr<BookReader> book) {
  CloseBook();
  reader = std::move(book);
  table = std::make_unique<FigureTable>(*reader);
  totals = std::make_unique<FigureTotals>(*table);
  writer = std::make_unique<FigureWriter>(reader->Path(), app);
  model = std::make_unique<FigureModel>(*table, style);
  totals_model = std::make_unique<TotalsModel>(*model, *totals);
  model->OnTyped([this](int row, int column, Double value) { Type(row, column, value); });
  model->OnTrouble([this](const Text& words) { Say(ToQt(application::Shown(words))); });
  QObject::connect(model.get(), &QAbstractItemModel::dataChanged, &pane, [this] { since_use.start(); });
  grid->setModel(model.get());
  totals_row->setModel(totals_model.get());
  QObject::connect(grid->selectionModel(), &QItemSelectionModel::selectionChanged, &pane,
                   [this] { selection_wait.start(kSelectionWait); });
  QObject::connect(grid->selectionModel(), &QItemSelectionModel::currentChanged, &pane, [this] { TellState(); });
  model->SetWritable(writable);
  watch.start(kWatch);
  since_use.start();
  ShowChoice();
}

void FigurePane::Parts::CloseBook() {
  for (QTimer* timer : {&watch, &retry, &adding, &selection_wait}) timer->stop();
  grid->setModel(nullptr);
  totals_row->setModel(nullptr);
  totals_model.reset();
  model.reset();
  writer.reset();
  totals.reset();
  table.reset();
  reader.reset();
  selection_text.clear();
  waiting_words.clear();
  changes_marked = 0;
}

FigureChoice FigurePane::Parts::ChoiceOfBar() const {
  FigureChoice choice = table->Choice();
  choice.view = static_cast<FigureView>(view->currentIndex());
  choice.account = pane.CurrentAccount();
  choice.field = choice.view == FigureView::kField && table->Choice().view == FigureView::kField
                     ? static_cast<Integer>(field->currentIndex() + 1)
                     : pane.CurrentField();
  const Integer before = choice.level;
  choice.level = static_cast<Integer>(level->currentData().toInt());
  choice.stretch = static_cast<Integer>(stretch->currentData().toInt());
  // A level that is raised takes a stretch that shows more than one of it.
  if (choice.level > before) choice.stretch = std::max<Integer>(choice.stretch, choice.level + 1);
  return choice;
}

FigurePane::Parts::Spot FigurePane::Parts::CurrentSpot() const {
  Spot spot{pane.CurrentAccount(), table->Choice().date, pane.CurrentField()};
  const QModelIndex index = grid->currentIndex();
  const bool has_date = index.isValid() && (table->RowsAreDates() || table->ColumnsAreDates());
  if (has_date) spot.date = table->DateOf(table->PlaceOf(index.row(), index.column()));
  return spot;
}

// Stays with the same account, date and field, wherever the new table has them.
void FigurePane::Parts::Choose(const FigureChoice& choice) {
  if (table->Choice() == choice) return FillBar();
  grid->TakeWhatIsTyped();  // where it was typed
  Spot spot = CurrentSpot();
  if (choice.date != table->Choice().date) spot.date = choice.date;
  FigureChoice chosen = choice;
  if (choice.date == table->Choice().date) chosen.date = spot.date;
  table->Choose(chosen);
  ShowChoice();
  const FigurePlace place{spot.account, table->Units().IndexOf(spot.date), spot.field};
  grid->GoTo(table->RowOf(place), table->ColumnOf(place));
}

void FigurePane::Parts::FillBar() {
  const FigureChoice& choice = table->Choice();
  view->setCurrentIndex(static_cast<int>(choice.view));
  const auto fill = [](QComboBox& box, const std::vector<Integer>& levels, Integer current) {
    box.clear();
    for (const Integer each : levels) box.addItem(ToQt(LevelName(each)), static_cast<int>(each));
    box.setCurrentIndex(box.findData(static_cast<int>(current)));
  };
  fill(*level, LevelsFrom(reader->Description().data_level), choice.level);
  fill(*stretch, table->Stretches(), choice.stretch);
  const bool one_date = choice.view == FigureView::kDate;
  stretch->setVisible(!one_date);
  stretch_label->setVisible(!one_date);
  field->setVisible(choice.view == FigureView::kField);
  field->clear();
  for (const auto& each : reader->Description().fields) field->addItem(ToQt(application::Shown(each.description)));
  field->setCurrentIndex(choice.field - 1);
  field->setToolTip(field->currentText());
  const bool one_account = choice.view == FigureView::kAccount && !table->Accounts().empty();
  const QString name = one_account ? ToQt(application::Shown(table->Account(choice.account).code + "  " +
                                                             table->Account(choice.account).description))
                                   : QString();
  subject->setText(name);
  subject->setToolTip(name);
  when->setText(ToQt(table->ShownName(style.dates)));
  when->setAccessibleName("Shown: " + when->text());
  const engine::DateSpan span = table->Shown();
  back->setEnabled(span.first > reader->CalendarRules().FirstDate());
  forth->setEnabled(span.last < reader->CalendarRules().LastDate());
}

void FigurePane::Parts::ShowChoice() {
  grid->TakeWhatIsTyped();
  const QModelIndex before = grid->currentIndex();
  // Before anything is laid out, which asks the table for its rows: it may have fewer now.
  model->TakeAnew();
  totals_model->TakeAnew();
  FillBar();
  grid->FitColumns();
  totals_row->verticalHeader()->setDefaultSectionSize(grid->verticalHeader()->defaultSectionSize());
  totals_row->setFixedHeight(grid->verticalHeader()->defaultSectionSize() + 1);
  totals_row->horizontalHeader()->setDefaultSectionSize(grid->horizontalHeader()->defaultSectionSize());
  for (int column = 0; column < table->Columns(); ++column) {
    if (totals_row->columnWidth(column) != grid->columnWidth(column))
      totals_row->setColumnWidth(column, grid->columnWidth(column));
  }
  grid->GoTo(std::max(before.row(), 0), std::max(before.column(), 0));
  totals->Start();
  adding.start(0);
  since_use.start();
  selection_wait.start(kSelectionWait);
  TellShown();
  TellState();
}

void FigurePane::Parts::FollowColumns() const {
  totals_row->horizontalScrollBar()->setRange(grid->horizontalScrollBar()->minimum(),
                                              grid->horizontalScrollBar()->maximum());
  totals_row->horizontalScrollBar()->setValue(grid->horizontalScrollBar()->value());
}

// --- The book and what others do to it -------------------------------------------------------------------------------

void FigurePane::Parts::Refresh() {
  try {
    reader->Refresh();
  } catch (const Failure& failure) {
    Say(ToQt(application::Shown(failure.Description())));
  }
  FollowLists();
}

// Others may have changed what the book is made of. What is typed belongs to the row that the user sees.
void FigurePane::Parts::FollowLists() {
  if (holds_lists || !reader->HasOtherLists()) return;
  grid->TakeWhatIsTyped();
  if (!reader->TakeLists()) return;  // whoever wrote what was typed came here before
  table->FollowLists();
  ShowChoice();
  if (lists) lists();
}

void FigurePane::Parts::ShowBookAnew() {
  model->ShowAnew();
  totals->Start();
  adding.start(0);
  since_use.start();
  selection_wait.start(kSelectionWait);
  TellShown();
}

void FigurePane::Parts::Watch() {
  if (reader->HasChanged()) {
    Refresh();
    return ShowBookAnew();
  }
  FollowLists();
  if (since_use.elapsed() > kRestAfter && !adding.isActive()) reader->Rest();
}

void FigurePane::Parts::AddUp() {
  try {
    if (totals->Work(kTotalsPart)) return;
  } catch (const Failure& failure) {
    Say(ToQt(application::Shown(failure.Description())));
  }
  adding.stop();
  since_use.start();
  totals_model->ShowAnew();
}

int FigurePane::Parts::DecimalsOf(const QItemSelection& selection) const {
  int decimals = 0;
  for (const QItemSelectionRange& part : selection) {
    for (int column = part.left(); column <= part.right(); ++column) {
      decimals = std::max(decimals, model->DecimalsOf(column));
    }
  }
  return decimals;
}

void FigurePane::Parts::AddUpSelection() {
  selection_text.clear();
  const QItemSelection selection = grid->selectionModel()->selection();
  long long count = 0;
  for (const QItemSelectionRange& part : selection) count += static_cast<long long>(part.width()) * part.height();
  if (count > kMostAddedUp) selection_text = QString("%1 figures selected").arg(ToQt(WithCommas(count)));
  if (count > 1 && count <= kMostAddedUp) {
    Double sum = 0;
    for (const QModelIndex& index : selection.indexes()) sum += model->ValueOf(index.row(), index.column());
    const Double average = sum / static_cast<Double>(count);
    const int decimals = std::max(DecimalsNeeded(sum), DecimalsOf(selection));
    selection_text = QString("%1 figures selected: %2  avg %3")
                         .arg(ToQt(WithCommas(count)), Upright(ToQt(NumberText(sum, decimals, style.numbers))),
                              Upright(ToQt(NumberText(average, std::max(decimals, 2), style.numbers))));
  }
  TellState();
}

// --- Writing ---------------------------------------------------------------------------------------------------------

void FigurePane::Parts::Type(int row, int column, Double value) {
  const std::vector changes = {ChangeOf(*table, row, column, value)};
  writer->Add(WhatRan(*table, changes), changes);
  Write();
}

void FigurePane::Parts::Write() {
  const FigureWriter::Outcome outcome = writer->Try();
  const QString words = ToQt(application::Shown(writer->Words()));
  // Behind what goes on now: an editor may be about to close.
  const auto say_later = [this](const QString& told) { QTimer::singleShot(0, &pane, [this, told] { Say(told); }); };
  for (const Text& notice : writer->TakeNotices()) say_later(ToQt(application::Shown(notice)));
  if (outcome == FigureWriter::Outcome::kWaits) return Wait(words);
  retry.stop();
  model->MarkWaiting({}, "");
  waiting_words.clear();
  changes_marked = 0;
  if (outcome == FigureWriter::Outcome::kFailed) say_later(words);
  Refresh();
  ShowBookAnew();
  TellState();
  if (writer->Waits()) retry.start(kRetry);  // what stood behind the one that failed
}

bool FigurePane::Parts::Agreed(const PasteBlock& block, const QString& what) {
  holds_lists = true;
  PastePreview preview(&pane, *table, block, style, what);
  const bool agreed = preview.exec() == QDialog::Accepted;
  holds_lists = false;
  return agreed;
}

// Every try that waits for the same as the one before leaves the table alone: a block that was pasted can be large.
void FigurePane::Parts::Wait(const QString& words) {
  retry.start(kRetry);
  if (words == waiting_words && changes_marked == writer->InLine()) return;
  waiting_words = words;
  changes_marked = writer->InLine();
  model->MarkWaiting(writer->Unwritten(), "Waits to be written: " + writer->Words());
  TellState();
}

void FigurePane::Parts::WriteBlock(const PasteBlock& block, const QString& what) {
  if (block.RowsChanged() == 0) return Say("Nothing changes: the figures stand so already.");
  const auto changes = ChangesOf(block, *table);
  if (block.RowsChanged() > 1 && !Agreed(block, what)) return;
  writer->Add(WhatRan(*table, changes), changes);
  Write();
}

void FigurePane::Parts::Lay(const Text& cells, const QString& what) {
  const CellRange selection = grid->Selected();
  if (selection.first_row < 0) return;
  if (!writable) return Say("The book is being worked on; nothing can be changed now.");
  try {
    const PasteBlock block = LayOnTable(*table, selection, cells, style.numbers);
    if (block.IsGood()) return WriteBlock(block, what);
    QStringList troubles;
    for (const Text& trouble : block.troubles) troubles << ToQt(application::Shown(trouble));
    Say(QString("Nothing was changed.\n") + troubles.join('\n'));
  } catch (const Failure& failure) {
    Say(ToQt(application::Shown(failure.Description())));
  }
}

void FigurePane::Parts::Copy(bool with_heads) {
  const CellRange range = grid->Selected();
  if (range.first_row < 0) return;
  if (CellsOf(range) > kMostCopied) {
    return Say(QString("%1 figures are too many to copy; export a table instead (Data Exchange).")
                   .arg(ToQt(WithCommas(CellsOf(range)))));
  }
  QString text;
  if (with_heads) {
    for (int column = range.first_column; column <= range.last_column; ++column)
      text += '\t' + ToQt(table->ColumnHead(column, style.dates));
    text += '\n';
  }
  for (int row = range.first_row; row <= range.last_row; ++row) {
    if (with_heads) text += ToQt(table->RowHead(row, style.dates)) + '\t';
    for (int column = range.first_column; column <= range.last_column; ++column) {
      if (column > range.first_column) text += '\t';
      const Double value = model->ValueOf(row, column);
      text += ToQt(CopiedText(value, std::max(model->DecimalsOf(column), DecimalsNeeded(value)), style.numbers));
    }
    text += '\n';
  }
  QApplication::clipboard()->setText(text);
}

// --- The pane --------------------------------------------------------------------------------------------------------

FigurePane::FigurePane(QWidget* parent, HostApp& app, const LocaleStyle& style)
    : QWidget(parent), parts_(std::make_unique<Parts>(*this, app, style)) {}

FigurePane::~FigurePane() {
  parts_->CloseBook();
}

void FigurePane::Open(std::unique_ptr<BookReader> reader) {
  parts_->Open(std::move(reader));
}

void FigurePane::CloseBook() {
  parts_->CloseBook();
}

bool FigurePane::HasBook() const {
  return parts_->table != nullptr;
}

FigureTable& FigurePane::Table() {
  return *parts_->table;
}

void FigurePane::Choose(const FigureChoice& choice) {
  parts_->Choose(choice);
}

void FigurePane::Go(int steps) {
  if (!HasBook()) return;
  parts_->grid->TakeWhatIsTyped();
  if (parts_->table->Go(steps)) return parts_->ShowChoice();
  parts_->Say(steps > 0 ? "The book ends here." : "The book begins here.");
}

void FigurePane::GoToDate(Date date) {
  FigureChoice choice = parts_->table->Choice();
  choice.date = date;
  parts_->Choose(choice);
  const std::size_t unit = parts_->table->Units().IndexOf(date);
  const FigurePlace place{CurrentAccount(), unit, CurrentField()};
  const int row = parts_->table->RowsAreDates() ? parts_->table->RowOf(place) : parts_->grid->currentIndex().row();
  const int column =
      parts_->table->ColumnsAreDates() ? parts_->table->ColumnOf(place) : parts_->grid->currentIndex().column();
  parts_->grid->GoTo(row, column);
}

void FigurePane::GoToAccount(Integer position) {
  if (!parts_->table->RowsAreDates()) return parts_->grid->GoTo(position - 1, parts_->grid->currentIndex().column());
  FigureChoice choice = parts_->table->Choice();
  choice.account = position;
  if (choice != parts_->table->Choice()) parts_->Choose(choice);
}

QString FigurePane::GoToFigure(const FigureSpot& spot) {
  if (!HasBook()) return "No book is open.";
  const engine::BookDescription& book = parts_->reader->Description();
  const auto account = std::ranges::find(book.accounts, spot.account_number, &engine::AccountDescription::number);
  if (account == book.accounts.end()) return QString("The book has no account %1 any more.").arg(spot.account_number);
  const auto field = std::ranges::find(book.fields, spot.field_number, &engine::FieldDescription::number);
  if (field == book.fields.end()) return QString("The book has no field %1 any more.").arg(spot.field_number);
  FigureChoice choice = parts_->table->Choice();
  choice.view = FigureView::kAccount;
  choice.level = kOwnLevel;
  choice.account = static_cast<Integer>(account - book.accounts.begin() + 1);
  choice.date = spot.date;
  parts_->Choose(choice);
  const FigureTable& table = *parts_->table;
  const FigurePlace place{choice.account, table.Units().IndexOf(spot.date),
                          static_cast<Integer>(field - book.fields.begin() + 1)};
  parts_->grid->GoTo(table.RowOf(place), table.ColumnOf(place));
  return {};
}

Integer FigurePane::CurrentAccount() const {
  const bool in_rows = !parts_->table->RowsAreDates() && parts_->grid->currentIndex().isValid();
  return in_rows ? static_cast<Integer>(parts_->grid->currentIndex().row() + 1) : parts_->table->Choice().account;
}

std::optional<FigurePlace> FigurePane::CurrentRecord() const {
  const QModelIndex index = parts_->grid->currentIndex();
  if (!index.isValid()) return std::nullopt;
  const FigurePlace place = parts_->table->PlaceOf(index.row(), index.column());
  const engine::DateSpan unit = parts_->table->Units().At(place.unit);
  const engine::DateSpan record = parts_->reader->CalendarRules().UnitOf(unit.last, kOwnLevel);
  const bool is_record = unit.first == record.first && unit.last == record.last;
  return is_record ? std::optional(place) : std::nullopt;
}

Integer FigurePane::CurrentField() const {
  const bool in_columns = !parts_->table->ColumnsAreDates() && parts_->grid->currentIndex().isValid();
  return in_columns ? static_cast<Integer>(parts_->grid->currentIndex().column() + 1) : parts_->table->Choice().field;
}

void FigurePane::SetWritable(bool writable) {
  parts_->writable = writable;
  if (parts_->model != nullptr) parts_->model->SetWritable(writable);
}

void FigurePane::LookAgain() {
  if (!HasBook()) return;
  parts_->Refresh();
  parts_->ShowBookAnew();
  parts_->TellState();
}

void FigurePane::Copy(bool with_heads) {
  parts_->Copy(with_heads);
}

void FigurePane::Paste() {
  parts_->Lay(FromQt(QApplication::clipboard()->text()), "Paste");
}

void FigurePane::Clear() {
  parts_->Lay("0", "Clear");
}

void FigurePane::Undo() {
  if (!HasBook() || !parts_->writable) return;
  parts_->writer->AddUndo();
  parts_->Write();
}

void FigurePane::NoteWritten(Long entry, const Text& what_ran) {
  if (HasBook()) parts_->writer->Note(entry, what_ran);
}

void FigurePane::ForgetWritten(Long entry) {
  if (HasBook()) parts_->writer->Forget(entry);
}

Long FigurePane::NextUndoEntry() const {
  return HasBook() ? parts_->writer->NextUndoEntry() : 0;
}

bool FigurePane::CanUndo() const {
  return HasBook() && parts_->writable && parts_->writer->CanUndo();
}

QString FigurePane::NextUndo() const {
  return HasBook() ? ToQt(application::Shown(parts_->writer->NextUndo())) : QString();
}

void FigurePane::TakeWhatIsTyped() {
  parts_->grid->TakeWhatIsTyped();
}

bool FigurePane::Waits() const {
  return HasBook() && parts_->writer->Waits();
}

void FigurePane::GiveUpWaiting() {
  if (!HasBook()) return;
  parts_->writer->GiveUp();
  parts_->Write();
}

bool FigurePane::HasUnreadable() const {
  return HasBook() && !Waits() && parts_->model->HasMarks();
}

FigureGrid& FigurePane::Grid() {
  return *parts_->grid;
}

FigureModel& FigurePane::Model() {
  return *parts_->model;
}

bool FigurePane::TotalsAreDone() const {
  return HasBook() && !parts_->adding.isActive();
}

QString FigurePane::SelectionText() const {
  return parts_->selection_text;
}

QString FigurePane::SavedText() const {
  if (!HasBook()) return {};
  if (parts_->writer->Waits())
    return ToQt(Counted(static_cast<long long>(parts_->writer->InLine()), "change")) +
           " to be written: " + parts_->waiting_words;
  return parts_->model->HasMarks() ? "Saved, but for what is marked" : "All is saved";
}

void FigurePane::OnState(std::function<void()> listener) {
  parts_->state = std::move(listener);
}

void FigurePane::OnShown(std::function<void()> listener) {
  parts_->shown = std::move(listener);
}

void FigurePane::OnLists(std::function<void()> listener) {
  parts_->lists = std::move(listener);
}

void FigurePane::OnMessage(std::function<void(const QString&)> listener) {
  parts_->message = std::move(listener);
}

void FigurePane::OnAskDate(std::function<void()> act) {
  parts_->ask_date = std::move(act);
}

}  // namespace tallybook::desktop
