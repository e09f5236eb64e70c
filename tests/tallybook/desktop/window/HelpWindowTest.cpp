#include <QtCore/QTimer>
#include <QtGui/QTextBlock>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextBrowser>
#include <QtWidgets/QVBoxLayout>
#include <gmock/gmock.h>

#include "tallybook/desktop/forms/Contrast.h"
#include "tallybook/desktop/window/HelpWindow.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"

namespace tallybook::desktop {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::WaitUntil;

class HelpWindowTest : public ::testing::Test {
 protected:
  // A window with a line to type in, in front.
  HelpWindowTest() {
    auto* layout = new QVBoxLayout(&window_);
    layout->addWidget(line_);
    window_.setWindowTitle("Journal");
    window_.show();
    EXPECT_TRUE(testing::BringToFront(window_));
    WaitUntil([this] { return line_->hasFocus(); }, "the window is in front");
  }

  static HelpWindow* Shown() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      auto* help = dynamic_cast<HelpWindow*>(window);
      if (help != nullptr && help->isVisible()) return help;
    }
    return nullptr;
  }
  static QString Words(const HelpWindow& help) { return help.Browser().toPlainText(); }

  Help help_;
  QDialog window_;
  QLineEdit* line_ = new QLineEdit;
};

TEST_F(HelpWindowTest, ShowsWhatIsToldOfTheWindowInWhichF1IsPressed) {
  QTest::keyClick(line_, Qt::Key_F1);
  ASSERT_NE(Shown(), nullptr);
  EXPECT_EQ(Shown()->Place(), "guide/README.md");
  EXPECT_EQ(Shown()->Browser().textCursor().block().text(), "The journal");
}

TEST_F(HelpWindowTest, ItsLinksCanBeReadOnADarkGroundAsOnALightOne) {
  const QPalette before = QApplication::palette();
  for (const QColor& ground : {QColor(Qt::white), QColor(30, 30, 32)}) {
    QPalette palette = before;
    palette.setColor(QPalette::Base, ground);
    palette.setColor(QPalette::Link, QColor(0, 0, 255));
    QApplication::setPalette(palette);
    help_.Show("guide/README.md");
    QApplication::processEvents();
    int links = 0;
    const QTextDocument& page = *Shown()->Browser().document();
    for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
      for (auto part = block.begin(); !part.atEnd(); ++part) {
        if (!part.fragment().charFormat().isAnchor()) continue;
        ++links;
        EXPECT_GE(ContrastOf(part.fragment().charFormat().foreground().color(), ground), kLeastContrastOfText);
      }
    }
    EXPECT_GT(links, 0);
  }
  QApplication::setPalette(before);
}

TEST_F(HelpWindowTest, LeavesTheKeyToWhatTakesItItself) {
  class Taker : public QLineEdit {
   protected:
    void keyPressEvent(QKeyEvent* event) override { event->accept(); }
  };
  auto* taker = new Taker;
  window_.layout()->addWidget(taker);
  QTest::keyClick(taker, Qt::Key_F1);
  EXPECT_EQ(Shown(), nullptr);
}

TEST_F(HelpWindowTest, CanBeUsedOverADialogThatKeepsOthersAway) {
  QDialog modal(&window_);
  modal.setWindowTitle("Go to a Date");
  testing::WhenShown user;
  user.Then("Go to a Date", [](QWidget& dialog) { QTest::keyClick(&dialog, Qt::Key_F1); });
  QTimer later;
  QObject::connect(&later, &QTimer::timeout, [&] {
    if (Shown() == nullptr || !Shown()->isActiveWindow()) return;
    later.stop();
    EXPECT_TRUE(Shown()->isEnabled());
    QTest::keyClick(&Shown()->Browser(), Qt::Key_Escape);
    EXPECT_EQ(Shown(), nullptr);
    modal.close();
  });
  later.start(20);
  modal.exec();
}

TEST_F(HelpWindowTest, EveryPlaceIsAPageAndAHeadingOfTheGuide) {
  QWidget window;
  for (const char* title :
       {"QDX Import Layouts", "Journal", "Undo: Figures Changed Since", "Where This Comes From", "Preview", "New Book",
        "Go to a Date", "Paste Figures", "Accounts, Fields, Years", "Add Account", "Paste Fields", "Change the Lists",
        "Back Up the Book", "Check of North.tbk", "Other"}) {
    window.setWindowTitle(title);
    const QString place = HelpPlaceOf(&window);
    HelpWindow help(nullptr);
    help.show();
    help.Show(place);
    EXPECT_THAT(Words(help).toStdString(), Not(IsEmpty())) << title;
    const QString heading = place.section('#', 1);
    if (heading.isEmpty()) continue;
    EXPECT_EQ(help.Browser().textCursor().block().text(), heading) << title;
  }
}

TEST_F(HelpWindowTest, FollowsALinkFromPageToPageAndComesBack) {
  help_.Show("importing.md");
  HelpWindow& help = *Shown();
  help.Browser().setSource(help.Browser().source().resolved(QUrl("exchange-definitions.md")));
  EXPECT_EQ(help.Place(), "exchange-definitions.md");
  EXPECT_THAT(Words(help).toStdString(), HasSubstr("QDX Import Layouts"));
  for (auto* button : help.findChildren<QPushButton*>()) {
    if (button->text() == "&Back") button->click();
  }
  EXPECT_EQ(help.Place(), "importing.md");
}

TEST_F(HelpWindowTest, StaysWhereAPageIsMissing) {
  help_.Show("importing.md");
  Shown()->Show("nowhere.md");
  EXPECT_EQ(Shown()->Place(), "importing.md");
}

TEST_F(HelpWindowTest, IsAGoodWindow) {
  help_.Show("guide/README.md");
  ASSERT_TRUE(QTest::qWaitForWindowActive(Shown()));
  EXPECT_THAT(testing::FaultsOf(*Shown()), IsEmpty());
}

}  // namespace
}  // namespace tallybook::desktop
