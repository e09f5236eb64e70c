#include <QtCore/QTimer>
#include <QtGui/QClipboard>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QCommandLinkButton>
#include <QtWidgets/QDialog>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QStyle>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/ReferenceApp.h"
#include "tallybook/desktop/figures/ChartView.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/window/AccountPane.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using tallybook::testing::Get;
using testing::FaultsOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kLimit = 10'000;  // milliseconds

// A shop of two years of days, in a window that stands on the screen.
class MainWindowTest : public tallybook::testing::BookFixture {
 protected:
  MainWindowTest() {
    engine::BookDescription shop = tallybook::testing::ShopDescription();
    for (int day = 1; day <= 31; ++day) shop.values.push_back({101, Day(2003, 1, day), 1, 10.0 * day + 0.25});
    Create(shop);
    window_.emplace(app, settings, StyleOf(QLocale::c()));
    window_->resize(1200, 700);
    window_->show();
    WaitUntilActive();
  }
  ~MainWindowTest() override {
    window_.reset();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  }

  void OpenShop() {
    ASSERT_TRUE(Window().OpenBook(BookPath()));
    Figures().GoToDate(Day(2003, 1, 1));
    Grid().setFocus();
  }

  MainWindow& Window() { return *window_; }
  FigurePane& Figures() { return window_->Figures(); }
  FigureGrid& Grid() { return window_->Figures().Grid(); }

  QString Cell(int row, int column) { return Grid().model()->index(row, column).data().toString(); }
  // A window that is not in front takes no shortcuts. The first one can be there before the window manager is.
  void WaitUntilActive() {
    constexpr int kLongLimit = 60'000;
    const auto is_active = [this] {
      if (!window_->isActiveWindow()) window_->activateWindow();
      return window_->isActiveWindow() && QApplication::focusWidget() != nullptr;
    };
    ASSERT_TRUE(QTest::qWaitFor(is_active, kLongLimit)) << "the main window never came to the front";
  }
  void Press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    WaitUntilActive();
    QWidget* focus = QApplication::focusWidget();
    ASSERT_NE(focus, nullptr);
    QTest::keyClick(focus, key, modifiers);
  }
  void Type(const char* text) {
    WaitUntilActive();
    for (const char* character = text; *character != '\0'; ++character)
      QTest::keyClick(QApplication::focusWidget(), *character);
  }
  // Another program's change of the lists.
  void TakeFirstAccountAway() {
    const auto other = Open();
    engine::BookDescription lists = other->Description();
    lists.accounts.erase(lists.accounts.begin());
    other->Grow(lists, "account remove");
    other->Close();
  }
  QString Status() {
    QString all = Window().statusBar()->currentMessage();
    for (const QLabel* label : Window().statusBar()->findChildren<QLabel*>()) all += " | " + label->text();
    return all;
  }

  // Does `act` in the next dialog that waits, as soon as it is in front; fails where none comes.
  void WhenAsked(std::function<void(QDialog& dialog)> act) {
    asked_ = false;
    watch_ = std::make_unique<QTimer>();
    QObject::connect(watch_.get(), &QTimer::timeout, [this, act = std::move(act), tries = 0]() mutable {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      if (dialog != nullptr) dialog->activateWindow();
      if (dialog == nullptr || !dialog->isVisible() || !dialog->isActiveWindow()) {
        if (++tries < kLimit / 20) return;
        ADD_FAILURE() << "no dialog came";
        watch_->stop();
        return;
      }
      watch_->stop();
      asked_ = true;
      act(*dialog);
    });
    watch_->start(20);
  }
  [[nodiscard]] bool WasAsked() const { return asked_; }

  DesktopSettings settings{folder.Path("desktop.ini")};

 private:
  std::optional<MainWindow> window_;
  std::unique_ptr<QTimer> watch_;
  bool asked_ = false;
};

TEST_F(MainWindowTest, BeginsWithThreeThingsToDo) {
  QStringList words;
  for (const auto* button : Window().findChildren<QAbstractButton*>()) {
    if (button->isVisible() && !button->text().isEmpty()) words << button->text();
  }
  EXPECT_EQ(words, QStringList({"&Open a book", "&Make a book", "&Look at the example"}));
}

TEST_F(MainWindowTest, ItIsSeenWhichOfThemTheKeysAreAt) {
  const auto buttons = Window().findChildren<QCommandLinkButton*>();
  ASSERT_EQ(buttons.size(), 3);
  for (QCommandLinkButton* const button : buttons) {
    button->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    const QImage with_keys = button->grab().toImage();
    buttons[button == buttons[0] ? 1 : 0]->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    EXPECT_NE(button->grab().toImage(), with_keys) << button->text().toStdString();
  }
}

TEST_F(MainWindowTest, ShowsABookWithItsAccountsAndFigures) {
  OpenShop();
  EXPECT_EQ(Window().windowTitle().toStdString(), "North.tbk \u2013 Tallybook");
  EXPECT_EQ(Cell(0, 0), "10.25");
  EXPECT_EQ(Cell(1, 1), "\u2013");
  EXPECT_THAT(Status().toStdString(), HasSubstr("3 accounts, 3 fields, days"));
  EXPECT_THAT(Status().toStdString(), HasSubstr("All is saved"));
}

TEST_F(MainWindowTest, TakesATypedFigureIntoTheBookAtOnce) {
  OpenShop();
  Type("1234.5");
  Press(Qt::Key_Return);
  EXPECT_EQ(Cell(0, 0), "1,234.50");
  EXPECT_EQ(Grid().currentIndex().row(), 1);
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 1), 1234.5);
  const auto book = OpenToRead();
  const auto entries = engine::Journal(*book).Entries();
  ASSERT_EQ(entries.size(), 1U);
  EXPECT_EQ(entries[0].what_ran, "set 100 2003-01-01 1 1234.5");
}

TEST_F(MainWindowTest, GoesRightWithTabAndGivesTheOldFigureBackWithEscape) {
  OpenShop();
  Type("7");
  Press(Qt::Key_Tab);
  EXPECT_EQ(Grid().currentIndex().column(), 1);
  Type("99");
  Press(Qt::Key_Escape);
  EXPECT_EQ(Cell(0, 1), "\u2013");
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 1), 7);
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 4), 0);
}

TEST_F(MainWindowTest, KeepsWhatCannotBeReadInItsCellWithTheReason) {
  OpenShop();
  Type("12x");
  Press(Qt::Key_Return);
  EXPECT_EQ(Cell(0, 0), "12x");
  const QModelIndex cell = Grid().model()->index(0, 0);
  EXPECT_THAT(cell.data(Qt::ToolTipRole).toString().toStdString(), HasSubstr("\"x\" is no part of a number"));
  EXPECT_THAT(Status().toStdString(), HasSubstr("but for what is marked"));
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 1), 10.25);
  Press(Qt::Key_Up);
  Press(Qt::Key_Escape);
  EXPECT_EQ(Cell(0, 0), "10.25");
}

TEST_F(MainWindowTest, SaysWhyASumTakesNoTyping) {
  OpenShop();
  FigureChoice choice = Figures().Table().Choice();
  choice.level = kWeekLevel;
  Figures().Choose(choice);
  Type("5");
  EXPECT_THAT(Status().toStdString(), HasSubstr("This is a sum over a Week."));
  EXPECT_EQ(QApplication::focusWidget(), &Grid()) << "no editor was opened";
}

TEST_F(MainWindowTest, TakesBackWhatWasTypedWithControlZ) {
  OpenShop();
  Type("1");
  Press(Qt::Key_Return);
  Type("2");
  Press(Qt::Key_Return);
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Cell(1, 0), "20.25");
  EXPECT_EQ(Cell(0, 0), "1.00");
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Cell(0, 0), "10.25");
}

TEST_F(MainWindowTest, ShowsOldAndNewBeforeMoreThanOneRowIsPasted) {
  OpenShop();
  QApplication::clipboard()->setText("1\t2\n3\t4\n");
  WhenAsked([](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Paste Figures");
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(WasAsked());
  EXPECT_EQ(Cell(1, 1), "4");
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 2), 1), 3);
  Press(Qt::Key_Z, Qt::ControlModifier);
  EXPECT_EQ(Cell(1, 0), "20.25") << "a paste is taken back as one";
  EXPECT_EQ(Cell(0, 0), "10.25");
}

TEST_F(MainWindowTest, PastesNothingThatIsCancelled) {
  OpenShop();
  QApplication::clipboard()->setText("1\n2\n");
  WhenAsked([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Cell(0, 0), "10.25");
  EXPECT_TRUE(engine::Journal(*OpenToRead()).Entries().empty());
}

TEST_F(MainWindowTest, TellsWhyABlockCannotBePasted) {
  OpenShop();
  QApplication::clipboard()->setText("Sales\n2\n");
  WhenAsked([](QDialog& dialog) {
    EXPECT_THAT(static_cast<QMessageBox&>(dialog).text().toStdString(),
                HasSubstr("Row 1, column 1 of the block: \"Sales\" is no figure"));
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(WasAsked());
}

TEST_F(MainWindowTest, CopiesABlockAsASpreadsheetTakesIt) {
  OpenShop();
  Press(Qt::Key_Down, Qt::ShiftModifier);
  Press(Qt::Key_Right, Qt::ShiftModifier);
  Press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "10.25\t0\n20.25\t0\n");
  Press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), "\tSales\tGuests\nWed 2003-01-01\t10.25\t0\nThu 2003-01-02\t20.25\t0\n");
}

TEST_F(MainWindowTest, AddsUpWhatIsSelected) {
  OpenShop();
  Press(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Status().contains("2 figures selected: 30.50  avg 15.25"); }, kLimit))
      << Status().toStdString();
}

TEST_F(MainWindowTest, ShowsTheTotalOfTheRowsShown) {
  OpenShop();
  const auto total = [&] {
    for (const QTableView* view : Window().findChildren<QTableView*>()) {
      if (view->accessibleName().startsWith("Totals")) return view->model()->index(0, 0).data().toString();
    }
    return QString();
  };
  EXPECT_TRUE(QTest::qWaitFor([&] { return total() == "4,967.75"; }, kLimit)) << total().toStdString();
}

TEST_F(MainWindowTest, GoesThroughTimeByKeys) {
  OpenShop();
  Press(Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(Figures().Table().ShownName(DateText), "February 2003");
  Press(Qt::Key_Left, Qt::ControlModifier);
  Press(Qt::Key_Left, Qt::ControlModifier);
  EXPECT_EQ(Figures().Table().ShownName(DateText), "January 2003");
  EXPECT_THAT(Status().toStdString(), HasSubstr("The book begins here."));
  WhenAsked([](QDialog& dialog) {
    auto* line = dialog.findChild<QLineEdit*>();
    EXPECT_TRUE(line->hasFocus());
    QTest::keyClicks(line, "3 dec 2004");
    QTest::keyClick(line, Qt::Key_Return);
  });
  Press(Qt::Key_G, Qt::ControlModifier);
  EXPECT_TRUE(WasAsked());
  EXPECT_EQ(Figures().Table().ShownName(DateText), "December 2004");
  EXPECT_EQ(Grid().currentIndex().row(), 2);
}

TEST_F(MainWindowTest, FindsAnAccountByAnyPartOfItsWords) {
  OpenShop();
  Press(Qt::Key_F, Qt::ControlModifier);
  Type("store");
  Press(Qt::Key_Return);
  EXPECT_EQ(Figures().CurrentAccount(), 3);
  EXPECT_EQ(QApplication::focusWidget(), &Grid());
}

TEST_F(MainWindowTest, StaysAtTheSameFigureWhenTheViewChanges) {
  OpenShop();
  Grid().GoTo(4, 1);
  Press(Qt::Key_2, Qt::ControlModifier);
  EXPECT_EQ(Figures().Table().ShownName(DateText), "Sun 2003-01-05");
  EXPECT_EQ(Grid().currentIndex().column(), 1);
  Press(Qt::Key_3, Qt::ControlModifier);
  EXPECT_EQ(Figures().Table().Choice().field, 2);
  EXPECT_EQ(Grid().currentIndex().column(), 4);
  EXPECT_EQ(Grid().currentIndex().row(), 0);
}

TEST_F(MainWindowTest, ShowsWhatOthersWriteWithoutLosingThePlace) {
  OpenShop();
  Grid().GoTo(20, 0);
  {
    const auto other = Open();
    tallybook::testing::Put(*other, 101, Day(2003, 1, 21), 1, 555);
    other->Close();
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return Cell(20, 0) == "555.00"; }, kLimit)) << Cell(20, 0).toStdString();
  EXPECT_EQ(Grid().currentIndex().row(), 20);
}

TEST_F(MainWindowTest, KeepsWhatIsBeingTypedWhenOthersWrite) {
  OpenShop();
  Type("12");
  {
    const auto other = Open();
    tallybook::testing::Put(*other, 101, Day(2003, 1, 2), 1, 555);
    other->Close();
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return Cell(1, 0) == "555.00"; }, kLimit));
  Type("3");
  Press(Qt::Key_Return);
  EXPECT_EQ(Cell(0, 0), "123.00");
}

TEST_F(MainWindowTest, WritesWhatIsTypedToTheAccountThatWasSeenWhenOthersTakeOneAway) {
  OpenShop();
  Press(Qt::Key_2, Qt::ControlModifier);
  Grid().setFocus();
  Grid().GoTo(1, 0);
  Type("12");
  TakeFirstAccountAway();
  EXPECT_TRUE(QTest::qWaitFor([&] { return Grid().model()->rowCount() == 2; }, kLimit));
  EXPECT_EQ(Get(*OpenToRead(), 205, Day(2003, 1, 1), 1), 12);
  EXPECT_EQ(Get(*OpenToRead(), 7, Day(2003, 1, 1), 1), 0);
}

TEST_F(MainWindowTest, PastesToTheAccountsThatWereSeenWhenOthersTakeOneAwayBeforeItIsAgreed) {
  OpenShop();
  Press(Qt::Key_2, Qt::ControlModifier);
  Grid().setFocus();
  Grid().GoTo(1, 0);
  QApplication::clipboard()->setText("1\n2\n");
  WhenAsked([&](QDialog& dialog) {
    TakeFirstAccountAway();
    constexpr int kLongerThanALook = 1500;
    QTest::qWait(kLongerThanALook);
    QTest::keyClick(&dialog, Qt::Key_Return);
  });
  Press(Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(WasAsked());
  EXPECT_EQ(Grid().model()->rowCount(), 2);
  EXPECT_EQ(Get(*OpenToRead(), 205, Day(2003, 1, 1), 1), 1);
  EXPECT_EQ(Get(*OpenToRead(), 7, Day(2003, 1, 1), 1), 2);
}

TEST_F(MainWindowTest, TakesWhatIsBeingTypedBeforeItGoesElsewhere) {
  OpenShop();
  Type("12");
  Press(Qt::Key_PageDown, Qt::ControlModifier);
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 1), 12);
  EXPECT_EQ(Figures().CurrentAccount(), 2);
  Grid().setFocus();
  Type("13");
  EXPECT_TRUE(Window().CloseBook());
  EXPECT_EQ(Get(*OpenToRead(), 205, Day(2003, 1, 1), 1), 13);
}

TEST_F(MainWindowTest, WaitsForABookThatIsOpenElsewhereAndWritesThen) {
  OpenShop();
  {
    const auto other = Open();
    Type("77");
    Press(Qt::Key_Return);
    EXPECT_EQ(Cell(0, 0), "77");
    EXPECT_THAT(Status().toStdString(), HasSubstr("1 change to be written"));
    EXPECT_THAT(Status().toStdString(), HasSubstr("open for writing elsewhere"));
  }
  EXPECT_TRUE(QTest::qWaitFor([&] { return Status().contains("All is saved"); }, kLimit)) << Status().toStdString();
  EXPECT_EQ(Get(*OpenToRead(), 101, Day(2003, 1, 1), 1), 77);
}

TEST_F(MainWindowTest, AsksBeforeItLeavesABookInWhichSomethingWaits) {
  OpenShop();
  const auto other = Open();
  Type("77");
  Press(Qt::Key_Return);
  WhenAsked([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
  EXPECT_FALSE(Window().CloseBook());
  EXPECT_TRUE(WasAsked());
  Figures().GiveUpWaiting();
  EXPECT_EQ(Cell(0, 0), "10.25");
  EXPECT_TRUE(Window().CloseBook());
}

TEST_F(MainWindowTest, AsksBeforeWhatCouldNotBeReadIsLost) {
  OpenShop();
  Type("12x");
  Press(Qt::Key_Return);
  WhenAsked([](QDialog& dialog) {
    EXPECT_THAT(static_cast<QMessageBox&>(dialog).informativeText().toStdString(), HasSubstr("could not be read"));
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  EXPECT_FALSE(Window().CloseBook());
  EXPECT_TRUE(WasAsked());
  EXPECT_EQ(Cell(0, 0), "12x");
  WhenAsked([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_G); });
  EXPECT_TRUE(Window().CloseBook());
}

TEST_F(MainWindowTest, ShowsAccountsAndFieldsThatOthersHaveAdded) {
  OpenShop();
  {
    const auto other = Open();
    engine::BookDescription after = other->Description();
    after.accounts.push_back({300, "300", "Cellar"});
    after.fields.push_back({5, "Returns", false});
    other->Grow(after, "account add 300");
    other->Close();
  }
  const auto* list = Window().Accounts().findChild<QListView*>();
  EXPECT_TRUE(QTest::qWaitFor([&] { return list->model()->rowCount() == 4; }, kLimit));
  EXPECT_EQ(list->model()->index(3, 0).data().toString(), "300  Cellar");
  EXPECT_EQ(Grid().model()->columnCount(), 4);
  EXPECT_THAT(Status().toStdString(), HasSubstr("4 accounts, 4 fields, days"));
  EXPECT_EQ(Figures().CurrentAccount(), 1) << "the place stays";
}

TEST_F(MainWindowTest, TellsWhyABookCannotBeOpenedAndStays) {
  WhenAsked([](QDialog& dialog) {
    EXPECT_THAT(static_cast<QMessageBox&>(dialog).text().toStdString(), HasSubstr("none.tbk"));
    QTest::keyClick(&dialog, Qt::Key_Escape);
  });
  EXPECT_FALSE(Window().OpenBook(folder.Path("none.tbk")));
  EXPECT_TRUE(WasAsked());
  EXPECT_EQ(Window().BookPath(), "");
}

TEST_F(MainWindowTest, ShowsATableOfFewerRowsFromALineFarDown) {
  OpenShop();
  Figures().GoToDate(Day(2003, 1, 31));
  EXPECT_EQ(Grid().currentIndex().row(), 30);
  Press(Qt::Key_3, Qt::ControlModifier);
  EXPECT_EQ(Grid().model()->rowCount(), 3);
  EXPECT_EQ(Grid().currentIndex().row(), 0) << "the account stays";
  Press(Qt::Key_1, Qt::ControlModifier);
  EXPECT_EQ(Grid().currentIndex().row(), 30) << "and the date";
}

TEST_F(MainWindowTest, ShowsABookThatWasNeverSeenAtItsNewestFigures) {
  ASSERT_TRUE(Window().OpenBook(BookPath()));
  const FigureChoice& choice = Figures().Table().Choice();
  EXPECT_EQ(choice.date, Day(2003, 1, 31));
  EXPECT_EQ(choice.stretch, kPeriodLevel);
}

TEST_F(MainWindowTest, ShowsAWholeYearOfPeriodsOfABookThatWasNeverSeen) {
  engine::Book::Create(folder.Path("office.tbk"), application::DemoOffice());
  ASSERT_TRUE(Window().OpenBook(folder.Path("office.tbk")));
  EXPECT_EQ(Figures().Table().Choice().stretch, engine::kYearLevel);
}

TEST_F(MainWindowTest, RemembersABookAndHowItWasLookedAt) {
  OpenShop();
  Press(Qt::Key_3, Qt::ControlModifier);
  Press(Qt::Key_K, Qt::ControlModifier);
  EXPECT_FALSE(Window().Chart().isVisible());
  EXPECT_TRUE(Window().CloseBook());
  EXPECT_EQ(settings.RecentBooks().front(), BookPath());
  ASSERT_TRUE(Window().OpenBook(BookPath()));
  EXPECT_EQ(Figures().Table().Choice().view, FigureView::kField);
  EXPECT_FALSE(Window().Chart().isVisible());
}

TEST_F(MainWindowTest, ChartsTheFieldOfTheCurrentColumn) {
  OpenShop();
  EXPECT_EQ(Window().Chart().Data().lines.front().name, "Sales");
  Press(Qt::Key_Right);
  EXPECT_EQ(Window().Chart().Data().lines.front().name, "Guests");
  Window().Chart().setFocus();
  Press(Qt::Key_Home);
  EXPECT_EQ(Window().Chart().UnitWords().toStdString(), "Wed 2003-01-01: Guests 0");
}

TEST_F(MainWindowTest, GivesTheChartAsVectorPictureAndAsPng) {
  OpenShop();
  EXPECT_THAT(Window().Chart().PictureFor("chart.svg"), HasSubstr("<svg"));
  EXPECT_TRUE(Window().Chart().PictureFor("chart.png").starts_with("\x89PNG"));
}

TEST_F(MainWindowTest, ReachesEveryPaneByKeyboard) {
  OpenShop();
  Press(Qt::Key_F6);
  EXPECT_EQ(QApplication::focusWidget(), &Window().Chart());
  Press(Qt::Key_F6);
  EXPECT_EQ(QApplication::focusWidget()->accessibleName(), "Find account");
  Press(Qt::Key_F6);
  EXPECT_EQ(QApplication::focusWidget(), &Grid());
}

// --- What every window must hold to --------------------------------------------------------------------------------

TEST_F(MainWindowTest, TheStartPageIsAGoodWindow) {
  EXPECT_THAT(FaultsOf(Window()), IsEmpty());
}

TEST_F(MainWindowTest, EachViewIsAGoodWindow) {
  OpenShop();
  for (const Qt::Key view : {Qt::Key_1, Qt::Key_2, Qt::Key_3}) {
    Press(view, Qt::ControlModifier);
    EXPECT_TRUE(QTest::qWaitFor([&] { return FaultsOf(Window()).empty(); }, kLimit));
    EXPECT_THAT(FaultsOf(Window()), IsEmpty()) << "view " << static_cast<char>(view);
  }
}

TEST_F(MainWindowTest, ShowsWholeDatesAboveItsColumns) {
  OpenShop();
  Press(Qt::Key_3, Qt::ControlModifier);
  QFont bold = Grid().horizontalHeader()->font();
  bold.setBold(true);
  for (int column = 0; column < Grid().model()->columnCount(); ++column) {
    const QString date = Grid().model()->headerData(column, Qt::Horizontal).toString();
    const int margins = 2 * Grid().style()->pixelMetric(QStyle::PM_HeaderMargin);
    EXPECT_GE(Grid().columnWidth(column), QFontMetrics(bold).horizontalAdvance(date) + margins) << date.toStdString();
  }
}

TEST_F(MainWindowTest, AWindowOnASmallScreenCutsNothingOff) {
  OpenShop();
  Window().resize(1024, 560);
  ASSERT_TRUE(QTest::qWaitFor([&] { return Window().width() <= 1024; }, kLimit));
  EXPECT_LE(Window().minimumSizeHint().width(), 1024);
  EXPECT_LE(Window().minimumSizeHint().height(), 560);
  QApplication::processEvents();
  EXPECT_THAT(FaultsOf(Window()), IsEmpty());
}

TEST_F(MainWindowTest, EachDialogIsAGoodWindow) {
  OpenShop();
  const std::pair<Qt::Key, Qt::KeyboardModifiers> keys[] = {{Qt::Key_J, Qt::ControlModifier},
                                                            {Qt::Key_Comma, Qt::ControlModifier},
                                                            {Qt::Key_G, Qt::ControlModifier},
                                                            {Qt::Key_F1, Qt::ShiftModifier},
                                                            {Qt::Key_V, Qt::ControlModifier}};
  QApplication::clipboard()->setText("1\t2\n3\t4\n");
  for (const auto& [key, modifiers] : keys) {
    WhenAsked([](QDialog& dialog) {
      QApplication::processEvents();
      EXPECT_THAT(FaultsOf(dialog), IsEmpty()) << dialog.windowTitle().toStdString();
      QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    Press(key, modifiers);
    EXPECT_TRUE(WasAsked()) << key;
  }
}

// Alt with the same letter would choose now this menu, now that.
TEST_F(MainWindowTest, NoTwoActsOfAMenuShareALetter) {
  OpenShop();
  std::vector<QList<QAction*>> menus = {Window().menuBar()->actions()};
  for (const QMenu* menu : Window().findChildren<QMenu*>()) menus.push_back(menu->actions());
  for (const QList<QAction*>& actions : menus) {
    std::set<QString> letters;
    for (const QAction* action : actions) {
      const QString mnemonic = QKeySequence::mnemonic(action->text()).toString();
      if (mnemonic.isEmpty()) continue;
      EXPECT_TRUE(letters.insert(mnemonic).second) << action->text().toStdString();
    }
  }
}

TEST_F(MainWindowTest, NoTwoActsShareAShortcut) {
  OpenShop();
  std::set<QString> keys;
  for (const QAction* action : Window().findChildren<QAction*>()) {
    for (const QKeySequence& shortcut : action->shortcuts())
      EXPECT_TRUE(keys.insert(shortcut.toString()).second) << shortcut.toString().toStdString();
  }
}

}  // namespace
}  // namespace tallybook::desktop
