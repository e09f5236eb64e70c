// Imports that are done wholly or not at all, chosen and run in windows: figures, files, the journal, and what is told.
#include <QCheckBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>
#include <algorithm>
#include <filesystem>

#include "tallybook/desktop/host/AllOrNothing.h"
#include "tallybook/desktop/host/RowsView.h"
#include "tallybook/engine/JournalNotes.h"
#include "tests/tallybook/desktop/WindowCheck.h"
#include "tests/tallybook/desktop/host/ConversationsFixture.h"
#include "tests/tallybook/engine/SampleBook.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
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
using ::testing::Not;
using testing::Part;
using ::testing::SizeIs;
using ::testing::StartsWith;
using testing::WhenShown;

constexpr const char* kDelimitedPrompt = "Import Delimited File";
constexpr const char* kConfirmation = "Edit QDX Import Layout Number: 1";
// Captions of the component's.
const testing::Allowed kTaken = {.same_mnemonics = {"&Imported information will be:", "&Import"}};
constexpr const char* kNothingKept = "Nothing of the import is kept: figures and files are as they were.";

class AllOrNothingTest : public testing::ConversationsFixture {
 protected:
  AllOrNothingTest() { before_ = Stored(); }

  void Want(bool wanted) {
    folder_.Write("North.ini", std::string("[Import]\r\nAllOrNothing=") + (wanted ? "True" : "False") + "\r\n");
  }
  static WhenShown::Act Later(const WhenShown::Act& act) {
    return [act](QWidget& window) { QTimer::singleShot(0, &window, [act, &window] { act(window); }); };
  }
  static QCheckBox& SwitchOf(QWidget& prompt) { return Part<QCheckBox>(prompt, "SaveButtons1Switch"); }
  static Text WordsOf(const QWidget& box) { return Part<QLabel>(box, "text").text().toStdString(); }
  static WhenShown::Act Told(const Text& part) {
    return [part](QWidget& box) {
      EXPECT_THAT(WordsOf(box), HasSubstr(part));
      QTest::keyClick(&box, Qt::Key_Return);
    };
  }
  // What becomes of the file behind its import: 1 is deleted, 2 renamed, 3 kept.
  void WriteDefinition(int number, const Text& pattern, int disposal) {
    folder_.Write("TBQDX" + std::to_string(number) + ".North", "\"Shops " + std::to_string(number) + "\",\"" +
                                                                   folder_.Path(pattern) + "\"," +
                                                                   std::to_string(disposal) + ",-1,-1\r\n0,0\r\n0\r\n");
  }
  // Two files of a definition, the older of which can be read.
  void WriteOneGoodAndOneBad() {
    WriteExchangeFile("a.QDX");
    folder_.Write("b.QDX", "no exchange file");
    std::filesystem::last_write_time(folder_.Path("a.QDX"),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
  }
  void ExpectAsItWas(std::initializer_list<const char*> files) {
    EXPECT_EQ(Stored(), before_);
    EXPECT_THAT(Entries(), IsEmpty());
    for (const char* const file : files) EXPECT_TRUE(folder_.Has(file)) << file;
  }
  [[nodiscard]] std::vector<engine::NotedEntry> Entries() {
    engine::BookOptions options;
    options.read_only = true;
    return engine::JournalNotes(*engine::Book::Open(BookPath(), app_, options)).Entries();
  }
  [[nodiscard]] Text FirstCode() {
    engine::BookOptions options;
    options.read_only = true;
    return engine::Book::Open(BookPath(), app_, options)->Description().accounts.front().code;
  }
  void FromTheList(const char* action) {
    user_.Then(kList, Later([action](QWidget& window) {
                 QTest::keyClick(&Part<QTableView>(window, "rows"), Qt::Key_Home);
                 Click(action)(window);
               }));
  }
  // The report's head and its last line.
  void ExpectReport(const Text& changes, const Text& text) {
    user_.Then(kReport, [=](QWidget& window) {
      EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(), HasSubstr(changes));
      EXPECT_THAT(Part<QPlainTextEdit>(window, "text").toPlainText().toStdString(), HasSubstr(text));
      window.close();
    });
  }

  FigureMap before_;
};

TEST_F(AllOrNothingTest, IsChosenByKeysInThePromptAndRemembered) {
  user_.Then(kCsvPrompt, [](QWidget& prompt) {
    EXPECT_FALSE(SwitchOf(prompt).isChecked());
    EXPECT_THAT(SwitchOf(prompt).accessibleDescription().toStdString(), HasSubstr("no figure of it stays"));
    EXPECT_THAT(testing::FaultsOf(prompt), IsEmpty());
    QTest::keyClick(prompt.focusWidget(), Qt::Key_N, Qt::AltModifier);
    testing::WaitUntil([&] { return SwitchOf(prompt).isChecked(); }, "the switch is turned");
    QTest::keyClick(prompt.focusWidget(), Qt::Key_Escape);
  });
  (void)conversations_.ImportCsv();
  EXPECT_THAT(folder_.Read("North.ini"), HasSubstr("AllOrNothing=True"));
  user_.Then(kDelimitedPrompt, [](QWidget& prompt) {
    EXPECT_TRUE(SwitchOf(prompt).isChecked());
    EXPECT_THAT(testing::FaultsOf(prompt), IsEmpty());
    QTest::keyClick(prompt.focusWidget(), Qt::Key_Escape);
  });
  (void)conversations_.ImportDelimited();
}

TEST_F(AllOrNothingTest, TheListAndTheConfirmationShowOneChoice) {
  WriteExchangeFile("a.QDX");
  WriteDefinition(1, "a.QDX", 3);
  user_
      .Then(kList, Later([](QWidget& list) {
              EXPECT_THAT(testing::FaultsOf(list), IsEmpty());
              QTest::keyClick(list.focusWidget(), Qt::Key_L, Qt::AltModifier);  // the first that no button has
              testing::WaitUntil([&] { return Part<QCheckBox>(list, "switch").isChecked(); }, "the switch is turned");
              Click("action1")(list);
            }))
      .Then(kConfirmation,
            [](QWidget& prompt) {
              EXPECT_TRUE(SwitchOf(prompt).isChecked());
              EXPECT_THAT(testing::FaultsOf(prompt, kTaken), IsEmpty());
              QTest::mouseClick(&SwitchOf(prompt), Qt::LeftButton);
              QTest::keyClick(prompt.focusWidget(), Qt::Key_Escape);
            })
      .Then(kList, [](QWidget& list) {
        testing::WaitUntil([&] { return !Part<QCheckBox>(list, "switch").isChecked(); }, "the list follows");
        QTest::keyClick(&list, Qt::Key_Escape);
      });
  (void)conversations_.Definitions();
  EXPECT_THAT(folder_.Read("North.ini"), HasSubstr("AllOrNothing=False"));
}

TEST_F(AllOrNothingTest, SettingsThatCannotBeReadOrWrittenAreToldAndKeepNobodyFromAnImport) {
  std::filesystem::create_directory(folder_.Path("North.ini"));
  WriteExchangeFile("a.QDX");
  WriteDefinition(1, "a.QDX", 3);
  user_.Then("Tallybook", Told("North.ini"))
      .Then(kList, Later(Click("action1")))
      .Then(kConfirmation, Later([](QWidget& prompt) { QTest::mouseClick(&SwitchOf(prompt), Qt::LeftButton); }))
      .Then("Tallybook", Told("North.ini"))
      .Then(kConfirmation,
            [](QWidget& prompt) {
              EXPECT_TRUE(SwitchOf(prompt).isChecked()) << "it holds for this conversation";
              QTest::keyClick(prompt.focusWidget(), Qt::Key_Return);
            })
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
}

// --- Text files ------------------------------------------------------------------------------------------------------

TEST_F(AllOrNothingTest, ATextFileIsImportedWholeAndKeptInTheJournal) {
  Want(true);
  folder_.Write("day.csv", kFigures);
  user_.Then(kCsvPrompt, Later(Name("day.csv"))).Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_THAT(conversations_.ImportCsv().entries, SizeIs(1));
  EXPECT_EQ(Stored().at({kShop, day_, kSales}), before_.at({kShop, day_, kSales}) + 12.5);
  const auto entries = Entries();
  ASSERT_THAT(entries, SizeIs(1));
  EXPECT_THAT(entries[0].entry.what_ran, StartsWith("import csv"));
  EXPECT_THAT(entries[0].notes.files, Not(IsEmpty()));
}

// The second block of the file has a date that its audit asks about and its import fails at.
TEST_F(AllOrNothingTest, ATextFileThatFailsHalfWayLeavesNothingAndThePromptComesAgain) {
  folder_.Write("day.csv", "1,6,2003,1,1\r\n100,1,3\r\n,,\r\n99,99,2003\r\n100,1,4\r\n");
  for (const bool wanted : {true, false}) {
    SCOPED_TRACE(wanted);
    Want(wanted);
    user_.Then(kCsvPrompt, Later(Name("day.csv")))
        .Then("Tallybook", Told("starting at"))
        .Then("Tallybook", [](QWidget& box) { QTest::keyClick(&box, Qt::Key_Y); })
        .Then("Tallybook", Told("Information not imported"));
    if (wanted) user_.Then("Tallybook", Told(kNothingKept));
    user_.Then(kCsvPrompt, Press(Qt::Key_Escape));
    if (!wanted) user_.Then("Tallybook", Told("An import ended half way"));
    const ConversationResult result = conversations_.ImportCsv();
    if (wanted) {
      EXPECT_FALSE(result.ChangedFigures());
      ExpectAsItWas({"day.csv"});
    } else {
      EXPECT_NE(Stored(), before_) << "without the choice what was stored stays";
    }
  }
}

TEST_F(AllOrNothingTest, ADelimitedFileThatFailsKeepsItsNameAndOneThatIsImportedLosesIt) {
  Want(true);
  folder_.Write("days.txt", "3/2/2004,100,1,5\n4/2/2004,100,1,6 pieces\n");
  user_.Then(kDelimitedPrompt, Name("days.txt"))
      .Then("Tallybook", Told("lines end in LF"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Told("Information not imported"))
      .Then("Tallybook", Told(kNothingKept));
  EXPECT_FALSE(conversations_.ImportDelimited().ChangedFigures());
  ExpectAsItWas({"days.txt"});
  folder_.Write("days.txt", "3/2/2004,100,1,5\n4/2/2004,100,1,6\n");
  user_.Then(kDelimitedPrompt, Name("days.txt"))
      .Then("Tallybook", Told("lines end in LF"))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Told("records read"));
  EXPECT_THAT(conversations_.ImportDelimited().entries, SizeIs(1));
  EXPECT_EQ(Stored().at({kShop, Day(2004, 4, 2), kSales}), 6);
  EXPECT_FALSE(folder_.Has("days.txt"));
  EXPECT_TRUE(folder_.Has("days.txt.bak"));
}

// --- Exchange files --------------------------------------------------------------------------------------------------

TEST_F(AllOrNothingTest, OfSeveralFilesThatCannotAllBeReadNoneIsImported) {
  Want(true);
  WriteOneGoodAndOneBad();
  WriteDefinition(1, "?.QDX", 1);
  FromTheList("action1");
  user_.Then(kConfirmation, Press(Qt::Key_Return)).Then("Tallybook", Told("NOT an QDX file"));
  ExpectReport(kNothingKept, kNothingKept);
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures());
  ExpectAsItWas({"a.QDX", "b.QDX"});
}

TEST_F(AllOrNothingTest, WithoutTheChoiceThoseThatCanBeReadAreImported) {
  WriteOneGoodAndOneBad();
  WriteDefinition(1, "?.QDX", 1);
  FromTheList("action1");
  user_.Then(kConfirmation, Press(Qt::Key_Return)).Then("Tallybook", Told("NOT an QDX file"));
  ExpectReport("Changed: figures of 2004-02-03", "a.QDX");
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_TRUE(conversations_.Definitions().ChangedFigures());
  EXPECT_FALSE(folder_.Has("a.QDX"));
}

TEST_F(AllOrNothingTest, ImportAllIsDoneForAllDefinitionsOrForNone) {
  Want(true);
  WriteOneGoodAndOneBad();
  WriteDefinition(1, "a.QDX", 1);
  WriteDefinition(2, "b.QDX", 2);
  FromTheList("action2");
  user_.Then("Tallybook", Told("NOT an QDX file")).Then("Tallybook", Told("At least one set of QDX files"));
  ExpectReport(kNothingKept, kNothingKept);
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures());
  ExpectAsItWas({"a.QDX", "b.QDX"});
  WriteExchangeFile("b.QDX", 9);
  FromTheList("action2");
  ExpectReport("import qdx all", "b.QDX");
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_THAT(conversations_.Definitions().entries, SizeIs(2));
  EXPECT_EQ(Stored().at({kShop, day_, kSales}), 9);
  EXPECT_THAT(Entries(), SizeIs(2));
  for (const char* const gone : {"a.QDX", "b.QDX"}) EXPECT_FALSE(folder_.Has(gone)) << gone;
  EXPECT_TRUE(folder_.Has("b.XDQ"));
}

TEST_F(AllOrNothingTest, IsTakenBackFromItsReportLikeAnyOther) {
  Want(true);
  WriteExchangeFile("a.QDX");
  WriteDefinition(1, "a.QDX", 3);
  FromTheList("action1");
  user_.Then(kConfirmation, Press(Qt::Key_Return))
      .Then(kReport, Later(Click("undo")))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then(kReport, [](QWidget& window) { window.close(); })
      .Then(kList, Press(Qt::Key_Escape));
  EXPECT_THAT(conversations_.Definitions().entries, SizeIs(2));
  EXPECT_EQ(Stored(), before_);
}

// The figures that stand are set to zero before any is read, which can be cancelled.
TEST_F(AllOrNothingTest, CancelledInItsMidstNothingStays) {
  Want(true);
  testing::ExchangeFile file;
  file.first = first_;
  file.last = first_ + 399;
  file.accounts = {{"100", "Front"}};
  file.fields = {{kSales, "Sales"}};
  file.blocks = {{Integer{1}, {{first_, {{1, 7.5}}}}}};
  folder_.Write("a.QDX", file.Bytes());
  WriteDefinition(1, "a.QDX", 1);
  FromTheList("action1");
  user_.Then(kConfirmation, [this](QWidget& prompt) {
    constexpr int kWithinTheZeroing = 60;
    platform_.Progress().OnTurn([this, turns = 0]() mutable {
      if (++turns >= kWithinTheZeroing) platform_.Progress().AskToCancel();
    });
    QTest::keyClick(prompt.focusWidget(), Qt::Key_Return);
  });
  ExpectReport(kNothingKept, "Import Aborted by User");
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures());
  EXPECT_TRUE(platform_.Progress().WasCancelled());
  ExpectAsItWas({"a.QDX"});
}

TEST_F(AllOrNothingTest, WhatCannotBeKeptIsToldWithTheReason) {
  Want(true);
  WriteExchangeFile("a.QDX");
  WriteDefinition(1, "a.QDX", 1);
  tallybook::testing::MeddleWith(BookPath(),
                                 "CREATE TRIGGER refuse BEFORE INSERT ON journal_text WHEN NEW.value LIKE '%inode%' "
                                 "BEGIN SELECT RAISE(FAIL, 'refused'); END");
  FromTheList("action1");
  user_.Then(kConfirmation, Press(Qt::Key_Return));
  ExpectReport("refused", kNothingKept);
  user_.Then(kList, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.Definitions().ChangedFigures());
  ExpectAsItWas({"a.QDX"});
}

TEST_F(AllOrNothingTest, ThePreviewTellsTheSame) {
  Want(true);
  WriteOneGoodAndOneBad();
  WriteDefinition(1, "?.QDX", 1);
  FromTheList("action1");
  user_.Then(kConfirmation, Later(Click("SaveButtons1Added")))
      .Then("Tallybook", Told("NOT an QDX file"))
      .Then("Preview",
            [](QWidget& preview) {
              EXPECT_THAT(Part<QLabel>(preview, "summary").text().toStdString(),
                          AllOf(HasSubstr("nothing of it would stay"), HasSubstr("no file would be deleted")));
              const auto& files = dynamic_cast<RowsView&>(Part<QWidget>(preview, "files"));
              EXPECT_EQ(files.TextAt(0, 1), "not imported");
              QTest::keyClick(preview.focusWidget(), Qt::Key_Escape);
            })
      .Then(kConfirmation, Press(Qt::Key_Escape))
      .Then(kList, Press(Qt::Key_Escape));
  (void)conversations_.Definitions();
  ExpectAsItWas({"a.QDX", "b.QDX"});
}

// --- Books of older formats ------------------------------------------------------------------------------------------

class OlderBookTest : public AllOrNothingTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(OlderBookTest, IsImportedIntoWhollyOrNotAtAll) {
  std::filesystem::copy_file(tallybook::testing::SampleBook(GetParam()), BookPath(),
                             std::filesystem::copy_options::overwrite_existing);
  Want(true);
  before_ = Stored();
  const auto entries = Entries();
  const Text code = FirstCode();
  folder_.Write("days.txt", "1/5/2003," + code + ",1,5\r\n1/6/2003," + code + ",1,6 pieces\r\n");
  const auto answer = [this] {
    user_.Then(kDelimitedPrompt, Name("days.txt")).Then("Tallybook", Press(Qt::Key_Return));
  };
  answer();
  user_.Then("Tallybook", Told("Information not imported")).Then("Tallybook", Told(kNothingKept));
  EXPECT_FALSE(conversations_.ImportDelimited().ChangedFigures());
  EXPECT_EQ(Stored(), before_);
  EXPECT_THAT(Entries(), SizeIs(entries.size()));
  EXPECT_TRUE(folder_.Has("days.txt"));
  folder_.Write("days.txt", "1/5/2003," + code + ",1,5.25\r\n");
  answer();
  user_.Then("Tallybook", Told("records read"));
  EXPECT_THAT(conversations_.ImportDelimited().entries, SizeIs(1));
  const FigureMap stored = Stored();
  EXPECT_EQ(std::ranges::count(stored, 5.25, &FigureMap::value_type::second), 1);
  EXPECT_FALSE(folder_.Has("days.txt"));
}

INSTANTIATE_TEST_SUITE_P(Formats, OlderBookTest,
                         ::testing::Values("book-v1.tbk", "book-v2.tbk", "book-v3.tbk", "book-v4.tbk"),
                         [](const auto& book) { return "V" + std::to_string(book.index + 1); });

}  // namespace
}  // namespace tallybook::desktop
