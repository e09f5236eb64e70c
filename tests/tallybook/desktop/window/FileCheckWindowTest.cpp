// A file looked at before it is imported, from the main window, by keys, to its place in the file and to the import.
#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDragEnterEvent>
#include <QtGui/QDropEvent>
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
      if (window->isVisible() && window->windowTitle() == "Check a File") return window;
    }
    return nullptr;
  }
  // Opens the window and types the file's name.
  QWidget& OpenAbout(const Text& name) {
    Action("Check a File").trigger();
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
  static QString Head(const QWidget& window, int column) {
    return Part<QTableView>(window, "findings").model()->headerData(column, Qt::Horizontal).toString();
  }
  static QStringList ColumnOf(const QWidget& window, int column) {
    QStringList cells;
    for (int row = 0; row < Rows(window); ++row) cells << Cell(window, row, column);
    return cells;
  }
  // A second account that the book does not have, and a figure that stands twice.
  void WriteExchangeFile(const Text& name) {
    auto file = ExchangeFileOf();
    file.accounts.push_back({"999", "Nobody"});
    file.blocks[0].days[1].values.push_back({1, 3});
    file.blocks.push_back({2, {}});
    folder_.Write(name, file.Bytes());
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
  EXPECT_EQ(WordsOf(window, "detail"), Cell(window, 0, 5).toStdString() + "; " + Cell(window, 0, 6).toStdString());
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
  EXPECT_EQ(Part<QComboBox>(window, "kind").currentText(), "Delimited");
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
    Then("Check a File", [name](QWidget& box) {
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

enum ExchangeColumn : int { kByte, kAccount, kField, kDate, kValue, kEffect, kReason, kHelp };

TEST_F(FileCheckWindowTest, ListsFindingsOfAnExchangeFileWithTheItemsAroundThem) {
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "none.QDX");
  WriteDefinition(2, "*.QDX", true);
  const std::string book = folder_.Read("North.tbk");
  QWidget& window = OpenAbout("north.QDX");
  EXPECT_EQ(Part<QComboBox>(window, "kind").currentText(), "Exchange file");
  EXPECT_EQ(Part<QComboBox>(window, "definition").currentText(), "2  Shops");
  EXPECT_FALSE(Part<QPushButton>(window, "save").isVisible());
  EXPECT_FALSE(Part<QComboBox>(window, "encoding").isVisible());
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"),
              AllOf(HasSubstr("north.QDX: 2 accounts with 3 figures on 2 dates, 3 applied and 0 not mapped"),
                    HasSubstr("1 that the import refuses or asks about"), HasSubstr("besides 1 note")));
  EXPECT_THAT(testing::FaultsOf(window), IsEmpty());
  testing::Picture(window, "file-check-exchange");
  QStringList heads;
  for (int column = kByte; column <= kHelp; ++column) heads << Head(window, column);
  EXPECT_EQ(heads,
            QStringList({"Byte", "Account", "Field", "Date", "Value", "The import", "Reason", "What would help"}));
  auto& effect = Part<QComboBox>(window, "effect");
  effect.setCurrentIndex(effect.findText("takes it in silence"));
  Q_EMIT effect.activated(effect.currentIndex());
  ASSERT_EQ(Rows(window), 2) << ColumnOf(window, kReason).join('|').toStdString();
  const int row = static_cast<int>(ColumnOf(window, kValue).indexOf("3"));
  ASSERT_GE(row, 0);
  EXPECT_EQ(Cell(window, row, kAccount), "100");
  EXPECT_EQ(Cell(window, row, kField), "1");
  EXPECT_EQ(Cell(window, row, kDate), "2003-01-06");
  Part<QTableView>(window, "findings").setCurrentIndex(Part<QTableView>(window, "findings").model()->index(row, 0));
  EXPECT_EQ(Marked(window), "1  Sales: 3");
  const QString around = TextOf(window).toPlainText();
  EXPECT_TRUE(around.contains("account 100  Front")) << around.toStdString();
  EXPECT_TRUE(around.contains("2003-01-06, 2 figures")) << around.toStdString();
  EXPECT_TRUE(folder_.Read("North.tbk") == book);
  EXPECT_TRUE(folder_.Has("north.QDX"));
}

TEST_F(FileCheckWindowTest, ANoteLooksUnlikeAnError) {
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "*.QDX", true);
  QWidget& window = OpenAbout("north.QDX");
  Press(window, Qt::Key_Return);
  const auto& model = *Part<QTableView>(window, "findings").model();
  const auto of = [&](int row, int role) { return model.index(row, kEffect).data(role); };
  const auto picture = [&](int row) { return of(row, Qt::DecorationRole).value<QIcon>().pixmap(16).toImage(); };
  const QStringList effects = ColumnOf(window, kEffect);
  const int note = static_cast<int>(effects.indexOf("does as it is told"));
  const int error = static_cast<int>(effects.indexOf("asks about it"));
  ASSERT_TRUE(note >= 0 && error >= 0) << effects.join('|').toStdString();
  EXPECT_EQ(Cell(window, note, kReason), "the file is deleted after the import");
  EXPECT_EQ(note, Rows(window) - 1) << "behind all that is wrong";
  EXPECT_TRUE(of(note, Qt::FontRole).value<QFont>().italic());
  EXPECT_FALSE(of(error, Qt::FontRole).isValid());
  EXPECT_NE(picture(note), picture(error));
}

TEST_F(FileCheckWindowTest, FindingsAreSortedByHeadsAndChosenByAPartOfTheirWords) {
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "*.QDX");
  QWidget& window = OpenAbout("north.QDX");
  Press(window, Qt::Key_Return);
  const QStringList found = ColumnOf(window, kReason);
  Press(window, Qt::Key_7, Qt::ControlModifier);
  QStringList sorted = found;
  sorted.sort();
  EXPECT_EQ(ColumnOf(window, kReason), sorted);
  Press(window, Qt::Key_7, Qt::ControlModifier);
  std::ranges::reverse(sorted);
  EXPECT_EQ(ColumnOf(window, kReason), sorted);
  Press(window, Qt::Key_1, Qt::ControlModifier);
  EXPECT_NE(ColumnOf(window, kReason), sorted);
  Part<QLineEdit>(window, "part").setText("BOTH COUNT");
  ASSERT_EQ(Rows(window), 1);
  EXPECT_THAT(Cell(window, 0, kReason).toStdString(), HasSubstr("both count"));
  EXPECT_EQ(Marked(window), "1  Sales: 3");
}

TEST_F(FileCheckWindowTest, WhatIsNoExchangeFileIsToldToBeNone) {
  folder_.Write("day.QDX", kSound);
  WriteDefinition(1, "*.QDX");
  QWidget& window = OpenAbout("day.QDX");
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), AllOf(HasSubstr("day.QDX is no exchange file: the file begins with"),
                                                HasSubstr("choose its kind above")));
  EXPECT_FALSE(Part<QTableView>(window, "findings").isVisible());
  folder_.Write("day.QDX", "");
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("day.QDX is no exchange file"));
}

TEST_F(FileCheckWindowTest, WithoutADefinitionAnExchangeFileCannotBeLookedAtAndTheReasonIsTold) {
  WriteExchangeFile("north.QDX");
  QWidget& window = OpenAbout("north.QDX");
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("Data Exchange, Definitions makes one"));
  EXPECT_FALSE(Part<QPushButton>(window, "check").isEnabled());
  WriteDefinition(1, "*.QDX");
  Action("Check a File").trigger();
  EXPECT_TRUE(Part<QPushButton>(window, "check").isEnabled());
  EXPECT_THAT(WordsOf(window, "summary"), Not(HasSubstr("makes one")));
}

TEST_F(FileCheckWindowTest, ADefinitionThatCannotBeReadIsNamed) {
  WriteExchangeFile("north.QDX");
  folder_.Write("TBQDX1.North", "nothing");
  QWidget& window = OpenAbout("north.QDX");
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("TBQDX1.North"));
    Press(box, Qt::Key_Escape);
  });
  Press(window, Qt::Key_Return);
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("has not been looked at"));
}

TEST_F(FileCheckWindowTest, CancelledHalfWayItSaysSoForEachKindOfFile) {
  folder_.Write("large.QDX", LargeExchangeFile().Bytes());
  Text lines = kSound;
  for (int line = 0; line < 5'000; ++line) lines += "100,1,12.5\r\n";
  folder_.Write("large.csv", lines);
  WriteDefinition(1, "*.QDX");
  QWidget& window = OpenAbout("");
  for (const char* const name : {"large.QDX", "large.csv"}) {
    Part<QLineEdit>(window, "file_name").setText(QString::fromStdString(folder_.Path(name)));
    CancelAtTurn(6);
    QTest::mouseClick(&Part<QPushButton>(window, "check"), Qt::LeftButton);
    EXPECT_TRUE(platform_.Progress().WasCancelled()) << name;
    EXPECT_EQ(WordsOf(window, "summary"), "The file has not been looked at to its end.") << name;
    EXPECT_FALSE(Part<QTableView>(window, "findings").isVisible());
    EXPECT_TRUE(Part<QPushButton>(window, "check").isEnabled());
  }
}

TEST_F(FileCheckWindowTest, ImportOfAnExchangeFileBeginsThatOfItsDefinition) {
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "none.QDX");
  WriteDefinition(2, "*.QDX");
  QWidget& window = OpenAbout("north.QDX");
  Then("Edit QDX Import Layout", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
  Then("QDX Import Layouts", [](QWidget& list) {
    EXPECT_THAT(AllWordsOf(list), HasSubstr("This definition imports north.QDX."));
    Press(list, Qt::Key_Escape);
  });
  QTest::mouseClick(&Part<QPushButton>(window, "import"), Qt::LeftButton);
  auto& definition = Part<QComboBox>(window, "definition");
  definition.setCurrentIndex(0);
  Then("QDX Import Layouts", [this](QWidget& list) {
    EXPECT_THAT(AllWordsOf(list), HasSubstr("does not find north.QDX: it imports " + folder_.Path("none.QDX")));
    Press(list, Qt::Key_Escape);
  });
  QTest::mouseClick(&Part<QPushButton>(window, "import"), Qt::LeftButton);
}

// Drops a file on the main window.
class DroppedFileTest : public FileCheckWindowTest {
 protected:
  void Drop(const Text& name) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(folder_.Path(name)))});
    QDragEnterEvent enter(QPoint(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window_, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(9, 9), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window_, &drop);
  }
  // Of the prompt that the file comes to.
  Act PressCheck() {
    return [](QWidget& prompt) {
      auto& check = Part<QPushButton>(prompt, "SaveButtons1Added2");
      EXPECT_EQ(check.text(), "Chec&k");
      QTest::mouseClick(&check, Qt::LeftButton);
    };
  }
  QWidget& Checked() {
    testing::WaitUntil([] { return Shown() != nullptr && Rows(*Shown()) > 0; }, "the file is looked at");
    if (Shown() == nullptr) std::abort();
    return *Shown();
  }
};

TEST_F(DroppedFileTest, ATextFileIsCheckedFromThePromptOfItsImport) {
  folder_.Write("day.csv", kSound + "nobody,1,3\r\n");
  Then("Import CSV Data File", PressCheck());
  Drop("day.csv");
  QWidget& window = Checked();
  EXPECT_EQ(Part<QComboBox>(window, "kind").currentText(), "Comma-separated");
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("day.csv: 2 records, 1 finding"));
}

TEST_F(DroppedFileTest, ADelimitedFileIsCheckedAsItsPromptStands) {
  folder_.Write("days.txt", "13/02/2004,100,1,5\n13/02/2004,nobody,1,5\n");
  folder_.Write("North.ini", "[Delimited]\r\nDateOrder=2\r\nMath=2\r\n");
  Then("Import Delimited File", PressCheck());
  Drop("days.txt");
  QWidget& window = Checked();
  EXPECT_EQ(Part<QComboBox>(window, "date_order").currentText(), "DMY");
  EXPECT_EQ(Part<QComboBox>(window, "math").currentText(), "Subtract");
  EXPECT_EQ(Part<QComboBox>(window, "line_ends").currentText(), "Any");
  EXPECT_EQ(Cell(window, 0, 3), "nobody");
}

TEST_F(DroppedFileTest, AnExchangeFileIsCheckedFromTheConfirmationOfItsImport) {
  WriteExchangeFile("a.QDX");
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "none.QDX");
  WriteDefinition(2, "*.QDX");
  Then("QDX Import Layouts", Click("action1"));
  Then("Edit QDX Import Layout Number: 2", PressCheck());
  Drop("north.QDX");
  QWidget& window = Checked();
  EXPECT_EQ(Part<QComboBox>(window, "definition").currentText(), "2  Shops");
  EXPECT_EQ(Part<QComboBox>(window, "math").currentText(), "Replace");
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("north.QDX: "));
}

TEST_F(DroppedFileTest, AnExchangeFileIsCheckedFromTheListThatItComesTo) {
  WriteExchangeFile("a.QDX");
  WriteExchangeFile("north.QDX");
  WriteDefinition(1, "none.QDX");
  WriteDefinition(2, "*.QDX");
  Then("QDX Import Layouts", [](QWidget& list) {
    EXPECT_THAT(testing::FaultsOf(list), IsEmpty());
    EXPECT_THAT(AllWordsOf(list), HasSubstr("This definition imports north.QDX."));
    QTest::mouseClick(&Part<QPushButton>(list, "added2"), Qt::LeftButton);
  });
  Drop("north.QDX");
  QWidget& window = Checked();
  EXPECT_EQ(Part<QComboBox>(window, "definition").currentText(), "2  Shops");
  EXPECT_THAT(WordsOf(window, "summary"), HasSubstr("north.QDX: "));
}

TEST_F(DroppedFileTest, TheListSaysWhyADefinitionHasNothingToCheck) {
  WriteDefinition(1, "none.QDX");
  Then("QDX Import Layouts", [this](QWidget& list) {
    Then("Tallybook", [](QWidget& box) {
      EXPECT_THAT(AllWordsOf(box), HasSubstr("none.QDX"));
      Press(box, Qt::Key_Escape);
    });
    Then("QDX Import Layouts", Keys({{Qt::Key_Escape, Qt::NoModifier}}));
    QTest::mouseClick(&Part<QPushButton>(list, "added2"), Qt::LeftButton);
  });
  Action("Definitions").trigger();
  EXPECT_EQ(Shown(), nullptr);
}

TEST_F(DroppedFileTest, APromptWithoutAFileStaysAndSaysWhatIsMissing) {
  bool stayed = false;
  Then("Import CSV Data File", PressCheck());
  Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(AllWordsOf(box), HasSubstr("does not exist"));
    Press(box, Qt::Key_Escape);
  });
  Then("Import CSV Data File", [&stayed](QWidget& prompt) {
    stayed = true;
    Press(prompt, Qt::Key_Escape);
  });
  Drop("gone.csv");
  testing::WaitUntil([&stayed] { return stayed; }, "the prompt stays");
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
