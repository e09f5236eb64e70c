// A text file looked at before it is imported, from the main window, by keys, to the line and to the import.
#include <QtGui/QTextBlock>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTableView>

#include "tallybook/desktop/window/FileCheckWindow.h"
#include "tests/tallybook/desktop/window/DeskFixture.h"

namespace tallybook::desktop {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::Part;

const std::string kSound = "2,3,2004,1,1\r\n100,1,12.5\r\n";

class FileCheckWindowTest : public testing::DeskFixture {
 protected:
  static QWidget* Shown() {
    for (QWidget* const window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && window->windowTitle() == "Check a Text File") return window;
    }
    return nullptr;
  }
  // Opens the window and types the file's name.
  QWidget& OpenAbout(const Text& name) {
    Action("Check a Text File").trigger();
    QWidget* const window = Shown();
    if (window == nullptr) std::abort();
    EXPECT_TRUE(testing::BringToFront(*window));
    Part<QLineEdit>(*window, "file_name").setFocus();
    Type(*window, folder_.Path(name).c_str());
    return *window;
  }
  static QString Cell(const QWidget& window, int row, int column) {
    return Part<QTableView>(window, "findings").model()->index(row, column).data().toString();
  }
  static int Rows(const QWidget& window) { return Part<QTableView>(window, "findings").model()->rowCount(); }
  static QPlainTextEdit& TextOf(const QWidget& window) { return Part<QPlainTextEdit>(window, "text"); }
  // Of the mark in the line, without the line's own.
  static QString Marked(const QWidget& window) {
    const auto marks = TextOf(window).extraSelections();
    return marks.size() == 2 ? marks[1].cursor.selectedText() : QString();
  }
};

TEST_F(FileCheckWindowTest, ListsFindingsAndShowsTheirLinesMarked) {
  folder_.Write("day.csv", kSound + "200,4,\"1,5\"\r\nnobody,1,3\r\n");
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenAbout("day.csv");
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"),
              AllOf(HasSubstr("day.csv: 3 records, 2 findings"), HasSubstr("1 that the audit")));
  ASSERT_EQ(Rows(window), 2);
  EXPECT_EQ(Cell(window, 0, 0), "3");
  EXPECT_EQ(Cell(window, 0, 3), "1,5");
  EXPECT_EQ(Cell(window, 0, 4), "takes it in silence");
  EXPECT_EQ(Marked(window), "1,5");
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  testing::Picture(window, "file-check");
  Press(window, Qt::Key_Down);
  EXPECT_EQ(Marked(window), "nobody");
  EXPECT_THAT(TextOf(window).textCursor().block().text().toStdString(), HasSubstr("4  nobody,1,3\\r\\n"));
  Press(window, Qt::Key_Return);
  EXPECT_EQ(QApplication::focusWidget(), &TextOf(window));
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
}

TEST_F(FileCheckWindowTest, ChoosesByWhatTheImportDoes) {
  folder_.Write("day.csv", kSound + "200,4,\"1,5\"\r\nnobody,1,3\r\n");
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Return);
  auto& effect = Part<QComboBox>(window, "effect");
  effect.setFocus();
  Press(window, Qt::Key_Down);
  ASSERT_EQ(Rows(window), 1);
  EXPECT_EQ(Cell(window, 0, 3), "nobody");
  EXPECT_EQ(Marked(window), "nobody");
}

TEST_F(FileCheckWindowTest, SaysThatNothingIsFound) {
  folder_.Write("day.csv", kSound);
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Return);
  EXPECT_EQ(WordsOf(window, "summary"), "day.csv: 1 record, 0 findings.");
  EXPECT_FALSE(Part<QPushButton>(window, "save").isEnabled());
  EXPECT_TRUE(Part<QPushButton>(window, "import").isEnabled());
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
}

TEST_F(FileCheckWindowTest, ADelimitedFileIsReadInTheOrderThatFitsItsDates) {
  folder_.Write("days.txt", "13/02/2004,100,1,5\r\n13/02/2004,nobody,1,5\r\n");
  QWidget& window = OpenAbout("days.txt");
  auto& kind = Part<QComboBox>(window, "kind");
  kind.setFocus();
  Press(window, Qt::Key_Down);
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  Press(window, Qt::Key_Return);
  ASSERT_EQ(Rows(window), 1) << WordsOf(window, "summary");
  EXPECT_EQ(Marked(window), "nobody");
  folder_.Write("days.txt", "03/02/2004,100,1,5\r\n");
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), AllOf(HasSubstr("days.txt"), HasSubstr("both fit all dates")));
    Press(box, Qt::Key_Escape);
  });
  QTest::mouseClick(&Part<QPushButton>(window, "check"), Qt::LeftButton);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("has not been looked at"));
}

TEST_F(FileCheckWindowTest, SavesTheLinesWithFindingsAsTheyWereLookedAt) {
  folder_.Write("day.csv", kSound + "nobody,1,3\r\n");
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Return);
  folder_.Write("day.csv", "");
  Then("Save Lines with Findings", [this](QWidget& dialog) {
    auto& line = Part<QLineEdit>(dialog, "fileNameEdit");
    line.setText(QString::fromStdString(folder_.Path("mend.csv")));
    QTest::keyClick(&line, Qt::Key_Return);
  });
  QTest::mouseClick(&Part<QPushButton>(window, "save"), Qt::LeftButton);
  EXPECT_EQ(folder_.Read("mend.csv"), "2,3,2004,1,1\r\nnobody,1,3\r\n");
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("mend.csv"));
}

TEST_F(FileCheckWindowTest, NeverSavesOntoTheFileItselfOrABook) {
  const std::string text = kSound + "nobody,1,3\r\n";
  folder_.Write("day.csv", text);
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Return);
  for (const char* const name : {"day.csv", "North.tbk"}) {
    Then("Save Lines with Findings", [this, name](QWidget& dialog) {
      dynamic_cast<QFileDialog&>(dialog).setOption(QFileDialog::DontConfirmOverwrite);
      auto& line = Part<QLineEdit>(dialog, "fileNameEdit");
      line.setText(QString::fromStdString(folder_.Path(name)));
      QTest::keyClick(&line, Qt::Key_Return);
    });
    Then("Check a Text File", [name](QWidget& box) {
      EXPECT_THAT(AllWordsOf(box), HasSubstr(name));
      Press(box, Qt::Key_Escape);
    });
    QTest::mouseClick(&Part<QPushButton>(window, "save"), Qt::LeftButton);
  }
  EXPECT_EQ(folder_.Read("day.csv"), text);
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
}

TEST_F(FileCheckWindowTest, ImportBeginsThePromptWithTheFilesName) {
  folder_.Write("day.csv", kSound);
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Return);
  Then("Import CSV Data File", [this](QWidget& prompt) {
    QStringList texts;
    for (const auto* line : prompt.findChildren<QLineEdit*>()) texts << line->text();
    EXPECT_TRUE(texts.contains(QString::fromStdString(folder_.Path("day.csv"))));
    Press(prompt, Qt::Key_Escape);
  });
  QTest::mouseClick(&Part<QPushButton>(window, "import"), Qt::LeftButton);
}

TEST_F(FileCheckWindowTest, AFileThatIsNotThereIsNamedAndOneThatVanishesIsShownOn) {
  QWidget& window = OpenAbout("gone.csv");
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("gone.csv"));
    Press(box, Qt::Key_Escape);
  });
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("has not been looked at"));
  folder_.Write("gone.csv", kSound + "nobody,1,3\r\nno one,1,3\r\n");
  QTest::mouseClick(&Part<QPushButton>(window, "check"), Qt::LeftButton);
  ASSERT_EQ(Rows(window), 2);
  std::filesystem::remove(folder_.Path("gone.csv"));
  Press(window, Qt::Key_Down);
  EXPECT_EQ(Marked(window), "no one") << "what is open is read on";
}

TEST_F(FileCheckWindowTest, TheBookItselfAndWhatIsNoFileAreRefused) {
  std::filesystem::create_directory(folder_.Path("folder"));
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenAbout("");
  for (const char* const name : {"North.tbk", "folder"}) {
    Part<QLineEdit>(window, "file_name").setText(QString::fromStdString(folder_.Path(name)));
    Then("Tallybook", [name](QWidget& box) {
      EXPECT_THAT(AllWordsOf(box), HasSubstr(name));
      Press(box, Qt::Key_Escape);
    });
    QTest::mouseClick(&Part<QPushButton>(window, "check"), Qt::LeftButton);
    EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("has not been looked at"));
  }
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
}

TEST_F(FileCheckWindowTest, GoesWithItsBookAndAtEscape) {
  QWidget& window = OpenAbout("day.csv");
  Press(window, Qt::Key_Escape);
  testing::WaitUntil([] { return Shown() == nullptr; }, "Escape closes it");
  OpenAbout("day.csv");
  EXPECT_TRUE(window_.CloseBook());
  EXPECT_EQ(Shown(), nullptr);
}

// The work is one of the test's own, which ends when it is asked to and not before.
TEST_F(FileCheckWindowTest, ClosedWhileItWorksItEndsTheWorkFirst) {
  bool asked = false;
  bool ended = false;
  FileCheckWindow* window = nullptr;
  FileCheckWindow::Means means;
  means.check = [&](const FileCheckWish& /*wish*/) {
    window->close();
    EXPECT_TRUE(window->isVisible());
    testing::WaitUntil([&] { return asked; }, "the work is asked to end");
    ended = true;
    return std::optional<FileCheckResult>();
  };
  means.ask_to_end = [&] { asked = true; };
  FileCheckWindow stands(means);
  window = &stands;
  stands.show();
  ASSERT_TRUE(testing::BringToFront(stands));
  Type(stands, "any.csv");
  Press(stands, Qt::Key_Return);
  EXPECT_TRUE(ended);
  EXPECT_FALSE(stands.isVisible());
}

}  // namespace
}  // namespace tallybook::desktop
