// The conversation of an export, from the host's menu to the written file.

#include <functional>
#include <vector>

#include "exchange/CDataExchange.h"
#include "qdx/HeaderRecord.h"
#include "support/Utility.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kDates = "dlgRepPrint";
const Text kOptions = "dlgExport";
const Text kPrompt = "frmImport";
const Failure kBroken(FailureNumber::kDeviceError, "no", "Engine");

class ExportConversationTest : public DialogsFixture {
 protected:
  void Converse(bool csv_style) { EXPECT_TRUE(gui.ExportQDX(owner, book(), csv_style, date)); }
  void ExportTable() { Converse(true); }
  void ExportFile() { Converse(false); }

  // What the user does, in turn.
  void TakeDates() { user().Click(kDates, "Command1", kNextButton); }
  void CancelDates() { user().Click(kDates, "Command1", kCancelButton); }
  void Accept(const Text& form) { user().Click(form, "SaveButtons1", SaveButtons::kMainButton); }
  void Cancel(const Text& form) { user().Click(form, "SaveButtons1", SaveButtons::kCancelButton); }
  void LookAtOptions(std::function<void(dlgExport&)> look) { Look<dlgExport>(kOptions, std::move(look)); }

  [[nodiscard]] Text Setting(const Text& section, const Text& key) const { return host->BookSetting(section, key); }
  // The tables that the exports so far have begun, oldest first.
  [[nodiscard]] std::vector<std::shared_ptr<ExportedTable>> Tables() const {
    std::vector<std::shared_ptr<ExportedTable>> tables;
    for (const auto& written : host->factory.exports) tables.insert(tables.end(), written->begin(), written->end());
    return tables;
  }
  static Text Question(const Text& file) {
    return "Export file created at:\r\n" + file + "\r\n\r\nWould you like to open the file?";
  }

  Date date = DateFromParts(2003, 1, 1);
};

// --- Dates -----------------------------------------------------------------------------------------------------------

TEST_F(ExportConversationTest, AsksForTheDatesInTheWordsOfTheExport) {
  for (const bool csv_style : {true, false}) {
    Look<dlgRepPrint>(kDates, [this, csv_style](dlgRepPrint& shown) {
      EXPECT_EQ(shown.Caption(), csv_style ? "Export Data to File - North Shop Tallybook"
                                           : "Export Data to QDX File - North Shop Tallybook");
      EXPECT_EQ(shown.Command1[kNextButton].Caption(), "&Export Data");
      EXPECT_EQ(shown.HelpContext(), 11'000);
      EXPECT_TRUE(shown.AllowSameLevel());
      EXPECT_EQ(shown.CurrentDate(), date);
      EXPECT_EQ(shown.SelectedLength(), kDayLevel);
      EXPECT_EQ(shown.FontName(), "Sans");
      EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
    });
    CancelDates();
    Converse(csv_style);
  }
}

TEST_F(ExportConversationTest, EndsWithTheDatesWhereTheyAreCancelled) {
  for (const bool csv_style : {true, false}) {
    Look<dlgRepPrint>(kDates, [](dlgRepPrint& shown) {
      EXPECT_TRUE(TheHands().ChooseDate(shown.Calendar[1], DateFromParts(2003, 6, 1)));
    });
    CancelDates();
    Converse(csv_style);
    EXPECT_EQ(date, DateFromParts(2003, 1, 1)) << "the caller's date stays";
  }
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_THAT(Tables(), IsEmpty());
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(ExportConversationTest, HandsTheChosenDateBackAlsoWhereTheFileIsCancelled) {
  const Date chosen = DateFromParts(2003, 6, 30);
  Look<dlgRepPrint>(kDates,
                    [chosen](dlgRepPrint& shown) { EXPECT_TRUE(TheHands().ChooseDate(shown.Calendar[1], chosen)); });
  TakeDates();
  Cancel(kPrompt);
  ExportFile();
  EXPECT_EQ(date, chosen);
  EXPECT_THAT(Written(), IsEmpty());
}

// --- A table ---------------------------------------------------------------------------------------------------------

TEST_F(ExportConversationTest, ProposesATableOfTextInTheDefaultFolderAtFirst) {
  TakeDates();
  LookAtOptions([this](dlgExport& shown) {
    EXPECT_EQ(shown.Text1.Text(), Path("Export.csv"));
    EXPECT_EQ(shown.Combo1.SelectedText(), "Comma-separated text (csv)");
    EXPECT_TRUE(shown.chkNonZero.Visible());
    EXPECT_FALSE(shown.chkNonZero.Checked());
    EXPECT_TRUE(shown.FullBrowsing());
  });
  Cancel(kOptions);
  ExportTable();
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_THAT(Tables(), IsEmpty());
}

TEST_F(ExportConversationTest, ProposesTheFirstTypeWhereTheLibraryHasNoText) {
  host->factory.prepare_export = [](MemoryExportObject& library) { library.formats.erase(library.formats.begin()); };
  TakeDates();
  LookAtOptions([this](dlgExport& shown) {
    EXPECT_EQ(shown.Combo1.SelectedText(), "Workbook (xlsx)");
    EXPECT_EQ(shown.Text1.Text(), Path("Export.xlsx"));
  });
  Cancel(kOptions);
  ExportTable();
}

TEST_F(ExportConversationTest, WritesATableAndRemembersHow) {
  TakeDates();
  user()
      .Choose(kOptions, "Combo1", "Workbook (xlsx)")
      .Type(kOptions, "Text1", Path("sales.xlsx"))
      .Click(kOptions, "chkNonZero");
  Accept(kOptions);
  platform.boxes.Answer({kCancel});
  ExportTable();
  ASSERT_THAT(Tables(), SizeIs(1));
  const ExportedTable& table = *Tables()[0];
  EXPECT_EQ(table.path, Path("sales.xlsx"));
  EXPECT_EQ(table.format_code, "XLSX");
  EXPECT_TRUE(table.closed);
  EXPECT_THAT(table.rows,
              ElementsAre(ElementsAre("Date", "Account", "Field", "Value"),
                          ElementsAre("2003-01-01", "100", "1", "12.5"), ElementsAre("2003-01-01", "100", "2", "3")));
  EXPECT_EQ(platform.boxes.Shown().back(),
            (ShownBox{Question(Path("sales.xlsx")), kQuestionBox, host->app.title, kCancel}));
  EXPECT_THAT(platform.shell.Opened(), IsEmpty());
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("sales.xlsx"));
  EXPECT_EQ(Setting("CSV", "Ext"), "XLSX");
  EXPECT_EQ(Setting("CSV", "Zeros"), "False");
  EXPECT_THAT(Written(), SizeIs(3));
  EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(ExportConversationTest, WritesZerosWhereTheUserLeavesTheBoxClear) {
  TakeDates();
  Accept(kOptions);
  platform.boxes.Answer({kCancel});
  ExportTable();
  ASSERT_THAT(Tables(), SizeIs(1));
  EXPECT_THAT(Tables()[0]->rows, SizeIs(1 + 3 * 3)) << "a title, and three fields of three accounts";
  EXPECT_EQ(Setting("CSV", "Zeros"), "True");
}

TEST_F(ExportConversationTest, ShowsTheRememberedTypeFileAndZeros) {
  for (const char* zeros : {"False", "0"}) {
    host->SetBookSetting("CSV", "ExportFile", "/last/sales.dbf");
    host->SetBookSetting("CSV", "Ext", "DBF");
    host->SetBookSetting("CSV", "Zeros", zeros);
    TakeDates();
    LookAtOptions([](dlgExport& shown) {
      EXPECT_EQ(shown.Text1.Text(), "/last/sales.dbf");
      EXPECT_EQ(shown.Combo1.SelectedText(), "Database table (dbf)");
      EXPECT_TRUE(shown.chkNonZero.Checked());
    });
    Accept(kOptions);
    platform.boxes.Answer({kCancel});
    ExportTable();
    EXPECT_THAT(Tables().back()->rows, SizeIs(2)) << "rows that are not zero, no title";
    EXPECT_EQ(Setting("CSV", "Zeros"), "False");
  }
}

TEST_F(ExportConversationTest, LogsASettingOfZerosThatIsNoTruthValueAndTakesItForFalse) {
  host->SetBookSetting("CSV", "Zeros", "some");
  TakeDates();
  LookAtOptions([](dlgExport& shown) { EXPECT_TRUE(shown.chkNonZero.Checked()); });
  Cancel(kOptions);
  ExportTable();
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Tallybook - OutputQDXFile");
}

TEST_F(ExportConversationTest, OpensTheTableWhereTheUserWantsIt) {
  TakeDates();
  Accept(kOptions);
  platform.boxes.Answer({kOk});
  ExportTable();
  EXPECT_THAT(platform.shell.Opened(), ElementsAre(Path("Export.csv")));
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("Export.csv"));
}

TEST_F(ExportConversationTest, OffersTheSystemsChoiceWhereNoApplicationIsAssociated) {
  platform.shell.AnswerOpen({kNoAssociation});
  TakeDates();
  Accept(kOptions);
  platform.boxes.Answer({kOk});
  ExportTable();
  EXPECT_THAT(Boxes().back(), HasSubstr("No application has been associated with this output file type."));
  EXPECT_THAT(platform.shell.Runs(), SizeIs(1));
  EXPECT_EQ(Setting("CSV", "Ext"), "CSV");
}

TEST_F(ExportConversationTest, AsksForTheFileAgainAfterATableThatFails) {
  host->SetBookSetting("CSV", "Ext", "TXT");
  host->record.GiveFalseOn("Export.CommitRow", 1);
  TakeDates();
  user().Type(kOptions, "Text1", Path("first.txt")).Click(kOptions, "chkNonZero");
  Accept(kOptions);
  LookAtOptions([this](dlgExport& shown) {
    EXPECT_EQ(shown.Text1.Text(), Path("first.txt"));
    EXPECT_EQ(shown.Combo1.SelectedText(), "Fixed-width text (txt)");
    EXPECT_TRUE(shown.chkNonZero.Checked());
    EXPECT_THAT(Written(), IsEmpty());
  });
  user().Type(kOptions, "Text1", Path("second.txt"));
  Accept(kOptions);
  platform.boxes.Answer({kCancel});
  ExportTable();
  EXPECT_TRUE(host->record.AllFaultsStruck());
  ASSERT_THAT(Tables(), SizeIs(2));
  EXPECT_EQ(Tables()[1]->path, Path("second.txt"));
  EXPECT_TRUE(Tables()[0]->closed);
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("second.txt"));
  EXPECT_THAT(Logged(), SizeIs(1)) << "told by the exchange object";
  EXPECT_THAT(host->factory.exports, SizeIs(1)) << "one export library for the whole conversation";
}

TEST_F(ExportConversationTest, LeavesTheSettingsAfterATableThatFailsAndACancel) {
  host->SetBookSetting("CSV", "ExportFile", "/before.csv");
  host->record.GiveFalseOn("Export.CommitRow", 2);
  TakeDates();
  Accept(kOptions);
  Cancel(kOptions);
  ExportTable();
  EXPECT_TRUE(host->record.AllFaultsStruck());
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_EQ(Setting("CSV", "ExportFile"), "/before.csv");
}

TEST_F(ExportConversationTest, AsksForAnotherFileWhereATableCannotBeCreated) {
  host->record.GiveFalseOn("Export.CreateTable", 1);
  host->record.GiveFalseOn("Export.CreateTable", 2);
  platform.boxes.Answer({kRetry, kCancel, kCancel});
  TakeDates();
  Accept(kOptions);
  Accept(kOptions);
  ExportTable();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating export file: " + Path("Export.csv"),
                                   "Error creating export file: " + Path("Export.csv"), Question(Path("Export.csv"))));
}

TEST_F(ExportConversationTest, RetriesAnOldTableThatIsLockedUntilItCanBeDeleted) {
  folder.Write("Export.csv", "old");
  platform.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied);
  platform.boxes.Answer({kRetry, kCancel});
  TakeDates();
  Accept(kOptions);
  ExportTable();
  EXPECT_EQ(Boxes().front(), "The output file: \r\n" + Path("Export.csv") +
                                 "\r\nalready exists, and could not delete it.  Close the file, and try again.");
  EXPECT_FALSE(folder.Has("Export.csv"));
  EXPECT_THAT(Tables(), SizeIs(1));
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("Export.csv"));
}

TEST_F(ExportConversationTest, ReturnsToTheOptionsWhereALockedTableIsGivenUp) {
  folder.Write("Export.csv", "old");
  platform.files.FailPath(FileCall::kDelete, "Export.csv", FailureNumber::kPermissionDenied);
  platform.boxes.Answer({kCancel, kCancel});
  TakeDates();
  Accept(kOptions);
  user().Type(kOptions, "Text1", Path("other.csv"));
  Accept(kOptions);
  ExportTable();
  EXPECT_EQ(folder.Read("Export.csv"), "old");
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("other.csv"));
}

TEST_F(ExportConversationTest, CountsAnExportThatTheUserStopsAsWritten) {
  book().progress.CancelAtPoll(1);
  TakeDates();
  Accept(kOptions);
  platform.boxes.Answer({kCancel});
  ExportTable();
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("Export.csv"));
}

TEST_F(ExportConversationTest, LimitsBrowsingForATable) {
  LimitBrowsing();
  TakeDates();
  LookAtOptions([](dlgExport& shown) { EXPECT_FALSE(shown.FullBrowsing()); });
  Cancel(kOptions);
  ExportTable();
}

TEST_F(ExportConversationTest, RemembersTheTableThoughItCannotBeOpened) {
  Platform without_shell = ThePlatform();
  without_shell.shell = nullptr;
  InstallPlatform(without_shell);
  TakeDates();
  Accept(kOptions);
  platform.boxes.Answer({kOk});
  ExportTable();
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Tallybook - OutputQDXFile");
  EXPECT_EQ(Setting("CSV", "ExportFile"), Path("Export.csv"));
  EXPECT_EQ(Setting("CSV", "Ext"), "CSV");
  EXPECT_EQ(Setting("CSV", "Zeros"), "True");
  EXPECT_THAT(OpenForms(), IsEmpty());
}

// --- An exchange file ------------------------------------------------------------------------------------------------

TEST_F(ExportConversationTest, WritesAnExchangeFileAndRemembersItsNameAlone) {
  Look<dlgRepPrint>(kDates, [](dlgRepPrint& shown) { EXPECT_TRUE(TheHands().Click(shown.optLength(6), 6)); });
  TakeDates();
  Look<frmImport>(kPrompt, [this](frmImport& shown) {
    EXPECT_EQ(shown.Caption(), "Export Data to QDX File");
    EXPECT_EQ(shown.Label1[0].Caption(), "Enter the name of the file for the exported data.");
    EXPECT_EQ(shown.SaveButtons1.Caption(), "&Export");
    EXPECT_EQ(shown.Label1[1].Caption(), "Export &Filename:");
    EXPECT_EQ(shown.Text1.Text(), Path("Export.QDX"));
    EXPECT_TRUE(shown.FullBrowsing());
  });
  user().Type(kPrompt, "Text1", Path("north"));
  Accept(kPrompt);
  ExportFile();
  ASSERT_TRUE(folder.Has("north.QDX"));
  CDataExchange reader(host->factory);
  reader.SetOwner(&book());
  EXPECT_EQ(reader.QDXHeaderText(Path("north.QDX")),
            Path("north.QDX") +
                "\nNorth Shop\nTuesday, February 3, 2004 14:05:09\nWednesday, January 1, 2003\n"
                "Wednesday, December 31, 2003\nDay");
  EXPECT_EQ(SharedHeader().ReportLength, 6);
  EXPECT_THAT(Boxes(), IsEmpty()) << "nobody offers to open it";
  EXPECT_EQ(Written().size(), 1U);
  EXPECT_EQ(Setting("QDX", "ExportFile"), Path("north.QDX"));
  EXPECT_THAT(Tables(), IsEmpty());
  EXPECT_THAT(host->factory.exports, IsEmpty()) << "no export library is needed";
}

TEST_F(ExportConversationTest, ProposesTheExchangeFileThatItRemembers) {
  host->SetBookSetting("QDX", "ExportFile", Path("last.qdx"));
  host->SetBookSetting("CSV", "ExportFile", Path("table.csv"));
  TakeDates();
  Look<frmImport>(kPrompt, [this](frmImport& shown) { EXPECT_EQ(shown.Text1.Text(), Path("last.qdx")); });
  Cancel(kPrompt);
  ExportFile();
  EXPECT_THAT(Written(), IsEmpty());
}

TEST_F(ExportConversationTest, ReplacesAnExchangeFileThatIsThere) {
  folder.Write("Export.QDX", "old");
  TakeDates();
  Accept(kPrompt);
  ExportFile();
  EXPECT_NE(folder.Read("Export.QDX"), "old");
}

TEST_F(ExportConversationTest, RetriesAnOldExchangeFileThatIsLockedUntilItCanBeDeleted) {
  folder.Write("Export.QDX", "old");
  platform.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied, 2);
  platform.boxes.Answer({kRetry, kRetry});
  TakeDates();
  Accept(kPrompt);
  ExportFile();
  EXPECT_THAT(Boxes(), SizeIs(2));
  EXPECT_NE(folder.Read("Export.QDX"), "old");
}

TEST_F(ExportConversationTest, KeepsALockedExchangeFileOfAnotherProcessAndAsksForAName) {
  Text name = Path("Export.QDX");
  Integer holder = 0;
  folder.Write("Export.QDX", "old");
  ASSERT_TRUE(OpenFileEx("BL", holder, name));
  platform.boxes.Answer({kCancel});
  TakeDates();
  Accept(kPrompt);
  Look<frmImport>(kPrompt, [name](frmImport& shown) { EXPECT_EQ(shown.Text1.Text(), name); });
  Cancel(kPrompt);
  ExportFile();
  EXPECT_EQ(folder.Read("Export.QDX"), "old");
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_TRUE(CloseFileEx(holder));
}

TEST_F(ExportConversationTest, AsksForAnotherNameWhereAnExchangeFileCannotBeCreated) {
  platform.files.FailPath(FileCall::kOpen, "Export.QDX", FailureNumber::kPathNotFound);
  platform.boxes.Answer({kRetry, kCancel});
  TakeDates();
  Accept(kPrompt);
  user().Type(kPrompt, "Text1", Path("other.qdx"));
  Accept(kPrompt);
  ExportFile();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating export file: " + Path("Export.QDX"),
                                   "Error creating export file: " + Path("Export.QDX")));
  EXPECT_TRUE(folder.Has("other.qdx"));
  EXPECT_EQ(Setting("QDX", "ExportFile"), Path("other.qdx"));
}

TEST_F(ExportConversationTest, AsksForTheNameAgainAfterAWriteThatFails) {
  host->record.FailOn("AccountNumber", 1, kBroken);
  TakeDates();
  Accept(kPrompt);
  Cancel(kPrompt);
  ExportFile();
  EXPECT_TRUE(host->record.AllFaultsStruck());
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Engine - CDataExchange:WriteQDXFile");
  EXPECT_THAT(Written(), IsEmpty());
}

TEST_F(ExportConversationTest, AsksForTheNameAgainWhereTheDiskIsFull) {
  platform.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull);
  TakeDates();
  Accept(kPrompt);
  Accept(kPrompt);
  ExportFile();
  EXPECT_EQ(platform.files.FaultsRaised(), 1);
  EXPECT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Setting("QDX", "ExportFile"), Path("Export.QDX"));
}

TEST_F(ExportConversationTest, LimitsBrowsingForAnExchangeFileEitherWay) {
  LimitBrowsing();
  host->record.FailOn("AccountNumber", 1, kBroken);
  TakeDates();
  Look<frmImport>(kPrompt, [](frmImport& shown) { EXPECT_FALSE(shown.FullBrowsing()); });
  Accept(kPrompt);
  Look<frmImport>(kPrompt, [this](frmImport&) { host->record.FailOn("AccountNumber", 1, kBroken); });
  Accept(kPrompt);
  host->app.unrestricted_files = 0;
  Look<frmImport>(kPrompt, [this](frmImport&) {
    host->app.unrestricted_files = 1;
    host->record.FailOn("AccountNumber", 1, kBroken);
  });
  Accept(kPrompt);
  Look<frmImport>(kPrompt, [](frmImport& shown) { EXPECT_TRUE(shown.FullBrowsing()) << "worked out anew"; });
  Cancel(kPrompt);
  ExportFile();
}

// --- Every failure of the host ---------------------------------------------------------------------------------------

TEST_F(ExportConversationTest, LeavesNothingOpenWhereverTheHostFails) {
  for (const bool csv_style : {true, false}) {
    const Text form = csv_style ? kOptions : kPrompt;
    for (const char* operation : {"NewIniFile", "Ini.ReadValue", "App.DefaultFolder", "DataLevel", "App.FontName",
                                  "AccessRight", "Ini.WriteValue"}) {
      host->app.log.errors.clear();
      host->record.FailOn(operation, 1, kBroken);
      platform.boxes.Answer({kCancel});
      TakeDates();
      Accept(form);
      const bool went_well = gui.ExportQDX(owner, book(), csv_style, date);
      EXPECT_TRUE(host->record.AllFaultsStruck()) << operation;
      EXPECT_FALSE(Logged().empty()) << operation << ": every failure is in the log";
      if (!went_well) {
        EXPECT_THAT(Logged().back().message, HasSubstr("CDataExchangeGUI:ExportQDX")) << operation;
      }
      EXPECT_THAT(OpenForms(), IsEmpty()) << operation;
      EXPECT_EQ(ModalDepth(), 0) << operation;
      user().Forget();
      // A run that ended early did not come to its question.
      while (platform.boxes.AnswersLeft() > 0) (void)platform.boxes.Show("drain", kQuestionBox, "");
    }
  }
}

}  // namespace
}  // namespace tallybook::testing
