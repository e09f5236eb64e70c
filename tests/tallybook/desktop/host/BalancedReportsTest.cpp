// What the reports of imports end in, as their windows show it: the balance of the run, however that ended.
#include <QLabel>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTimer>
#include <algorithm>
#include <filesystem>

#include "tests/tallybook/desktop/host/ConversationsFixture.h"

namespace tallybook::desktop {
namespace {

using tallybook::testing::Day;
using ::testing::ElementsAre;
using testing::kList;
using testing::kReport;
using testing::kSales;
using testing::Part;
using ::testing::StartsWith;
using testing::WhenShown;

constexpr const char* kDefinitionPrompt = "Edit QDX Import Layout Number: 1";
constexpr const char* kNoneKept = "Nothing of the import is kept: figures and files are as they were.";

class BalancedReportsTest : public testing::ConversationsFixture {
 protected:
  static WhenShown::Act Behind(const WhenShown::Act& act) {
    return [act](QWidget& window) { QTimer::singleShot(0, &window, [act, &window] { act(window); }); };
  }
  // The last lines of a text, as many as there are from the first that begins so.
  static std::vector<Text> EndOf(const QWidget& window, const char* part, const Text& begins) {
    const QStringList lines = Part<QPlainTextEdit>(window, part).toPlainText().split('\n');
    std::vector<Text> end;
    for (const QString& line : lines) {
      if (!end.empty() || line.startsWith(QString::fromStdString(begins))) end.push_back(line.toStdString());
    }
    while (!end.empty() && end.back().empty()) end.pop_back();
    return end;
  }
  static WhenShown::Act EndsIn(const std::vector<Text>& lines) {
    return [lines](QWidget& window) {
      EXPECT_EQ(EndOf(window, "text", lines.front()), lines);
      window.close();
    };
  }
  static bool IsShown(const QString& title) {
    return std::ranges::any_of(QApplication::topLevelWidgets(), [&](const QWidget* window) {
      return window->isVisible() && window->windowTitle() == title;
    });
  }
  static void ExpectClosed(const QString& title) {
    EXPECT_TRUE(IsShown(title));
    EXPECT_TRUE(testing::WaitUntil([&] { return !IsShown(title); }, "the report is closed"));
  }
  void WantAllOrNothing(bool wanted = true) {
    folder_.Write("North.ini", Text("[Import]\r\nAllOrNothing=") + (wanted ? "True" : "False") + "\r\n");
  }
  void FromTheList(const char* action) {
    user_.Then(kList, Behind([action](QWidget& window) {
                 QTest::keyClick(&Part<QTableView>(window, "rows"), Qt::Key_Home);
                 Click(action)(window);
               }));
  }
  void ImportOne() {
    FromTheList("action1");
    user_.Then(kDefinitionPrompt, Press(Qt::Key_Return));
  }
  // The list is closed behind the last report.
  void Run() {
    user_.Then(kList, Press(Qt::Key_Escape));
    (void)conversations_.Definitions();
  }
  // Two files of one definition, of which the older one alone can be read.
  void WriteOneThatStops() {
    WriteExchangeFile("a.QDX");
    folder_.Write("b.QDX", "no exchange file");
    std::filesystem::last_write_time(folder_.Path("a.QDX"),
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
    WriteDefinition(1, "Shops", "?.QDX");
  }
};

TEST_F(BalancedReportsTest, OfADefinitionEndInItsBalanceAndTheTotalsOfEachField) {
  testing::ExchangeFile file;
  file.first = day_;
  file.last = day_ + 1;
  file.accounts = {{"100", "Front"}};
  file.fields = {{kSales, "Sales"}, {4, "Cost"}};
  file.blocks = {{Integer{1}, {{day_, {{1, 7.5}, {2, 3}}}, {day_ + 1, {{1, 1234}}}}}};
  folder_.Write("a.QDX", file.Bytes());
  WriteDefinition(1, "Shops", "a.QDX");
  ImportOne();
  user_.Then(kReport, EndsIn({"Balance: 3 figures read = 3 applied + 0 not mapped + 0 refused",
                              "  field 1 to field 1: 2 figures, 1241.5 in the file, 1241.5 in the book",
                              "  field 4 to field 4: 1 figure, 3 in the file, 3 in the book"}));
  Run();
}

TEST_F(BalancedReportsTest, OfImportAllAddUpTheFilesOfAllDefinitions) {
  WriteExchangeFile("east.QDX");
  WriteExchangeFile("south.QDX", 2);
  WriteDefinition(1, "East", "east.QDX");
  WriteDefinition(2, "South", "south.QDX");
  FromTheList("action2");
  user_.Then(kReport, EndsIn({"Balance: 2 figures read = 2 applied + 0 not mapped + 0 refused",
                              "  field 1 to field 1: 2 figures, 9.5 in the file, 9.5 in the book"}));
  Run();
}

TEST_F(BalancedReportsTest, NamePartialWeeksAndThe53rdWeekThatFiguresCameInto) {
  std::filesystem::remove(BookPath());
  auto description = tallybook::testing::ShopDescription();
  description.data_level = kWeekLevel;
  description.calendar.kind = engine::CalendarKind::k445;
  engine::Book::Create(BookPath(), description);
  testing::ExchangeFile file;
  file.first = Day(2003, 1, 5);
  file.last = Day(2004, 1, 1);
  file.accounts = {{"100", "Front"}};
  file.fields = {{kSales, "Sales"}};
  file.blocks = {{Integer{1}, {{Day(2004, 1, 1), {{kSales, 7.5}}}}}};
  folder_.Write("a.QDX", file.Bytes());
  WriteDefinition(1, "Shops", "a.QDX");
  const Text path = folder_.Path("a.QDX");
  ImportOne();
  user_.Then(kReport, EndsIn({"Balance: 1 figure read = 1 applied + 0 not mapped + 0 refused",
                              "  field 1 to field 1: 1 figure, 7.5 in the file, 7.5 in the book",
                              "  " + path + " ends at 2004-01-01, within 2003-12-28 to 2004-01-03",
                              "  " + path + " has figures of 2003-12-28 to 2004-01-03, the 53rd week of 2003"}));
  Run();
}

TEST_F(BalancedReportsTest, OfARunThatStopsBalanceTheFilesThatItCameTo) {
  WriteOneThatStops();
  ImportOne();
  user_.Then("Tallybook", Press(Qt::Key_Return))
      .Then(kReport, EndsIn({"Balance: 1 figure read = 1 applied + 0 not mapped + 0 refused",
                             "  field 1 to field 1: 1 figure, 7.5 in the file, 7.5 in the book"}));
  Run();
}

TEST_F(BalancedReportsTest, OfARunThatIsToBeWholeAndStopsTellThatNothingOfItIsApplied) {
  WantAllOrNothing();
  WriteOneThatStops();
  ImportOne();
  user_.Then("Tallybook", Press(Qt::Key_Return))
      .Then(kReport, EndsIn({kNoneKept, "Balance: 1 figure read = 0 applied + 0 not mapped + 1 refused"}));
  Run();
}

// The figures that stand are set to zero before any is read, which can be cancelled.
TEST_F(BalancedReportsTest, OfARunThatIsCancelledEndInItsBalance) {
  testing::ExchangeFile file;
  file.first = first_;
  file.last = first_ + 399;
  file.accounts = {{"100", "Front"}};
  file.fields = {{kSales, "Sales"}};
  file.blocks = {{Integer{1}, {{first_, {{kSales, 7.5}}}}}};
  folder_.Write("a.QDX", file.Bytes());
  WriteDefinition(1, "Shops", "a.QDX");
  FromTheList("action1");
  user_
      .Then(kDefinitionPrompt,
            [this](QWidget& prompt) {
              constexpr int kWithinTheZeroing = 60;
              platform_.Progress().OnTurn([this, turns = 0]() mutable {
                if (++turns >= kWithinTheZeroing) platform_.Progress().AskToCancel();
              });
              QTest::keyClick(prompt.focusWidget(), Qt::Key_Return);
            })
      .Then(kReport, EndsIn({"Balance: 0 figures read = 0 applied + 0 not mapped + 0 refused"}))
      .Then(kList, Press(Qt::Key_Escape))
      .Then("Tallybook", Press(Qt::Key_Return));  // it ended half way
  (void)conversations_.Definitions();
}

// --- Text files, whose report is the application's own ---------------------------------------------------------------

TEST_F(BalancedReportsTest, OfACsvFileTellWhatWasAppliedAndTakeItBack) {
  const auto before = Stored();
  folder_.Write("day.csv", testing::kFigures);
  user_.Then(testing::kCsvPrompt, Behind(Name("day.csv"))).Then("Tallybook", Press(Qt::Key_Return));
  EXPECT_TRUE(conversations_.ImportCsv().ChangedFigures());
  user_
      .Then("CSV Import Report",
            [&](QWidget& window) {
              EXPECT_THAT(Part<QLabel>(window, "changes").text().toStdString(),
                          StartsWith("Changed: figures of 2004-02-03 (journal entry 1, import csv "));
              const Text applied = "Imported " + folder_.Path("day.csv") + ": 2 records, 2 accounts, 2 fields, 1 date.";
              EXPECT_THAT(EndOf(window, "text", "Imported"),
                          ElementsAre(applied, "", "Balance: 2 figures read = 2 applied + 0 not mapped + 0 refused",
                                      "  field 1 to field 1: 1 figure, 12.5 in the file, 12.5 in the book",
                                      "  field 4 to field 4: 1 figure, 3 in the file, 3 in the book"));
              Behind(Click("undo"))(window);
            })
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("CSV Import Report", [](QWidget& window) { window.close(); });
  ExpectClosed("CSV Import Report");
  EXPECT_EQ(Stored(), before);
}

TEST_F(BalancedReportsTest, OfADelimitedFileThatFailsTellTheReasonAndWhatWasAppliedByThen) {
  folder_.Write("days.txt", "3/2/2004,100,1,5\r\n4/2/2004,100,1,6 pieces\r\n");
  const Text reason =
      folder_.Path("days.txt") + ": record 2: \"6 pieces\" is not a number (error 13: type mismatch, statement 107).";
  for (const bool whole : {true, false}) {
    WantAllOrNothing(whole);
    user_.Then("Import Delimited File", Behind(Name("days.txt")))
        .Then("Tallybook", Press(Qt::Key_Return))   // go on?
        .Then("Tallybook", Press(Qt::Key_Return))   // it failed
        .Then("Tallybook", Press(Qt::Key_Return));  // nothing is kept, or it ended half way
    EXPECT_EQ(conversations_.ImportDelimited().ChangedFigures(), !whole);
    user_.Then("Delimited Import Report", [&](QWidget& window) {
      const auto end = EndOf(window, "text", folder_.Path("days.txt"));
      if (whole) {
        EXPECT_THAT(
            end, ElementsAre(reason, "", kNoneKept, "Balance: 2 figures read = 0 applied + 0 not mapped + 2 refused"));
      } else {
        EXPECT_THAT(end, ElementsAre(reason, "", "Balance: 2 figures read = 1 applied + 0 not mapped + 1 refused",
                                     "  field 1 to field 1: 1 figure, 5 in the file, 5 in the book"));
      }
      window.close();
    });
    ExpectClosed("Delimited Import Report");
  }
}

TEST_F(BalancedReportsTest, OfACsvFileWhoseAuditIsStoppedSayThatAllThatWasReadIsRefused) {
  folder_.Write("day.csv", "2,3,2004,1,1\r\n100,1,12.5\r\nnone,1,3\r\n");
  user_.Then(testing::kCsvPrompt, Behind(Name("day.csv")))
      .Then("Tallybook", Press(Qt::Key_Return))  // go on?
      .Then("Tallybook", Press(Qt::Key_Return))  // the audit's question: no
      .Then(testing::kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
  user_.Then("CSV Import Report", [&](QWidget& window) {
    EXPECT_EQ(Part<QLabel>(window, "changes").text(), "No figure was changed.");
    EXPECT_THAT(EndOf(window, "text", "Balance"),
                ElementsAre("Balance: 1 figure read = 0 applied + 0 not mapped + 1 refused"));
    window.close();
  });
  ExpectClosed("CSV Import Report");
}

TEST_F(BalancedReportsTest, AreNotMadeOfATextFileThatTheUserDoesNotWant) {
  folder_.Write("day.csv", testing::kFigures);
  user_.Then(testing::kCsvPrompt, Behind(Name("day.csv")))
      .Then("Tallybook", Press(Qt::Key_Escape))  // go on?
      .Then(testing::kCsvPrompt, Press(Qt::Key_Escape));
  EXPECT_FALSE(conversations_.ImportCsv().ChangedFigures());
  EXPECT_FALSE(IsShown("CSV Import Report"));
}

// --- Previews --------------------------------------------------------------------------------------------------------

TEST_F(BalancedReportsTest, AreShownByThePreviewAsTheyEndWhereNothingWouldBeKept) {
  WantAllOrNothing();
  WriteOneThatStops();
  FromTheList("added");
  user_.Then("Tallybook", Press(Qt::Key_Return))
      .Then("Tallybook", Press(Qt::Key_Return))
      .Then("Preview", [](QWidget& window) {
        EXPECT_THAT(EndOf(window, "report", kNoneKept),
                    ElementsAre(kNoneKept, "Balance: 1 figure read = 0 applied + 0 not mapped + 1 refused"));
        QTest::keyClick(&window, Qt::Key_Escape);
      });
  Run();
}

TEST_F(BalancedReportsTest, AreShownByThePreviewWithTheirBalance) {
  WriteExchangeFile("a.QDX");
  WriteDefinition(1, "Shops", "a.QDX");
  FromTheList("added");
  user_.Then("Preview", [](QWidget& window) {
    EXPECT_THAT(EndOf(window, "report", "Balance"),
                ElementsAre("Balance: 1 figure read = 1 applied + 0 not mapped + 0 refused",
                            "  field 1 to field 1: 1 figure, 7.5 in the file, 7.5 in the book"));
    QTest::keyClick(&window, Qt::Key_Escape);
  });
  Run();
}

}  // namespace
}  // namespace tallybook::desktop
