// What is asked where figures have been changed since an entry that is to be undone, before anything happens.
#include <QLabel>
#include <QPushButton>

#include "tallybook/application/ImportWays.h"
#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/host/UndoDialog.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::FigureMap;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::kSales;
using testing::kShop;
using testing::Part;
using testing::WhenShown;

constexpr const char* kTitle = "Undo: Figures Changed Since";

class UndoDialogTest : public testing::ConversationsFixture {
 protected:
  // Entry 1 wrote two days, and entry 2 one of them again.
  UndoDialogTest() {
    Write("import csv one.csv", {{day_, 1000.0}, {day_ + 1, 1001.0}});
    Write("import csv two.csv", {{day_, 2000.0}});
  }

  void Write(const Text& what, const std::vector<std::pair<Date, Double>>& figures) {
    const auto book = engine::Book::Open(BookPath(), app_);
    book->SetOperationName(what);
    book->BeginRollback(figures.front().first, figures.back().first);
    for (const auto& [date, value] : figures) tallybook::testing::Put(*book, kShop, date, kSales, value);
    book->EndRollback();
    book->Close();
  }
  [[nodiscard]] Double At(Date date) { return Stored().at({kShop, date, kSales}); }
  Double Before(Date date) { return 100.0 + date - first_; }
  // Answers the question by the button of this name.
  bool UndoBy(const char* button) {
    user_.Then(kTitle, Click(button));
    return conversations_.Undo(1).ran;
  }
};

TEST_F(UndoDialogTest, NamesEachFigureWithTheEntryThatChangedItAndACancelChangesNothing) {
  const FigureMap before = Stored();
  user_.Then(kTitle, [](QWidget& window) {
    EXPECT_THAT(Part<QLabel>(window, "words").text().toStdString(),
                HasSubstr("Journal entry 1 is not undone: 1 figure that it changed has been changed since. What"));
    const auto& figures = dynamic_cast<RowsView&>(Part<QWidget>(window, "figures"));
    ASSERT_EQ(figures.RowCount(), 1);
    QStringList cells;
    for (int column = 0; column < 7; ++column) cells << figures.TextAt(0, column);
    EXPECT_EQ(cells, QStringList({"100  Front of shop", "2004-02-03", "1  Sales", "498", "1,000", "2,000",
                                  "entry 2, import csv two.csv"}));
    EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
    testing::Picture(window, "undo-conflicts");
    QTest::keyClick(&window, Qt::Key_Return);  // the default is Cancel
  });
  EXPECT_FALSE(conversations_.Undo(1).ran);
  EXPECT_EQ(Stored(), before);
}

TEST_F(UndoDialogTest, LeavesTheseWhereTheUserSaysSo) {
  EXPECT_TRUE(UndoBy("skip"));
  EXPECT_EQ(At(day_), 2000);
  EXPECT_EQ(At(day_ + 1), Before(day_ + 1));
}

TEST_F(UndoDialogTest, PutsTheseBackAsWellWhereTheUserSaysSo) {
  EXPECT_TRUE(UndoBy("force"));
  EXPECT_EQ(At(day_), Before(day_));
  EXPECT_EQ(At(day_ + 1), Before(day_ + 1));
}

TEST_F(UndoDialogTest, TakesTheAmountsOutWhereTheUserSaysSo) {
  const Double added = 1000 - Before(day_);
  EXPECT_TRUE(UndoBy("reverse"));
  EXPECT_EQ(At(day_), 2000 - added);
  EXPECT_EQ(At(day_ + 1), Before(day_ + 1));
}

TEST_F(UndoDialogTest, OffersToTakeNoAmountsOutOfAnImportThatReplaced) {
  {
    const auto book = engine::Book::Open(BookPath(), app_);
    const auto replaced = application::WayOfDefinition(1, "North", static_cast<Integer>(eMath::mReplace));
    engine::JournalNotes(*book).Save(1, {.files = {}, .facts = application::TextOfFacts(replaced)});
  }
  user_.Then(kTitle, [](QWidget& window) {
    EXPECT_NE(window.findChild<QWidget*>("force"), nullptr);
    EXPECT_EQ(window.findChild<QWidget*>("reverse"), nullptr);
    QTest::keyClick(&window, Qt::Key_Return);
  });
  EXPECT_FALSE(conversations_.Undo(1).ran);
}

TEST_F(UndoDialogTest, AnUndoIsTakenBackByItsLineWithAPlainQuestion) {
  const FigureMap before = Stored();
  EXPECT_TRUE(UndoBy("force"));
  user_.Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(Part<QLabel>(box, "text").text().toStdString(),
                HasSubstr("Undo journal entry 3, journal undo of 1?\n\n2 figures go back"));
    QTest::keyClick(&box, Qt::Key_Return);
  });
  EXPECT_TRUE(conversations_.Undo(3).ran);
  EXPECT_EQ(Stored(), before);
}

TEST_F(UndoDialogTest, ACommandIsTakenBackWithAllItsEntriesWhateverCameLater) {
  Long command = 0;
  {
    const auto book = engine::Book::Open(BookPath(), app_);
    command = engine::Journal(*book).Entries().at(1).command;
  }
  user_.Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.UndoCommand(command).ran);
  EXPECT_EQ(At(day_), 1000);
}

}  // namespace
}  // namespace tallybook::desktop
