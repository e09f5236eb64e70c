#include "tallybook/desktop/window/ListPage.h"

#include <QtCore/QAbstractTableModel>
#include <QtCore/QSortFilterProxyModel>
#include <QtGui/QClipboard>
#include <QtGui/QFont>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>
#include <array>

#include "base/Failure.h"
#include "base/Narrow.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/forms/Words.h"
#include "tallybook/desktop/window/BookDraft.h"
#include "tallybook/desktop/window/ListsDraft.h"
#include "tallybook/desktop/window/RowDialogs.h"
#include "tallybook/desktop/window/SearchLine.h"

namespace tallybook::desktop {

namespace {

constexpr int kLeastTarget = 24;  // what a pointer hits easily

const char* WordOf(RowState state) {
  switch (state) {
    case RowState::kAsItIs:
      return "";
    case RowState::kAdded:
      return "new";
    case RowState::kChanged:
      return "changed";
    case RowState::kMoved:
      return "moved";
  }
  return "";
}

}  // namespace

// --- The rows --------------------------------------------------------------------------------------------------------

class ListPage::Rows final : public QAbstractTableModel {
 public:
  enum Column { kPosition, kName, kSecond, kThird, kState, kColumns };

  Rows(const ListsDraft& draft, Kind kind) : draft_(draft), kind_(kind) { TakeStates(); }

  void ShowAnew() {
    beginResetModel();
    TakeStates();
    endResetModel();
  }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(Count());
  }
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : kColumns;
  }

  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    static constexpr std::array kOfAccounts = {"Position", "Code", "Description", "Number", "Change"};
    static constexpr std::array kOfFields = {"Position", "Description", "Kept by", "Number", "Change"};
    if (role == Qt::TextAlignmentRole) return AlignmentOf(section);
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    return QString((IsAccounts() ? kOfAccounts : kOfFields)[static_cast<std::size_t>(section)]);
  }

  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
    if (!index.isValid()) return {};
    const auto row = static_cast<std::size_t>(index.row());
    if (role == Qt::TextAlignmentRole) return AlignmentOf(index.column());
    if (role == Qt::FontRole && states_[row] != RowState::kAsItIs) {
      QFont bold;
      bold.setBold(true);
      return bold;
    }
    // What is longer than its column shows under the pointer.
    return role == Qt::DisplayRole || role == Qt::ToolTipRole ? QVariant(TextOf(row, index.column())) : QVariant();
  }

  [[nodiscard]] Long NumberOf(int row) const {
    const auto index = static_cast<std::size_t>(row);
    return IsAccounts() ? draft_.Now().accounts[index].number : Long{draft_.Now().fields[index].number};
  }
  [[nodiscard]] int RowOf(Long number) const {
    for (int row = 0; row < rowCount(); ++row) {
      if (NumberOf(row) == number) return row;
    }
    return -1;
  }
  // What the search looks in.
  [[nodiscard]] QString LineOf(int row) const {
    const auto index = static_cast<std::size_t>(row);
    return TextOf(index, kName) + ' ' + TextOf(index, kSecond) + ' ' + TextOf(index, kThird);
  }

 private:
  [[nodiscard]] bool IsAccounts() const { return kind_ == Kind::kAccounts; }
  [[nodiscard]] std::size_t Count() const {
    return IsAccounts() ? draft_.Now().accounts.size() : draft_.Now().fields.size();
  }
  void TakeStates() { states_ = IsAccounts() ? draft_.AccountStates() : draft_.FieldStates(); }
  static int AlignmentOf(int column) {
    const bool is_number = column == kPosition || column == kThird;
    return static_cast<int>((is_number ? Qt::AlignRight | Qt::AlignAbsolute : Qt::Alignment(Qt::AlignLeading)) |
                            Qt::AlignVCenter);
  }

  [[nodiscard]] QString TextOf(std::size_t row, int column) const {
    if (column == kPosition) return QString::number(row + 1);
    if (column == kState) return WordOf(states_[row]);
    if (IsAccounts()) {
      const engine::AccountDescription& account = draft_.Now().accounts[row];
      if (column == kThird) return QString::number(account.number);
      return ToQt(application::Shown(column == kName ? account.code : account.description));
    }
    const engine::FieldDescription& field = draft_.Now().fields[row];
    if (column == kThird) return QString::number(field.number);
    return column == kName ? ToQt(application::Shown(field.description)) : QString(field.system ? "the book" : "you");
  }

  const ListsDraft& draft_;
  Kind kind_;
  std::vector<RowState> states_;
};

class ListPage::Filter final : public QSortFilterProxyModel {
 public:
  explicit Filter(const Rows& rows) : rows_(rows) {}

  void SetWords(const QString& search) {
    words_ = SearchWords(search);
    invalidateFilter();
  }
  [[nodiscard]] bool IsOpen() const { return words_.IsEmpty(); }

 protected:
  [[nodiscard]] bool filterAcceptsRow(int row, const QModelIndex& /*parent*/) const override {
    return words_.IsEmpty() || words_.StandIn(rows_.LineOf(row));
  }

 private:
  const Rows& rows_;
  SearchWords words_;
};

// --- The page --------------------------------------------------------------------------------------------------------

ListPage::ListPage(QWidget* parent, ListsDraft& draft, Kind kind)
    : QWidget(parent),
      draft_(draft),
      kind_(kind),
      rows_(std::make_unique<Rows>(draft, kind)),
      filter_(std::make_unique<Filter>(*rows_)) {
  filter_->setSourceModel(rows_.get());
  Build();
  if (rows_->rowCount() > 0) GoTo(rows_->NumberOf(0));
  Follow();
}

// The table goes first: it asks its model to the last.
ListPage::~ListPage() {
  delete table_;
}

QPushButton* ListPage::AddButton(const QString& words, const char* name, const QString& keys, void (ListPage::*act)()) {
  auto* button = new QPushButton(words);
  button->setObjectName(name);
  button->setAutoDefault(false);
  if (!keys.isEmpty()) button->setToolTip(keys);
  connect(button, &QPushButton::clicked, this, [this, act] { (this->*act)(); });
  return button;
}

void ListPage::Build() {
  const bool accounts = kind_ == Kind::kAccounts;
  nothing_ = new QLabel;
  nothing_->setWordWrap(true);
  table_ = new QTableView;
  search_ = new SearchLine(accounts ? "account" : "field", *table_);
  search_->OnDone([this] { table_->setFocus(Qt::OtherFocusReason); });
  table_->setObjectName("rows");
  table_->setModel(filter_.get());
  table_->setAccessibleName(accounts ? "Accounts of the book" : "Fields of the book");
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setTabKeyNavigation(false);
  table_->setAlternatingRowColors(true);
  table_->setShowGrid(false);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setDefaultSectionSize(std::max(fontMetrics().height() * 3 / 2, kLeastTarget));
  table_->horizontalHeader()->setHighlightSections(false);
  table_->horizontalHeader()->setSectionResizeMode(accounts ? Rows::kSecond : Rows::kName, QHeaderView::Stretch);
  const int letter = fontMetrics().averageCharWidth();
  for (const int column : {Rows::kPosition, Rows::kThird, Rows::kState}) table_->setColumnWidth(column, letter * 11);
  table_->setColumnWidth(accounts ? Rows::kName : Rows::kSecond, letter * 14);
  table_->installEventFilter(this);
  connect(table_, &QTableView::doubleClicked, this, [this] { Edit(); });
  connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
    const Long before = CurrentNumber();
    filter_->SetWords(text);
    GoTo(before);
    Follow();
  });
  connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { Follow(); });
  connect(table_->selectionModel(), &QItemSelectionModel::currentChanged, this, [this] { Follow(); });

  auto* left = new QVBoxLayout;
  left->addWidget(search_);
  left->addWidget(nothing_);
  left->addWidget(table_, 1);
  auto* buttons = new QVBoxLayout;
  buttons->addWidget(AddButton("&Add\u2026", "add", "Insert", &ListPage::Add));
  edit_ = AddButton("&Edit\u2026", "edit", "F2", &ListPage::Edit);
  up_ = AddButton("Move &Up", "up", "Alt+Up", &ListPage::MoveUp);
  down_ = AddButton("Move &Down", "down", "Alt+Down", &ListPage::MoveDown);
  remove_ = AddButton("&Remove", "remove", "Delete", &ListPage::Remove);
  QPushButton* const paste = AddButton("&Paste\u2026", "paste", "Ctrl+V", &ListPage::Paste);
  for (QPushButton* button : {edit_, up_, down_, remove_, paste}) buttons->addWidget(button);
  buttons->addStretch(1);
  auto* layout = new QHBoxLayout(this);
  layout->addLayout(left, 1);
  layout->addLayout(buttons);
  setTabOrder(search_, table_);
  setFocusProxy(table_);
}

void ListPage::ShowAnew() {
  const Long number = CurrentNumber();
  const int row = table_->currentIndex().row();
  rows_->ShowAnew();
  GoTo(number);
  if (!table_->currentIndex().isValid() && filter_->rowCount() > 0) {
    const QModelIndex near = filter_->index(std::clamp(row, 0, filter_->rowCount() - 1), Rows::kName);
    GoTo(rows_->NumberOf(filter_->mapToSource(near).row()));
  }
  Follow();
}

void ListPage::Follow() {
  const bool has_row = table_->currentIndex().isValid();
  const int row = has_row ? filter_->mapToSource(table_->currentIndex()).row() : -1;
  const bool can_move = has_row && filter_->IsOpen();
  edit_->setEnabled(has_row);
  remove_->setEnabled(has_row);
  up_->setEnabled(can_move && row > 0);
  down_->setEnabled(can_move && row + 1 < rows_->rowCount());
  const bool is_empty = filter_->rowCount() == 0;
  nothing_->setVisible(is_empty);
  if (!is_empty) return;
  const bool accounts = kind_ == Kind::kAccounts;
  if (rows_->rowCount() > 0) {
    nothing_->setText("No row has all of these words.");
  } else {
    nothing_->setText(accounts ? "This book has no accounts. Add one, or paste a column of a spreadsheet."
                               : "This book has no fields. Add one, or paste a column of a spreadsheet.");
  }
}

Long ListPage::CurrentNumber() const {
  const QModelIndex index = table_->currentIndex();
  return index.isValid() ? rows_->NumberOf(filter_->mapToSource(index).row()) : 0;
}

Integer ListPage::PositionOf(Long number) const {
  return ToInteger(static_cast<long long>(rows_->RowOf(number)) + 1);
}

void ListPage::GoTo(Long number) {
  const int row = number == 0 ? -1 : rows_->RowOf(number);
  QModelIndex index = row < 0 ? QModelIndex() : filter_->mapFromSource(rows_->index(row, Rows::kName));
  if (!index.isValid() && filter_->rowCount() > 0 && !filter_->IsOpen()) index = filter_->index(0, Rows::kName);
  if (!index.isValid()) return;
  // Whatever keys are held down just now: that row alone.
  table_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
  table_->scrollTo(index);
}

void ListPage::BeginSearch() {
  search_->Begin();
}

// --- What is done ----------------------------------------------------------------------------------------------------

Text ListPage::Try(const std::function<void()>& act) {
  try {
    act();
    return "";
  } catch (const Failure& failure) {
    return failure.Description();
  }
}

void ListPage::Changed(Long number) {
  rows_->ShowAnew();
  GoTo(number);
  if (!table_->currentIndex().isValid()) ShowAnew();
  Follow();
  table_->setFocus();
  if (changed_) changed_();
}

// Behind the current row.
void ListPage::Add() {
  const bool is_field = kind_ == Kind::kFields;
  const Long position = CurrentNumber() == 0 ? rows_->rowCount() + 1 : PositionOf(CurrentNumber()) + 1;
  RowDialog dialog(this, {is_field ? "Add Field" : "Add Account", is_field, true}, {}, [&](const TypedRow& row) {
    return Try([&] {
      if (is_field)
        return draft_.Add(engine::FieldDescription{ToInteger(row.number), row.description, row.system}, position);
      draft_.Add(std::vector<engine::AccountDescription>{{row.number, row.code, row.description}}, position);
    });
  });
  if (dialog.exec() != QDialog::Accepted) return;
  search_->clear();
  rows_->ShowAnew();
  Changed(rows_->NumberOf(static_cast<int>(position) - 1));
}

void ListPage::Edit() {
  const Long number = CurrentNumber();
  if (number == 0) return;
  const bool is_field = kind_ == Kind::kFields;
  const auto index = static_cast<std::size_t>(PositionOf(number) - 1);
  TypedRow row;
  row.number = number;
  if (is_field) {
    row.description = draft_.Now().fields[index].description;
    row.system = draft_.Now().fields[index].system;
  } else {
    row.code = draft_.Now().accounts[index].code;
    row.description = draft_.Now().accounts[index].description;
  }
  const bool has_number = false;
  RowDialog dialog(this, {is_field ? "Edit Field" : "Edit Account", is_field, has_number}, row,
                   [&](const TypedRow& typed) {
                     return Try([&] {
                       if (is_field) return draft_.EditField(ToInteger(number), typed.description, typed.system);
                       draft_.Edit(number, typed.code, typed.description);
                     });
                   });
  if (dialog.exec() == QDialog::Accepted) Changed(number);
}

void ListPage::Remove() {
  std::vector<Long> numbers;
  for (const QModelIndex& index : table_->selectionModel()->selectedRows()) {
    numbers.push_back(rows_->NumberOf(filter_->mapToSource(index).row()));
  }
  if (numbers.empty()) return;
  const int row = table_->currentIndex().row();
  const Text refusal = Try([&] {
    if (kind_ == Kind::kAccounts) return draft_.Remove(numbers);
    draft_.RemoveFields(std::vector<Integer>(numbers.begin(), numbers.end()));
  });
  if (!refusal.empty()) return refused_ ? refused_(refusal) : void();
  rows_->ShowAnew();
  const int last = filter_->rowCount() - 1;
  const QModelIndex next = last < 0 ? QModelIndex() : filter_->index(std::clamp(row, 0, last), Rows::kName);
  Changed(next.isValid() ? rows_->NumberOf(filter_->mapToSource(next).row()) : 0);
}

void ListPage::Move(int rows) {
  const Long number = CurrentNumber();
  const bool can_move = rows < 0 ? up_->isEnabled() : down_->isEnabled();
  if (number == 0 || !can_move) return;
  QWidget* const focus = QApplication::focusWidget();
  const Long position = PositionOf(number) + rows;
  const Text refusal = Try([&] {
    if (kind_ == Kind::kAccounts) return draft_.Move(number, position);
    draft_.MoveField(ToInteger(number), position);
  });
  if (!refusal.empty()) return refused_ ? refused_(refusal) : void();
  Changed(number);
  if (focus == up_ || focus == down_) focus->setFocus();
}

// At the end of the list.
void ListPage::Paste() {
  const bool is_field = kind_ == Kind::kFields;
  const auto read_accounts = [this](const Text& lines) { return ReadFurtherAccounts(lines, draft_.Now().accounts); };
  const auto reading = [&](const Text& lines) -> PasteRowsDialog::Reading {
    const auto of = [](std::size_t count, const char* noun, const std::vector<Text>& troubles) {
      return PasteRowsDialog::Reading{application::Counted(static_cast<long long>(count), noun),
                                      JoinedTroubles(troubles), count == 0};
    };
    if (is_field) {
      const ReadFields read = ReadFieldLines(lines);
      return of(read.fields.size(), "field", read.troubles);
    }
    const ReadAccounts read = read_accounts(lines);
    return of(read.accounts.size(), "account", read.troubles);
  };
  const auto take = [&](const Text& lines) {
    return Try([&] {
      const auto end = static_cast<Long>(rows_->rowCount()) + 1;
      if (!is_field) return draft_.Add(read_accounts(lines).accounts, end);
      draft_.AddFields(ReadFieldLines(lines).fields);
    });
  };
  const PasteRowsDialog::Words words =
      is_field ? PasteRowsDialog::Words{"Paste Fields", "One &field a line: its description", "Covers\nWaste"}
               : PasteRowsDialog::Words{"Paste Accounts",
                                        "One account a &line: code and description, or number, code and description",
                                        "4200;Kiosk\n4210;Car park"};
  PasteRowsDialog dialog(this, words, QApplication::clipboard()->text(), reading, take);
  const int before = rows_->rowCount();
  if (dialog.exec() != QDialog::Accepted) return;
  search_->clear();
  rows_->ShowAnew();
  Changed(rows_->NumberOf(std::min(before, rows_->rowCount() - 1)));
}

// --- Keys ------------------------------------------------------------------------------------------------------------

bool ListPage::AnswerKey(QKeyEvent& key) {
  if (key.modifiers() == Qt::AltModifier && (key.key() == Qt::Key_Up || key.key() == Qt::Key_Down)) {
    Move(key.key() == Qt::Key_Up ? -1 : 1);
    return true;
  }
  if (key.matches(QKeySequence::Paste)) return Paste(), true;
  if (key.modifiers() != Qt::NoModifier && key.modifiers() != Qt::ShiftModifier &&
      key.modifiers() != Qt::KeypadModifier) {
    return false;
  }
  switch (key.key()) {
    case Qt::Key_Insert:
      return Add(), true;
    case Qt::Key_F2:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return Edit(), true;
    case Qt::Key_Delete:
      return Remove(), true;
    default:
      break;
  }
  const bool is_letter = !key.text().isEmpty() && key.text().front().isPrint() && key.text() != " ";
  if (!is_letter) return false;
  search_->setFocus(Qt::ShortcutFocusReason);
  search_->setText(key.text());
  return true;
}

bool ListPage::eventFilter(QObject* watched, QEvent* event) {
  if (watched == table_ && event->type() == QEvent::KeyPress) return AnswerKey(*static_cast<QKeyEvent*>(event));
  return QWidget::eventFilter(watched, event);
}

}  // namespace tallybook::desktop
