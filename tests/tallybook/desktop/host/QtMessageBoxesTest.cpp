#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QGuiApplication>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <gmock/gmock.h>

#include "tallybook/desktop/host/QtMessageBoxes.h"
#include "tests/tallybook/desktop/Waiting.h"

namespace tallybook::desktop {
namespace {

using testing::Part;
using testing::WhenShown;

QPushButton* ButtonOf(const QWidget& window, QDialogButtonBox::StandardButton button) {
  return window.findChild<QDialogButtonBox*>()->button(button);
}

WhenShown::Act Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  return [key, modifiers](QWidget& window) {
    QWidget* const focus = window.focusWidget();
    QTest::keyClick(focus != nullptr ? focus : &window, static_cast<Qt::Key>(key), modifiers);
  };
}

Integer ShowAnd(Long style, const WhenShown::Act& act) {
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Tallybook", act);
  return boxes.Show("Ok to Delete Exchange Definition # 3", style, "Tallybook");
}

TEST(QtMessageBoxesTest, GivesTheNumberOfTheButtonThatIsPressed) {
  const auto press = [](QDialogButtonBox::StandardButton button) {
    return [button](QWidget& window) { QTest::mouseClick(ButtonOf(window, button), Qt::LeftButton); };
  };
  EXPECT_EQ(ShowAnd(kOkOnly, press(QDialogButtonBox::Ok)), kOk);
  EXPECT_EQ(ShowAnd(kOkCancel, press(QDialogButtonBox::Cancel)), kCancel);
  EXPECT_EQ(ShowAnd(kYesNo, press(QDialogButtonBox::Yes)), kYes);
  EXPECT_EQ(ShowAnd(kYesNo, press(QDialogButtonBox::No)), kNo);
  EXPECT_EQ(ShowAnd(kRetryCancel, press(QDialogButtonBox::Retry)), kRetry);
}

TEST(QtMessageBoxesTest, EnterTakesTheFirstButtonOrTheSecondWhereTheStyleSaysSo) {
  EXPECT_EQ(ShowAnd(kOkCancel, Press(Qt::Key_Return)), kOk);
  EXPECT_EQ(ShowAnd(kYesNo, Press(Qt::Key_Return)), kYes);
  EXPECT_EQ(ShowAnd(kYesNo | kSecondButtonDefault, Press(Qt::Key_Return)), kNo);
  EXPECT_EQ(ShowAnd(kOkOnly | kSecondButtonDefault, Press(Qt::Key_Return)), kOk);
}

TEST(QtMessageBoxesTest, EscapeAndTheCloseBoxRefuse) {
  const auto close = [](QWidget& window) { window.close(); };
  EXPECT_EQ(ShowAnd(kOkOnly, Press(Qt::Key_Escape)), kOk);
  EXPECT_EQ(ShowAnd(kYesNo, Press(Qt::Key_Escape)), kNo);
  EXPECT_EQ(ShowAnd(kRetryCancel, Press(Qt::Key_Escape)), kCancel);
  EXPECT_EQ(ShowAnd(kOkCancel, close), kCancel);
  EXPECT_EQ(ShowAnd(kYesNo, close), kNo);
}

TEST(QtMessageBoxesTest, AButtonsLetterPressesItWithAltOrWithout) {
  EXPECT_EQ(ShowAnd(kYesNo, Press(Qt::Key_N)), kNo);
  EXPECT_EQ(ShowAnd(kYesNo, Press(Qt::Key_Y, Qt::AltModifier)), kYes);
}

TEST(QtMessageBoxesTest, ShowsTheTextWordForWordUnderTheCaption) {
  const Text text = "Error creating export file: /out/a & b.csv\r\n\r\n<b>Retry?</b>";
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Head & Office", [](QWidget& window) {
    EXPECT_EQ(Part<QLabel>(window, "text").text(), "Error creating export file: /out/a & b.csv\n\n<b>Retry?</b>");
    EXPECT_EQ(Part<QLabel>(window, "text").textFormat(), Qt::PlainText);
    EXPECT_EQ(window.accessibleDescription(), Part<QLabel>(window, "text").text());
    window.close();
  });
  EXPECT_EQ(boxes.Show(text, kRetryCancel | kStopIcon, "Head & Office"), kCancel);
}

TEST(QtMessageBoxesTest, ControlCharactersInNamesAreShownAsWhatTheyAre) {
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) {
    EXPECT_EQ(Part<QLabel>(window, "text").text(), "north\\x1b.QDX");
    window.close();
  });
  (void)boxes.Show("north\x1b.QDX", kOkOnly, "Tallybook");
}

TEST(QtMessageBoxesTest, ATextLongerThanTheScreenScrollsAndKeepsTheButtonsInSight) {
  Text text;
  for (int line = 0; line < 500; ++line) text += "Account " + std::to_string(line) + " is not in the book\r\n";
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) {
    const QRect screen = window.screen()->availableGeometry();
    EXPECT_LE(window.frameGeometry().height(), screen.height());
    EXPECT_TRUE(ButtonOf(window, QDialogButtonBox::Ok)->visibleRegion().boundingRect().height() > 0);
    EXPECT_GT(Part<QLabel>(window, "text").height(), window.height());
    window.close();
  });
  (void)boxes.Show(text, kOkOnly | kInformationIcon, "Tallybook");
}

TEST(QtMessageBoxesTest, CopyTakesTitleTextAndDetails) {
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) {
    QTest::keyClick(&window, Qt::Key_C, Qt::ControlModifier);
    window.close();
  });
  boxes.Tell("The book cannot be opened.", kOkOnly | kStopIcon, "Tallybook", "error 57, statement 20");
  EXPECT_EQ(QGuiApplication::clipboard()->text(),
            "Tallybook\n\nThe book cannot be opened.\n\nerror 57, statement 20\n");
}

TEST(QtMessageBoxesTest, DetailsStandBehindAFold) {
  QtMessageBoxes boxes;
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) {
    auto& details = Part<QPlainTextEdit>(window, "details");
    EXPECT_FALSE(details.isVisible());
    QTest::keyClick(&window, Qt::Key_D);
    EXPECT_TRUE(details.isVisible());
    EXPECT_EQ(details.toPlainText(), "error 57");
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  boxes.Tell("The book cannot be opened.", kOkOnly, "Tallybook", "error 57");
}

TEST(QtMessageBoxesTest, WhatTheApplicationKnowsBesidesStandsInTheDetailsOfTheComponentsBoxes) {
  QtMessageBoxes boxes;
  boxes.SetDetails([] { return Text("the file is a book"); });
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) {
    EXPECT_EQ(Part<QPlainTextEdit>(window, "details").toPlainText(), "the file is a book");
    window.close();
  });
  (void)boxes.Show("Error creating export file: x.tbk", kRetryCancel, "Tallybook");
}

TEST(QtMessageBoxesTest, ABoxOverADialogBelongsToItAndABoxOverABoxToThatOne) {
  QtMessageBoxes boxes;
  QDialog dialog;
  dialog.setWindowTitle("Dialog");
  dialog.setModal(true);
  dialog.show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
  WhenShown user;
  user.Then("First", [&](QWidget& first) {
    EXPECT_EQ(first.parentWidget(), &dialog);
    WhenShown inner;
    inner.Then("Second", [&](QWidget& second) {
      EXPECT_EQ(second.parentWidget(), &first);
      EXPECT_EQ(boxes.Depth(), 2);
      second.close();
    });
    (void)boxes.Show("again", kOkOnly, "Second");
    first.close();
  });
  (void)boxes.Show("once", kOkOnly, "First");
  EXPECT_EQ(boxes.Depth(), 0);
}

TEST(QtMessageBoxesTest, ABoxWhoseOwnerGoesIsAnsweredByTheButtonThatRefuses) {
  QtMessageBoxes boxes;
  auto owner = std::make_unique<QWidget>();
  owner->setWindowTitle("Owner");
  owner->show();
  ASSERT_TRUE(QTest::qWaitForWindowActive(owner.get()));
  WhenShown user;
  user.Then("Tallybook", [&](QWidget&) { owner.reset(); });
  EXPECT_EQ(boxes.Show("Go on?", kYesNo, "Tallybook"), kNo);
}

TEST(QtMessageBoxesTest, WhatIsToBeSettledBeforeABoxIsDoneBeforeItShows) {
  QtMessageBoxes boxes;
  bool settled = false;
  boxes.SetBeforeBox([&] { settled = QApplication::activeModalWidget() == nullptr; });
  WhenShown user;
  user.Then("Tallybook", [](QWidget& window) { window.close(); });
  (void)boxes.Show("Export file created at:", kOkCancel, "Tallybook");
  EXPECT_TRUE(settled);
}

}  // namespace
}  // namespace tallybook::desktop
