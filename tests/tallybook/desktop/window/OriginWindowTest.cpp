// Where the figure under the cursor came from.
#include <QtWidgets/QMenu>

#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/window/OriginWindow.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::Part;

class OriginWindowTest : public testing::DeskFixture {
 protected:
  OriginWindowTest() {
    Import("one.csv", 10);
    Import("two.csv", 20.25);
    window_.Figures().LookAgain();
    window_.Figures().GoToDate(Day(2003, 1, 5));
    GoTo(Day(2003, 1, 5));
  }

  void Import(const Text& file, Double value) {
    const auto book = Open();
    book->SetOperationName("import csv " + file);
    book->SetNotes({.files = {{.path = file, .size = 5, .xxh3 = {}, .sha256 = {}}}, .facts = {}});
    book->BeginRollback(Day(2003, 1, 5), Day(2003, 1, 5));
    tallybook::testing::Put(*book, 101, Day(2003, 1, 5), 1, value);
    book->EndRollback();
    book->Close();
  }
  // The figures of the first account's first field.
  void GoTo(Date date) {
    FigureTable& table = window_.Figures().Table();
    const FigurePlace place{1, table.Units().IndexOf(date), 1};
    window_.Figures().Grid().GoTo(table.RowOf(place), table.ColumnOf(place));
  }
  static QStringList RowOf(const RowsView& list, int row) {
    QStringList cells;
    for (const int column : {0, 3, 4, 5, 6}) cells << list.TextAt(row, column);
    return cells;
  }
  static RowsView& ListOf(QWidget& window) { return *window.findChild<RowsView*>(); }
};

TEST_F(OriginWindowTest, ListsTheEntriesThatChangedTheFigureOldestFirstAndLeadsToTheJournal) {
  Then("Where This Comes From", [](QWidget& window) {
    EXPECT_THAT(WordsOf(window, "figure"), HasSubstr("100 "));
    EXPECT_THAT(WordsOf(window, "figure"), HasSubstr(": 20.25"));
    RowsView& list = ListOf(window);
    ASSERT_EQ(list.RowCount(), 2);
    EXPECT_EQ(RowOf(list, 0), QStringList({"1", "import csv one.csv", "one.csv", "2.50", "10.00"}));
    EXPECT_EQ(RowOf(list, 1), QStringList({"2", "import csv two.csv", "two.csv", "10.00", "20.25"}));
    EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
    testing::Picture(window, "origin");
    Press(window, Qt::Key_Up);
    Press(window, Qt::Key_Return);
  });
  Then("Journal", [](QWidget& window) {
    EXPECT_EQ(ListOf(window).TextAt(ListOf(window).CurrentRow(), 0), "1");
    Press(window, Qt::Key_Escape);
  });
  Then("Where This Comes From", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
  PressInMain(Qt::Key_H, Qt::ControlModifier);
}

TEST_F(OriginWindowTest, SaysThatAFigureStandsSinceTheBookWasMade) {
  GoTo(Day(2003, 1, 7));
  Then("Where This Comes From", [](QWidget& window) {
    EXPECT_EQ(ListOf(window).RowCount(), 0);
    EXPECT_THAT(WordsOf(window, "hint"), HasSubstr("No entry of the journal has changed this figure"));
    EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
    Press(window, Qt::Key_Escape);
  });
  PressInMain(Qt::Key_H, Qt::ControlModifier);
}

TEST_F(OriginWindowTest, ASumIsToldToBeOne) {
  FigureChoice choice = window_.Figures().Table().Choice();
  choice.level = kPeriodLevel;
  choice.stretch = engine::kYearLevel;
  window_.Figures().Choose(choice);
  window_.Figures().Grid().GoTo(0, 0);
  Then("Tallybook", [](QWidget& window) {
    EXPECT_THAT(AllWordsOf(window), HasSubstr("adds up several"));
    window.close();
  });
  PressInMain(Qt::Key_H, Qt::ControlModifier);
}

TEST_F(OriginWindowTest, StandsInTheMenuOfTheFigures) {
  const auto actions = window_.Figures().Grid().actions();
  EXPECT_EQ(window_.Figures().Grid().contextMenuPolicy(), Qt::ActionsContextMenu);
  EXPECT_TRUE(std::ranges::any_of(
      actions, [](const QAction* action) { return action->text().remove('&').startsWith("Where Does This"); }));
}

}  // namespace
}  // namespace tallybook::desktop
