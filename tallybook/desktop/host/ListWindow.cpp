#include "tallybook/desktop/host/ListWindow.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <array>

#include "platform/MessageBoxes.h"
#include "support/GuardedEdtFormEvents.h"
#include "support/WinAPI.h"
#include "tallybook/desktop/host/ListRows.h"
#include "tallybook/desktop/host/QtTexts.h"

namespace tallybook::desktop {

namespace {

constexpr const char* kPlace = "list";
constexpr int kWidth = 165;  // in letters and lines
constexpr int kHeight = 24;
constexpr int kActionButtons = 3;

// Letters that the window's own buttons have taken.
constexpr const char* kTakenLetters = "AEDC";

// The caption with the first letter marked that no other button has; the words stay as they are.
QString WithMnemonic(const QString& caption, QString& taken) {
  for (qsizetype i = 0; i < caption.size(); ++i) {
    const QChar letter = caption[i].toUpper();
    if (!letter.isLetter() || taken.contains(letter)) continue;
    taken.append(letter);
    return PlainCaption(FromQt(caption.left(i))) + "&" + PlainCaption(FromQt(caption.mid(i)));
  }
  return PlainCaption(FromQt(caption));
}

}  // namespace

class ListWindow::Frame : public QWidget {
 public:
  Frame(WindowHandles& handles, WindowMemory memory) : handles_(handles), memory_(std::move(memory)) {
    setWindowFlags(Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint |
                   Qt::WindowCloseButtonHint);
    MakeTable();
    MakeButtons();
    LayOut();
    Connect();
    qApp->installEventFilter(this);
  }

  ~Frame() override { qApp->removeEventFilter(this); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  WindowHandles& handles_;
  WindowMemory memory_;
  EdtFormEvents* listener_ = nullptr;
  ListRows rows_;
  bool allows_changes_ = false;
  bool rows_changed_ = false;  // since the totals were asked for
  bool unsaved_ = false;       // something was added, edited or deleted since the last save
  int busy_ = 0;
  Integer action_ = 0;  // the action button whose event is being answered
  Long type_ahead_delay_ = 1000;
  Long help_context_ = 0;
  Text totals_text_;
  std::function<void(ListWindow&)> on_shown_;
  QEventLoop* loop_ = nullptr;

  // --- What the component does ---------------------------------------------------------------------------------------

  void RowsChanged() {
    rows_changed_ = true;
    show_rows_.start(0);
  }

  // Brings the table up to date; the row that was selected stays so, by its key.
  void ShowRows() {
    if (!rows_.IsStale()) return;
    const Text key = selected_key_;
    const int before = table_->currentIndex().row();
    rows_.Update();
    if (!has_own_widths_ && loop_ != nullptr) FitColumns();
    Select(rows_.PlaceOf(key), before);
    nothing_->setVisible(rows_.rowCount() == 0);
    PlaceNothing();
    ShowStates();
  }

  void ShowTotalsText() { totals_->setText(ShownLine(totals_text_)); }

  void AskTotals() {
    rows_changed_ = false;
    GuardedEdtFormEvents(listener_).ShowTotals(totals_text_);
    ShowTotalsText();
  }

  void ShowStates() {
    const bool selected = table_->currentIndex().isValid();
    for (QPushButton* const button : {add_, edit_, delete_}) button->setVisible(allows_changes_);
    edit_->setEnabled(selected);
    delete_->setEnabled(selected);
    nothing_->setText(allows_changes_ ? tr("The list is empty.\nAdd makes the first entry.")
                                      : tr("The list is empty."));
  }

  void SetAction(Integer button, const Text& caption) {
    if (button < 1 || button > kActionButtons) return;
    captions_[static_cast<std::size_t>(button - 1)] = ShownLine(caption);
    QString taken = kTakenLetters;
    for (std::size_t i = 0; i < captions_.size(); ++i) {
      actions_[i]->setText(WithMnemonic(captions_[i], taken));
      actions_[i]->setAccessibleName(captions_[i]);
      actions_[i]->setVisible(!captions_[i].isEmpty());
    }
    for (const Added& added : added_) added.button->setText(WithMnemonic(added.caption, taken));
    switch_->setText(WithMnemonic(its_switch_.caption, taken));
  }

  void SetSwitch(ListWindow::Switch its) {
    its_switch_ = std::move(its);
    switch_->setText(its_switch_.caption);
    switch_->setAccessibleName(its_switch_.caption);
    switch_->setAccessibleDescription(its_switch_.help);
    switch_->setToolTip(its_switch_.help);
    switch_->setVisible(true);
    ShowSwitch();
    connect(switch_, &QCheckBox::clicked, this, [this](bool on) { its_switch_.turned(on); });
  }

  // It may have been turned in a dialog over the window.
  void ShowSwitch() {
    if (its_switch_.is_on) switch_->setChecked(its_switch_.is_on());
  }

  void SetAddition(const Text& caption, std::function<bool()> act, Integer action) {
    const QString place = added_.empty() ? QString() : QString::number(added_.size() + 1);
    QPushButton* const button = MakeButton(PlainCaption(caption), "added" + place);
    button->setAccessibleName(ShownLine(caption));
    setTabOrder(added_.empty() ? actions_.back() : added_.back().button, button);
    added_.push_back({button, ShownLine(caption)});
    buttons_->insertWidget(buttons_->indexOf(switch_), button);
    connect(button, &QPushButton::clicked, this, [this, act = std::move(act), action] {
      if (busy_ > 0) return;
      bool goes_on = false;
      {
        const Busy busy(*this);
        goes_on = act();
      }
      if (goes_on) UserAct(action - 1);
    });
  }

  void Point(const std::vector<Text>& keys, const Text& note) {
    ShowRows();
    rows_.SetMarked(keys);
    if (!keys.empty()) Select(rows_.PlaceOf(keys.front()), 0);
    pointed_note_ = ShownLine(note);
    ShowNote();
  }

  // --- Showing -------------------------------------------------------------------------------------------------------

  void Run(ListWindow& window, Long owner) {
    if (loop_ != nullptr) return;
    QWidget* const over = owner == 0 ? nullptr : handles_.WidgetOf(owner);
    ShowRows();
    RestoreLook();
    winId();
    windowHandle()->setTransientParent(over == nullptr ? nullptr : over->window()->windowHandle());
    QEventLoop loop;
    loop_ = &loop;
    AskTotals();
    show();
    raise();
    activateWindow();
    table_->setFocus();
    if (!table_->currentIndex().isValid()) Select(0, 0);
    poll_.start(kShutdownPoll);
    if (on_shown_) QTimer::singleShot(0, this, [this, &window] { on_shown_(window); });
    loop.exec();
    poll_.stop();
    loop_ = nullptr;
    KeepLook();
    hide();
    if (over != nullptr) over->window()->activateWindow();
  }

  // The window closes, unless it is busy, or what was changed cannot be saved and the user wants to stay.
  bool MayClose() {
    if (busy_ > 0) return false;
    if (!unsaved_) return true;
    bool saved = true;
    Raise([&](EdtFormEvents& events) { events.EditSave(saved); });
    if (saved) {
      unsaved_ = false;
      return true;
    }
    const Busy busy(*this);
    return AskMessage("What was changed could not be saved.\r\n\r\nClose the list all the same?",
                      kYesNo | kExclamationIcon | kSecondButtonDefault, FromQt(windowTitle())) == kYes;
  }

  void UserClose() {
    if (loop_ != nullptr && MayClose()) loop_->quit();
  }

  // --- What the user does --------------------------------------------------------------------------------------------

  [[nodiscard]] Integer SelectedRecord() {
    ShowRows();
    const QModelIndex current = table_->currentIndex();
    return current.isValid() ? rows_.At(current.row()).record : Integer{0};
  }

  void UserAct(int action) {
    const Integer record = SelectedRecord();
    Raise([&](EdtFormEvents& events) {
      action_ = static_cast<Integer>(action + 1);
      events.ActionButton(action_, record);
    });
    if (busy_ == 0) action_ = 0;
  }

  [[nodiscard]] Text SelectedKey() { return SelectedRecord() == 0 ? Text() : selected_key_; }

  void UserAdd() {
    if (!allows_changes_ || busy_ > 0) return;
    const Integer before = SelectedRecord();
    Integer record = before;
    Raise([&](EdtFormEvents& events) { events.AddRec(record); });
    unsaved_ = true;
    if (record != before) Select(rows_.PlaceOfRecord(record), table_->currentIndex().row());
  }

  void UserEdit() {
    const Integer record = SelectedRecord();
    if (!allows_changes_ || busy_ > 0 || record <= 0) return;
    unsaved_ = true;
    Raise([&](EdtFormEvents& events) { events.EditRec(record); });
  }

  void UserDelete() {
    const Integer record = SelectedRecord();
    if (!allows_changes_ || busy_ > 0 || record <= 0) return;
    unsaved_ = true;
    Raise([&](EdtFormEvents& events) { events.DeleteRec(record); });
  }

  void UserSave() {
    bool saved = true;
    Raise([&](EdtFormEvents& events) { events.EditSave(saved); });
    if (saved) unsaved_ = false;
  }

  void UserHelp() {
    Raise([&](EdtFormEvents& events) { events.ShowHelp(help_context_); });
  }

  void SortBy(int column) {
    if (column >= rows_.columnCount()) return;
    ListRows::Order order{.column = column};
    if (const auto now = rows_.Sorting(); now && now->column == column) order.descending = !now->descending;
    SetSorting(order);
  }

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    UserClose();
  }

  bool eventFilter(QObject* object, QEvent* event) override {
    if (busy_ > 0 && IsActOf(*event) && IsInside(object)) {
      if (event->type() == QEvent::MouseButtonPress) QApplication::beep();
      return true;
    }
    if (object == table_ && event->type() == QEvent::KeyPress) return TakesKey(static_cast<QKeyEvent&>(*event));
    if (object == table_->viewport() && event->type() == QEvent::Resize) PlaceNothing();
    return QWidget::eventFilter(object, event);
  }

  void keyPressEvent(QKeyEvent* event) override {
    if (!TakesKey(*event)) QWidget::keyPressEvent(event);
  }

 private:
  // The time in which an event is answered.
  class Busy {
   public:
    explicit Busy(Frame& frame) : frame_(frame) { Count(1); }
    ~Busy() { Count(-1); }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

   private:
    // The property says from outside when the window takes keys again.
    void Count(int change) {
      frame_.busy_ += change;
      frame_.setProperty("busy", frame_.busy_ > 0);
      if (frame_.busy_ == 0) frame_.ShowSwitch();
    }

    Frame& frame_;
  };

  template <typename Event>
  void Raise(Event raise) {
    if (busy_ > 0) return;
    GuardedEdtFormEvents events(listener_);
    {
      const Busy busy(*this);
      raise(events);
    }
    ShowRows();
    if (rows_changed_) AskTotals();
  }

  static bool IsActOf(const QEvent& event) {
    switch (event.type()) {
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
      case QEvent::ShortcutOverride:
      case QEvent::Shortcut:
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonRelease:
      case QEvent::MouseButtonDblClick:
      case QEvent::Wheel:
      case QEvent::ContextMenu:
        return true;
      default:
        return false;
    }
  }

  [[nodiscard]] bool IsInside(QObject* object) const {
    const auto* const widget = qobject_cast<const QWidget*>(object);
    return widget != nullptr && widget->window() == this;
  }

  void MakeTable() {
    table_ = new QTableView(this);
    table_->setObjectName("rows");
    table_->setModel(&rows_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setTabKeyNavigation(false);
    table_->setShowGrid(false);
    table_->setAlternatingRowColors(true);
    table_->setWordWrap(false);
    table_->setTextElideMode(Qt::ElideMiddle);
    table_->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    table_->verticalHeader()->hide();
    constexpr int kSmallestTarget = 24;
    table_->verticalHeader()->setDefaultSectionSize(std::max(kSmallestTarget, fontMetrics().height() * 3 / 2));
    QHeaderView* const heads = table_->horizontalHeader();
    heads->setSectionsClickable(true);
    heads->setHighlightSections(false);
    heads->setStretchLastSection(true);
    heads->setSortIndicatorShown(false);
    nothing_ = new QLabel(table_->viewport());
    nothing_->setObjectName("nothing");
    nothing_->setAlignment(Qt::AlignCenter);
    nothing_->setTextFormat(Qt::PlainText);
    nothing_->setAttribute(Qt::WA_TransparentForMouseEvents);
    totals_ = new QLabel(this);
    totals_->setObjectName("totals");
    totals_->setTextFormat(Qt::PlainText);
    note_ = new QLabel(this);
    note_->setObjectName("note");
    note_->setTextFormat(Qt::PlainText);
    note_->setWordWrap(true);
  }

  void MakeButtons() {
    add_ = MakeButton(tr("&Add..."), "add");
    edit_ = MakeButton(tr("&Edit..."), "edit");
    delete_ = MakeButton(tr("&Delete"), "delete");
    for (std::size_t i = 0; i < actions_.size(); ++i)
      actions_[i] = MakeButton("", QStringLiteral("action%1").arg(i + 1));
    for (QPushButton* const action : actions_) action->hide();
    switch_ = new QCheckBox(this);
    switch_->setObjectName("switch");
    switch_->hide();
    close_ = MakeButton(tr("&Close"), "close");
  }

  QPushButton* MakeButton(const QString& caption, const QString& name) {
    auto* const button = new QPushButton(caption, this);
    button->setObjectName(name);
    button->setAutoDefault(true);  // Enter presses the one with the focus
    return button;
  }

  void LayOut() {
    const int unit = fontMetrics().height() / 4;
    auto* const buttons = buttons_ = new QVBoxLayout;
    buttons->setSpacing(2 * unit);
    for (QPushButton* const button : {add_, edit_, delete_}) buttons->addWidget(button);
    buttons->addSpacing(4 * unit);
    for (QPushButton* const button : actions_) buttons->addWidget(button);
    buttons->addWidget(switch_);
    buttons->addStretch(1);
    buttons->addWidget(close_);
    auto* const left = new QVBoxLayout;
    left->setSpacing(2 * unit);
    left->addWidget(table_, 1);
    left->addWidget(note_);
    left->addWidget(totals_);
    auto* const all = new QHBoxLayout(this);
    all->setContentsMargins(3 * unit, 3 * unit, 3 * unit, 3 * unit);
    all->setSpacing(3 * unit);
    all->addLayout(left, 1);
    all->addLayout(buttons);
    note_->hide();
  }

  void Connect() {
    connect(add_, &QPushButton::clicked, this, [this] { UserAdd(); });
    connect(edit_, &QPushButton::clicked, this, [this] { UserEdit(); });
    connect(delete_, &QPushButton::clicked, this, [this] { UserDelete(); });
    connect(close_, &QPushButton::clicked, this, [this] { UserClose(); });
    for (int i = 0; i < kActionButtons; ++i) {
      connect(actions_[static_cast<std::size_t>(i)], &QPushButton::clicked, this, [this, i] { UserAct(i); });
    }
    connect(table_, &QTableView::doubleClicked, this, [this] { UserEdit(); });
    connect(table_->horizontalHeader(), &QHeaderView::sectionClicked, this, [this](int column) { SortBy(column); });
    connect(table_->horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
      const bool takes_the_rest = column == rows_.columnCount() - 1;
      if (!fitting_ && !takes_the_rest) has_own_widths_ = true;
    });
    connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& current) {
              if (current.isValid() && !rows_.IsStale()) selected_key_ = rows_.At(current.row()).key;
              ShowStates();
            });
    connect(&poll_, &QTimer::timeout, this, [this] { PollShutdown(); });
    show_rows_.setSingleShot(true);
    connect(&show_rows_, &QTimer::timeout, this, [this] { ShowRows(); });
    forget_typed_.setSingleShot(true);
    connect(&forget_typed_, &QTimer::timeout, this, [this] { ForgetTyped(); });
  }

  void PollShutdown() {
    if (busy_ > 0 || loop_ == nullptr) return;
    bool shutdown = false;
    Raise([&](EdtFormEvents& events) { events.NeedtoShutdown(shutdown); });
    if (shutdown) UserClose();
  }

  // --- Keys ----------------------------------------------------------------------------------------------------------

  bool TakesKey(const QKeyEvent& event) {
    const bool control = event.modifiers() == Qt::ControlModifier;
    if (control && event.key() >= Qt::Key_1 && event.key() <= Qt::Key_9) {
      SortBy(event.key() - Qt::Key_1);
      return true;
    }
    if (control && event.key() == Qt::Key_W) return Did(&Frame::UserClose);
    if (event.matches(QKeySequence::Save)) return Did(&Frame::UserSave);
    if ((event.modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier)) != Qt::NoModifier) return false;
    switch (event.key()) {
      case Qt::Key_Insert:
        return Did(&Frame::UserAdd);
      case Qt::Key_Return:
      case Qt::Key_Enter:
      case Qt::Key_F2:
        return Did(&Frame::UserEdit);
      case Qt::Key_Delete:
        return Did(&Frame::UserDelete);
      case Qt::Key_F1:
        return Did(&Frame::UserHelp);
      case Qt::Key_Escape:
        return Did(&Frame::UserClose);
      default:
        return TypesAhead(event.text());
    }
  }

  bool Did(void (Frame::*act)()) {
    (this->*act)();
    return true;
  }

  // Further letters within the delay make the beginning longer; alone it goes on from the row behind.
  bool TypesAhead(const QString& text) {
    if (text.isEmpty() || !text.front().isPrint() || (typed_.isEmpty() && text == " ")) return false;
    ShowRows();
    const bool goes_on = !typed_.isEmpty();
    typed_ += text;
    forget_typed_.start(static_cast<int>(type_ahead_delay_));
    const int current = std::max(table_->currentIndex().row(), 0);
    const auto sorting = rows_.Sorting();
    const int found = rows_.Find(typed_, sorting ? sorting->column : 0, goes_on ? current : current + 1);
    if (found >= 0) {
      Select(found, found);
    } else {
      typed_.chop(text.size());
      QApplication::beep();
    }
    ShowNote();
    return true;
  }

  void ShowNote() {
    note_->setText(typed_.isEmpty() ? pointed_note_ : tr("Begins with: %1").arg(typed_));
    note_->setVisible(!note_->text().isEmpty());
  }

  void ForgetTyped() {
    typed_.clear();
    ShowNote();
  }

  // --- The table -----------------------------------------------------------------------------------------------------

  // The row at `place`; where there is none, the one nearest to `otherwise`.
  void Select(int place, int otherwise) {
    const int last = rows_.rowCount() - 1;
    if (place < 0) place = std::clamp(otherwise, 0, std::max(last, 0));
    if (last < 0) return;
    table_->setCurrentIndex(rows_.index(place, 0));
    table_->scrollTo(rows_.index(place, 0));
  }

  void SetSorting(std::optional<ListRows::Order> order) {
    const Text key = selected_key_;
    rows_.Sort(order);
    QHeaderView* const heads = table_->horizontalHeader();
    heads->setSortIndicatorShown(order.has_value());
    if (order) heads->setSortIndicator(order->column, order->descending ? Qt::DescendingOrder : Qt::AscendingOrder);
    Select(rows_.PlaceOf(key), 0);
  }

  void PlaceNothing() { nothing_->setGeometry(table_->viewport()->rect()); }

  // --- What is remembered --------------------------------------------------------------------------------------------

  // A list of other columns has a memory of its own.
  [[nodiscard]] QString KeyOf(const char* what) const {
    return QStringLiteral("%1-%2/%3").arg(kPlace).arg(rows_.columnCount()).arg(what);
  }

  void RestoreLook() {
    memory_.RestoreSize(*this, KeyOf("window"), kWidth, kHeight);
    const QByteArray widths = memory_.Bytes(KeyOf("columns"));
    fitting_ = true;
    has_own_widths_ = !widths.isEmpty() && table_->horizontalHeader()->restoreState(widths);
    fitting_ = false;
    if (!has_own_widths_) FitColumns();
    const int column = memory_.Number(KeyOf("sort"), 0);
    if (column == 0) return SetSorting(std::nullopt);
    SetSorting(ListRows::Order{.column = std::abs(column) - 1, .descending = column < 0});
  }

  void KeepLook() {
    memory_.KeepSize(*this, KeyOf("window"));
    if (has_own_widths_) memory_.Keep(KeyOf("columns"), table_->horizontalHeader()->saveState());
    const auto order = rows_.Sorting();
    memory_.Keep(KeyOf("sort"), order ? (order->column + 1) * (order->descending ? -1 : 1) : 0);
  }

  // As wide as what stands in them, until the user sets widths of his own.
  void FitColumns() {
    fitting_ = true;
    const int letter = fontMetrics().averageCharWidth();
    // The last one has what the others leave, and its own width by what stands in it only where that is more.
    table_->horizontalHeader()->setStretchLastSection(false);
    table_->resizeColumnsToContents();
    for (int column = 0; column < rows_.columnCount(); ++column) {
      const int width = std::clamp(table_->columnWidth(column), 9 * letter, 40 * letter);
      table_->setColumnWidth(column, width + 2 * letter);
    }
    table_->horizontalHeader()->setStretchLastSection(true);
    fitting_ = false;
  }

  QTableView* table_ = nullptr;
  QLabel* nothing_ = nullptr;  // what is said where there are no rows
  QLabel* totals_ = nullptr;
  QLabel* note_ = nullptr;
  QPushButton* add_ = nullptr;
  QPushButton* edit_ = nullptr;
  QPushButton* delete_ = nullptr;
  QVBoxLayout* buttons_ = nullptr;
  struct Added {
    QPushButton* button;
    QString caption;
  };
  std::vector<Added> added_;
  QCheckBox* switch_ = nullptr;
  QPushButton* close_ = nullptr;
  std::array<QPushButton*, kActionButtons> actions_{};
  std::array<QString, kActionButtons> captions_;
  ListWindow::Switch its_switch_;
  QTimer poll_;
  QTimer show_rows_;
  QTimer forget_typed_;
  QString typed_;
  QString pointed_note_;
  bool fitting_ = false;         // the columns, which is no act of the user's
  bool has_own_widths_ = false;  // that the user has set, now or earlier
  Text selected_key_;
};

ListWindow::ListWindow(WindowHandles& handles, WindowMemory memory)
    : frame_(std::make_unique<Frame>(handles, std::move(memory))) {}

ListWindow::~ListWindow() = default;

void ListWindow::SetEvents(EdtFormEvents* listener) {
  frame_->listener_ = listener;
}

void ListWindow::SetTitle(const Text& title) {
  frame_->setWindowTitle(ShownLine(title));
  frame_->findChild<QTableView*>()->setAccessibleName(ShownLine(title));
}

void ListWindow::AddColumn(const Text& caption, bool numeric) {
  frame_->rows_.AddColumn(caption, numeric);
}

void ListWindow::SetActionButton(Integer button, const Text& caption) {
  frame_->SetAction(button, caption);
}

void ListWindow::SetAllowChanges(bool allowed) {
  frame_->allows_changes_ = allowed;
  frame_->ShowStates();
}

void ListWindow::SetTypeAheadDelay(Long milliseconds) {
  frame_->type_ahead_delay_ = milliseconds;
}

// Help is the application's to find; what it shows is told by the topic alone.
void ListWindow::SetHelpFile(const Text& /*path*/) {}

void ListWindow::SetHelpContext(Long topic) {
  frame_->help_context_ = topic;
}

void ListWindow::SetFontName(const Text& name) {
  if (name.empty()) return;
  QFont font = frame_->font();
  font.setFamily(ToQt(name));
  frame_->setFont(font);
}

void ListWindow::SetFontSize(Single points) {
  if (points <= 0) return;
  QFont font = frame_->font();
  font.setPointSizeF(static_cast<double>(points));
  frame_->setFont(font);
}

void ListWindow::ClearList() {
  frame_->rows_.Clear();
  frame_->RowsChanged();
}

void ListWindow::AddRow(const Text& key, Integer record, const Text& title) {
  frame_->rows_.Add({.key = key, .record = record, .cells = {title}});
  frame_->RowsChanged();
}

void ListWindow::AddCell(const Text& text) {
  frame_->rows_.AddCell(text);
}

void ListWindow::RemoveRow(const Text& key) {
  if (frame_->rows_.Remove(key)) frame_->RowsChanged();
}

void ListWindow::RefreshTotals() {
  frame_->ShowTotalsText();
}

Long ListWindow::Hwnd() const {
  return frame_->handles_.HandleOf(*frame_);
}

void ListWindow::Show(Long owner) {
  frame_->Run(*this, owner);
}

QWidget& ListWindow::Window() const {
  return *frame_;
}

bool ListWindow::IsBusy() const {
  return frame_->busy_ > 0;
}

Integer ListWindow::ActionUnderWay() const {
  return frame_->busy_ > 0 ? frame_->action_ : Integer{0};
}

Text ListWindow::SelectedKey() const {
  return frame_->SelectedKey();
}

void ListWindow::SetOnShown(std::function<void(ListWindow&)> act) {
  frame_->on_shown_ = std::move(act);
}

void ListWindow::SetAddition(const Text& caption, std::function<bool()> act, Integer action) {
  frame_->SetAddition(caption, std::move(act), action);
}

void ListWindow::SetSwitch(Switch its) {
  frame_->SetSwitch(std::move(its));
}

void ListWindow::Point(const std::vector<Text>& keys, const Text& note) {
  frame_->Point(keys, note);
}

void ListWindow::UserAct(Integer action) {
  if (!IsBusy()) frame_->UserAct(action - 1);
}

void ListWindow::UserAdd() {
  frame_->UserAdd();
}

void ListWindow::UserClose() {
  frame_->UserClose();
}

}  // namespace tallybook::desktop
