#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPrinter>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextDocument>
#include <QToolButton>
#include <gmock/gmock.h>

#include "tallybook/desktop/host/ReportDocument.h"
#include "tallybook/desktop/host/ReportWindow.h"
#include "tallybook/desktop/host/WindowPrinter.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/tallybook/desktop/Waiting.h"
#include "tests/tallybook/engine/BookFixture.h"

namespace tallybook::desktop {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::Part;
using testing::WhenShown;

report::Report Sample(int rows = 3) {
  report::Report sample;
  sample.title = "QDX Import Report";
  sample.created = "2004-02-03 14:05:09";
  sample.blocks.emplace_back(report::Line{.text = "Importing QDX File: /in/north.QDX"});
  report::Table table;
  table.widths = {1, 3};
  table.head = {{"Account", "Description"}};
  for (int row = 1; row <= rows; ++row)
    table.body.push_back({std::to_string(row), "Department " + std::to_string(row)});
  sample.blocks.emplace_back(table);
  sample.blocks.emplace_back(report::Line{.text = "Completed"});
  return sample;
}

report::Blocks Head() {
  return {report::Line{.text = "North Shop - QDX Import"}};
}

class ReportWindowTest : public ::testing::Test {
 protected:
  ReportWindow& Open(report::Report report, ReportSetting setting = {}) {
    window_ = new ReportWindow(std::move(report), Head(), std::move(setting), &owner_, memory_);
    window_->show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(window_));
    return *window_;
  }

  [[nodiscard]] QPlainTextEdit& TextOf(ReportWindow& window) { return Part<QPlainTextEdit>(window, "text"); }
  [[nodiscard]] Text In(const Text& name) const { return folder_.path().toStdString() + "/" + name; }

  tallybook::testing::ScriptedPlatform platform_;
  QTemporaryDir folder_;
  WindowMemory memory_{folder_.filePath("desktop.ini").toStdString()};
  QWidget owner_;
  QPointer<ReportWindow> window_;
};

TEST_F(ReportWindowTest, ShowsTitleHeadAndLinesWithColumnsUnderEachOther) {
  ReportWindow& window = Open(Sample());
  EXPECT_EQ(window.windowTitle(), "QDX Import Report");
  EXPECT_EQ(Part<QLabel>(window, "created").text(), "2004-02-03 14:05:09");
  const QStringList lines = TextOf(window).toPlainText().split('\n');
  EXPECT_EQ(lines.front(), "North Shop - QDX Import");
  EXPECT_TRUE(lines.contains("Importing QDX File: /in/north.QDX"));
  const qsizetype head = lines.indexOf(QRegularExpression("^Account +Description.*"));
  const qsizetype row = lines.indexOf(QRegularExpression("^2 +Department 2.*"));
  ASSERT_GE(head, 0);
  ASSERT_GE(row, 0);
  EXPECT_EQ(lines[head].indexOf("Description"), lines[row].indexOf("Department"));
}

TEST_F(ReportWindowTest, TellsAtItsHeadWhatChanged) {
  ReportSetting setting;
  setting.changes = {"Changed: 2004-01-01 to 2004-12-31, journal entry 3."};
  EXPECT_EQ(Part<QLabel>(Open(Sample(), setting), "changes").text(), setting.changes.front().c_str());
}

TEST_F(ReportWindowTest, TheUndoButtonTakesTheImportBackOnce) {
  int undone = 0;
  ReportSetting setting;
  setting.undo = [&] { return ++undone == 2; };
  ReportWindow& window = Open(Sample(), setting);
  auto& undo = Part<QPushButton>(window, "undo");
  EXPECT_EQ(undo.text(), "&Undo this import");
  QTest::mouseClick(&undo, Qt::LeftButton);
  EXPECT_TRUE(undo.isEnabled()) << "the user thought better of it";
  QTest::keyClick(&TextOf(window), Qt::Key_U, Qt::AltModifier);
  testing::WaitUntil([&] { return undone == 2; }, "the button is pressed");
  EXPECT_FALSE(undo.isEnabled());
  EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(), HasSubstr("Undone"));
}

TEST_F(ReportWindowTest, WithoutAnImportThereIsNothingToUndo) {
  EXPECT_FALSE(Part<QPushButton>(Open(Sample()), "undo").isVisible());
}

TEST_F(ReportWindowTest, SearchesAsOneTypesAndGoesOnRoundTheEnd) {
  ReportWindow& window = Open(Sample(30));
  QPlainTextEdit& text = TextOf(window);
  QTest::keyClick(&text, Qt::Key_F, Qt::ControlModifier);
  auto& box = Part<QLineEdit>(window, "search");
  EXPECT_TRUE(box.hasFocus());
  QTest::keyClicks(&box, "department 2");
  EXPECT_EQ(Part<QLabel>(window, "found").text(), "11 found");
  const int first = text.textCursor().blockNumber();
  QTest::keyClick(&box, Qt::Key_Return);
  EXPECT_GT(text.textCursor().blockNumber(), first);
  QTest::keyClick(&box, Qt::Key_Return, Qt::ShiftModifier);
  EXPECT_EQ(text.textCursor().blockNumber(), first);
  QTest::keyClick(&text, Qt::Key_F3, Qt::ShiftModifier);
  EXPECT_EQ(text.textCursor().block().text().trimmed().right(13), "Department 29");
  box.setText("nowhere");
  EXPECT_EQ(Part<QLabel>(window, "found").text(), "not found");
  EXPECT_FALSE(Part<QPushButton>(window, "next").isEnabled());
}

TEST_F(ReportWindowTest, SavesInTheFormThatTheNameAsksFor) {
  ReportWindow& window = Open(Sample());
  const auto contents = [&](const char* name) {
    QFile file(QString::fromStdString(In(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return file.readAll().toStdString();
  };
  EXPECT_TRUE(window.SaveAs(In("a.txt")));
  EXPECT_THAT(contents("a.txt"), HasSubstr("QDX Import Report\n====="));
  EXPECT_TRUE(window.SaveAs(In("a.html")));
  EXPECT_THAT(contents("a.html"), HasSubstr("<td>Department 2</td>"));
  EXPECT_TRUE(window.SaveAs(In("a.pdf")));
  EXPECT_THAT(contents("a.pdf"), HasSubstr("%PDF-"));
}

TEST_F(ReportWindowTest, AReportThatCannotBeSavedSaysSo) {
  ReportWindow& window = Open(Sample());
  EXPECT_FALSE(window.SaveAs(In("missing/a.txt")));
  EXPECT_FALSE(window.SaveAs(In("a.doc")));
  ASSERT_EQ(platform_.boxes.Shown().size(), 2U);
  EXPECT_THAT(platform_.boxes.Texts()[1], HasSubstr("a.doc"));
}

TEST_F(ReportWindowTest, PrintsItsPagesWithTheTablesHeadOnEach) {
  const auto document = NewReportDocument(Sample(200), Head());
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(In("printed.pdf")));
  Open(Sample(200)).PrintOn(printer);
  EXPECT_GT(QFile(QString::fromStdString(In("printed.pdf"))).size(), 1000);
  document->setPageSize(QSizeF(500, 700));
  EXPECT_GT(document->pageCount(), 2);
}

// --- The print dialog: no printer is known under the tests' display, so it offers a file alone
// -------------------------

class PrintDialogTest : public ReportWindowTest {
 protected:
  // Opens the dialog as the user does, and acts in it.
  void Print(ReportWindow& window, const std::function<void(QWidget& dialog)>& act) {
    WhenShown user;
    user.Then("Print", act);
    QTest::keyClick(&TextOf(window), Qt::Key_P, Qt::ControlModifier);
  }
  static QLineEdit& FileName(QWidget& dialog) { return Part<QLineEdit>(dialog, "filename"); }
  // Types a file's name and presses Enter.
  static void TakeFile(QWidget& dialog, const QString& path) {
    FileName(dialog).selectAll();
    QTest::keyClicks(&FileName(dialog), path);
    QTest::keyClick(&FileName(dialog), Qt::Key_Return);
  }
  [[nodiscard]] QString Path(const char* name) const { return folder_.filePath(name); }
  [[nodiscard]] QByteArray Contents(const char* name) const {
    QFile file(Path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
};

TEST_F(PrintDialogTest, WithoutAPrinterItOffersAFile) {
  Print(Open(Sample()), [](QWidget& dialog) {
    const auto& printers = Part<QComboBox>(dialog, "printers");
    EXPECT_EQ(printers.count(), 1);
    EXPECT_THAT(printers.currentText().toStdString(), HasSubstr("PDF"));
    EXPECT_TRUE(FileName(dialog).isEnabled());
    QTest::keyClick(&FileName(dialog), Qt::Key_Escape);
  });
  EXPECT_TRUE(platform_.boxes.Shown().empty());
}

TEST_F(PrintDialogTest, PrintsToAFileThatIsNamed) {
  Print(Open(Sample(200)), [this](QWidget& dialog) { TakeFile(dialog, Path("printed.pdf")); });
  EXPECT_TRUE(Contents("printed.pdf").startsWith("%PDF-"));
  EXPECT_GT(Contents("printed.pdf").count("/Type /Page\n"), 2);
  EXPECT_THAT(QDir(folder_.path()).entryList(QDir::Files), ::testing::Contains(QString("printed.pdf")));
}

TEST_F(PrintDialogTest, ACancelPrintsNothing) {
  ReportWindow& window = Open(Sample());
  Print(window, [this](QWidget& dialog) {
    FileName(dialog).selectAll();
    QTest::keyClicks(&FileName(dialog), Path("printed.pdf"));
    QTest::keyClick(&FileName(dialog), Qt::Key_Escape);
  });
  EXPECT_FALSE(QFile::exists(Path("printed.pdf")));
  EXPECT_TRUE(window.isVisible());
  testing::WaitUntil([&] { return TextOf(window).hasFocus(); }, "the report has the keys again");
}

TEST_F(PrintDialogTest, TheLookAtThePagesPrintsInTheSameWay) {
  ReportWindow& window = Open(Sample(200));
  WhenShown user;
  user.Then("Pages of",
            [](QWidget& pages) {
              for (auto* const button : pages.findChildren<QToolButton*>()) {
                if (button->defaultAction() == nullptr || button->defaultAction()->text() != "Print") continue;
                QTimer::singleShot(0, &pages, [button] { QTest::mouseClick(button, Qt::LeftButton); });
              }
            })
      .Then("Print", [this](QWidget& dialog) { TakeFile(dialog, Path("pages.pdf")); })
      .Then("Pages of", [](QWidget& pages) { pages.close(); });
  QTest::mouseClick(&Part<QPushButton>(window, "preview"), Qt::LeftButton);
  EXPECT_TRUE(Contents("pages.pdf").startsWith("%PDF-"));
  EXPECT_TRUE(Contents("pages.pdf").contains("/Title"));
}

TEST_F(PrintDialogTest, AFileThatCannotBeWrittenIsTold) {
  ReportWindow& window = Open(Sample());
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(Path("missing/printed.pdf"));
  EXPECT_FALSE(window.Print(printer));
  ASSERT_EQ(platform_.boxes.Shown().size(), 1U);
  EXPECT_THAT(platform_.boxes.Texts()[0], HasSubstr("printed.pdf"));
}

TEST_F(PrintDialogTest, ABookIsNeverPrintedOver) {
  ReportWindow& window = Open(Sample());
  const Text book = In("North.tbk");
  engine::Book::Create(book, tallybook::testing::ShopDescription());
  const QByteArray before = Contents("North.tbk");
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(book));
  EXPECT_FALSE(window.Print(printer));
  EXPECT_EQ(platform_.boxes.Shown().size(), 1U);
  EXPECT_TRUE(Contents("North.tbk") == before);
}

TEST_F(ReportWindowTest, ShowsAHundredThousandLines) {
  constexpr int kRows = 100'000;
  ReportWindow& window = Open(Sample(kRows));
  EXPECT_GT(TextOf(window).blockCount(), kRows);
}

TEST_F(ReportWindowTest, EscapeClosesAndTheWindowIsGone) {
  ReportWindow& window = Open(Sample());
  QTest::keyClick(&TextOf(window), Qt::Key_Escape);
  testing::WaitUntil([&] { return window_.isNull(); }, "the window is gone");
}

TEST_F(ReportWindowTest, AWindowPrinterHandsOverWhatWasPrinted) {
  class Listener : public PrinterEvents {
   public:
    void PrintInit(Printer& printer) override {
      printer.Columns().Add(1);
      printer.ApplyColumns();
    }
    void PrintHeader(Printer& printer) override { printer.PrintLine("North Shop - QDX Import"); }
  } listener;
  report::Report shown;
  report::Blocks head;
  WindowPrinter printer(
      [&](report::Report report, report::Blocks its_head) {
        shown = std::move(report);
        head = std::move(its_head);
      },
      nullptr);
  printer.SetEvents(&listener);
  ASSERT_TRUE(printer.BeginReport(0, "QDX Import Report"));
  printer.PrintLine("Completed");
  printer.Columns().Item(1).SetText("a cell");
  printer.PrintRow();
  EXPECT_TRUE(shown.title.empty()) << "nothing is shown before the report ends";
  printer.EndReport();
  EXPECT_EQ(shown.title, "QDX Import Report");
  EXPECT_EQ(shown.blocks.size(), 2U);
  EXPECT_EQ(std::get<report::Line>(head.at(0)).text, "North Shop - QDX Import");
}

}  // namespace
}  // namespace tallybook::desktop
