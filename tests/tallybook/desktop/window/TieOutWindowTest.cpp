// Exchange files held against the book from the main window, by keys, to the figure that differs.
#include <QtWidgets/QComboBox>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTabWidget>
#include <QtWidgets/QTableView>

#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/window/TieOutWindow.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::Part;

class TieOutWindowTest : public testing::DeskFixture {
 protected:
  void WriteFile(const Text& name, Double first = 7.5, Double second = 1234.25) {
    folder_.Write(name, ExchangeFileOf(first, second).Bytes());
  }
  static QWidget* Shown() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && window->windowTitle() == "Tie-Out") return window;
    }
    return nullptr;
  }
  QWidget& OpenWindow() {
    PressInMain(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    QWidget* const window = Shown();
    if (window == nullptr) std::abort();
    EXPECT_TRUE(testing::BringToFront(*window));
    return *window;
  }
  static QString Cell(const QWidget& window, int row, int column) {
    return Part<QTableView>(window, "changes").model()->index(row, column).data().toString();
  }
  static RowsView& List(const QWidget& window, const char* name) {
    return dynamic_cast<RowsView&>(Part<QWidget>(window, name));
  }
};

TEST_F(TieOutWindowTest, ListsWhatDiffersWithTotalsAndFilesAndChangesNothing) {
  WriteFile("north.QDX");
  WriteDefinition(1, "*.QDX");
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenWindow();
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  Press(window, Qt::Key_Return);
  EXPECT_EQ(WordsOf(window, "summary"), "2 figures of 1 file held against the book: 2 differ.");
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  testing::Picture(window, "tie-out");
  QStringList cells;
  for (int column = 0; column < 6; ++column) cells << Cell(window, 1, column);
  EXPECT_EQ(cells,
            QStringList({"100  Front of shop", "2003-01-06", "1  Sales", "1,234.25", "\u2013", "\u22121,234.25"}));
  auto& pages = Part<QTabWidget>(window, "pages");
  for (int page = 1; page < pages.count(); ++page) {
    pages.setCurrentIndex(page);
    EXPECT_THAT(testing::FaultsOf(window), IsEmpty()) << page;
  }
  RowsView& totals = List(window, "totals");
  ASSERT_EQ(totals.RowCount(), 2);
  EXPECT_EQ(totals.TextAt(0, 0), "All accounts");
  EXPECT_EQ(totals.TextAt(1, 0), "100  Front of shop");
  EXPECT_EQ(totals.TextAt(1, 3), "2");
  EXPECT_EQ(totals.TextAt(1, 7), "\u22121,239.25");
  EXPECT_THAT(List(window, "files").TextAt(0, 2).toStdString(),
              HasSubstr("north.QDX: held as a replacement; the journal knows no import of it that stands"));
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
  EXPECT_TRUE(folder_.Has("north.QDX"));
}

TEST_F(TieOutWindowTest, EnterOnALineGoesToItsFigureInTheMainWindow) {
  WriteFile("north.QDX");
  WriteDefinition(1, "*.QDX");
  FigureChoice choice = window_.Figures().Table().Choice();
  choice.view = FigureView::kField;
  choice.level = kPeriodLevel;
  choice.stretch = engine::kYearLevel;
  window_.Figures().Choose(choice);
  QWidget& window = OpenWindow();
  Press(window, Qt::Key_Return);
  Press(window, Qt::Key_Down);
  Press(window, Qt::Key_Return);
  ASSERT_TRUE(testing::BringToFront(window_));
  EXPECT_EQ(QApplication::focusWidget(), &window_.Figures().Grid());
  const FigureTable& table = window_.Figures().Table();
  EXPECT_EQ(table.Choice().view, FigureView::kAccount);
  const auto place = window_.Figures().CurrentRecord();
  ASSERT_TRUE(place);
  EXPECT_EQ(table.Account(place->account).number, 101);
  EXPECT_EQ(table.Field(place->field).number, 1);
  EXPECT_EQ(table.DateOf(*place), Day(2003, 1, 6));
  EXPECT_NE(Shown(), nullptr) << "the list stays";
}

TEST_F(TieOutWindowTest, AnotherFileAndAnotherMathAreHeldInstead) {
  WriteFile("north.QDX");
  WriteFile("old.QDX", -2.5, 0);
  WriteDefinition(1, "north.QDX");
  QWidget& window = OpenWindow();
  Part<QLineEdit>(window, "file_name").setFocus();
  Type(window, folder_.Path("old.QDX").c_str());
  auto& math = Part<QComboBox>(window, "math");
  math.setFocus();
  Press(window, Qt::Key_End);
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("none differs"));
  EXPECT_THAT(List(window, "files").TextAt(0, 2).toStdString(),
              AllOf(HasSubstr("old.QDX"), HasSubstr("a subtraction from zeros")));
}

TEST_F(TieOutWindowTest, SaysWhyNothingWasHeld) {
  WriteDefinition(1, "none.QDX");
  QWidget& window = OpenWindow();
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), AllOf(HasSubstr("Nothing has been held"), HasSubstr("none.QDX")));
  EXPECT_TRUE(Part<QPushButton>(window, "hold").isEnabled());
  folder_.Write("none.QDX", "no exchange file");
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("NOT an QDX file"));
    Press(box, Qt::Key_Escape);
  });
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), AllOf(HasSubstr("Nothing has been held"), HasSubstr("none.QDX")));
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
}

TEST_F(TieOutWindowTest, TheBookItselfIsRefused) {
  WriteDefinition(1, "North.tbk");
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenWindow();
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("North.tbk"));
    Press(box, Qt::Key_Escape);
  });
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("Nothing has been held"));
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
}

TEST_F(TieOutWindowTest, ABookWithoutDefinitionsIsToldWhereTheyAreMade) {
  QWidget& window = OpenWindow();
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("Data Exchange, Definitions"));
  EXPECT_FALSE(Part<QPushButton>(window, "hold").isEnabled());
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  Press(window, Qt::Key_Return);
  WriteFile("north.QDX");
  WriteDefinition(1, "*.QDX");
  OpenWindow();
  EXPECT_TRUE(Part<QPushButton>(window, "hold").isEnabled());
  Press(window, Qt::Key_Escape);
  testing::WaitUntil([] { return Shown() == nullptr; }, "Escape closes it");
}

TEST_F(TieOutWindowTest, ADefinitionThatCannotBeReadIsNamed) {
  folder_.Write("TBQDX1.North", "nothing");
  QWidget& window = OpenWindow();
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("TBQDX1.North"));
    Press(box, Qt::Key_Escape);
  });
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("Nothing has been held"));
}

TEST_F(TieOutWindowTest, ClosedAndBegunAgainAtOnceItStandsThereAnew) {
  WriteDefinition(1, "*.QDX");
  for (int time = 0; time < 3; ++time) {
    QWidget& window = OpenWindow();
    EXPECT_TRUE(Part<QPushButton>(window, "hold").isEnabled());
    Press(window, Qt::Key_Escape);
  }
  testing::WaitUntil([] { return Shown() == nullptr; }, "Escape closes it");
}

TEST_F(TieOutWindowTest, GoesWithItsBook) {
  WriteDefinition(1, "*.QDX");
  OpenWindow();
  EXPECT_TRUE(window_.CloseBook());
  EXPECT_EQ(Shown(), nullptr);
}

TEST_F(TieOutWindowTest, AFigureOfAnAccountOrFieldThatIsGoneIsToldToBe) {
  EXPECT_EQ(window_.Figures().GoToFigure({.account_number = 999, .date = Day(2003, 1, 5), .field_number = 1}),
            "The book has no account 999 any more.");
  EXPECT_EQ(window_.Figures().GoToFigure({.account_number = 101, .date = Day(2003, 1, 5), .field_number = 77}),
            "The book has no field 77 any more.");
}

TEST_F(TieOutWindowTest, CancelledHalfWayItSaysSoAndStandsForAnother) {
  folder_.Write("north.QDX", LargeExchangeFile().Bytes());
  WriteDefinition(1, "*.QDX");
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenWindow();
  constexpr int kWithinTheFile = 6;
  CancelAtTurn(kWithinTheFile);
  Press(window, Qt::Key_Return);
  EXPECT_TRUE(platform_.Progress().WasCancelled());
  EXPECT_EQ(WordsOf(window, "summary"), "Nothing has been held against the book.");
  EXPECT_EQ(window.findChild<QTableView*>("changes"), nullptr);
  EXPECT_TRUE(folder_.Has("north.QDX"));
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
  platform_.Progress().OnTurn({});
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("of 1 file held against the book"));
}

// The work is one of the test's own, which ends when it is asked to and not before.
TEST_F(TieOutWindowTest, ClosedWhileItWorksItEndsTheWorkFirst) {
  bool asked = false;
  bool ended = false;
  TieOutWindow* window = nullptr;
  TieOutWindow::Means means;
  means.definitions = [] {
    return std::vector<application::SeenDefinition>{
        {.number = 1, .path = {}, .title = "Shops", .exchange_files = "*.QDX", .trouble = {}}};
  };
  means.hold = [&](const TieOutWish& /*wish*/) {
    window->close();
    EXPECT_TRUE(window->isVisible());
    Press(*window, Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible());
    testing::WaitUntil([&] { return asked; }, "the work is asked to end");
    ended = true;
    return std::optional<TieOutResult>();
  };
  means.ask_to_end = [&] { asked = true; };
  TieOutWindow stands(means);
  window = &stands;
  stands.show();
  ASSERT_TRUE(testing::BringToFront(stands));
  Press(stands, Qt::Key_Return);
  EXPECT_TRUE(ended);
  EXPECT_FALSE(stands.isVisible());
}

}  // namespace
}  // namespace tallybook::desktop
