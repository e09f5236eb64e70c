// The history of a book in its window: what is told of each entry, and the way back of any.
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTextBrowser>

#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/desktop/window/JournalWindow.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::Part;

class JournalWindowTest : public testing::DeskFixture {
 protected:
  // An import of one figure; one that does not end stays open.
  void Import(const Text& file, Double value, bool ends = true) {
    const auto book = Open();
    book->SetOperationName("import csv " + file);
    book->SetNotes({.files = {{.path = file, .size = 5, .xxh3 = {}, .sha256 = {}}}, .facts = {}});
    book->BeginRollback(Day(2003, 1, 5), Day(2003, 1, 5));
    tallybook::testing::Put(*book, 101, Day(2003, 1, 5), 1, value);
    if (ends) book->EndRollback();
    book->Close();
  }
  [[nodiscard]] Double Stored() { return tallybook::testing::Get(*Open(), 101, Day(2003, 1, 5), 1); }
  void ShowJournal() { PressInMain(Qt::Key_J, Qt::ControlModifier); }

  static RowsView& ListOf(QWidget& window) { return *window.findChild<RowsView*>(); }
  static Text DetailsOf(QWidget& window) { return Part<QTextBrowser>(window, "details").toPlainText().toStdString(); }
};

TEST_F(JournalWindowTest, TellsAllThatIsKeptOfTheEntryUnderTheCursor) {
  Import("one.csv", 10);
  Import("two.csv", 20);
  Then("Journal", [](QWidget& window) {
    RowsView& list = ListOf(window);
    ASSERT_EQ(list.RowCount(), 2);
    EXPECT_EQ(list.TextAt(0, 0), "2");
    EXPECT_EQ(list.TextAt(0, 3), "import csv two.csv");
    EXPECT_THAT(DetailsOf(window),
                AllOf(HasSubstr("Journal entry 2: import csv two.csv"), HasSubstr("two.csv, 5 bytes")));
    Press(window, Qt::Key_Down);
    EXPECT_THAT(DetailsOf(window), AllOf(HasSubstr("Journal entry 1"), HasSubstr("one.csv, 5 bytes")));
    EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
    testing::Picture(window, "journal-details");
    Press(window, Qt::Key_Escape);
  });
  ShowJournal();
}

TEST_F(JournalWindowTest, UndoesAnOldEntryWithAQuestionAboutWhatChangedSince) {
  Import("one.csv", 10);
  Import("two.csv", 20);
  Then("Journal", [](QWidget& window) {
    Press(window, Qt::Key_Down);
    Press(window, Qt::Key_U, Qt::AltModifier);
  });
  Then("Undo: Figures Changed Since", Click("force"));
  Then("Journal", [](QWidget& window) {
    const RowsView& list = ListOf(window);
    ASSERT_EQ(list.RowCount(), 3);
    EXPECT_EQ(list.CurrentRow(), 2) << "the entry stays the one that is looked at";
    EXPECT_EQ(list.TextAt(2, 6), "undone");
    EXPECT_FALSE(Part<QPushButton>(window, "undo").isEnabled());
    EXPECT_EQ(WordsOf(window, "hint"), "This entry has been undone already.");
    Press(window, Qt::Key_Escape);
  });
  ShowJournal();
  EXPECT_EQ(Stored(), 2.5);
}

TEST_F(JournalWindowTest, UndoesAnUndoByItsLine) {
  Import("one.csv", 10);
  Then("Journal", Keys({{Qt::Key_U, Qt::AltModifier}}));
  Then("Tallybook", Keys({{Qt::Key_Return, Qt::NoModifier}}));
  Then("Journal", [](QWidget& window) {
    ListOf(window).GoTo(0);
    EXPECT_EQ(ListOf(window).TextAt(0, 3), "journal undo of 1");
    EXPECT_TRUE(Part<QPushButton>(window, "undo").isEnabled());
    Press(window, Qt::Key_U, Qt::AltModifier);
  });
  Then("Tallybook", Keys({{Qt::Key_Return, Qt::NoModifier}}));
  Then("Journal", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
  ShowJournal();
  EXPECT_EQ(Stored(), 10);
}

TEST_F(JournalWindowTest, OffersDefinitionsTheCodesFromBeforeWhereAChangeOfListsIsUndone) {
  folder_.Write("TBQDX1.North", "\"Shop\",\"in/*.QDX\",1,0,0\r\n0,1\r\n\"f\",\"110\"\r\n0\r\n");
  {
    const auto book = Open();
    engine::BookDescription lists = book->Description();
    lists.accounts[0].code = "110";
    book->Grow(lists, "account edit 100");
    book->Close();
  }
  Then("Journal", Keys({{Qt::Key_U, Qt::AltModifier}}));
  Then("Undo a Change of Lists", Click("change"));
  // The journal is in front again before the work that goes on beside it has ended.
  Then("Journal", [](QWidget& window) {
    auto* const look = new QTimer(&window);
    QObject::connect(look, &QTimer::timeout, &window, [&window] {
      if (ListOf(window).TextAt(1, 6) == "undone") Press(window, Qt::Key_Escape);
    });
    constexpr int kEvery = 10;  // milliseconds
    look->start(kEvery);
  });
  ShowJournal();
  EXPECT_EQ(Codes().front(), "100");
  EXPECT_THAT(folder_.Read("TBQDX1.North"), HasSubstr("\"f\",\"100\""));
}

TEST_F(JournalWindowTest, AsksBeforeAChangeOfListsIsUndone) {
  {
    const auto book = Open();
    engine::BookDescription lists = book->Description();
    lists.accounts[0].code = "110";
    book->Grow(lists, "account edit 100");
    book->Close();
  }
  Then("Journal", Keys({{Qt::Key_U, Qt::AltModifier}}));
  Then("Undo a Change of Lists", [](QWidget& dialog) {
    EXPECT_THAT(AllWordsOf(dialog), HasSubstr("what they were before the change"));
    EXPECT_THAT(testing::FaultsOf(dialog), IsEmpty());
    Press(dialog, Qt::Key_Escape);
  });
  Then("Journal", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
  ShowJournal();
  EXPECT_EQ(Codes().front(), "110");
}

TEST_F(JournalWindowTest, ShowsAnEntryThatWasNeverFinishedAsSuch) {
  const bool ends = true;
  Import("one.csv", 10, !ends);
  Then("Journal", [](QWidget& window) {
    EXPECT_EQ(ListOf(window).TextAt(0, 6), "not finished");
    EXPECT_THAT(WordsOf(window, "hint"), HasSubstr("was not finished"));
    EXPECT_THAT(DetailsOf(window), HasSubstr("it failed or was cut off, and what it wrote stands"));
    EXPECT_TRUE(Part<QPushButton>(window, "undo").isEnabled());
    Press(window, Qt::Key_U, Qt::AltModifier);
  });
  Then("Tallybook", Keys({{Qt::Key_Return, Qt::NoModifier}}));
  Then("Journal", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
  ShowJournal();
  EXPECT_EQ(Stored(), 2.5);
}

}  // namespace
}  // namespace tallybook::desktop
