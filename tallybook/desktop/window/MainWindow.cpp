#include "tallybook/desktop/window/MainWindow.h"

#include <QtCore/QMimeData>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtGui/QClipboard>
#include <QtGui/QCloseEvent>
#include <QtGui/QDragEnterEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSplitter>
#include <QtWidgets/QStackedWidget>
#include <QtWidgets/QStatusBar>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>
#include <set>
#include <utility>

#include "base/Dates.h"
#include "base/Failure.h"
#include "platform/Clock.h"
#include "tallybook/application/Counts.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/Shown.h"
#include "tallybook/desktop/figures/ChartView.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/host/QtTexts.h"
#include "tallybook/desktop/host/SaveWhole.h"
#include "tallybook/desktop/window/AccountPane.h"
#include "tallybook/desktop/window/CareActs.h"
#include "tallybook/desktop/window/DateDialog.h"
#include "tallybook/desktop/window/FileCheckWindow.h"
#include "tallybook/desktop/window/HelpWindow.h"
#include "tallybook/desktop/window/JournalWindow.h"
#include "tallybook/desktop/window/KeysDialog.h"
#include "tallybook/desktop/window/ListsWindow.h"
#include "tallybook/desktop/window/MainMenus.h"
#include "tallybook/desktop/window/NewBookWizard.h"
#include "tallybook/desktop/window/OriginWindow.h"
#include "tallybook/desktop/window/SettingsDialog.h"
#include "tallybook/desktop/window/StartPage.h"
#include "tallybook/desktop/window/TieOutWindow.h"

namespace tallybook::desktop {

namespace {

namespace fs = std::filesystem;
using application::Counted;
using application::Shown;

constexpr std::size_t kMostFieldsOfChart = 6;  // more lines than that nobody tells apart
constexpr int kMessageTime = 12'000;           // milliseconds that a line stands in the status bar
constexpr const char* kExampleFolder = "Tallybook Example";
constexpr const char* kExampleShop = "north-shop.tbk";
constexpr const char* kExampleOffice = "head-office.tbk";

QString FileNameOf(const Text& path) {
  return ToQt(Shown(fs::path(path).filename().string()));
}

QStringList DroppedFiles(const QMimeData& data) {
  QStringList files;
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) files << url.toLocalFile();
  }
  return files;
}

void BringUp(QWidget& window) {
  window.raise();
  window.activateWindow();
}

// Whether a window that goes when it is closed is there. One that is closed and has not gone yet goes now.
template <typename Window>
bool Stands(const QPointer<Window>& window) {
  if (window != nullptr && window->isHidden()) delete window;
  return window != nullptr;
}

void ShowBeside(QWidget& window) {
  window.setAttribute(Qt::WA_DeleteOnClose);
  window.show();
  BringUp(window);
}

// A menu's mnemonics would show in the words.
QString Plain(QString words) {
  return words.replace("&", "&&");
}

}  // namespace

class MainWindow::Parts {
 public:
  Parts(MainWindow& window, HostApp& app, DesktopSettings& settings, LocaleStyle style, const ConversationMeans* means);

  bool Open(const Text& path);
  bool Leave();
  bool GivesUp(const QString& why, const QString& words_to_stay);
  [[nodiscard]] static Date FirstDateOf(BookReader& opened);
  void ShowBook(std::unique_ptr<BookReader> opened);
  void ShowStart();
  void KeepLook() const;
  void FollowFigures();
  void FollowState();
  void ShowChart();
  void FillRecent();
  void FillFieldsOfChart();
  void NewBook();
  void AskForBook();
  void AskForDate();
  // Goes to an entry, where one is named.
  void Journal(QWidget& over, Long first_shown = 0);
  void Origin();
  // Looks at a file at once, where one is named.
  void CheckFile(const std::optional<FileCheckWish>& wish = std::nullopt);
  [[nodiscard]] FileCheckWindow::Means FileCheckMeans();
  void Import(const FileCheckWish& wish);
  [[nodiscard]] std::vector<application::SeenDefinition> Definitions() const;
  void TieOut();
  [[nodiscard]] TieOutWindow::Means TieOutMeans();
  void GoToFigure(const FigureSpot& spot);
  bool Look(const std::function<void(engine::Book& book)>& act);
  void AskToCancel() const;
  void Lists();
  void Undo();
  bool UndoLists(Long entry, QWidget& over, ListsAsking asking);
  void Care(void (CareActs::*act)());
  void Restore();
  void Salvage();
  // Makes a book with nothing open in its place, and shows it, or what was open before.
  void MakeBook(const Text& book, const std::function<bool(Conversations& run)>& make);
  [[nodiscard]] bool CanWork();
  void SaveChart();
  void Settings();
  void MovePane(int steps);
  // Begins a conversation over the open book; gives whether it left anything in the journal.
  using Conversation = std::function<ConversationResult(Conversations& conversations)>;
  bool Converse(const Conversation& conversation);
  void FollowRunning(bool running);
  void AskToEnd();
  [[nodiscard]] bool IsRunning() const {
    return is_restoring || (conversations != nullptr && conversations->IsRunning());
  }
  void ConverseAbout(const Text& file);
  void ShowChartPane(bool shown);

  MainWindow& window;
  Help help;
  HostApp& app;
  DesktopSettings& settings;
  LocaleStyle style;
  Text path;
  MainMenus menus;
  QStackedWidget* pages = nullptr;
  QWidget* start = nullptr;
  QSplitter* across = nullptr;
  QSplitter* down = nullptr;
  AccountPane* accounts = nullptr;
  FigurePane* figures = nullptr;
  ChartView* chart = nullptr;
  QLabel* book_text = nullptr;
  QLabel* made_of_text = nullptr;
  QLabel* selection_text = nullptr;
  QLabel* saved_text = nullptr;
  QPushButton* give_up = nullptr;
  const ConversationMeans* means = nullptr;
  std::unique_ptr<Conversations> conversations;  // over the open book
  // What stands beside the window and goes with its book.
  QPointer<FileCheckWindow> file_check;
  QPointer<TieOutWindow> tie_out;
  void CloseBeside() {
    delete file_check;
    delete tie_out;
  }
  bool wants_to_close = false;
  bool is_restoring = false;        // a book, with none open
  std::set<Long> changes_of_lists;  // of this window, by their entries in the journal
  BookReader* reader = nullptr;     // the pane owns it
  std::set<Integer> chosen_fields;  // of the chart, by position; empty: that of the current column
  ChartChoice shown_chart;

 private:
  MenuActs Acts();
  void BuildPages();
  void BuildStatus();
};

MainWindow::Parts::Parts(MainWindow& main, HostApp& host, DesktopSettings& remembered, LocaleStyle locale_style,
                         const ConversationMeans* conversation_means)
    : window(main), app(host), settings(remembered), style(std::move(locale_style)), means(conversation_means) {
  menus = BuildMenus(window, Acts());
  QObject::connect(menus.recent, &QMenu::aboutToShow, &window, [this] { FillRecent(); });
  QObject::connect(menus.fields_of_chart, &QMenu::aboutToShow, &window, [this] { FillFieldsOfChart(); });
  QObject::connect(menus.edit, &QMenu::aboutToShow, &window, [this] { FollowState(); });
  BuildPages();
  BuildStatus();
  FillRecent();
  ShowStart();
}

MenuActs MainWindow::Parts::Acts() {
  MenuActs acts;
  acts.new_book = [this] { NewBook(); };
  acts.open_book = [this] { AskForBook(); };
  acts.example = [this] { window.OpenExample(); };
  acts.journal = [this] { Journal(window); };
  acts.settings = [this] { Settings(); };
  acts.close_book = [this] { window.CloseBook(); };
  acts.quit = [this] { window.close(); };
  acts.undo = [this] { Undo(); };
  acts.copy = [this] { figures->Copy(false); };
  acts.copy_with_heads = [this] { figures->Copy(true); };
  acts.paste = [this] { figures->Paste(); };
  acts.clear = [this] { figures->Clear(); };
  acts.find_account = [this] { accounts->BeginSearch(); };
  acts.view = [this](int view) {
    FigureChoice choice = figures->Table().Choice();
    choice.account = figures->CurrentAccount();
    choice.field = figures->CurrentField();
    choice.view = static_cast<FigureView>(view);
    figures->Choose(choice);
  };
  acts.chart = [this](bool shown) { ShowChartPane(shown); };
  acts.year_before = [this](bool) { ShowChart(); };
  acts.copy_chart = [this] { chart->CopyPicture(); };
  acts.save_chart = [this] { SaveChart(); };
  acts.refresh = [this] { figures->LookAgain(); };
  acts.next_pane = [this] { MovePane(1); };
  acts.last_pane = [this] { MovePane(-1); };
  acts.go = [this](int steps) { figures->Go(steps); };
  acts.move_account = [this](int rows) { accounts->Move(rows); };
  acts.today = [this] { figures->GoToDate(std::floor(Now())); };
  acts.go_to_date = [this] { AskForDate(); };
  acts.origin = [this] { Origin(); };
  if (means != nullptr) {
    acts.definitions = [this] { Converse([](Conversations& run) { return run.Definitions(); }); };
    acts.import_csv = [this] { Converse([](Conversations& run) { return run.ImportCsv(); }); };
    acts.import_delimited = [this] { Converse([](Conversations& run) { return run.ImportDelimited(); }); };
    const auto export_by = [this](ConversationResult (Conversations::*export_it)(Date&)) {
      Date date = figures->Table().Choice().date;
      Converse([&](Conversations& run) { return (run.*export_it)(date); });
    };
    acts.export_file = [export_by] { export_by(&Conversations::ExportQdx); };
    acts.export_table = [export_by] { export_by(&Conversations::ExportTable); };
    acts.check_file = [this] { CheckFile(); };
    acts.tie_out = [this] { TieOut(); };
    acts.lists = [this] { Lists(); };
    acts.back_up = [this] { Care(&CareActs::BackUp); };
    acts.check = [this] { Care(&CareActs::Check); };
    acts.compact = [this] { Care(&CareActs::Compact); };
    acts.restore = [this] { Restore(); };
    acts.salvage = [this] { Salvage(); };
  }
  acts.help = [this] { help.ShowForWindowAtHand(); };
  acts.guide = [this] { help.Show("guide/README.md"); };
  acts.keys = [this] { ShowKeys(&window); };
  acts.about = [this] { ShowAbout(&window); };
  return acts;
}

void MainWindow::Parts::BuildPages() {
  start = new StartPage(nullptr, {[this] { AskForBook(); }, [this] { NewBook(); }, [this] { window.OpenExample(); }});
  accounts = new AccountPane(nullptr);
  figures = new FigurePane(nullptr, app, style);
  chart = new ChartView(nullptr, style);
  down = new QSplitter(Qt::Vertical);
  down->addWidget(figures);
  down->addWidget(chart);
  down->setStretchFactor(0, 3);
  down->setStretchFactor(1, 1);
  across = new QSplitter(Qt::Horizontal);
  across->addWidget(accounts);
  across->addWidget(down);
  across->setStretchFactor(0, 0);
  across->setStretchFactor(1, 1);
  for (QSplitter* splitter : {down, across}) splitter->setChildrenCollapsible(false);
  pages = new QStackedWidget;
  pages->addWidget(start);
  pages->addWidget(across);
  window.setCentralWidget(pages);

  accounts->OnChosen([this](Integer position) { figures->GoToAccount(position); });
  accounts->OnDone([this] { figures->Grid().setFocus(); });
  figures->OnShown([this] { FollowFigures(); });
  figures->OnLists([this] { accounts->Show(reader->Description().accounts); });
  figures->OnState([this] { FollowState(); });
  figures->OnMessage([this](const QString& words) {
    // One line is read where it stands; more, or what nobody would look for there, needs a window.
    words.contains('\n') || words.contains(ToQt(path)) ? window.Tell(words)
                                                       : window.statusBar()->showMessage(words, kMessageTime);
  });
  figures->OnAskDate([this] { AskForDate(); });
  figures->Grid().setContextMenuPolicy(Qt::ActionsContextMenu);
  figures->Grid().addActions({menus.copy, menus.paste, menus.clear, menus.origin});
}

void MainWindow::Parts::BuildStatus() {
  QStatusBar& bar = *window.statusBar();
  bar.setSizeGripEnabled(false);
  book_text = new QLabel;
  made_of_text = new QLabel;
  selection_text = new QLabel;
  saved_text = new QLabel;
  give_up = new QPushButton("Give &Up");
  give_up->setToolTip("Leave the book as it is; what waits is not written");
  give_up->setFlat(false);
  for (QLabel* label : {book_text, made_of_text}) bar.addWidget(label);
  bar.addWidget(new QWidget, 1);
  for (QWidget* part : std::initializer_list<QWidget*>{selection_text, saved_text, give_up})
    bar.addPermanentWidget(part);
  for (QLabel* label : {book_text, made_of_text, selection_text, saved_text}) {
    label->setTextFormat(Qt::PlainText);
    label->setMargin(window.fontMetrics().height() / 4);
  }
  QObject::connect(give_up, &QPushButton::clicked, &window, [this] { figures->GiveUpWaiting(); });
}

// --- Books -----------------------------------------------------------------------------------------------------------

bool MainWindow::Parts::Open(const Text& named) {
  std::unique_ptr<BookReader> opened;
  try {
    opened = std::make_unique<BookReader>(named, app);
  } catch (...) {
    const Failure failure = CurrentFailure();
    window.Tell(ToQt(Shown(failure.Description())));
    if (failure.Number() == FailureNumber::kFileNotFound) settings.ForgetBook(named);
    return false;
  }
  if (!Leave()) return false;
  ShowBook(std::move(opened));
  return true;
}

// Of a book that was never seen here.
Date MainWindow::Parts::FirstDateOf(BookReader& opened) {
  const Date today = std::floor(Now());
  try {
    return opened.DateOfNewestFigures(today);
  } catch (const Failure&) {
    // Meant: the table itself says of what it shows why it cannot be read.
    return today;
  }
}

void MainWindow::Parts::ShowBook(std::unique_ptr<BookReader> opened) {
  path = opened->Path();
  reader = opened.get();
  const BookLook look = settings.LookOf(path);
  chosen_fields.clear();
  changes_of_lists.clear();
  menus.chart->setChecked(look.chart);
  menus.year_before->setChecked(look.against_year_before);
  accounts->Show(reader->Description().accounts);
  chart->setVisible(look.chart);
  pages->setCurrentWidget(across);
  if (means != nullptr) {
    conversations = std::make_unique<Conversations>(*means, path, window);
    conversations->SetChangeListener([this] { figures->LookAgain(); });
    conversations->SetRunningListener([this](bool running) { FollowRunning(running); });
  }
  const QList<QByteArray> sizes = QByteArray::fromStdString(look.sizes).split(' ');
  const int unit = window.fontMetrics().height();
  if (sizes.size() != 2 || !across->restoreState(QByteArray::fromHex(sizes[0])) ||
      !down->restoreState(QByteArray::fromHex(sizes[1]))) {
    across->setSizes({unit * 16, unit * 60});
    down->setSizes({unit * 26, unit * 12});
  }
  FigureChoice choice = look.choice;
  const bool was_never_seen = choice.date == kNoDate;
  if (was_never_seen) {
    choice.date = FirstDateOf(*opened);
    // Of a year of periods all twelve are seen at once.
    if (opened->Description().data_level >= kPeriodLevel) choice.stretch = engine::kYearLevel;
  }
  figures->Open(std::move(opened));
  figures->Choose(choice);
  if (was_never_seen) figures->GoToDate(choice.date);
  settings.NoteBook(path);
  window.setWindowTitle(QString("%1 \u2013 Tallybook").arg(FileNameOf(path)));
  FollowFigures();
  FollowState();
  figures->Grid().setFocus();
}

void MainWindow::Parts::ShowStart() {
  pages->setCurrentWidget(start);
  window.setWindowTitle("Tallybook");
  FollowState();
  start->findChild<QAbstractButton*>()->setFocus(Qt::TabFocusReason);
}

void MainWindow::Parts::KeepLook() const {
  if (!figures->HasBook()) return;
  BookLook look;
  look.choice = figures->Table().Choice();
  look.choice.account = figures->CurrentAccount();
  look.choice.field = figures->CurrentField();
  look.sizes = (across->saveState().toHex() + ' ' + down->saveState().toHex()).toStdString();
  look.chart = menus.chart->isChecked();
  look.against_year_before = menus.year_before->isChecked();
  settings.KeepLook(path, look);
}

// Out of the open book. False where the user stays because something waits to be written.
bool MainWindow::Parts::Leave() {
  figures->TakeWhatIsTyped();
  if (figures->Waits() &&
      !GivesUp("What you typed is not in the book yet. If you go on, the book stays as it is.", "&Wait")) {
    return false;
  }
  if (figures->HasUnreadable() &&
      !GivesUp("Some of what you typed could not be read as figures, and is marked in its cells. If you go on, it is "
               "gone; the book stays as it is.",
               "&Stay")) {
    return false;
  }
  KeepLook();
  CloseBeside();
  conversations.reset();
  figures->CloseBook();
  reader = nullptr;
  path.clear();
  return true;
}

// Asks whether what is not in the book may be lost.
bool MainWindow::Parts::GivesUp(const QString& why, const QString& words_to_stay) {
  QMessageBox box(QMessageBox::Question, "Tallybook", figures->SavedText(), QMessageBox::NoButton, &window);
  box.setInformativeText(why);
  QPushButton* stay = box.addButton(words_to_stay, QMessageBox::RejectRole);
  box.addButton("&Give Up", QMessageBox::DestructiveRole);
  box.setDefaultButton(stay);
  box.setEscapeButton(stay);
  box.exec();
  return box.clickedButton() != stay;
}

void MainWindow::Parts::NewBook() {
  NewBookWizard wizard(&window, style, app.DefaultDataFolder());
  if (wizard.exec() == QDialog::Accepted) Open(wizard.MadeBook());
}

void MainWindow::Parts::AskForBook() {
  const Text folder = path.empty() ? app.DefaultDataFolder() : fs::path(path).parent_path().string();
  const QString chosen =
      QFileDialog::getOpenFileName(&window, "Open a Book", ToQt(folder), "Books (*.tbk);;All files (*)");
  if (!chosen.isEmpty()) Open(FromQt(chosen));
}

void MainWindow::Parts::FillRecent() {
  menus.recent->clear();
  for (const Text& book : settings.RecentBooks()) {
    QAction* action = menus.recent->addAction(Plain(ToQt(Shown(book))));
    QObject::connect(action, &QAction::triggered, &window, [this, book] { window.OpenBook(book); });
  }
  if (menus.recent->isEmpty()) menus.recent->addAction("Books that you open are listed here")->setEnabled(false);
}

// --- What is shown ---------------------------------------------------------------------------------------------------

void MainWindow::Parts::FollowFigures() {
  if (!figures->HasBook()) return;
  const FigureChoice& choice = figures->Table().Choice();
  menus.views[static_cast<std::size_t>(choice.view)]->setChecked(true);
  accounts->SetCurrent(figures->CurrentAccount());
  shown_chart = {};
  shown_chart.account = 0;  // figures may be others
  ShowChart();
}

void MainWindow::Parts::FollowState() {
  const bool has_book = figures->HasBook();
  for (QMenu* menu : {menus.edit, menus.view, menus.figures}) {
    menu->menuAction()->setEnabled(has_book);
    for (QAction* action : menu->actions()) action->setEnabled(has_book);
  }
  for (QAction* action : {menus.journal, menus.close_book}) action->setEnabled(has_book && !IsRunning());
  for (QAction* action : menus.work_on_book) action->setEnabled(has_book && !IsRunning() && !figures->Waits());
  for (QAction* action : menus.leave_book) action->setEnabled(!IsRunning());
  for (QAction* action : {menus.paste, menus.clear}) action->setEnabled(has_book && !IsRunning());
  if (menus.exchange != nullptr) {
    const bool can_begin = has_book && !IsRunning() && !figures->Waits();
    menus.exchange->menuAction()->setEnabled(can_begin);
    for (QAction* action : menus.exchange->actions()) action->setEnabled(can_begin);
  }
  menus.undo->setEnabled(figures->CanUndo());
  const QString undone = figures->NextUndo();
  menus.undo->setText(undone.isEmpty() ? QString("&Undo") : QString("&Undo %1").arg(Plain(undone)));
  selection_text->setText(figures->SelectionText());
  saved_text->setText(figures->SavedText());
  give_up->setVisible(figures->Waits());
  book_text->setText(has_book ? ToQt(Shown(fs::path(path).stem().string())) : QString());
  if (!has_book) return made_of_text->clear();
  const engine::BookDescription& book = reader->Description();
  made_of_text->setText(QString("%1, %2, %3s")
                            .arg(ToQt(Counted(static_cast<long long>(book.accounts.size()), "account")),
                                 ToQt(Counted(static_cast<long long>(book.fields.size()), "field")),
                                 ToQt(LevelName(book.data_level)).toLower()));
  if (!figures->Table().RowsAreDates()) accounts->SetCurrent(figures->CurrentAccount());
  ShowChart();
}

void MainWindow::Parts::ShowChart() {
  if (!figures->HasBook() || !menus.chart->isChecked()) return;
  ChartChoice choice;
  choice.account = figures->CurrentAccount();
  choice.fields.assign(chosen_fields.begin(), chosen_fields.end());
  if (choice.fields.empty()) choice.fields = {figures->CurrentField()};
  choice.against_year_before = menus.year_before->isChecked();
  const bool same = choice.account == shown_chart.account && choice.fields == shown_chart.fields &&
                    choice.against_year_before == shown_chart.against_year_before;
  if (same) return;
  shown_chart = choice;
  try {
    chart->Show(ChartOf(figures->Table(), choice, style.dates));
  } catch (...) {
    chart->Show({});
    window.statusBar()->showMessage(ToQt(Shown(CurrentFailure().Description())));
  }
}

void MainWindow::Parts::ShowChartPane(bool shown) {
  chart->setVisible(shown);
  shown_chart.account = 0;
  ShowChart();
}

void MainWindow::Parts::FillFieldsOfChart() {
  menus.fields_of_chart->clear();
  if (!figures->HasBook()) return;
  QAction* follow = menus.fields_of_chart->addAction("&That of the Current Column");
  follow->setCheckable(true);
  follow->setChecked(chosen_fields.empty());
  QObject::connect(follow, &QAction::triggered, &window, [this] {
    chosen_fields.clear();
    ShowChart();
  });
  menus.fields_of_chart->addSeparator();
  Integer position = 0;
  for (const engine::FieldDescription& field : reader->Description().fields) {
    const Integer each = ++position;
    QAction* action = menus.fields_of_chart->addAction(Plain(ToQt(Shown(field.description))));
    action->setCheckable(true);
    action->setChecked(chosen_fields.contains(each));
    action->setEnabled(action->isChecked() || chosen_fields.size() < kMostFieldsOfChart);
    QObject::connect(action, &QAction::triggered, &window, [this, each](bool checked) {
      checked ? static_cast<void>(chosen_fields.insert(each)) : static_cast<void>(chosen_fields.erase(each));
      ShowChart();
    });
  }
}

void MainWindow::Parts::SaveChart() {
  const QString chosen =
      QFileDialog::getSaveFileName(&window, "Save the Chart", ToQt(app.DefaultDataFolder()) + "/chart.svg",
                                   "Vector picture (*.svg);;PNG picture (*.png)");
  if (chosen.isEmpty()) return;
  try {
    SaveWhole(FromQt(chosen), chart->PictureFor(chosen));
  } catch (...) {
    window.Tell(ToQt(Shown(CurrentFailure().Description())));
  }
}

void MainWindow::Parts::AskForDate() {
  if (!figures->HasBook()) return;
  const engine::Calendar& calendar = reader->CalendarRules();
  DateDialog dialog(&window, style, figures->Table().Choice().date, calendar.FirstDate(), calendar.LastDate());
  if (dialog.exec() == QDialog::Accepted && dialog.Chosen()) figures->GoToDate(*dialog.Chosen());
}

void MainWindow::Parts::Journal(QWidget& over, Long first_shown) {
  JournalWindow::Undo undo;
  if (conversations != nullptr) {
    undo = [this, &over](const engine::JournalEntry& entry) {
      if (entry.kind == engine::JournalKind::kLists) return UndoLists(entry.id, over, ListsAsking::kAlways);
      return Converse([&](Conversations& run) { return run.Undo(entry.id); });
    };
  }
  JournalWindow journal(&over, *reader, style, undo);
  if (first_shown != 0) journal.ShowEntry(first_shown);
  journal.exec();
  figures->LookAgain();
}

// The history is that of one record: a sum has as many as it adds up.
void MainWindow::Parts::Origin() {
  if (!figures->HasBook()) return;
  figures->TakeWhatIsTyped();
  const std::optional<FigurePlace> place = figures->CurrentRecord();
  if (!place) {
    return window.Tell(
        "This figure adds up several of the book. Choose the book's own level to ask where one of them "
        "comes from.");
  }
  try {
    const FigureTable& table = figures->Table();
    const engine::AccountDescription& account = table.Account(place->account);
    const engine::FieldDescription& field = table.Field(place->field);
    const Date date = table.DateOf(*place);
    reader->Refresh();
    const application::FigureOrigin origin = application::OriginOf(reader->Read(), account.number, date, field.number);
    const QString figure = QString("%1 %2, %3, %4")
                               .arg(ShownLine(account.code), ShownLine(account.description),
                                    ShownLine(field.description), ToQt(style.dates(date)));
    OriginWindow(&window, style, figure, origin, [this](Long entry, QWidget& over) { Journal(over, entry); }).exec();
  } catch (...) {
    window.Tell(ToQt(Shown(CurrentFailure().Description())));
  }
}

// --- Data exchange ---------------------------------------------------------------------------------------------------

// Nothing runs, and nothing that was typed waits to be written; else the user is told.
bool MainWindow::Parts::CanWork() {
  if (conversations == nullptr) return false;
  if (IsRunning()) {
    window.Tell("The book is being worked on already. End that first.");
    return false;
  }
  figures->TakeWhatIsTyped();  // nothing can be typed from here on
  if (figures->Waits()) {
    window.Tell(figures->SavedText());
    return false;
  }
  return true;
}

bool MainWindow::Parts::Converse(const Conversation& conversation) {
  if (!CanWork()) return false;
  const ConversationResult result = conversation(*conversations);
  figures->LookAgain();
  if (result.check) CheckFile(*result.check);
  if (!result.output.empty()) window.statusBar()->showMessage("Written: " + ToQt(Shown(result.output)), kMessageTime);
  return result.ChangedFigures();
}

// Reads the book for what stands beside the window. False where that failed or was cancelled, which has been told.
bool MainWindow::Parts::Look(const std::function<void(engine::Book& book)>& act) {
  if (!CanWork()) return false;
  const ConversationResult looked = conversations->Look([&](engine::Book& book) {
    means->platform.Progress().SetCancelWords("All stays as it was.");
    act(book);
    return true;
  });
  return looked.ran && !means->platform.Progress().WasCancelled();
}

void MainWindow::Parts::AskToCancel() const {
  means->platform.Progress().AskToCancel();
}

void MainWindow::Parts::CheckFile(const std::optional<FileCheckWish>& wish) {
  if (!CanWork()) return;
  means->app.SetFinished(false);  // a prompt that was left for it was asked to end
  if (Stands(file_check)) {
    file_check->FillDefinitions();
  } else {
    file_check = new FileCheckWindow(FileCheckMeans());
  }
  ShowBeside(*file_check);
  if (wish) file_check->Begin(*wish);
}

std::vector<application::SeenDefinition> MainWindow::Parts::Definitions() const {
  engine::Book& book = reader->Read();
  return application::LookAtDefinitions(means->platform.Files(), book.DataPath(), book.FileExtension());
}

FileCheckWindow::Means MainWindow::Parts::FileCheckMeans() {
  FileCheckWindow::Means told;
  told.definitions = [this] { return Definitions(); };
  told.check = [this](const FileCheckWish& wish) {
    std::optional<FileCheckResult> result;
    const bool is_done =
        Look([&](engine::Book& book) { result = desktop::CheckFile(means->platform.Files(), book, wish); });
    if (!is_done) result.reset();
    return result;
  };
  told.ask_to_end = [this] { AskToCancel(); };
  told.import = [this](const FileCheckWish& wish) { Import(wish); };
  told.book = path;
  told.folder = app.DefaultFolder();
  return told;
}

void MainWindow::Parts::Import(const FileCheckWish& wish) {
  Converse([&](Conversations& run) {
    switch (wish.kind) {
      case ImportKind::kCommaSeparated:
        return run.ImportCsv(wish.file);
      case ImportKind::kDelimited:
        return run.ImportDelimited(wish.file);
      case ImportKind::kExchange:
        break;
    }
    return run.ImportByDefinition(wish.definition, wish.file);
  });
}

void MainWindow::Parts::TieOut() {
  if (!CanWork()) return;
  if (Stands(tie_out)) {
    tie_out->FillDefinitions();
  } else {
    tie_out = new TieOutWindow(TieOutMeans());
  }
  ShowBeside(*tie_out);
}

TieOutWindow::Means MainWindow::Parts::TieOutMeans() {
  TieOutWindow::Means told;
  told.definitions = [this] { return Definitions(); };
  told.hold = [this](const TieOutWish& wish) {
    std::optional<TieOutResult> result;
    const bool is_done = Look([&](engine::Book& book) { result = RunTieOut(means->platform, means->app, book, wish); });
    if (!is_done) result.reset();
    return result;
  };
  told.ask_to_end = [this] { AskToCancel(); };
  told.go_to = [this](const FigureSpot& spot) { GoToFigure(spot); };
  told.folder = app.DefaultFolder();
  return told;
}

void MainWindow::Parts::GoToFigure(const FigureSpot& spot) {
  const QString why_not = figures->GoToFigure(spot);
  if (!why_not.isEmpty()) return window.Tell(why_not);
  BringUp(window);
  figures->Grid().setFocus();
}

void MainWindow::Parts::Lists() {
  if (!CanWork()) return;
  try {
    ListsWindow lists(&window, *conversations, means->platform.Files(), path, app, style);
    lists.exec();
    for (const engine::JournalEntry& entry : lists.Entries()) {
      figures->NoteWritten(entry.id, entry.what_ran);
      changes_of_lists.insert(entry.id);
    }
  } catch (...) {
    window.Tell(ToQt(Shown(CurrentFailure().Description())));
  }
  figures->LookAgain();
}

// A change of lists has more to it than figures.
void MainWindow::Parts::Undo() {
  const Long entry = figures->NextUndoEntry();
  if (!changes_of_lists.contains(entry)) return figures->Undo();
  (void)UndoLists(entry, window, ListsAsking::kWhereDefinitionsFollow);
  FollowState();
}

bool MainWindow::Parts::UndoLists(Long entry, QWidget& over, ListsAsking asking) {
  if (!CanWork()) return false;
  const ListsChanged changed =
      desktop::UndoLists(*conversations, means->platform.Files(), entry, asking,
                         [&over](const ListsQuestion& question) { return AskAboutLists(&over, question); });
  const bool done = changed.outcome == ListsOutcome::kDone;
  if (done) figures->ForgetWritten(entry);
  figures->LookAgain();
  return done;
}

void MainWindow::Parts::Care(void (CareActs::*act)()) {
  if (!CanWork()) return;
  CareActs care(window, *conversations, path);
  (care.*act)();
  figures->LookAgain();
  if (!care.Said().isEmpty()) window.statusBar()->showMessage(care.Said(), kMessageTime);
}

// The book that is made is shown; one that is open in its place is closed before.
void MainWindow::Parts::Restore() {
  if (IsRunning()) return;
  const std::optional<RestoreWish> wish = AskWhatToRestore(window, path.empty() ? DocumentsFolder() : path);
  if (!wish) return;
  QString said;
  MakeBook(wish->book, [&](Conversations& run) {
    said = RestoreBook(run, *wish);
    return !said.isEmpty();
  });
  if (!said.isEmpty()) QMessageBox::information(&window, "Restore a Book", said);
}

void MainWindow::Parts::Salvage() {
  if (IsRunning()) return;
  const std::optional<SalvageWish> wish = AskWhatToSalvage(window, path.empty() ? DocumentsFolder() : path);
  if (!wish) return;
  MakeBook(wish->book, [&](Conversations& run) { return SalvageBook(window, run, *wish); });
}

void MainWindow::Parts::MakeBook(const Text& book, const std::function<bool(Conversations& run)>& make) {
  const Text was_open = path;
  if (!path.empty() && !window.CloseBook()) return;
  Conversations run(*means, book, window);
  run.SetRunningListener([this](bool running) {
    is_restoring = running;
    FollowRunning(running);
  });
  const Text shown = make(run) ? book : was_open;
  if (!shown.empty()) window.OpenBook(shown);
}

void MainWindow::Parts::AskToEnd() {
  conversations != nullptr ? conversations->AskToEnd() : means->app.SetFinished(true);
}

// Nothing else writes while a conversation works on the book, and the book stays the one it is.
void MainWindow::Parts::FollowRunning(bool running) {
  figures->SetWritable(!running);
  FollowState();
  if (running || !std::exchange(wants_to_close, false)) return;
  if (app.Finished()) QTimer::singleShot(0, &window, [this] { window.close(); });
}

void MainWindow::Parts::ConverseAbout(const Text& file) {
  const Text ending = FromQt(ToQt(fs::path(file).extension().string()).toLower());
  if (ending == ".qdx") {
    Converse([&](Conversations& run) { return run.Definitions(file); });
  } else if (ending == ".csv") {
    Converse([&](Conversations& run) { return run.ImportCsv(file); });
  } else {
    Converse([&](Conversations& run) { return run.ImportDelimited(file); });
  }
}

void MainWindow::Parts::Settings() {
  SettingsDialog dialog(&window, app.SettingsFileName());
  if (dialog.exec() != QDialog::Accepted) return;
  try {
    ApplyFont(ReadPreferences(app.SettingsFileName()));
  } catch (...) {
    return window.Tell(ToQt(Shown(CurrentFailure().Description())));
  }
  if (means != nullptr) means->app.FollowFont();
}

void MainWindow::Parts::MovePane(int steps) {
  std::vector<QWidget*> panes = {accounts, &figures->Grid()};
  if (chart->isVisible()) panes.push_back(chart);
  const auto holds = [](const QWidget* pane) {
    const QWidget* focus = QApplication::focusWidget();
    return focus != nullptr && (focus == pane || pane->isAncestorOf(focus));
  };
  const auto now = std::ranges::find_if(panes, holds);
  const auto count = static_cast<int>(panes.size());
  const int index = now == panes.end() ? 0 : static_cast<int>(now - panes.begin()) + steps;
  QWidget* next = panes[static_cast<std::size_t>((index + count) % count)];
  next == accounts ? accounts->BeginSearch() : next->setFocus(Qt::TabFocusReason);
}

// --- The window ------------------------------------------------------------------------------------------------------

MainWindow::MainWindow(HostApp& app, DesktopSettings& settings, const LocaleStyle& style,
                       const ConversationMeans* means)
    : parts_(std::make_unique<Parts>(*this, app, settings, style, means)) {
  setAcceptDrops(true);
  setAttribute(Qt::WA_KeyboardFocusChange);  // where the keys go is always seen
  const int unit = fontMetrics().height();
  resize(unit * 78, unit * 44);
  restoreGeometry(QByteArray::fromHex(QByteArray::fromStdString(settings.Value("Geometry", ""))));
}

// Hidden while all of it is there: what is being typed is taken then.
MainWindow::~MainWindow() {
  hide();
  parts_->CloseBeside();
}

bool MainWindow::OpenBook(const Text& path) {
  if (!parts_->IsRunning()) return parts_->Open(path);
  Tell(QString("%1 is being worked on. End that first, then open another book.").arg(FileNameOf(BookPath())));
  return false;
}

bool MainWindow::CloseBook() {
  if (parts_->IsRunning() || !parts_->Leave()) return false;
  parts_->ShowStart();
  return true;
}

Text MainWindow::BookPath() const {
  return parts_->path;
}

void MainWindow::OpenExample() {
  const fs::path folder = fs::path(DocumentsFolder()) / kExampleFolder;
  try {
    fs::create_directories(folder);
    if (!fs::exists(folder / kExampleShop))
      engine::Book::Create((folder / kExampleShop).string(), application::DemoShop());
    if (!fs::exists(folder / kExampleOffice))
      engine::Book::Create((folder / kExampleOffice).string(), application::DemoOffice());
  } catch (...) {
    return Tell(ToQt(Shown(CurrentFailure().Description())));
  }
  OpenBook((folder / kExampleShop).string());
}

void MainWindow::OpenFile(const Text& path) {
  const QString ending = ToQt(fs::path(path).extension().string()).toLower();
  const bool begins_conversation = ending == ".qdx" || ending == ".csv" || ending == ".txt";
  if (!begins_conversation || parts_->means == nullptr) {
    OpenBook(path);
    return;
  }
  const std::vector<Text> recent = parts_->settings.RecentBooks();
  if (BookPath().empty() && recent.empty()) {
    return Tell(QString("Open the book first that %1 is to go into.").arg(FileNameOf(path)));
  }
  if (BookPath().empty() && !OpenBook(recent.front())) return;
  parts_->ConverseAbout(path);
}

void MainWindow::Tell(const QString& words) {
  QMessageBox box(QMessageBox::Warning, "Tallybook", words, QMessageBox::Ok, this);
  box.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  box.exec();
}

void MainWindow::ShowHelp() {
  parts_->help.ShowForWindowAtHand();
}

FigurePane& MainWindow::Figures() {
  return *parts_->figures;
}

AccountPane& MainWindow::Accounts() {
  return *parts_->accounts;
}

ChartView& MainWindow::Chart() {
  return *parts_->chart;
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (parts_->IsRunning()) {
    event->ignore();
    parts_->wants_to_close = true;
    parts_->AskToEnd();
    return;
  }
  // Whoever waits for an answer over this window works with what it holds.
  if (QApplication::activeModalWidget() != nullptr) return event->ignore();
  if (!parts_->Leave()) return event->ignore();
  parts_->settings.SetValue("Geometry", saveGeometry().toHex().toStdString());
  event->accept();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  if (!DroppedFiles(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
  const QStringList files = DroppedFiles(*event->mimeData());
  if (files.isEmpty()) return;
  event->acceptProposedAction();
  // Behind the drop: the program that the file came from waits for its end.
  QTimer::singleShot(0, this, [this, files] {
    if (files.size() > 1) return Tell("Several files were dropped. One at a time can be opened or imported.");
    OpenFile(FromQt(files.front()));
  });
}

}  // namespace tallybook::desktop
