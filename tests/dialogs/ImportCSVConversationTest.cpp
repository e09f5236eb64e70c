// The conversation of a comma-separated import, from the host's menu to the changed figures.

#include <algorithm>
#include <vector>

#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kForm = "frmImport";
const std::string kFigures = "2,3,2004,1,1\r\n100,1,12.5\r\n200,2,3\r\n";

class ImportCSVConversationTest : public DialogsFixture {
 protected:
  void Converse(bool csv_style = true) { EXPECT_TRUE(gui.ImportCSV(owner, book(), csv_style)); }
  void Press(Integer button = SaveButtons::kMainButton) { user().Click(kForm, "SaveButtons1", button); }
  void LookAt(std::function<void(frmImport&)> look) { Look<frmImport>(kForm, std::move(look)); }
  [[nodiscard]] Double Figure(Long account, Integer field) const {
    return book().Get(account, DateFromParts(2004, 2, 3), field);
  }
  [[nodiscard]] Text Remembered() const { return host->BookSetting("CSV", "ImportFile"); }
};

TEST_F(ImportCSVConversationTest, AsksForTheFileInTheWordsOfTheImport) {
  LookAt([this](frmImport& shown) {
    EXPECT_EQ(shown.Caption(), "Import CSV Data File - North Shop Tallybook");
    EXPECT_EQ(shown.Label1[0].Caption(), "Enter the name of the CSV Data File to import");
    EXPECT_EQ(shown.SaveButtons1.Caption(), "&Import");
    EXPECT_EQ(shown.Text1.Text(), Path("Import.CSV"));
    EXPECT_EQ(shown.FontName(), "Sans");
    EXPECT_TRUE(shown.FullBrowsing());
  });
  Press(SaveButtons::kCancelButton);
  Converse();
}

TEST_F(ImportCSVConversationTest, ImportsTheFileAndRemembersIt) {
  for (const bool csv_style : {true, false}) {
    folder.Write("figures.csv", kFigures);
    user().Type(kForm, "Text1", Path("figures.csv"));
    Press();
    platform.boxes.Answer({kOk});
    Converse(csv_style);
    EXPECT_EQ(Remembered(), Path("figures.csv"));
  }
  EXPECT_EQ(Figure(101, 1), 25.0) << "the file's own operation, adding, was used both times";
  EXPECT_EQ(Figure(102, 2), 6.0);
  EXPECT_THAT(Written(), SizeIs(2));
  EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(ImportCSVConversationTest, ProposesTheFileThatItRemembers) {
  host->SetBookSetting("CSV", "ImportFile", "/last/time.csv");
  LookAt([](frmImport& shown) { EXPECT_EQ(shown.Text1.Text(), "/last/time.csv"); });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(Written(), IsEmpty());
}

TEST_F(ImportCSVConversationTest, ReturnsToThePromptAfterAnImportThatFails) {
  host->SetBookSetting("CSV", "ImportFile", "/before.csv");
  folder.Write("bad.csv", "2,3,2004,9,1\r\n");
  user().Type(kForm, "Text1", Path("bad.csv"));
  Press();
  LookAt([this](frmImport& shown) { EXPECT_EQ(shown.Text1.Text(), Path("bad.csv")); });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(Boxes(), ElementsAre("Add, subtract or replace not indicated in import file. "));
  EXPECT_EQ(Remembered(), "/before.csv");
  EXPECT_THAT(Written(), IsEmpty());
}

TEST_F(ImportCSVConversationTest, RemembersTheFileThatWentThroughInTheEnd) {
  folder.Write("bad.csv", "");
  folder.Write("good.csv", kFigures);
  user().Type(kForm, "Text1", Path("bad.csv"));
  Press();
  user().Type(kForm, "Text1", Path("good.csv"));
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_EQ(Remembered(), Path("good.csv"));
  EXPECT_EQ(Figure(101, 1), 12.5);
}

TEST_F(ImportCSVConversationTest, ReturnsToThePromptWhereTheUserDoesNotConfirm) {
  folder.Write("good.csv", kFigures);
  user().Type(kForm, "Text1", Path("good.csv"));
  Press();
  platform.boxes.Answer({kCancel});
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(Boxes(), SizeIs(1)) << "with its prompts on";
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_EQ(Figure(101, 1), 0.0);
}

TEST_F(ImportCSVConversationTest, KeepsTheRollbackJournalThatTheInstallationAsksFor) {
  folder.Write("Import.CSV", kFigures);
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_THAT(book().Journal(), SizeIs(1));
  host->SetInstallationSetting("Files", "WriteRollback", "0");
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_THAT(book().Journal(), SizeIs(1));
}

TEST_F(ImportCSVConversationTest, SetsThePointerWithItsFirstWindowAtTheLatest) {
  platform.file_dialogs.Cancel();
  user().Click(kForm, "Command1");
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_EQ(platform.screen.Pointers().front(), Pointer::kBusy);
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(ImportCSVConversationTest, LimitsBrowsingWhereTheUserMayNotAndTheApplicationDoesNotLiftIt) {
  struct Case {
    Integer unrestricted;
    bool has_right;
    bool full;
  };
  for (const Case& rule : {Case{0, false, false}, Case{0, true, true}, Case{1, false, true}, Case{-1, true, true}}) {
    host->app.unrestricted_files = rule.unrestricted;
    host->book.rights = rule.has_right ? std::set<Text>{"A"} : std::set<Text>{"B"};
    LookAt([rule](frmImport& shown) { EXPECT_EQ(shown.FullBrowsing(), rule.full); });
    Press(SaveButtons::kCancelButton);
    Converse();
  }
}

TEST_F(ImportCSVConversationTest, LogsAFailureThatNobodyExpectsAndLeavesNoFormBehind) {
  folder.Write("Import.CSV", kFigures);
  Press();
  platform.boxes.Answer({kOk});
  host->record.FailOn("Ini.WriteValue", 1, Failure(FailureNumber::kDiskFull, "full", "Settings"));
  EXPECT_FALSE(gui.ImportCSV(owner, book(), true));
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Settings - CDataExchangeGUI:ImportCSV");
  EXPECT_THAT(OpenForms(), IsEmpty());
  EXPECT_EQ(TheForms().DataExc.IfThere(), nullptr);
}

}  // namespace
}  // namespace tallybook::testing
