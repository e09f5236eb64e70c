// Shows each window of the desktop and keeps pictures of them: desktop_pictures FOLDER [dark] [rtl] [long] [small].
// scripts/pictures runs it in all combinations. Nothing of the user's is touched: books are made in a folder of their
// own.
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QKeyEvent>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QSpinBox>
#include <QtWidgets/QStyleFactory>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTableView>
#include <algorithm>
#include <deque>
#include <functional>
#include <iostream>

#include "base/Dates.h"
#include "forms/Form.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/desktop/figures/ChartView.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/figures/PastePreview.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/host/UndoDialog.h"
#include "tallybook/desktop/window/CareActs.h"
#include "tallybook/desktop/window/DateDialog.h"
#include "tallybook/desktop/window/HelpWindow.h"
#include "tallybook/desktop/window/JournalWindow.h"
#include "tallybook/desktop/window/KeysDialog.h"
#include "tallybook/desktop/window/ListsWindow.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tallybook/desktop/window/NewBookWizard.h"
#include "tallybook/desktop/window/OriginWindow.h"
#include "tallybook/desktop/window/SettingsDialog.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

QPalette DarkPalette() {
  QPalette palette;
  const QColor window(45, 45, 48);
  const QColor base(30, 30, 32);
  const QColor text(230, 230, 230);
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::WindowText, text);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, QColor(38, 38, 41));
  palette.setColor(QPalette::Text, text);
  palette.setColor(QPalette::Button, QColor(58, 58, 62));
  palette.setColor(QPalette::ButtonText, text);
  palette.setColor(QPalette::ToolTipBase, QColor(58, 58, 62));
  palette.setColor(QPalette::ToolTipText, text);
  palette.setColor(QPalette::PlaceholderText, QColor(155, 155, 160));
  palette.setColor(QPalette::Highlight, QColor(48, 110, 190));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Light, QColor(80, 80, 84));
  palette.setColor(QPalette::Mid, QColor(35, 35, 37));
  palette.setColor(QPalette::Dark, QColor(22, 22, 24));
  palette.setColor(QPalette::Disabled, QPalette::Text, QColor(125, 125, 130));
  palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(125, 125, 130));
  palette.setColor(QPalette::Disabled, QPalette::WindowText, QColor(125, 125, 130));
  return palette;
}

void Settle(int milliseconds = 250) {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::AllEvents, 20);
}

// Acts in the windows of a conversation, one behind the other, each once a window of its title is in front.
class Walk {
 public:
  using Act = std::function<void(QWidget& window)>;

  Walk() {
    QObject::connect(&timer_, &QTimer::timeout, [this] { Look(); });
    timer_.start(20);
  }
  Walk& Then(const QString& title, Act act) {
    steps_.push_back({title, std::move(act)});
    return *this;
  }
  [[nodiscard]] bool IsDone() const { return steps_.empty() && !acting_; }

 private:
  static constexpr int kLimit = 10'000;
  struct Step {
    QString title;
    Act act;
  };

  // The window manager may give the input to another window of ours when one goes.
  void AskForInput() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && window->windowTitle().startsWith(steps_.front().title)) window->activateWindow();
    }
  }

  void Look() {
    if (acting_ || steps_.empty()) return;
    QWidget* const window = QApplication::activeWindow();
    if (window != nullptr && window->isVisible() && window->windowTitle().startsWith(steps_.front().title)) {
      const Act act = steps_.front().act;
      steps_.pop_front();
      waited_.start();
      acting_ = true;
      act(*window);
      acting_ = false;
    } else if (!waited_.isValid()) {
      waited_.start();
      AskForInput();
    } else if (waited_.elapsed() <= kLimit) {
      AskForInput();
    } else {
      std::cerr << "never shown: " << steps_.front().title.toStdString() << ", but "
                << (window == nullptr ? "nothing" : window->windowTitle().toStdString()) << '\n';
      std::exit(1);
    }
  }

  std::deque<Step> steps_;
  bool acting_ = false;
  QElapsedTimer waited_;
  QTimer timer_;
};

// Behind the step that does it: what it opens is the next step's.
void Later(QWidget& window, const std::function<void()>& act) {
  QTimer::singleShot(0, &window, act);
}

QWidget& WidgetOf(QWidget& window, const char* control, Integer index = -1) {
  auto& form_window = dynamic_cast<FormWindow&>(window);
  return *form_window.WidgetOf(*form_window.Shown().Find(control, index));
}

void Click(QWidget& window, const char* control, Integer index = -1) {
  QWidget& button = WidgetOf(window, control, index);
  Later(window, [&button] { QTest::mouseClick(&button, Qt::LeftButton); });
}

void ClickPart(QWidget& window, const char* name) {
  auto* const button = window.findChild<QAbstractButton*>(name);
  Later(window, [button] { QTest::mouseClick(button, Qt::LeftButton); });
}

void Press(QWidget& window, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QWidget* const focus = window.focusWidget() != nullptr ? window.focusWidget() : &window;
  Later(window, [focus, key, modifiers] { QTest::keyClick(focus, key, modifiers); });
}

class Pictures {
 public:
  // The books lie where somebody's would, below the folder at hand, so that pictures show no folder of a test.
  Pictures(const QString& folder, bool long_words, QSize size)
      : folder_(QDir(folder).absolutePath()), long_words_(long_words), size_(size) {
    QDir().mkpath(folder_);
    QDir::setCurrent(QString::fromStdString(temp_.Path()));
    QDir().mkpath(QString::fromStdString(In()));
  }

  void Take() {
    MakeBooks();
    platform_.SetApp(&app_);
    MainWindow window(app_, settings_, style_, &means_);
    platform_.SetMainWindow(&window);
    window.resize(size_);
    window.show();
    Keep(window, "start");
    window.OpenBook(In("north-shop.tbk"));
    window.resize(size_);
    window.Figures().GoToDate(DateFromParts(2025, 3, 5));
    Keep(window, "account");
    Typing(window);
    FigureChoice choice = window.Figures().Table().Choice();
    choice.view = FigureView::kField;
    window.Figures().Choose(choice);
    Keep(window, "field");
    choice.view = FigureView::kDate;
    choice.level = engine::kQuarterLevel;
    window.Figures().Choose(choice);
    Keep(window, "date");
    choice.view = FigureView::kAccount;
    choice.level = kPeriodLevel;
    choice.stretch = engine::kYearLevel;
    window.Figures().Choose(choice);
    window.Chart().setFocus();
    QKeyEvent key(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier);
    QApplication::sendEvent(&window.Chart(), &key);
    Keep(window, "chart");
    Preview(window);
    Dialogs(window);
    Wizard(window);
    Lists(window);
    Check(window);
    Exchange(window);
    Help help;
    help.Show("guide/README.md");
    for (QWidget* each : QApplication::topLevelWidgets()) {
      if (each->windowTitle() == "Help") Keep(*each, "help");
    }
    platform_.SetMainWindow(nullptr);
  }

 private:
  static Text In(const Text& name = "") { return "Books/" + name; }

  void MakeBooks() {
    engine::BookDescription shop = application::DemoShop();
    if (long_words_) {
      for (auto& account : shop.accounts) account.description += " and whatever else belongs to it in this branch";
      for (auto& field : shop.fields) field.description += " before taxes, discounts and returns of goods";
    }
    engine::Book::Create(In("north-shop.tbk"), shop);
    engine::Book::Create(In("head-office.tbk"), application::DemoOffice());
    const auto book = engine::Book::Open(In("north-shop.tbk"), app_);
    application::ChangeFigures(*book, "set 100 2025-03-05 1 2500", {{101, DateFromParts(2025, 3, 5), 1, 2500}});
    book->SetOperation(engine::JournalKind::kUndo, "undo");
    (void)engine::Journal(*book).UndoNewest();
    application::ChangeFigures(
        *book, "paste 2 figures",
        {{101, DateFromParts(2025, 3, 6), 1, 2500}, {101, DateFromParts(2025, 3, 7), 1, -2500.5}});
    application::ChangeFigures(*book, "set 100 2025-03-06 1 2600", {{101, DateFromParts(2025, 3, 6), 1, 2600}});
  }

  void Keep(QWidget& window, const QString& name) {
    Settle();
    const QString path = folder_ + "/" + name + ".png";
    if (!window.grab().save(path)) std::cerr << path.toStdString() << " cannot be written\n";
  }

  void Typing(MainWindow& window) {
    FigureModel& model = window.Figures().Model();
    model.setData(model.index(5, 1), "12x", Qt::EditRole);
    window.Figures().Grid().GoTo(3, 0);
    window.Figures().Grid().selectionModel()->select(QItemSelection(model.index(3, 0), model.index(8, 1)),
                                                     QItemSelectionModel::Select);
    Keep(window, "typing");
    model.Unmark(5, 1);
  }

  void Preview(MainWindow& window) {
    FigureTable& table = window.Figures().Table();
    FigureChoice choice = table.Choice();
    choice.level = kDayLevel;
    window.Figures().Choose(choice);
    const PasteBlock block = LayOnTable(table, {3, 0, 3, 0}, "1\t2\n3\t4\n-5\t6\n", style_.numbers);
    PastePreview preview(&window, table, block, style_, "Paste");
    preview.show();
    Keep(preview, "paste");
  }

  void Dialogs(MainWindow& window) {
    BookReader reader(In("north-shop.tbk"), app_);
    JournalWindow journal(&window, reader, style_, [](const engine::JournalEntry&) { return false; });
    journal.show();
    Keep(journal, "journal");
    journal.hide();
    Histories(window, reader);
    SettingsDialog settings(&window, temp_.Path("tallybook.ini"));
    settings.show();
    Keep(settings, "settings");
    DateDialog date(&window, style_, DateFromParts(2025, 3, 5), DateFromParts(2024, 1, 1), DateFromParts(2025, 12, 31));
    date.show();
    Keep(date, "date-dialog");
  }

  // Where a figure comes from, and what is asked where it was changed since.
  void Histories(MainWindow& window, BookReader& reader) {
    const Date date = DateFromParts(2025, 3, 6);
    const engine::BookDescription& lists = reader.Description();
    const auto account = std::ranges::find(lists.accounts, 101, &engine::AccountDescription::number);
    const QString figure = QString("%1 %2, %3, %4")
                               .arg(ToQt(account->code), ToQt(account->description),
                                    ToQt(lists.fields.front().description), ToQt(style_.dates(date)));
    OriginWindow origin(&window, style_, figure,
                        application::OriginOf(reader.Read(), account->number, date, lists.fields.front().number), {});
    origin.show();
    Keep(origin, "origin");
    origin.hide();
    reader.Rest();
    const auto book = engine::Book::Open(In("north-shop.tbk"), app_);
    engine::Journal entries(*book);
    constexpr Long kPasted = 3;
    const engine::UndoOutcome look = entries.TakeBack({.id = kPasted, .only_look = true});
    UndoDialog undo(*book, entries.Entries(), look, &window);
    undo.show();
    Keep(undo, "undo");
  }

  void Wizard(MainWindow& window) {
    NewBookWizard wizard(&window, style_, In());
    wizard.show();
    const auto lines = wizard.findChildren<QWidget*>();
    Keep(wizard, "new-1");
    for (auto* line : wizard.findChildren<QWidget*>()) {
      if (line->accessibleName() == "Name") line->setProperty("text", "North Shop");
    }
    wizard.next();
    Keep(wizard, "new-2");
    wizard.next();
    Keep(wizard, "new-3");
    for (auto* list : wizard.findChildren<QWidget*>()) {
      if (list->accessibleName().startsWith("Accounts"))
        list->setProperty("plainText", "4100 Groceries\n4110 Bakery\n");
      if (list->accessibleName() == "Fields") list->setProperty("plainText", "Sales\nCost of goods\n");
    }
    wizard.next();
    Keep(wizard, "new-4");
  }

  // Accounts, fields and years: edited, pasted, and asked about. Nothing of it comes into the book.
  void Lists(MainWindow& window) {
    temp_.Write(In("TBQDX1.north-shop"), "\"Branch\",\"in/*.QDX\",1,0,0\r\n0,1\r\n\"f\",\"100\"\r\n0\r\n");
    Conversations run(means_, In("north-shop.tbk"), window);
    ListsWindow lists(&window, run, platform_.Files(), In("north-shop.tbk"), app_, style_);
    lists.show();
    auto& pages = *lists.findChild<QTabWidget*>();
    auto& rows = *pages.widget(0)->findChild<QTableView*>("rows");
    rows.setFocus();
    const auto go_to = [&rows](int row) {
      rows.selectionModel()->setCurrentIndex(rows.model()->index(row, 1),
                                             QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    };
    go_to(2);
    const auto fill = [](QWidget& dialog, const QStringList& texts) {
      const auto lines = dialog.findChildren<QLineEdit*>();
      for (qsizetype at = 0; at < texts.size(); ++at) lines[at]->setText(texts[at]);
    };
    walk_.Then("Add Account", [this, fill](QWidget& dialog) {
      fill(dialog, {"160", "Kiosk"});
      Keep(dialog, "lists-add");
      fill(dialog, {"130"});
      Press(dialog, Qt::Key_Return);
    });
    walk_.Then("Add Account", [this, fill](QWidget& dialog) {
      Keep(dialog, "lists-refused");
      fill(dialog, {"160"});
      Press(dialog, Qt::Key_Return);
    });
    Settle();
    QTest::keyClick(&rows, Qt::Key_Insert);
    QTest::keyClick(&rows, Qt::Key_Up, Qt::AltModifier);
    go_to(0);
    walk_.Then("Edit Account", [fill](QWidget& dialog) {
      fill(dialog, {"101"});
      Press(dialog, Qt::Key_Return);
    });
    QTest::keyClick(&rows, Qt::Key_F2);
    Keep(lists, "lists-accounts");
    QApplication::clipboard()->setText("4200;Kiosk\n4210;Car park\n4220;Bakery of the station\n");
    walk_.Then("Paste Accounts", [this](QWidget& dialog) {
      Keep(dialog, "lists-paste");
      Press(dialog, Qt::Key_Escape);
    });
    QTest::keyClick(&rows, Qt::Key_V, Qt::ControlModifier);
    pages.setCurrentIndex(1);
    Keep(lists, "lists-fields");
    pages.setCurrentIndex(2);
    lists.findChild<QSpinBox*>("held")->setValue(10);
    Keep(lists, "lists-years");
    pages.setCurrentIndex(0);
    go_to(1);
    QTest::keyClick(&rows, Qt::Key_Delete);
    walk_.Then("Change the Lists", [this](QWidget& dialog) {
      Keep(dialog, "lists-question");
      Press(dialog, Qt::Key_Escape);
    });
    lists.accept();
    walk_.Then("Accounts, Fields, Years", [this](QWidget& box) {
      Keep(box, "lists-leave");
      ClickText(box, "Leave");
    });
    lists.reject();
  }

  void Check(MainWindow& window) {
    Conversations run(means_, In("north-shop.tbk"), window);
    CareActs care(window, run, In("north-shop.tbk"));
    walk_.Then("Check of", [this](QWidget& report) {
      Keep(report, "check");
      Later(report, [&report] { report.close(); });
    });
    care.Check();
    while (!walk_.IsDone()) Settle(20);
  }

  static void ClickText(QWidget& window, const QString& words) {
    for (auto* button : window.findChildren<QPushButton*>()) {
      if (button->text().remove('&') == words) Later(window, [button] { button->click(); });
    }
  }

  // A year of the shop goes into the office: exported, matched by keys, imported, and the report of it.
  void Exchange(MainWindow& window) {
    const QString file = QString::fromStdString(In("north-2024.QDX"));
    window.Figures().GoToDate(DateFromParts(application::kDemoYear, 3, 5));
    Export(window, file);
    const QString kept = QString::fromStdString(In("north-2024-kept.QDX"));
    QFile::copy(file, kept);
    window.OpenBook(In("head-office.tbk"));
    Define(file);
    walk_.Then("QDX Import Layouts", [this](QWidget& list) {
      Keep(list, "definitions");
      ClickPart(list, "action1");
    });
    walk_.Then("Edit QDX Import Layout", [this](QWidget& dialog) {
      QTest::keyClick(&WidgetOf(dialog, "Combo1"), Qt::Key_Down);
      QTest::keyClick(&WidgetOf(dialog, "Combo1"), Qt::Key_Down);
      Keep(dialog, "import");
      ClickPart(dialog, "SaveButtons1Added");
    });
    walk_.Then("Preview", [this](QWidget& preview) {
      Keep(preview, "preview");
      auto& pages = *preview.findChild<QTabWidget*>("pages");
      for (int page = 1; page < pages.count(); ++page) {
        pages.setCurrentIndex(page);
        Keep(preview, QString("preview-%1").arg(page + 1));
      }
      ClickPart(preview, "import");
    });
    walk_.Then("QDX Import Report", [this](QWidget& report) {
      Keep(report, "report");
      Later(report, [&report] { report.close(); });
    });
    walk_.Then("QDX Import Layouts", [](QWidget& list) { Press(list, Qt::Key_Escape); });
    window.activateWindow();
    Conversations run(means_, In("head-office.tbk"), window);
    (void)run.Definitions(file.toStdString());
    window.Figures().LookAgain();
    Keep(window, "office");
    ImportNothing(window);
    HoldAgainst(window, kept);
    CheckAFile(window);
    CheckExchangeFile(window, kept);
    Prompts(window);
  }

  // Two files of which one is none, all or nothing.
  void ImportNothing(MainWindow& window) {
    temp_.Write(In("south-1.QDX"), "no figures");
    temp_.Write(In("TBQDX2.head-office"),
                "\"South Shop\",\"" + In("south-?.QDX") + "\",1,0,0\r\n0,1\r\n\"f\",\"4100\"\r\n0\r\n");
    walk_.Then("QDX Import Layouts", [](QWidget& list) {
      ClickPart(list, "switch");
      QTest::keyClick(list.findChild<QTableView*>("rows"), Qt::Key_End);
      ClickPart(list, "action2");
    });
    for (int box = 0; box < 2; ++box) walk_.Then("Tallybook", [](QWidget& told) { Press(told, Qt::Key_Return); });
    walk_.Then("QDX Import Report", [this](QWidget& report) {
      Keep(report, "report-nothing");
      Later(report, [&report] { report.close(); });
    });
    walk_.Then("QDX Import Layouts", [this](QWidget& list) {
      Keep(list, "definitions-whole");
      ClickPart(list, "switch");
      Press(list, Qt::Key_Escape);
    });
    window.activateWindow();
    Conversations run(means_, In("head-office.tbk"), window);
    (void)run.Definitions();
    QFile::remove(QString::fromStdString(In("TBQDX2.head-office")));
  }

  // The definition does not know all accounts of the file.
  void CheckExchangeFile(MainWindow& window, const QString& file) {
    TriggerText(window, "Check a File");
    QWidget& check = Titled("Check a File");
    check.findChild<QLineEdit*>("file_name")->setText(file);
    Keep(check, "file-check-exchange-begin");
    check.findChild<QPushButton*>("check")->click();
    QTest::keyClick(check.focusWidget(), Qt::Key_Down);
    Keep(check, "file-check-exchange");
    check.findChild<QLineEdit*>("file_name")->setText(QString::fromStdString(In("january.csv")));
    check.findChild<QComboBox*>("kind")->setCurrentIndex(2);
    check.findChild<QPushButton*>("check")->click();
    Keep(check, "file-check-no-exchange");
    check.close();
    Settle();
  }

  // The prompts of text files with what stands beside their buttons.
  void Prompts(MainWindow& window) {
    walk_.Then("Import CSV Data File", [this](QWidget& prompt) {
      Keep(prompt, "prompt-csv");
      Press(prompt, Qt::Key_Escape);
    });
    Conversations run(means_, In("head-office.tbk"), window);
    (void)run.ImportCsv(In("january.csv"));
    walk_.Then("Import Delimited File", [this](QWidget& prompt) {
      Keep(prompt, "prompt-delimited");
      Press(prompt, Qt::Key_Escape);
    });
    (void)run.ImportDelimited(In("january.csv"));
  }

  // The file held against the office's book, in which somebody has typed since.
  void HoldAgainst(MainWindow& window, const QString& file) {
    {
      const auto book = engine::Book::Open(In("head-office.tbk"), app_);
      const engine::BookDescription& lists = book->Description();
      for (const int month : {3, 4}) {
        const auto& account = lists.accounts[static_cast<std::size_t>(month - 3)];
        application::ChangeFigures(*book, "set",
                                   {{account.number, DateFromParts(application::kDemoYear, month, 5),
                                     lists.fields[1].number, 1234.5 * month}});
      }
    }
    window.Figures().LookAgain();
    TriggerText(window, "Tie Out");
    QWidget& tie_out = Titled("Tie-Out");
    Keep(tie_out, "tie-out-begin");
    tie_out.findChild<QLineEdit*>("file_name")->setText(file);
    tie_out.findChild<QPushButton*>("hold")->click();
    Keep(tie_out, "tie-out");
    auto& pages = *tie_out.findChild<QTabWidget*>("pages");
    for (int page = 1; page < pages.count(); ++page) {
      pages.setCurrentIndex(page);
      Keep(tie_out, QString("tie-out-%1").arg(page + 1));
    }
    tie_out.close();
    Settle();
  }

  // A file with findings of each kind.
  void CheckAFile(MainWindow& window) {
    temp_.Write(In("january.csv"),
                "1,5,2024,1,1\r\n4100,1,\"1.234,50\"\r\n4110,1,812.40\r\n4115,1,12.50\r\n4120,2,331.18 EUR\r\n"
                "4130,9,141\r\n4100,1,99\r\n4140,3,\"7,5\"\r\n");
    TriggerText(window, "Check a File");
    QWidget& check = Titled("Check a File");
    Keep(check, "file-check-begin");
    check.findChild<QLineEdit*>("file_name")->setText(QString::fromStdString(In("january.csv")));
    check.findChild<QPushButton*>("check")->click();
    QTest::keyClick(check.focusWidget(), Qt::Key_Down);
    Keep(check, "file-check");
    check.findChild<QComboBox*>("kind")->setCurrentIndex(1);
    Keep(check, "file-check-delimited");
    check.close();
    Settle();
  }

  static void TriggerText(MainWindow& window, const QString& words) {
    for (auto* action : window.findChildren<QAction*>()) {
      if (action->text().remove('&').startsWith(words)) return action->trigger();
    }
    std::cerr << "no menu has " << words.toStdString() << '\n';
    std::exit(1);
  }

  static QWidget& Titled(const QString& title) {
    for (QWidget* each : QApplication::topLevelWidgets()) {
      if (each->isVisible() && each->windowTitle() == title) return *each;
    }
    std::cerr << "never shown: " << title.toStdString() << '\n';
    std::exit(1);
  }

  void Export(MainWindow& window, const QString& file) {
    walk_.Then("Export Data to QDX File", [this](QWidget& dialog) {
      QWidget& year = WidgetOf(dialog, "optLength", 6);
      QTest::mouseClick(&year, Qt::LeftButton, {},
                        QPoint(QApplication::isRightToLeft() ? year.width() - year.height() / 2 : year.height() / 2,
                               year.height() / 2));
      Keep(dialog, "export");
      Click(dialog, "Command1", 2);
    });
    walk_.Then("Export Data to QDX File", [this, file](QWidget& dialog) {
      auto& box = dynamic_cast<QLineEdit&>(WidgetOf(dialog, "Text1"));
      box.selectAll();
      QTest::keyClicks(&box, file);
      Keep(dialog, "export-file");
      Press(dialog, Qt::Key_Return);
    });
    Conversations run(means_, In("north-shop.tbk"), window);
    Date date = DateFromParts(application::kDemoYear, 3, 5);
    (void)run.ExportQdx(date);
  }

  void Define(const QString& file) {
    walk_.Then("Open QDX File", [file](QWidget& dialog) {
      auto& box = dynamic_cast<QLineEdit&>(WidgetOf(dialog, "Text1"));
      box.selectAll();
      QTest::keyClicks(&box, file);
      Press(dialog, Qt::Key_Return);
    });
    walk_.Then("Add QDX Import Layout", [this](QWidget& editor) {
      auto& title = dynamic_cast<QLineEdit&>(WidgetOf(editor, "Text1"));
      title.selectAll();
      QTest::keyClicks(&title, "North Shop, the year");
      Keep(editor, "definition");
      Press(editor, Qt::Key_PageDown, Qt::ControlModifier);
      Settle();
      for (const char* keys : {"4100", "4110", "4120", "4130"}) {
        QTest::keyClicks(editor.focusWidget(), keys);
        Settle(app_.TypeAheadDelay() + 100);  // the next row is a search of its own
        if (keys != Text("4130")) QTest::keyClick(editor.focusWidget(), Qt::Key_Down);
      }
      Keep(editor, "match");
      QTest::keyClick(editor.focusWidget(), Qt::Key_PageDown, Qt::ControlModifier);
      Settle();
      for (int row = 0; row < 3; ++row) QTest::keyClick(editor.focusWidget(), Qt::Key_Plus);
      Keep(editor, "match-fields");
      Click(editor, "SaveButtons1");
    });
  }

  QString folder_;
  bool long_words_;
  QSize size_;
  testing::TempFolder temp_;
  QtPlatform platform_;
  DesktopApp app_{{.title = {},
                   .settings_file = temp_.Path("tallybook.ini"),
                   .log_file = temp_.Path("log"),
                   .import_folder = In(),
                   .data_folder = In()}};
  DesktopFactory factory_{platform_.Handles(), platform_.Progress()};
  ConversationMeans means_{.platform = platform_, .app = app_, .factory = factory_};
  Walk walk_;
  DesktopSettings settings_{temp_.Path("desktop.ini")};
  LocaleStyle style_ = SystemStyle();
};

}  // namespace
}  // namespace tallybook::desktop

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() < 2) {
    std::cerr << "usage: desktop_pictures FOLDER [dark] [rtl] [long] [small]\n";
    return 2;
  }
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  if (arguments.contains("dark")) QApplication::setPalette(tallybook::desktop::DarkPalette());
  if (arguments.contains("rtl")) QApplication::setLayoutDirection(Qt::RightToLeft);
  tallybook::desktop::Pictures(arguments[1], arguments.contains("long"),
                               arguments.contains("small") ? QSize(1024, 640) : QSize(1200, 760))
      .Take();
  return 0;
}
