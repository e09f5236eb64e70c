// What the journal keeps of imports that are made in windows, and what is asked before a file is imported again.
#include <QLabel>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>

#include "tallybook/application/EntryFacts.h"
#include "tallybook/desktop/host/ImportWatch.h"
#include "tallybook/engine/JournalNotes.h"
#include "tallybook/engine/LoginName.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::FigureMap;
using ::testing::AllOf;
using ::testing::HasSubstr;
using testing::kCsvPrompt;
using testing::kFigures;
using testing::kList;
using testing::kReport;
using testing::Part;
using ::testing::SizeIs;
using testing::WhenShown;

class ImportWatchTest : public testing::ConversationsFixture {
 protected:
  // Behind the look that found the window: what the act opens is the next one's.
  static WhenShown::Act Later(const WhenShown::Act& act) {
    return [act](QWidget& window) { QTimer::singleShot(0, &window, [act, &window] { act(window); }); };
  }
  static Text WordsOf(const QWidget& box) { return Part<QLabel>(box, "text").text().toStdString(); }
  static WhenShown::Act IsAskedAgain(const Text& file, Qt::Key answer) {
    return [=](QWidget& box) {
      EXPECT_THAT(WordsOf(box), AllOf(HasSubstr(file + ": it was imported on"), HasSubstr("Import it again?")));
      QTest::keyClick(&box, answer);
    };
  }
  [[nodiscard]] std::vector<engine::NotedEntry> Noted() {
    engine::BookOptions options;
    options.read_only = true;
    return engine::JournalNotes(*engine::Book::Open(BookPath(), app_, options)).Entries();
  }
  void ImportCsv(const Text& name) {
    user_.Then(kCsvPrompt, Later(Name(name))).Then("Tallybook", Press(Qt::Key_Return));
    EXPECT_TRUE(conversations_.ImportCsv().ChangedFigures());
  }
  // Runs an action of the list for its first definition, and closes the list in the end.
  void FromTheList(const char* action) {
    user_.Then(kList, Later([action](QWidget& window) {
                 QTest::keyClick(&Part<QTableView>(window, "rows"), Qt::Key_Home);
                 Click(action)(window);
               }));
  }
};

TEST_F(ImportWatchTest, TheJournalKeepsTheFileAndWhatCameOfIt) {
  folder_.Write("day.csv", kFigures);
  ImportCsv("day.csv");
  const auto noted = Noted();
  ASSERT_THAT(noted, SizeIs(1));
  EXPECT_EQ(noted[0].who, engine::LoginName());
  ASSERT_THAT(noted[0].notes.files, SizeIs(1));
  const engine::EntryFile& file = noted[0].notes.files[0];
  EXPECT_EQ(file.path, folder_.Path("day.csv"));
  EXPECT_EQ(file.size, static_cast<std::int64_t>(kFigures.size()));
  EXPECT_THAT(file.xxh3, SizeIs(16));
  EXPECT_THAT(file.sha256, SizeIs(32));
  const application::EntryFacts facts = application::FactsOf(noted[0].notes.facts);
  EXPECT_EQ(facts.kind, "csv");
  EXPECT_EQ(facts.math, "as told");
  EXPECT_EQ(facts.result, "imported");
  EXPECT_EQ(facts.counts.accounts, 2);
  EXPECT_EQ(facts.counts.dates, 1);
}

TEST_F(ImportWatchTest, AFileOfTheHistoryIsAskedAboutAndNoLeavesThePromptAsItIs) {
  folder_.Write("day.csv", kFigures);
  ImportCsv("day.csv");
  const FigureMap once = Stored();
  user_.Then(kCsvPrompt, Later(Name("day.csv")))
      .Then("Tallybook", IsAskedAgain(folder_.Path("day.csv"), Qt::Key_Return))
      .Then(kCsvPrompt, [&](QWidget& window) {
        EXPECT_EQ(FileBox(window).text().toStdString(), folder_.Path("day.csv"));
        QTest::keyClick(&FileBox(window), Qt::Key_Escape);
      });
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
  EXPECT_EQ(Stored(), once);
}

TEST_F(ImportWatchTest, AFileOfTheHistoryIsImportedAgainWhereTheUserSaysSo) {
  folder_.Write("day.csv", kFigures);
  ImportCsv("day.csv");
  user_.Then(kCsvPrompt, Later(Name("day.csv")))
      .Then("Tallybook", IsAskedAgain(folder_.Path("day.csv"), Qt::Key_Y))
      .Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportCsv().ChangedFigures());
  EXPECT_THAT(Noted(), SizeIs(2));
}

TEST_F(ImportWatchTest, AnImportThatWasTakenBackIsNotAskedAbout) {
  folder_.Write("day.csv", kFigures);
  ImportCsv("day.csv");
  user_.Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.Undo(1).ran);
  ImportCsv("day.csv");
}

TEST_F(ImportWatchTest, ADelimitedFileIsKeptWithHowItWasRead) {
  folder_.Write("days.txt", "3/2/2004,100,1,5\r\n");
  user_.Then("Import Delimited File", Later(Name("days.txt")))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportDelimited().ChangedFigures());
  const auto noted = Noted();
  ASSERT_THAT(noted, SizeIs(1));
  const application::EntryFacts facts = application::FactsOf(noted[0].notes.facts);
  EXPECT_EQ(facts.kind, "delimited");
  EXPECT_EQ(facts.math, "replace");
  EXPECT_EQ(facts.options, "dates MDY");
  EXPECT_EQ(facts.result, "imported");
  EXPECT_EQ(facts.counts.records, 1);
  // Under its new name it is the same file.
  user_.Then("Import Delimited File", Later(Name("days.txt.bak")))
      .Then("Tallybook",
            [](QWidget& box) {
              EXPECT_THAT(WordsOf(box), HasSubstr("it was imported"));
              QTest::keyClick(&box, Qt::Key_Return);
            })
      .Then("Import Delimited File", Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportDelimited().ChangedFigures());
}

TEST_F(ImportWatchTest, AFileWhoseLinesEndOtherwiseIsAskedAboutOnceAndKnownAgain) {
  folder_.Write("days.txt", "3/2/2004,100,1,5\n");
  user_.Then("Import Delimited File", Later(Name("days.txt")))
      .Then("Tallybook",
            [](QWidget& box) {
              EXPECT_THAT(WordsOf(box), HasSubstr("lines end in LF"));
              QTest::keyClick(&box, Qt::Key_Y);
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportDelimited().ChangedFigures());
  EXPECT_EQ(application::FactsOf(Noted().at(0).notes.facts).options, "dates MDY, any line end");
  user_.Then("Import Delimited File", Later(Name("days.txt.bak")))
      .Then("Tallybook",
            [](QWidget& box) {
              EXPECT_THAT(WordsOf(box), HasSubstr("it was imported"));
              QTest::keyClick(&box, Qt::Key_Return);
            })
      .Then("Import Delimited File", Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportDelimited().ChangedFigures());
}

TEST_F(ImportWatchTest, AnExchangeFileIsKeptWithItsDefinitionAndAskedAboutInItsConfirmation) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(2, "South", "south.QDX");
  const char* const confirmation = "Edit QDX Import Layout Number: 2";
  FromTheList("action1");
  user_.Then(confirmation, Later(Press(Qt::Key_Return)))
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
  const auto noted = Noted();
  ASSERT_THAT(noted, SizeIs(1));
  const application::EntryFacts facts = application::FactsOf(noted[0].notes.facts);
  EXPECT_EQ(facts.kind, "qdx");
  EXPECT_EQ(facts.definition, 2);
  EXPECT_EQ(facts.title, "South");
  EXPECT_EQ(facts.math, "replace");
  EXPECT_EQ(facts.counts.applied, 1);
  ASSERT_THAT(noted[0].notes.files, SizeIs(1));
  EXPECT_EQ(noted[0].notes.files[0].path, folder_.Path("south.QDX"));
  EXPECT_THAT(noted[0].notes.files[0].sha256, SizeIs(32));

  FromTheList("action1");
  user_.Then(confirmation, Later(Press(Qt::Key_Return)))
      .Then("Tallybook", IsAskedAgain(folder_.Path("south.QDX"), Qt::Key_Return))
      .Then(confirmation, Press(Qt::Key_Escape))
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures()) << "no file is left";
}

TEST_F(ImportWatchTest, OfSeveralFilesThoseThatAreNotWantedAreLeftAloneAndTold) {
  WriteExchangeFile("south1.QDX");
  WriteDefinition(2, "South", "south*.QDX");
  const char* const confirmation = "Edit QDX Import Layout Number: 2";
  FromTheList("action1");
  user_.Then(confirmation, Later(Press(Qt::Key_Return)))
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
  WriteExchangeFile("south2.QDX", 9);
  FromTheList("action1");
  user_.Then(confirmation, Later(Press(Qt::Key_Return)))
      .Then("Tallybook", IsAskedAgain(folder_.Path("south1.QDX"), Qt::Key_Return))
      .Then(kReport,
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(),
                          HasSubstr("Left alone: " + folder_.Path("south1.QDX")));
              EXPECT_THAT(Part<QPlainTextEdit>(window, "text").toPlainText().toStdString(), HasSubstr("south2.QDX"));
              window.close();
            })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
  const auto noted = Noted();
  ASSERT_THAT(noted, SizeIs(2));
  ASSERT_THAT(noted[1].notes.files, SizeIs(1));
  EXPECT_EQ(noted[1].notes.files[0].path, folder_.Path("south2.QDX"));
}

TEST_F(ImportWatchTest, ImportAllLeavesKnownFilesAloneAsksNobodyAndSaysSo) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(2, "South", "south.QDX");
  for (const bool is_first : {true, false}) {
    FromTheList("action2");
    user_
        .Then(kReport,
              [&, is_first](QWidget& window) {
                const Text changes = Part<QLabel>(window, "changes").text().toStdString();
                if (is_first) {
                  EXPECT_THAT(changes, HasSubstr("import qdx all"));
                } else {
                  EXPECT_THAT(changes, AllOf(HasSubstr("No figure was changed."),
                                             HasSubstr("Left alone: " + folder_.Path("south.QDX"))));
                }
                window.close();
              })
        .Then(kList, Press(Qt::Key_Escape));
    EXPECT_EQ(conversations_.Definitions().ChangedFigures(), is_first);
  }
  EXPECT_TRUE(folder_.Has("south.QDX"));
  EXPECT_THAT(Noted(), SizeIs(1));
}

TEST_F(ImportWatchTest, ImportAllLeavesAKnownFileToAnotherDefinition) {
  WriteExchangeFile("south.QDX");
  WriteDefinition(2, "South", "south.QDX");
  for (const bool is_first : {true, false}) {
    if (!is_first) WriteDefinition(3, "South Again", "south.QDX");
    FromTheList("action2");
    user_
        .Then(kReport,
              [&, is_first](QWidget& window) {
                const Text changes = Part<QLabel>(window, "changes").text().toStdString();
                if (!is_first) {
                  EXPECT_THAT(changes, HasSubstr("Left alone: " + folder_.Path("south.QDX")));
                }
                window.close();
              })
        .Then(kList, Press(Qt::Key_Escape));
    (void)conversations_.Definitions();
  }
  const auto noted = Noted();
  ASSERT_THAT(noted, SizeIs(2));
  EXPECT_EQ(application::FactsOf(noted[0].notes.facts).definition, 2);
  EXPECT_EQ(application::FactsOf(noted[1].notes.facts).definition, 3);
}

}  // namespace
}  // namespace tallybook::desktop
