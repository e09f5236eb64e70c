// The road of somebody who has the program for the first time, by keyboard alone: a book is made, figures are typed and
// exported; a second book gets a definition whose rows are matched by keys, imports, prints the report, and takes the
// import back. Every key goes to whatever has the focus.
#include <QtCore/QFile>
#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QRadioButton>
#include <QtWidgets/QStatusBar>
#include <QtWidgets/QTableView>
#include <QtWidgets/QWizard>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/window/DeskStage.h"

namespace tallybook::desktop {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::WaitUntil;
using testing::WhenShown;

constexpr const char* kList = "QDX Import Layouts";

class RoadTest : public ::testing::Test, protected testing::DeskStage {
 protected:
  RoadTest() : DeskStage("Tallybook") { EXPECT_TRUE(testing::BringToFront(window_)); }

  // --- Keys ----------------------------------------------------------------------------------------------------------

  static QWidget* Focus() {
    if (QWidget* const popup = QApplication::activePopupWidget())
      return popup->focusWidget() != nullptr ? popup->focusWidget() : popup;
    return QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : QApplication::activeWindow();
  }
  static void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    ASSERT_NE(Focus(), nullptr) << "nothing has the focus";
    QTest::keyClick(Focus(), static_cast<Qt::Key>(key), modifiers);
  }
  static void Type(const QString& text) {
    for (const QChar character : text) {
      ASSERT_NE(Focus(), nullptr) << "nothing has the focus";
      QTest::keyClick(Focus(), character.toLatin1());
    }
  }
  // Instead of what stands in the box.
  static void TypeAnew(const QString& text) {
    Press(Qt::Key_A, Qt::ControlModifier);
    Type(text);
  }
  // Behind the step that does it: what it opens is the next step's.
  static WhenShown::Act PressLater(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return [=](QWidget& window) { QTimer::singleShot(0, &window, [=] { Press(key, modifiers); }); };
  }
  // The same, once the window is in front and has answered what was done before: until then it takes no keys.
  static WhenShown::Act PressWhenReady(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return [=](QWidget& window) {
      auto* const look = new QTimer(&window);
      QObject::connect(look, &QTimer::timeout, &window, [=, &window] {
        if (!window.isActiveWindow()) return window.activateWindow();
        if (window.property("busy").toBool()) return;
        look->stop();
        look->deleteLater();
        Press(key, modifiers);
      });
      constexpr int kEvery = 10;  // milliseconds
      look->start(kEvery);
    };
  }
  // Keys of the main window, once it is in front.
  void PressInMain(int key, Qt::KeyboardModifiers modifiers) {
    ASSERT_TRUE(testing::BringToFront(window_));
    ASSERT_TRUE(WaitUntil([] { return QApplication::focusWidget() != nullptr; }, "the main window has the focus"));
    Press(key, modifiers);
  }

  // --- What the user does --------------------------------------------------------------------------------------------

  // The four pages.
  static WhenShown::Act MakeBook(const QString& name, const QStringList& accounts) {
    return [=](QWidget& dialog) {
      auto& wizard = dynamic_cast<QWizard&>(dialog);
      const auto go_on = [&](int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        const int before = wizard.currentId();
        Press(key, modifiers);
        WaitUntil([&] { return wizard.currentId() != before; }, "the next page");
      };
      Type(name);
      go_on(Qt::Key_Return);
      go_on(Qt::Key_Return);
      for (const QString& account : accounts) {
        Type(account);
        Press(Qt::Key_Return);
      }
      Press(Qt::Key_D, Qt::AltModifier);
      for (const char* field : {"Sales", "Guests"}) {
        Type(field);
        Press(Qt::Key_Return);
      }
      go_on(Qt::Key_N, Qt::AltModifier);
      QTimer::singleShot(0, &wizard, [] { Press(Qt::Key_Return); });
    };
  }
  QString Cell(int row, int column) { return window_.Figures().Grid().model()->index(row, column).data().toString(); }
  // The table looks at the book again once the conversation has come back.
  void ExpectFigures(const QStringList& wanted) {
    const auto shown = [this] { return QStringList{Cell(0, 0), Cell(1, 0), Cell(2, 0)}; };
    WaitUntil([&] { return shown() == wanted; }, "the figures of the book stand in the table");
    EXPECT_EQ(shown().join(' ').toStdString(), wanted.join(' ').toStdString())
        << window_.Figures().Grid().model()->headerData(0, Qt::Vertical).toString().toStdString();
  }
  [[nodiscard]] QString Path(const char* name) const { return QString::fromStdString(folder_.Path(name)); }

  void MakeTheShop() {
    WhenShown user;
    user.Then("New Book", MakeBook("Corner Shop", {"100 Front", "200 Terrace"}));
    PressInMain(Qt::Key_M, Qt::AltModifier);
    WaitUntil([this] { return !window_.BookPath().empty(); }, "the book is open");
    EXPECT_EQ(window_.BookPath(), folder_.Path("corner-shop.tbk"));
  }
  void TypeFigures() {
    WaitUntil([this] { return window_.Figures().Grid().hasFocus(); }, "the figures have the focus");
    Press(Qt::Key_Home, Qt::ControlModifier);
    for (const char* figure : {"12.5", "7", "0.25"}) {
      Type(figure);
      Press(Qt::Key_Return);
    }
    WaitUntil([this] { return Cell(0, 0) == "12.50" && Cell(1, 0) == "7.00" && Cell(2, 0) == "0.25"; },
              "the figures stand there, with as many decimals as the column needs");
  }
  void Export() {
    WhenShown user;
    user.Then("Export Data to QDX File",
              [](QWidget& dialog) {
                Press(Qt::Key_Y, Qt::AltModifier);  // the year
                const auto options = dialog.findChildren<QRadioButton*>();
                WaitUntil(
                    [&] {
                      return std::ranges::any_of(
                          options, [](const auto* option) { return option->isChecked() && option->text() == "&Year"; });
                    },
                    "the year is chosen");
                QTimer::singleShot(0, &dialog, [] { Press(Qt::Key_Return); });
              })
        .Then("Export Data to QDX File", [this](QWidget& dialog) {
          TypeAnew(Path("shop.QDX"));
          QTimer::singleShot(0, &dialog, [] { Press(Qt::Key_Return); });
        });
    PressInMain(Qt::Key_E, Qt::ControlModifier);
    EXPECT_TRUE(QFile::exists(Path("shop.QDX")));
    EXPECT_THAT(window_.statusBar()->currentMessage().toStdString(), HasSubstr("shop.QDX"));
  }
  void MakeTheOffice() {
    WhenShown user;
    user.Then("New Book", MakeBook("Head Office", {"4100 Shop front", "4200 Shop terrace"}));
    PressInMain(Qt::Key_N, Qt::ControlModifier);
    WaitUntil([this] { return window_.BookPath() == folder_.Path("head-office.tbk"); }, "the second book is open");
  }
  // The next page of the editor, with its list in hand.
  static void TurnTo(const char* list) {
    Press(Qt::Key_PageDown, Qt::ControlModifier);
    WaitUntil([&] { return Focus() != nullptr && Focus()->objectName() == list; }, list);
  }
  // The list, a new definition in it, and its rows matched.
  void Define(WhenShown& user) {
    user.Then(kList, PressWhenReady(Qt::Key_A, Qt::AltModifier))
        .Then("Open QDX File",
              [this](QWidget& prompt) {
                TypeAnew(Path("shop.QDX"));
                QTimer::singleShot(0, &prompt, [] { Press(Qt::Key_Return); });
              })
        .Then("Add QDX Import Layout", [this](QWidget& editor) {
          TypeAnew("The shop");
          TurnTo("cboGridList1");
          Type("4100");
          QTest::qWait(app_.TypeAheadDelay() + 200);  // what is typed on is another search then
          Press(Qt::Key_Down);
          Type("4200");
          TurnTo("cboGridList2");
          for (int field = 0; field < 2; ++field) Type("*");
          QTimer::singleShot(0, &editor, [] { Press(Qt::Key_S, Qt::AltModifier); });
        });
  }
  void ImportAndPrint(WhenShown& user) {
    user.Then(kList, PressWhenReady(Qt::Key_I, Qt::AltModifier))
        .Then("Edit QDX Import Layout Number: 1", PressLater(Qt::Key_Return))
        .Then("QDX Import Report",
              [](QWidget& report) {
                EXPECT_THAT(testing::Part<QLabel>(report, "changes").text().toStdString(),
                            StartsWith("Changed: figures"));
                QTimer::singleShot(0, &report, [] { Press(Qt::Key_P, Qt::ControlModifier); });
              })
        .Then("Print",
              [this](QWidget& dialog) {
                Press(Qt::Key_F, Qt::AltModifier);  // the file
                TypeAnew(Path("report.pdf"));
                QTimer::singleShot(0, &dialog, [] { Press(Qt::Key_Return); });
              })
        .Then("QDX Import Report", PressLater(Qt::Key_Escape))
        .Then(kList, PressWhenReady(Qt::Key_Escape));
  }
  void TakeBack() {
    WhenShown user;
    user.Then("Journal", PressLater(Qt::Key_U, Qt::AltModifier))
        .Then("Tallybook", PressLater(Qt::Key_Return))
        .Then("Journal", PressLater(Qt::Key_Escape));
    PressInMain(Qt::Key_J, Qt::ControlModifier);
  }
};

TEST_F(RoadTest, ABookIsMadeTypedIntoExportedMatchedImportedPrintedAndTakenBackByKeyboardAlone) {
  ASSERT_NO_FATAL_FAILURE(MakeTheShop());
  ASSERT_FALSE(HasFailure());
  ASSERT_NO_FATAL_FAILURE(TypeFigures());
  ASSERT_FALSE(HasFailure());
  ASSERT_NO_FATAL_FAILURE(Export());
  ASSERT_FALSE(HasFailure());
  ASSERT_NO_FATAL_FAILURE(MakeTheOffice());
  ASSERT_FALSE(HasFailure());
  EXPECT_EQ(Cell(0, 0), "\u2013");
  {
    WhenShown user;
    Define(user);
    ImportAndPrint(user);
    PressInMain(Qt::Key_D, Qt::ControlModifier);
  }
  ASSERT_FALSE(HasFailure());
  ExpectFigures({"12.50", "7.00", "0.25"});
  EXPECT_TRUE(QFile::exists(Path("report.pdf")));
  TakeBack();
  ExpectFigures({"\u2013", "\u2013", "\u2013"});
}

}  // namespace
}  // namespace tallybook::desktop
