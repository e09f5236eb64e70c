// A look at an import from its prompt, and the import from there.
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>

#include "tallybook/desktop/host/PreviewWindow.h"
#include "tallybook/desktop/host/RowsView.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::FigureMap;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::kCsvPrompt;
using testing::kFigures;
using testing::kList;
using testing::kReport;
using testing::kSales;
using testing::kShop;
using testing::Part;
using testing::WhenShown;

class PreviewWindowTest : public testing::ConversationsFixture {
 protected:
  static WhenShown::Act Later(const WhenShown::Act& act) {
    return [act](QWidget& window) { QTimer::singleShot(0, &window, [act, &window] { act(window); }); };
  }
  // Types a file's path into the prompt and presses Preview.
  WhenShown::Act Preview(const Text& name) {
    return Later([path = folder_.Path(name)](QWidget& window) {
      FileBox(window).setText({});
      QTest::keyClicks(&FileBox(window), QString::fromStdString(path));
      QTest::keyClick(&FileBox(window), Qt::Key_P, Qt::AltModifier);
    });
  }
  static WhenShown::Act PressPreview() {
    return Later(
        [](QWidget& window) { QTest::mouseClick(&Part<QPushButton>(window, "SaveButtons1Added"), Qt::LeftButton); });
  }
  static QString Cell(const QWidget& window, int row, int column) {
    return Part<QTableView>(window, "changes").model()->index(row, column).data().toString();
  }
};

TEST_F(PreviewWindowTest, ShowsWhatACommaSeparatedFileWouldDoAndChangesNothing) {
  folder_.Write("day.csv", kFigures);
  const std::string book = folder_.Read("North.tbk");
  user_.Then(kCsvPrompt, Preview("day.csv"))
      .Then("Tallybook", Press(Qt::Key_Return))  // the import's own question
      .Then("Preview",
            [](QWidget& window) {
              EXPECT_THAT(
                  Part<QLabel>(window, "summary").text().toStdString(),
                  AllOf(HasSubstr("Nothing has been changed."), HasSubstr("2 figures in 2 records would change")));
              auto& changes = Part<QTableView>(window, "changes");
              ASSERT_EQ(changes.model()->rowCount(), 2);
              EXPECT_EQ(Cell(window, 0, 1), "2004-02-03");
              EXPECT_EQ(Cell(window, 0, 5), "12.50");
              EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
              testing::Picture(window, "preview");
              QTest::keyClicks(&Part<QLineEdit>(window, "account"), "200");
              EXPECT_EQ(changes.model()->rowCount(), 1);
              EXPECT_EQ(Part<QLabel>(window, "count").text(), "1 of 2 figures, together 3");
              Part<QLineEdit>(window, "account").clear();
              auto& pages = Part<QTabWidget>(window, "pages");
              for (int page = 1; page < pages.count(); ++page) {
                pages.setCurrentIndex(page);
                EXPECT_THAT(testing::FaultsOf(window), IsEmpty()) << page;
              }
              const auto& files = dynamic_cast<RowsView&>(Part<QWidget>(window, "files"));
              EXPECT_EQ(files.TextAt(0, 1), "kept");
              EXPECT_EQ(files.TextAt(0, 2), "2");
              QTest::keyClick(&window, Qt::Key_Escape);
            })
      .Then(kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
}

TEST_F(PreviewWindowTest, ImportsFromThere) {
  folder_.Write("day.csv", kFigures);
  FigureMap expected = Stored();
  expected[{kShop, day_, kSales}] += 12.5;
  expected[{205, day_, 4}] += 3;
  user_.Then(kCsvPrompt, Preview("day.csv"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Preview", Later(Click("import")))
      .Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportCsv().ChangedFigures());
  EXPECT_EQ(Stored(), expected);
}

TEST_F(PreviewWindowTest, SaysWhyAnImportWouldNotBeDoneAndOffersNone) {
  folder_.Write("day.csv", "2,3,2004,1,1\r\nno such account,1,12.5\r\n");
  user_.Then(kCsvPrompt, Preview("day.csv"))
      .Then("Tallybook", Press(Qt::Key_Return))  // the import's own question
      .Then("Tallybook", Press(Qt::Key_Return))  // the audit's: it is not gone on with
      .Then("Preview", [](QWidget& window) {
        EXPECT_THAT(Part<QLabel>(window, "summary").text().toStdString(), HasSubstr("would not be done"));
        EXPECT_FALSE(Part<QPushButton>(window, "import").isEnabled());
        QTest::keyClick(&window, Qt::Key_Escape);
      });
  user_.Then(kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
}

TEST_F(PreviewWindowTest, ADelimitedFileKeepsItsNameInAPreviewWhichEndsInItsBalance) {
  folder_.Write("days.txt", "3/2/2004,100,1,5\r\n");
  user_.Then("Import Delimited File", Preview("days.txt"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Preview",
            [&](QWidget& window) {
              const auto& files = dynamic_cast<RowsView&>(Part<QWidget>(window, "files"));
              EXPECT_THAT(files.TextAt(0, 1).toStdString(), HasSubstr("renamed to " + folder_.Path("days.txt.bak")));
              EXPECT_EQ(Part<QPlainTextEdit>(window, "report").toPlainText().toStdString(),
                        "Balance: 1 figure read = 1 applied + 0 not mapped + 0 refused\n"
                        "  field 1 to field 1: 1 figure, 5 in the file, 5 in the book");
              QTest::keyClick(&window, Qt::Key_Escape);
            })
      .Then("Import Delimited File", Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportDelimited().ChangedFigures());
  EXPECT_TRUE(folder_.Has("days.txt"));
}

TEST_F(PreviewWindowTest, ADefinitionIsLookedAtFromItsConfirmationWithTheMathThatIsChosenThere) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(2, "South", "south.QDX");
  user_.Then(kList, Later(Click("action1")))
      .Then("Edit QDX Import Layout Number: 2", PressPreview())
      .Then("Preview",
            [&](QWidget& window) {
              EXPECT_EQ(Part<QTableView>(window, "changes").model()->rowCount(), 1);
              EXPECT_EQ(Cell(window, 0, 4), "7.50");
              QTest::mouseClick(&Part<QPushButton>(window, "import"), Qt::LeftButton);
            })
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
  EXPECT_EQ(Stored().at({kShop, day_, kSales}), 7.5);
}

TEST_F(PreviewWindowTest, AllDefinitionsAreLookedAtFromTheList) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(2, "South", "south.QDX");
  user_.Then(kList, Later(Click("added")))
      .Then("Preview",
            [](QWidget& window) {
              EXPECT_EQ(Part<QTableView>(window, "changes").model()->rowCount(), 1);
              QTest::keyClick(&window, Qt::Key_Escape);
            })
      .Then(kList, [](QWidget& window) {
        EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
        QTest::keyClick(&window, Qt::Key_Escape);
      });
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures());
}

}  // namespace
}  // namespace tallybook::desktop
