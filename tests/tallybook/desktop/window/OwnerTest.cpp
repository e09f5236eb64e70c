// The main window is minimised, or closed, while another window of the program stands open over it: each of them in
// turn, reached as the user reaches it.
#include <QtCore/QTimer>
#include <QtTest/QTest>
#include <QtWidgets/QApplication>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QMenu>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <vector>

#include "base/Dates.h"
#include "forms/Form.h"
#include "forms/modAllUI.h"
#include "tallybook/application/DemoBooks.h"
#include "tallybook/desktop/forms/FormWindow.h"
#include "tests/import/ExchangeFile.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/window/DeskStage.h"

namespace tallybook::desktop {
namespace {

using testing::Part;
using ::testing::StartsWith;
using testing::WaitUntil;
using testing::WhenShown;

constexpr const char* kList = "QDX Import Layouts";

void Later(QWidget& window, const std::function<void()>& act) {
  QTimer::singleShot(0, &window, act);
}

QWidget& FocusOf(QWidget& window) {
  return window.focusWidget() != nullptr ? *window.focusWidget() : window;
}

WhenShown::Act Click(const char* part) {
  return [part](QWidget& window) {
    Later(window, [&window, part] { QTest::mouseClick(&Part<QPushButton>(window, part), Qt::LeftButton); });
  };
}

WhenShown::Act Press(Qt::Key key) {
  return [key](QWidget& window) { Later(window, [&window, key] { QTest::keyClick(&FocusOf(window), key); }); };
}

// The button of a dialog of dates that takes them.
void TakeDates(QWidget& window) {
  auto& form_window = dynamic_cast<FormWindow&>(window);
  QWidget* const button = form_window.WidgetOf(*form_window.Shown().Find("Command1", 2));
  Later(window, [button] { QTest::mouseClick(button, Qt::LeftButton); });
}

// A window that a user can have open over the main one: the words of the menu that begin it, the windows on the way to
// it with what is done in each, and its own title.
struct Road {
  std::string name;
  QString menu;
  std::vector<std::pair<QString, WhenShown::Act>> way;
  QString title;
  // The main window can be closed meanwhile; a box waits for its answer first.
  bool ends_with_owner = true;
};

std::ostream& operator<<(std::ostream& out, const Road& road) {
  return out << road.name;
}

const std::vector<Road>& Roads() {
  static const std::vector<Road> roads = {
      {"CsvPrompt", "Import a CSV File", {}, "Import CSV Data File"},
      {"DelimitedPrompt", "Import a Delimited File", {}, "Import Delimited File"},
      {"ExportDates", "Export an Exchange File", {}, "Export Data to QDX File"},
      {"ExportFile", "Export an Exchange File", {{"Export Data to QDX File", TakeDates}}, "Export Data to QDX File"},
      {"TableDates", "Export a Table", {}, "Export Data to File"},
      {"TableOptions", "Export a Table", {{"Export Data to File", TakeDates}}, "Export Options"},
      {"List", "Definitions", {}, kList},
      {"ListAdd", "Definitions", {{kList, Click("add")}}, "Open QDX File"},
      {"ListEditor", "Definitions", {{kList, Press(Qt::Key_Return)}}, "Edit QDX Import Layout Number: 1"},
      {"ListImport", "Definitions", {{kList, Click("action1")}}, "Edit QDX Import Layout Number: 1"},
      {"ListBox", "Definitions", {{kList, Press(Qt::Key_Delete)}}, "Tallybook", false},
      {"Journal", "Journal", {}, "Journal", false},
      {"Settings", "Settings", {}, "Settings", false},
      {"NewBook", "New", {}, "New Book", false},
      {"GoToDate", "Go to a Date", {}, "Go to a Date", false},
      {"Keys", "Keys", {}, "Keys", false},
  };
  return roads;
}

class OwnerTest : public ::testing::TestWithParam<Road>, protected testing::DeskStage {
 protected:
  OwnerTest() : DeskStage("Tallybook") {
    engine::Book::Create(BookPath(), application::DemoOffice());
    WriteDefinition();
    EXPECT_TRUE(window_.OpenBook(BookPath()));
    EXPECT_TRUE(testing::BringToFront(window_));
    before_ = folder_.Read("head-office.tbk");
  }
  ~OwnerTest() override {
    EXPECT_EQ(ModalDepth(), 0);
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  }

  // Goes the way to the window, does `act` there, and comes back when all of it has ended.
  void Go(const WhenShown::Act& act) {
    WhenShown user;
    for (const auto& [title, step] : GetParam().way) user.Then(title, step);
    user.Then(GetParam().title, act);
    Action(GetParam().menu).trigger();
  }
  // Leaves window after window by Escape, until the main one stands alone.
  void LeaveAll() {
    QObject::connect(&leave_, &QTimer::timeout, &window_, [this] {
      QWidget* const front = QApplication::activeWindow();
      QWidget* const other = OtherWindow();
      if (other == nullptr) return leave_.stop();
      if (front == &window_) return other->activateWindow();
      if (front != nullptr) QTest::keyClick(&FocusOf(*front), Qt::Key_Escape);
    });
    leave_.start(50);
  }
  // Minimises the main window and brings it back: the window over it is where it was, and takes the keys again.
  void MinimiseAndRestore(QWidget& over) {
    window_.showMinimized();
    WaitUntil([this] { return window_.isMinimized(); }, "the main window is minimised");
    EXPECT_TRUE(over.isVisible());
    window_.showNormal();
    WaitUntil([this] { return !window_.isMinimized(); }, "the main window is there again");
    over.activateWindow();  // as whoever clicks on it, even where the news of the main window's return is still to come
    EXPECT_TRUE(testing::BringToFront(over)) << "the window over it takes the keys again";
    EXPECT_TRUE(over.isVisible());
  }

  [[nodiscard]] Text BookPath() const { return folder_.Path("head-office.tbk"); }

  std::string before_;

 private:
  void WriteDefinition() {
    const Date day = DateFromParts(2024, 2, 1);
    tallybook::testing::ExchangeFile file;
    file.first = day;
    file.last = day;
    file.accounts = {{"4100", "Groceries"}};
    file.fields = {{1, "Sales"}};
    file.blocks = {{Integer{1}, {{day, {{1, 7.5}}}}}};
    folder_.Write("south.QDX", file.Bytes());
    folder_.Write("TBQDX1.head-office", "\"South\",\"" + folder_.Path("south.QDX") + "\",3,-1,-1\r\n0,0\r\n0\r\n");
  }

  QTimer leave_;
};

TEST_P(OwnerTest, IsMinimisedAndComesBackBehindTheWindowThatIsOpen) {
  Go([this](QWidget& over) {
    MinimiseAndRestore(over);
    LeaveAll();
  });
  EXPECT_TRUE(WaitUntil([this] { return window_.isActiveWindow(); }, "the main window is in front at the end"));
  EXPECT_TRUE(window_.isVisible());
  EXPECT_TRUE(window_.isEnabled());
  EXPECT_TRUE(Action("Definitions").isEnabled());
  EXPECT_TRUE(folder_.Read("head-office.tbk") == before_);
}

class ClosedOwnerTest : public OwnerTest {};

TEST_P(ClosedOwnerTest, IsClosedAndTakesTheWindowsOverItAlong) {
  Go([this](QWidget& over) {
    window_.close();
    EXPECT_TRUE(window_.isVisible()) << "it goes when what was begun has ended";
    EXPECT_TRUE(over.isVisible());
  });
  EXPECT_TRUE(WaitUntil([this] { return !window_.isVisible(); }, "the main window is closed"));
  for (const QWidget* const window : QApplication::topLevelWidgets())
    EXPECT_FALSE(window->isVisible()) << window->windowTitle().toStdString() << " is left";
  EXPECT_TRUE(folder_.Read("head-office.tbk") == before_);
}

class AskedOwnerTest : public OwnerTest {};

TEST_P(AskedOwnerTest, WaitsForTheAnswerToAQuestionBeforeItCloses) {
  Go([this](QWidget& box) {
    window_.close();
    QTest::qWait(300);  // some looks at what is to be closed
    EXPECT_TRUE(box.isVisible());
    EXPECT_TRUE(window_.isVisible());
    QTest::keyClick(&FocusOf(box), Qt::Key_Escape);
  });
  EXPECT_TRUE(WaitUntil([this] { return !window_.isVisible(); }, "the main window is closed"));
  EXPECT_TRUE(folder_.Has("TBQDX1.head-office")) << "Escape deletes nothing";
}

std::string NameOf(const ::testing::TestParamInfo<Road>& info) {
  return info.param.name;
}

std::vector<Road> Roads(bool ends_with_owner) {
  std::vector<Road> chosen;
  for (const Road& road : Roads())
    if (road.ends_with_owner == ends_with_owner) chosen.push_back(road);
  return chosen;
}

Road RoadOf(const char* name) {
  for (const Road& road : Roads())
    if (road.name == name) return road;
  throw std::runtime_error(name);
}

INSTANTIATE_TEST_SUITE_P(EachWindow, OwnerTest, ::testing::ValuesIn(Roads()), NameOf);
INSTANTIATE_TEST_SUITE_P(EachWindow, ClosedOwnerTest, ::testing::ValuesIn(Roads(true)), NameOf);
INSTANTIATE_TEST_SUITE_P(ABox, AskedOwnerTest, ::testing::Values(RoadOf("ListBox")), NameOf);

}  // namespace
}  // namespace tallybook::desktop
