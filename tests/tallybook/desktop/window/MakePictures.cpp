// Shows each window of the desktop and keeps pictures of them: desktop_pictures FOLDER [dark] [rtl] [long] [small]. scripts/pictures
// runs it in all combinations. Nothing of the user's is touched: books are made in a folder of their own.
#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QStyleFactory>
#include <iostream>

#include "base/Dates.h"
#include "platform/posix/PosixPlatform.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/figures/ChartView.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/figures/PastePreview.h"
#include "tallybook/desktop/window/DateDialog.h"
#include "tallybook/desktop/window/JournalWindow.h"
#include "tallybook/desktop/window/KeysDialog.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tallybook/desktop/window/NewBookWizard.h"
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

class Pictures {
 public:
  Pictures(QString folder, bool long_words, QSize size)
      : folder_(std::move(folder)), long_words_(long_words), size_(size) {
    QDir().mkpath(folder_);
  }

  void Take() {
    MakeBooks();
    MainWindow window(app_, settings_, style_);
    window.resize(size_);
    window.show();
    Keep(window, "start");
    window.OpenBook(temp_.Path("north-shop.tbk"));
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
  }

 private:
  void MakeBooks() {
    engine::BookDescription shop = application::DemoShop();
    if (long_words_) {
      for (auto& account : shop.accounts) account.description += " and whatever else belongs to it in this branch";
      for (auto& field : shop.fields) field.description += " before taxes, discounts and returns of goods";
    }
    engine::Book::Create(temp_.Path("north-shop.tbk"), shop);
    const auto book = engine::Book::Open(temp_.Path("north-shop.tbk"), app_);
    application::ChangeFigures(*book, "set 100 2025-03-05 1 2500", {{101, DateFromParts(2025, 3, 5), 1, 2500}});
    book->SetOperation(engine::JournalKind::kUndo, "undo");
    (void)engine::Journal(*book).UndoNewest();
    application::ChangeFigures(
        *book, "paste 2 figures",
        {{101, DateFromParts(2025, 3, 6), 1, 2500}, {101, DateFromParts(2025, 3, 7), 1, -2500.5}});
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
    BookReader reader(temp_.Path("north-shop.tbk"), app_);
    JournalWindow journal(&window, reader, style_, [](const engine::JournalEntry&) { return false; });
    journal.show();
    Keep(journal, "journal");
    SettingsDialog settings(&window, temp_.Path("tallybook.ini"));
    settings.show();
    Keep(settings, "settings");
    DateDialog date(&window, style_, DateFromParts(2025, 3, 5), DateFromParts(2024, 1, 1), DateFromParts(2025, 12, 31));
    date.show();
    Keep(date, "date-dialog");
  }

  void Wizard(MainWindow& window) {
    NewBookWizard wizard(&window, style_, temp_.Path());
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

  QString folder_;
  bool long_words_;
  QSize size_;
  testing::TempFolder temp_;
  application::ReferenceApp app_{{.title = {},
                                  .settings_file = temp_.Path("tallybook.ini"),
                                  .log_file = temp_.Path("log"),
                                  .import_folder = {},
                                  .data_folder = {}}};
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
  tallybook::InstallPlatform(tallybook::PosixPlatform("Tallybook"));
  tallybook::desktop::Pictures(arguments[1], arguments.contains("long"),
                               arguments.contains("small") ? QSize(1024, 640) : QSize(1200, 760))
      .Take();
  return 0;
}
