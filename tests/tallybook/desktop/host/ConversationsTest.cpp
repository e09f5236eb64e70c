// Conversations of the component in real windows, from the call that the main window makes to the figures and files on
// disk. The user's keys and clicks go to widgets.
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <filesystem>
#include <gmock/gmock.h>

#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "support/Utility.h"
#include "tallybook/application/FileDisposals.h"
#include "tallybook/desktop/forms/QtScreen.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using tallybook::testing::FigureMap;
using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::kCsvPrompt;
using testing::kFigures;
using testing::kList;
using testing::kReport;
using testing::kSales;
using testing::kShop;
using ::testing::Not;
using testing::Part;
using ::testing::SizeIs;
using ::testing::StartsWith;
using testing::WhenShown;

class ConversationsTest : public testing::ConversationsFixture {};

// --- Text files ------------------------------------------------------------------------------------------------------

TEST_F(ConversationsTest, ACommaSeparatedFileThatWasNamedStandsInThePromptAndIsImported) {
  folder_.Write("day.csv", kFigures);
  FigureMap expected = Stored();
  expected[{kShop, day_, kSales}] += 12.5;
  expected[{205, day_, 4}] += 3;
  user_
      .Then(kCsvPrompt,
            [&](QWidget& window) {
              const auto file = [&] { return FileBox(window).text().toStdString(); };
              testing::WaitUntil([&] { return file() == folder_.Path("day.csv"); }, "the file's name is filled in");
              EXPECT_EQ(FileBox(window).text().toStdString(), folder_.Path("day.csv"));
              QTest::keyClick(&FileBox(window), Qt::Key_Return);
            })
      .Then("Tallybook", Press(Qt::Key_Return));
  int changes = 0;
  conversations_.SetChangeListener([&] { ++changes; });
  const ConversationResult result = conversations_.ImportCsv(folder_.Path("day.csv"));
  EXPECT_TRUE(result.ran);
  ASSERT_THAT(result.entries, SizeIs(1));
  EXPECT_EQ(result.entries[0].what_ran, "import csv " + folder_.Path("day.csv"));
  EXPECT_EQ(Stored(), expected);
  EXPECT_GT(changes, 0);
}

TEST_F(ConversationsTest, ACommaSeparatedImportThatIsCancelledChangesNothing) {
  const FigureMap before = Stored();
  user_.Then(kCsvPrompt, Press(Qt::Key_Escape));
  const ConversationResult result = conversations_.ImportCsv();
  EXPECT_TRUE(result.ran);
  EXPECT_FALSE(result.ChangedFigures());
  EXPECT_EQ(Stored(), before);
}

TEST_F(ConversationsTest, ADelimitedFileWhoseLinesEndOtherwiseIsReadWhereTheUserWantsIt) {
  folder_.Write("days.txt", "3/2/2004,100,1,5\n4/2/2004,100,1,6\n");
  FigureMap expected = Stored();
  expected[{kShop, Day(2004, 3, 2), kSales}] = 5;
  expected[{kShop, Day(2004, 4, 2), kSales}] = 6;
  user_.Then("Import Delimited File", Name("days.txt"))
      .Then("Tallybook",
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(),
                          HasSubstr("days.txt: lines end in LF; wanted are CR or CR LF"));
              QTest::keyClick(&window, Qt::Key_Y);
            })
      .Then("Tallybook", Press(Qt::Key_Return))   // go on?
      .Then("Tallybook", Press(Qt::Key_Return));  // so many records were read
  const ConversationResult result = conversations_.ImportDelimited();
  EXPECT_TRUE(result.ChangedFigures());
  const FigureMap stored = Stored();
  EXPECT_EQ(stored.at({kShop, Day(2004, 3, 2), kSales}), 5);
}

// --- Exports ---------------------------------------------------------------------------------------------------------

class ExportConversationsTest : public ConversationsTest {
 protected:
  // Takes the range that the dialog of dates proposes.
  void TakeDates(const char* title) { user_.Then(title, PressButton("Command1", 2)); }
  Date date_ = Day(2003, 1, 5);
};

TEST_F(ExportConversationsTest, AnExchangeFileTakesTheNameThatTheUserGivesOnceItIsWhole) {
  TakeDates("Export Data to QDX File");
  user_.Then("Export Data to QDX File", Name("out.QDX"));
  const ConversationResult result = conversations_.ExportQdx(date_);
  EXPECT_TRUE(result.ran);
  EXPECT_FALSE(result.ChangedFigures());
  EXPECT_EQ(result.output, folder_.Path("out.QDX"));
  EXPECT_THAT(folder_.Read("out.QDX"), HasSubstr("QDX"));
  EXPECT_THAT(folder_.Read("North.ini"), HasSubstr("out.QDX"));
}

TEST_F(ExportConversationsTest, AnExportThatIsCancelledLeavesTheOldFile) {
  folder_.Write("out.QDX", "old");
  TakeDates("Export Data to QDX File");
  user_.Then("Export Data to QDX File", Press(Qt::Key_Escape));
  const ConversationResult result = conversations_.ExportQdx(date_);
  EXPECT_TRUE(result.output.empty());
  EXPECT_EQ(folder_.Read("out.QDX"), "old");
}

TEST_F(ExportConversationsTest, AnOutputThatWouldReplaceABookIsRefusedWithTheReason) {
  const std::string before = folder_.Read("North.tbk");
  folder_.Write("other.QDX", before);
  TakeDates("Export Data to QDX File");
  user_.Then("Export Data to QDX File", Name("other.QDX"))
      .Then("Tallybook",
            [](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(), StartsWith("The output file:"));
              EXPECT_THAT(Part<QPlainTextEdit>(window, "details").toPlainText().toStdString(), HasSubstr("book"));
              QTest::keyClick(&window, Qt::Key_Escape);
            })
      .Then("Export Data to QDX File", Press(Qt::Key_Escape));
  const ConversationResult result = conversations_.ExportQdx(date_);
  EXPECT_TRUE(result.output.empty());
  EXPECT_TRUE(folder_.Read("other.QDX") == before);
}

TEST_F(ExportConversationsTest, ATableHasItsNameWhenTheQuestionToOpenItIsAsked) {
  TakeDates("Export Data to File");
  user_.Then("Export Options", Name("out.csv")).Then("Tallybook", [&](QWidget& window) {
    EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(), StartsWith("Export file created at:"));
    EXPECT_TRUE(folder_.Has("out.csv"));
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  const ConversationResult result = conversations_.ExportTable(date_);
  EXPECT_EQ(result.output, folder_.Path("out.csv"));
  EXPECT_THAT(folder_.Read("out.csv"), StartsWith("\"Date\""));
}

// --- The list of definitions -----------------------------------------------------------------------------------------

TEST_F(ConversationsTest, AFileSelectsItsDefinitionIsImportedReportedAndTakenBackFromTheReport) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(1, "East", "east.QDX");
  WriteDefinition(2, "South", "sou*.QDX");
  const FigureMap before = Stored();
  user_
      .Then(kList,
            [&](QWidget& window) {
              testing::WaitUntil([&] { return Part<QLabel>(window, "note").isVisible(); },
                                 "the definition is pointed at");
              auto& table = Part<QTableView>(window, "rows");
              EXPECT_EQ(table.model()->index(table.currentIndex().row(), 0).data().toString(), "South");
              EXPECT_TRUE(conversations_.IsRunning());
              QTimer::singleShot(0, &window, [&window] { Click("action1")(window); });
            })
      .Then("Edit QDX Import Layout Number: 2", Press(Qt::Key_Return))
      .Then(kReport,
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(),
                          StartsWith("Changed: figures of 2004-02-03 (journal entry 1, import qdx #2)."));
              EXPECT_THAT(Part<QPlainTextEdit>(window, "text").toPlainText().toStdString(), HasSubstr("south.QDX"));
              QTimer::singleShot(0, &window, [&window] { Click("undo")(window); });
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then(kReport,
            [](QWidget& window) {
              EXPECT_FALSE(Part<QPushButton>(window, "undo").isEnabled());
              window.close();
            })
      .Then(kList, Press(Qt::Key_Escape));
  const ConversationResult result = conversations_.Definitions(folder_.Path("south.QDX"));
  EXPECT_TRUE(result.ran);
  ASSERT_THAT(result.entries, SizeIs(2));
  EXPECT_EQ(result.entries[0].state, engine::JournalState::kUndone);
  EXPECT_EQ(result.entries[1].undoes, result.entries[0].id);
  EXPECT_EQ(Stored(), before);
}

TEST_F(ConversationsTest, AFileThatNoDefinitionKnowsBeginsANewOneWithItsName) {
  WriteExchangeFile("south.QDX");
  user_
      .Then("Open QDX File",
            [&](QWidget& window) {
              const auto file = [&] { return FileBox(window).text().toStdString(); };
              testing::WaitUntil([&] { return file() == folder_.Path("south.QDX"); }, "the file's name is filled in");
              EXPECT_EQ(FileBox(window).text().toStdString(), folder_.Path("south.QDX"));
              QTest::keyClick(&FileBox(window), Qt::Key_Escape);
            })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions(folder_.Path("south.QDX")).ChangedFigures());
}

TEST_F(ConversationsTest, ADefinitionThatCannotBeReadIsToldAndNothingIsLoaded) {
  folder_.Write("TBQDX1.North", "\"South\",\"x.QDX\",3\r\n");
  user_.Then("Tallybook", [](QWidget& window) {
    EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(), HasSubstr("TBQDX1.North"));
    window.close();
  });
  EXPECT_FALSE(conversations_.Definitions().ran);
}

TEST_F(ConversationsTest, TheOwnerStaysUsableWhileTheListIsShownAndMayAskItToEnd) {
  user_.Then(kList, [&](QWidget&) {
    EXPECT_TRUE(main_.isEnabled());
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    EXPECT_FALSE(conversations_.ImportCsv().ran) << "one at a time";
    conversations_.AskToEnd();
  });
  std::vector<bool> running;
  conversations_.SetRunningListener([&](bool now) { running.push_back(now); });
  EXPECT_TRUE(conversations_.Definitions().ran);
  EXPECT_THAT(running, ElementsAre(true, false));
  EXPECT_TRUE(app_.Finished());
}

TEST_F(ConversationsTest, AskedToEndTheDialogsOverTheListCloseFirst) {
  WriteExchangeFile("south.QDX");
  user_.Then(kList, [&](QWidget& window) { QTimer::singleShot(0, &window, [&window] { Click("add")(window); }); })
      .Then("Open QDX File", [&](QWidget&) { conversations_.AskToEnd(); });
  EXPECT_TRUE(conversations_.Definitions().ran);
  EXPECT_TRUE(app_.Finished());
}

TEST_F(ConversationsTest, ABoxWithinADialogStandsOverIt) {
  user_
      .Then(kList,
            [&](QWidget& window) {
              QTimer::singleShot(0, &window, [&window] { Click("action1")(window); });  // nothing is selected
            })
      .Then("Tallybook",
            [](QWidget& box) {
              ASSERT_NE(box.parentWidget(), nullptr);
              EXPECT_THAT(box.parentWidget()->windowTitle().toStdString(), StartsWith(kList));
              QTest::keyClick(&box, Qt::Key_Return);
            })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ran);
}

TEST_F(ConversationsTest, ImportAllTakesTheFilesOfEveryDefinitionAndReportsThemTogether) {
  WriteExchangeFile("east.QDX");
  WriteExchangeFile("south.QDX");
  WriteDefinition(1, "East", "east.QDX");
  WriteDefinition(2, "South", "south.QDX");
  WriteDefinition(3, "West, which sent nothing", "west.QDX");
  FigureMap expected = Stored();
  expected[{kShop, day_, kSales}] = 7.5;  // each replaces what stands
  user_.Then(kList, [](QWidget& window) { QTimer::singleShot(0, &window, [&window] { Click("action2")(window); }); })
      .Then(kReport,
            [](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(), HasSubstr("import qdx all"));
              EXPECT_THAT(Part<QPlainTextEdit>(window, "text").toPlainText().toStdString(),
                          AllOf(HasSubstr("east.QDX"), HasSubstr("south.QDX")));
              window.close();
            })
      .Then(kList, Press(Qt::Key_Escape));
  const ConversationResult result = conversations_.Definitions();
  EXPECT_TRUE(result.ChangedFigures());
  EXPECT_EQ(Stored(), expected);
}

TEST_F(ConversationsTest, AFileThatWasRefusedIsNotInUseBehindThePreviewOrTheConversation) {
  folder_.Write("south-1.QDX", "no exchange file");
  WriteDefinition(1, "South", "south-?.QDX");
  const auto begin = [](const char* button) {
    return [button](QWidget& window) { QTimer::singleShot(0, &window, [&window, button] { Click(button)(window); }); };
  };
  const auto open_now = [] {
    int count = 0;
    for (Integer number = 1; number <= OpenFilesTop(); ++number) count += OpenFileName(number).empty() ? 0 : 1;
    return count;
  };
  int open_before = -1;
  user_.Then(kList, begin("action1"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Edit QDX Import Layout",
            [&](QWidget& window) {
              open_before = open_now();
              begin("SaveButtons1Added")(window);
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Preview", Press(Qt::Key_Escape))
      .Then("Edit QDX Import Layout",
            [&](QWidget& window) {
              EXPECT_EQ(open_now(), open_before);
              QTest::keyClick(window.focusWidget(), Qt::Key_Return);
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  (void)conversations_.Definitions();
  EXPECT_EQ(open_now(), 0);
}

TEST_F(ConversationsTest, AnOwnerThatIsMinimisedLetsTheConversationGoOn) {
  folder_.Write("day.csv", kFigures);
  user_
      .Then(kCsvPrompt,
            [&](QWidget& window) {
              main_.showMinimized();
              testing::WaitUntil([&] { return main_.isMinimized(); }, "the owner is minimised");
              EXPECT_TRUE(window.isVisible());
              Name("day.csv")(window);
            })
      .Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportCsv().ChangedFigures());
  main_.showNormal();
}

TEST_F(ConversationsTest, ABoxOverAPromptLeavesThePromptAsItWas) {
  user_.Then(kCsvPrompt, Name("none.csv"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then(kCsvPrompt, [&](QWidget& window) {
        EXPECT_EQ(FileBox(window).text().toStdString(), folder_.Path("none.csv"));
        QTest::keyClick(&FileBox(window), Qt::Key_Escape);
      });
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
}

TEST_F(ConversationsTest, TheEndOfTheProgramForHarmIsToldWithAllThatIsKnown) {
  user_.Then("Tallybook", [](QWidget& box) {
    EXPECT_THAT(Part<QLabel>(box, "text").text().toStdString(), StartsWith("The program has to end"));
    EXPECT_THAT(Part<QPlainTextEdit>(box, "details").toPlainText().toStdString(),
                AllOf(HasSubstr("south.QDX"), HasSubstr("record 3"), HasSubstr("no such account")));
    QTest::keyClick(&box, Qt::Key_Return);
  });
  StopReason reason;
  reason.file = "south.QDX";
  reason.place = "record 3";
  reason.words = "no such account";
  ThePlatform().stop_witness->ProgramStops(reason);
  EXPECT_THAT(folder_.Read("tallybook.log"), HasSubstr("no such account"));
}

// --- A book that others have, and the way back -----------------------------------------------------------------------

TEST_F(ConversationsTest, ABookThatIsInUseIsWaitedForWithWordsUntilItIsFree) {
  auto other = engine::Book::Open(BookPath(), app_);
  user_
      .Then("Waiting for North.tbk",
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "words").text().toStdString(), HasSubstr("in this program"));
              other.reset();
            })
      .Then(kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.ImportCsv().ran);
}

TEST_F(ConversationsTest, AWaitThatIsCancelledChangesNothing) {
  const auto other = engine::Book::Open(BookPath(), app_);
  user_.Then("Waiting for North.tbk", Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportCsv().ran);
}

TEST_F(ConversationsTest, AFileThatAnImportHasStillToDeleteGoesWhenTheBookIsOpenedAndThatIsTold) {
  folder_.Write("due.QDX", "read");
  {
    const auto book = engine::Book::Open(BookPath(), app_);
    book->BeginRollback(day_, day_);
    book->EndRollback();
    const application::FileDisposal due = {.path = folder_.Path("due.QDX"),
                                           .new_path = {},
                                           .stamp = application::StampOf(folder_.Path("due.QDX")).value()};
    engine::JournalNotes(*book).SaveDue(book->LastEntry(), application::TextOfDisposals({due}));
    book->Close();
  }
  user_
      .Then("Tallybook",
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(), HasSubstr("due.QDX is deleted now"));
              EXPECT_FALSE(folder_.Has("due.QDX"));
              window.close();
            })
      .Then(kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.ImportCsv().ran);
  EXPECT_FALSE(folder_.Has("due.QDX"));
}

TEST_F(ConversationsTest, AnExportNeedsNoRightToWrite) {
  const auto other = engine::Book::Open(BookPath(), app_);
  user_.Then("Export Data to QDX File", Press(Qt::Key_Escape));
  Date date = day_;
  EXPECT_TRUE(conversations_.ExportQdx(date).ran);
}

TEST_F(ConversationsTest, AnEntryIsTakenBackAfterAQuestion) {
  const FigureMap before = Stored();
  {
    const auto book = engine::Book::Open(BookPath(), app_);
    book->BeginRollback(day_, day_);
    tallybook::testing::Put(*book, kShop, day_, kSales, 1);
    book->EndRollback();
    book->Close();
  }
  const FigureMap changed = Stored();
  user_.Then("Tallybook", Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Undo(1).ran);
  EXPECT_EQ(Stored(), changed);
  user_.Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.Undo(1).ran);
  EXPECT_EQ(Stored(), before);
}

TEST_F(ConversationsTest, WhatCannotBeTakenBackSaysWhy) {
  user_.Then("Tallybook", [](QWidget& window) {
    EXPECT_THAT(Part<QLabel>(window, "text").text().toStdString(), HasSubstr("the journal has no entry 7"));
    window.close();
  });
  EXPECT_FALSE(conversations_.Undo(7).ran);
}

}  // namespace
}  // namespace tallybook::desktop
