#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/window/DeskStage.h"

namespace tallybook::desktop {
namespace {

constexpr int kLimit = 20'000;  // milliseconds

// The main window over the example's office, with all that conversations need.
class ExchangeTest : public ::testing::Test, protected testing::DeskStage {
 protected:
  ExchangeTest() : DeskStage("") {
    engine::Book::Create(BookPath(), application::DemoOffice());
    EXPECT_TRUE(window_.OpenBook(BookPath()));
  }

  [[nodiscard]] Text BookPath() const { return folder_.Path("head-office.tbk"); }
  MainWindow& Window() { return window_; }

  // Does `act` once a conversation shows a window, and closes it then; fails where none comes.
  void WhenShown(const std::function<void(QWidget& window)>& act) {
    watch_.disconnect();
    looks_ = 0;
    was_shown_ = false;
    QObject::connect(&watch_, &QTimer::timeout, &window_, [this, act] {
      QWidget* other = OtherWindow();
      if (other == nullptr && ++looks_ < kLimit / 20) return;
      watch_.stop();
      if (other == nullptr) return static_cast<void>(ADD_FAILURE() << "no window came");
      was_shown_ = true;
      act(*other);
      watch_.disconnect();
      // Whatever stands open ends as its close box does.
      QObject::connect(&watch_, &QTimer::timeout, &window_, [this] {
        if (QWidget* left = OtherWindow()) left->close();
      });
      watch_.start(50);
    });
    watch_.start(20);
  }
  // Reads the next box of ours and closes it.
  void DismissNextBox() {
    dismissed_.clear();
    QObject::connect(&box_watch_, &QTimer::timeout, &window_, [this] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (box == nullptr) return;
      box_watch_.stop();
      dismissed_ = box->text();
      box->close();
    });
    box_watch_.start(20);
  }
  [[nodiscard]] const QString& Dismissed() const { return dismissed_; }
  void Begin(QAction& action) {
    action.trigger();
    watch_.stop();
    EXPECT_TRUE(was_shown_);
  }

 private:
  QTimer watch_;
  QTimer box_watch_;
  QString dismissed_;
  int looks_ = 0;
  bool was_shown_ = false;
};

TEST_F(ExchangeTest, KeepsAllThatWritesAwayWhileAConversationRuns) {
  EXPECT_TRUE(Action("Definitions").isEnabled());
  WhenShown([this](QWidget&) {
    EXPECT_FALSE(Action("Definitions").isEnabled());
    EXPECT_FALSE(Action("Import a CSV File").isEnabled());
    EXPECT_FALSE(Action("Paste").isEnabled());
    EXPECT_FALSE(Action("Journal").isEnabled());
    EXPECT_FALSE(Action("Close").isEnabled());
    EXPECT_FALSE(Window().Figures().Model().IsWritable());
    DismissNextBox();
    EXPECT_FALSE(Window().OpenBook(BookPath())) << "the book stays the one it is";
    EXPECT_THAT(Dismissed().toStdString(), ::testing::HasSubstr("is being worked on"));
  });
  Begin(Action("Definitions"));
  EXPECT_TRUE(Action("Definitions").isEnabled());
  EXPECT_TRUE(Window().Figures().Model().IsWritable());
}

// Looks at the window whose title begins so in the first turn of events behind its showing, before any key can reach
// it.
class FirstTurn final : public QObject {
 public:
  FirstTurn(QString title, std::function<void(const QWidget& window)> look)
      : title_(std::move(title)), look_(std::move(look)) {
    QApplication::instance()->installEventFilter(this);
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    auto* const window = qobject_cast<QWidget*>(watched);
    const bool is_it = event->type() == QEvent::Show && window != nullptr && window->windowTitle().startsWith(title_);
    if (is_it) QTimer::singleShot(0, window, [this, window] { look_(*window); });
    return false;
  }

 private:
  QString title_;
  std::function<void(const QWidget& window)> look_;
};

TEST_F(ExchangeTest, BeginsTheConversationThatFitsAFile) {
  folder_.Write("figures.csv", "nothing of interest\n");
  const auto has_name = [](const QLineEdit* line) { return line->text().endsWith("figures.csv"); };
  bool filled_in = false;
  const FirstTurn look("Import CSV Data File", [&](const QWidget& window) {
    filled_in = std::ranges::any_of(window.findChildren<QLineEdit*>(), has_name);
  });
  WhenShown([](QWidget&) {});
  Window().OpenFile(folder_.Path("figures.csv"));
  EXPECT_TRUE(filled_in);
}

TEST_F(ExchangeTest, SaysThatAFileThatIsDroppedMeanwhileHasToWait) {
  folder_.Write("figures.csv", "nothing of interest\n");
  WhenShown([&](QWidget&) {
    DismissNextBox();
    Window().OpenFile(folder_.Path("figures.csv"));
    EXPECT_THAT(Dismissed().toStdString(), ::testing::HasSubstr("is being worked on already"));
  });
  Begin(Action("Definitions"));
}

TEST_F(ExchangeTest, TakesWhatIsBeingTypedBeforeAConversationBegins) {
  ASSERT_TRUE(testing::BringToFront(Window()));
  FigureGrid& grid = Window().Figures().Grid();
  grid.setFocus();
  grid.GoTo(0, 0);
  QTest::keyClick(&grid, '7');
  ASSERT_NE(qobject_cast<QLineEdit*>(QApplication::focusWidget()), nullptr) << "an editor is open";
  WhenShown([](QWidget&) {});
  Begin(Action("Definitions"));
  EXPECT_EQ(grid.model()->index(0, 0).data().toString().left(1), "7");
}

TEST_F(ExchangeTest, ClosesBehindAPromptThatIsOpen) {
  WhenShown([this](QWidget&) { Window().close(); });
  Begin(Action("Import a CSV File"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return !Window().isVisible(); }, kLimit));
}

TEST_F(ExchangeTest, AnotherConversationCanBeginWhereTheUserStaysInTheWindow) {
  FigureModel& model = Window().Figures().Model();
  WhenShown([&](QWidget&) {
    model.Mark(0, 0, "12x", "cannot be read");
    Window().close();
  });
  QTimer stay;
  QObject::connect(&stay, &QTimer::timeout, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (box == nullptr) return;
    stay.stop();
    box->close();
  });
  stay.start(20);
  Begin(Action("Definitions"));
  ASSERT_TRUE(QTest::qWaitFor([&] { return !stay.isActive(); }, kLimit)) << "it asks before it closes";
  EXPECT_TRUE(Window().isVisible());
  bool stays_open = false;
  WhenShown([&](QWidget& list) {
    constexpr int kLongerThanALook = 700;  // of the list at whether the program ends
    QTest::qWait(kLongerThanALook);
    stays_open = list.isVisible();
  });
  Begin(Action("Definitions"));
  EXPECT_TRUE(stays_open);
  model.Unmark(0, 0);
}

TEST_F(ExchangeTest, OpensABookThatIsNamed) {
  engine::Book::Create(folder_.Path("other.tbk"), application::DemoOffice());
  Window().OpenFile(folder_.Path("other.tbk"));
  EXPECT_EQ(Window().BookPath(), folder_.Path("other.tbk"));
}

TEST_F(ExchangeTest, ClosesBehindAConversationThatItAsksToEnd) {
  WhenShown([this](QWidget&) { Window().close(); });
  Begin(Action("Definitions"));
  EXPECT_TRUE(QTest::qWaitFor([&] { return !Window().isVisible(); }, kLimit));
}

}  // namespace
}  // namespace tallybook::desktop
