#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/application/FigureChanges.h"
#include "tallybook/desktop/figures/FigureGrid.h"
#include "tallybook/desktop/figures/FigureModel.h"
#include "tallybook/desktop/figures/FigurePane.h"
#include "tallybook/desktop/host/Conversations.h"
#include "tallybook/desktop/host/DesktopApp.h"
#include "tallybook/desktop/host/DesktopFactory.h"
#include "tallybook/desktop/host/QtPlatform.h"
#include "tallybook/desktop/window/MainWindow.h"
#include "tests/support/TempFolder.h"

namespace tallybook::desktop {
namespace {

constexpr int kLimit = 20'000;  // milliseconds

// The main window over the example's office, with all that conversations need.
class ExchangeTest : public ::testing::Test {
 protected:
  ExchangeTest() {
    engine::Book::Create(BookPath(), application::DemoOffice());
    platform_.SetApp(&app_);
    platform_.SetMainWindow(&window_);
    window_.show();
    EXPECT_TRUE(window_.OpenBook(BookPath()));
  }
  ~ExchangeTest() override { platform_.SetMainWindow(nullptr); }

  [[nodiscard]] Text BookPath() const { return folder_.Path("head-office.tbk"); }
  MainWindow& Window() { return window_; }

  QAction& Action(const QString& words) {
    for (auto* action : window_.findChildren<QAction*>()) {
      if (action->text().remove('&').startsWith(words)) return *action;
    }
    ADD_FAILURE() << "no menu has " << words.toStdString();
    std::abort();
  }

  // The window that a conversation shows beside the main one; null where none does.
  QWidget* OtherWindow() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      const bool is_other = window != &window_ && window->isVisible() && window->windowType() != Qt::ToolTip &&
                            window->windowType() != Qt::Popup && !window->windowTitle().isEmpty();
      if (is_other) return window;
    }
    return nullptr;
  }

  // Does `act` once a conversation shows a window, and closes it then; fails where none comes.
  void WhenShown(const std::function<void(QWidget& window)>& act) {
    QObject::connect(&watch_, &QTimer::timeout, &window_, [this, act] {
      QWidget* other = OtherWindow();
      if (other == nullptr && ++looks_ < kLimit / 20) return;
      watch_.stop();
      if (other == nullptr) return static_cast<void>(ADD_FAILURE() << "no window came");
      act(*other);
      was_shown_ = true;
      // Whatever stands open ends as its close box does.
      QObject::connect(&watch_, &QTimer::timeout, &window_, [this] {
        if (QWidget* left = OtherWindow()) left->close();
      });
      watch_.start(50);
    });
    watch_.start(20);
  }
  void Begin(QAction& action) {
    action.trigger();
    watch_.stop();
    EXPECT_TRUE(was_shown_);
  }

  testing::TempFolder folder_;
  QtPlatform platform_;
  DesktopApp app_{{.title = {},
                   .settings_file = folder_.Path("tallybook.ini"),
                   .log_file = folder_.Path("tallybook.log"),
                   .import_folder = folder_.Path(),
                   .data_folder = folder_.Path()}};
  DesktopFactory factory_{platform_.Handles(), platform_.Progress()};
  ConversationMeans means_{.platform = platform_, .app = app_, .factory = factory_};
  DesktopSettings settings_{folder_.Path("books.ini")};
  MainWindow window_{app_, settings_, StyleOf(QLocale::c()), &means_};

 private:
  QTimer watch_;
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
    EXPECT_FALSE(Window().OpenBook(BookPath())) << "the book stays the one it is";
  });
  Begin(Action("Definitions"));
  EXPECT_TRUE(Action("Definitions").isEnabled());
  EXPECT_TRUE(Window().Figures().Model().IsWritable());
}

TEST_F(ExchangeTest, BeginsTheConversationThatFitsAFile) {
  folder_.Write("figures.csv", "nothing of interest\n");
  QStringList texts;
  WhenShown([&](QWidget& window) {
    for (const auto* line : window.findChildren<QLineEdit*>()) texts << line->text();
  });
  Action("Import a CSV File");
  Window().OpenFile(folder_.Path("figures.csv"));
  EXPECT_THAT(texts.join('|').toStdString(), ::testing::HasSubstr("figures.csv"));
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
