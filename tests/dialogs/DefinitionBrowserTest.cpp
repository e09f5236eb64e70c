// The list of definitions, from the host's menu to files, figures and reports.
#include <optional>
#include <set>

#include "dialogs/DefinitionBrowser.h"
#include "tests/dialogs/DefinitionsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr Integer kImportOne = 1;
constexpr Integer kImportAll = 2;
constexpr Integer kRefresh = 3;

const Text kNoRecord = "You must Select or Add an QDX Layout before the File can be Imported.";
const Text kNotThere = "QDX File cannot be imported because it does not exist";
const Text kCannotEdit = "Cannot edit the QDX Import Layout because the QDX File does not exist";

class DefinitionBrowserTest : public DefinitionsFixture {
 protected:
  // Every account and every field of the file goes to its namesake.
  [[nodiscard]] StoredDefinition OneForOne(const Text& name) const {
    return {.title = "One for one", .qdx_file = Path(name), .fld_match = -1, .acct_match = -1};
  }
  // Account 100 and field 1 of the file alone, by hand.
  [[nodiscard]] StoredDefinition ByHand(const Text& name) const {
    return {.title = "By hand", .qdx_file = Path(name), .fields = {{1, 1}}, .accounts = {{"100", "100"}}};
  }
  [[nodiscard]] Double Sales(Long account = 101) const { return book().Get(account, DateFromParts(2004, 2, 3), 1); }
  // Chooses a file in the prompt of "Add".
  void ChooseFile(const Text& name) {
    user().Type(kPrompt, "Text1", Path(name));
    Accept(kPrompt);
  }
  // All that was said is a warning under the host's title, with nothing to choose.
  void ExpectWarnings(std::initializer_list<Text> texts) {
    EXPECT_THAT(Boxes(), ::testing::ElementsAreArray(texts));
    for (const ShownBox& box : platform.boxes.Shown()) {
      EXPECT_EQ(box.style, kExclamationIcon) << box.text;
      EXPECT_EQ(box.caption, "Tallybook") << box.text;
    }
  }
  [[nodiscard]] static std::vector<Text> CellsOf(const ListWindow& window, std::size_t row) {
    return window.rows.at(row).cells;
  }
};

// --- The window ------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, SetsUpTheWindowBeforeItIsShown) {
  WriteSouth();
  host->app.type_ahead_delay = 700;
  WhenListed([&](MemoryEdtForm& form, EdtFormEvents&) {
    EXPECT_EQ(form->title, "QDX Import Layouts - North Shop Tallybook");
    EXPECT_THAT(
        form->columns,
        ElementsAre(std::pair<Text, bool>("Title", false), std::pair<Text, bool>("Number", true),
                    std::pair<Text, bool>("File Name", false), std::pair<Text, bool>("QDX File Name", false),
                    std::pair<Text, bool>("QDX Exists", false), std::pair<Text, bool>("Number Matches", false)));
    EXPECT_EQ(form->action_buttons,
              (std::map<Integer, Text>{{1, "Import QDX File"}, {2, "Import ALL"}, {3, "Refresh"}}));
    EXPECT_TRUE(form->changes_allowed);
    EXPECT_EQ(form->type_ahead_delay, 700);
    EXPECT_EQ(form->help_file, host->app.help_file);
    EXPECT_EQ(form->font_name, "Sans");
    EXPECT_EQ(form->owner, owner);
    EXPECT_EQ(form->totals, "1 active of 999 maximum");
    EXPECT_EQ(form->totals_asked, 1);
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
    EXPECT_EQ(TheForms().Editor.IfThere()->FontName(), "Sans");
  });
  Browse();
  EXPECT_EQ(Listed().shown, 1);
  EXPECT_EQ(TheForms().Editor.IfThere(), nullptr);
  EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(DefinitionBrowserTest, FillsItsListsWhileTheImportModuleLoads) {
  WriteSouth();
  host->record.Record("ProgressFraction", true);
  WhenListed([&](MemoryEdtForm&, EdtFormEvents&) {
    std::vector<Text> progress;
    for (const Text& call : host->record.calls)
      if (call.find("Progress") != Text::npos) progress.push_back(call);
    ASSERT_THAT(progress, SizeIs(8)) << "three accounts and three fields";
    EXPECT_EQ(progress.front(), "BeginProgress Loading Import Module");
    EXPECT_EQ(progress.at(3), "ProgressFraction 0.5");
    EXPECT_EQ(progress.at(6), "ProgressFraction 1");
    EXPECT_EQ(progress.back(), "EndProgress");
    EXPECT_FALSE(book().progress.open);
  });
  Browse();
}

TEST_F(DefinitionBrowserTest, OffersChangesOnlyToWhomHasTheRight) {
  host->book.rights.clear();
  Browse();
  EXPECT_FALSE(Listed().changes_allowed);
}

TEST_F(DefinitionBrowserTest, ListsEveryDefinitionWithItsFileAndItsMatches) {
  WriteQdx("SOUTH.QDX");
  for (const char* name : {"DAY1.QDX", "DAY2.QDX", "DAY3.QDX"}) WriteQdx(name);
  WriteDefinition(1, {.title = "One file", .qdx_file = Path("SOUTH.QDX")});
  WriteDefinition(20, {.title = "Three files", .qdx_file = Path("DAY*.QDX")});
  WriteDefinition(3, {.title = "No file", .qdx_file = Path("NONE*.QDX")});
  Browse();
  EXPECT_THAT(Keys(), ElementsAre("K1", "K20", "K3"));
  EXPECT_THAT(CellsOf(Listed(), 0), ElementsAre("One file", "   1", "TBQDX1.NORTH", Path("SOUTH.QDX"), "True", "1"));
  EXPECT_THAT(CellsOf(Listed(), 1), ElementsAre("Three files", "  20", "TBQDX20.NORTH", Path("DAY*.QDX"), "True", "3"));
  EXPECT_THAT(CellsOf(Listed(), 2), ElementsAre("No file", "   3", "TBQDX3.NORTH", Path("NONE*.QDX"), "False", "0"));
}

TEST_F(DefinitionBrowserTest, ShowsTheLastFourDigitsOfALongerNumber) {
  WriteDefinition(12345, {.title = "Long"});
  Browse();
  EXPECT_EQ(CellsOf(Listed(), 0).at(1), "2345");
  EXPECT_THAT(Keys(), ElementsAre("K12345"));
}

TEST_F(DefinitionBrowserTest, CountsADefinitionWithoutATitleButDoesNotListIt) {
  WriteDefinition(1, {.title = ""});
  WriteDefinition(2, {.title = "   "});
  WriteDefinition(3, {.title = Text("\0 \0", 3)});
  WriteDefinition(4, {.title = Text("\0x", 2)});
  Browse();
  EXPECT_THAT(Keys(), ElementsAre("K4")) << "what stands behind a NUL is a title";
  EXPECT_EQ(Listed().totals, "4 active of 999 maximum");
}

TEST_F(DefinitionBrowserTest, ListsTwoStraysOfNoNumberSideBySide) {
  folder.Write("TBQDXa.NORTH", StoredDefinition{.title = "A"}.Bytes());
  folder.Write("TBQDXb.NORTH", StoredDefinition{.title = "B"}.Bytes());
  Browse();
  EXPECT_THAT(Keys(), ElementsAre("K0", "K0"));
}

TEST_F(DefinitionBrowserTest, HandsHelpAndShutdownToTheApplication) {
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    events.ShowHelp(815);
    bool flag = false;
    events.NeedtoShutdown(flag);
    EXPECT_FALSE(flag);
    flag = true;
    events.NeedtoShutdown(flag);
    EXPECT_TRUE(flag) << "as it came in";
    host->app.finished = true;
    flag = false;
    events.NeedtoShutdown(flag);
    EXPECT_TRUE(flag);
  });
  Browse();
  EXPECT_THAT(host->record.ArgumentsOf("App.HelpTopic"), ElementsAre("815"));
}

TEST_F(DefinitionBrowserTest, TellsOfAHelpDisplayThatFails) {
  host->record.FailOn("App.HelpTopic", 1, Failure(FailureNumber::kDeviceError, "torn"));
  WhenListed([](MemoryEdtForm&, EdtFormEvents& events) { events.ShowHelp(1); });
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("The help cannot be shown: torn"));
}

TEST_F(DefinitionBrowserTest, RenewsTheArchiveCopyWhenTheWindowSaves) {
  WriteSouth();
  Edit(1);
  Cancel(kEditor);
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    EXPECT_FALSE(folder.Has(CopyOf(1)));
    bool saved = false;
    events.EditSave(saved);
    EXPECT_TRUE(saved);
    EXPECT_EQ(folder.Read(CopyOf(1)), folder.Read("SOUTH.QDX"));
  });
  Browse();
}

// --- Buttons ---------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, NeedsARecordForEveryButton) {
  for (const Integer button : {kImportOne, kImportAll, kRefresh}) Press(button, 0);
  Press(kRefresh, -1);
  Browse();
  ExpectWarnings({kNoRecord, kNoRecord, kNoRecord, kNoRecord});  // also on an empty list: meant
  EXPECT_THAT(host->factory.reports, IsEmpty());
}

TEST_F(DefinitionBrowserTest, RefreshesWhatIsListed) {
  WriteSouth();
  WhenListed([&](MemoryEdtForm& form, EdtFormEvents& events) {
    std::filesystem::remove(Path("SOUTH.QDX"));
    events.ActionButton(kRefresh, 1);
    EXPECT_EQ(form->rows.at(0).cells.at(4), "False");
  });
  Browse();
}

TEST_F(DefinitionBrowserTest, ImportsTheFileOfOneDefinitionAsTheUserConfirms) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(7, ByHand("SOUTH.QDX"));
  Press(kImportOne, 1);
  Look<dlgQDXImp>(kImport, [&](dlgQDXImp& dialog) {
    EXPECT_EQ(dialog.Caption(), "Edit QDX Import Layout Number: 7");
    EXPECT_EQ(dialog.Text1.Text(), "By hand");
    EXPECT_EQ(dialog.FontName(), "Sans");
    EXPECT_EQ(dialog.Math(), 3);
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  });
  Accept(kImport);
  Browse();
  EXPECT_EQ(Sales(), 7);
  EXPECT_EQ(LastReport().title, "QDX Import Report");
  EXPECT_EQ(LastReport().owner, 7001) << "the list window";
  EXPECT_THAT(LastReport().widths, ElementsAre(1, 3, 1, 3));
  EXPECT_EQ(LastReport().column_mode, 1);
  EXPECT_TRUE(LastReport().ended);
  EXPECT_THAT(host->record.calls, Contains("InitReportPrinter"));
  EXPECT_THAT(host->record.ArgumentsOf("PrintReportHeader"), ElementsAre("QDX Import"));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  EXPECT_EQ(TheForms().QDXImp.IfThere(), nullptr);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionBrowserTest, AddsOnTopWhereTheUserChoosesSo) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(1, ByHand("SOUTH.QDX"));
  book().Set(101, DateFromParts(2004, 2, 3), 1, 5);
  Press(kImportOne, 1);
  user().Choose(kImport, "Combo4", "Added");
  Accept(kImport);
  Browse();
  EXPECT_EQ(Sales(), 12);
}

TEST_F(DefinitionBrowserTest, ImportsNothingWhereTheUserCancels) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(1, ByHand("SOUTH.QDX"));
  Press(kImportOne, 1);
  Cancel(kImport);
  Browse();
  EXPECT_EQ(Sales(), 0);
  EXPECT_THAT(host->factory.reports, IsEmpty());
}

TEST_F(DefinitionBrowserTest, ImportsNothingWhereTheReportIsDeclinedAndRefreshesTheList) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(1, ByHand("SOUTH.QDX"));
  host->record.GiveFalseOn("Printer.BeginReport", 1);
  Press(kImportOne, 1);
  Accept(kImport);
  WhenListed(
      [&](MemoryEdtForm&, EdtFormEvents&) { EXPECT_THAT(host->record.ArgumentsOf("EdtForm.ClearList"), SizeIs(2)); });
  Browse();
  EXPECT_EQ(Sales(), 0);
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionBrowserTest, RefusesToImportAFileThatIsNotThere) {
  WriteDefinition(1, {.qdx_file = Path("NONE*.QDX")});
  Press(kImportOne, 1);
  Browse();
  ExpectWarnings({kNotThere});
}

TEST_F(DefinitionBrowserTest, ShowsNoHeaderForAPatternInTheConfirmationAndImportsAllItsFiles) {
  WriteQdx("DAY1.QDX");
  WriteQdx("DAY2.QDX");
  WriteDefinition(1, ByHand("DAY*.QDX"));
  Press(kImportOne, 1);
  Look<dlgQDXImp>(kImport, [&](dlgQDXImp& dialog) { EXPECT_EQ(dialog.QDXGrid.Cell(1, 1), ""); });
  user().Choose(kImport, "Combo4", "Added");
  Accept(kImport);
  Browse();
  EXPECT_EQ(Sales(), 14);
}

TEST_F(DefinitionBrowserTest, TellsOfAReportThatFailsAndRefreshesTheListAllTheSame) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(1, ByHand("SOUTH.QDX"));
  host->record.FailOn("Printer.EndReport", 1, Failure(FailureNumber::kDiskFull, "no room for the report"));
  Press(kImportOne, 1);
  Accept(kImport);
  WhenListed([&](MemoryEdtForm& form, EdtFormEvents&) {
    EXPECT_TRUE(form->open);
    EXPECT_THAT(host->record.ArgumentsOf("EdtForm.ClearList"), SizeIs(2));
  });
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("no room for the report"));
  EXPECT_EQ(TheForms().QDXImp.IfThere(), nullptr);
}

TEST_F(DefinitionBrowserTest, ImportsAllAndRefreshesTheListWhereAllWentThrough) {
  WriteQdx("A.QDX");
  WriteQdx("B.QDX");
  StoredDefinition renaming = ByHand("A.QDX");
  renaming.disp = 2;
  WriteDefinition(1, renaming);
  WriteDefinition(2, {.title = "Second", .qdx_file = Path("NONE.QDX")});
  Press(kImportAll, 2);
  Browse();
  EXPECT_EQ(Sales(), 7);
  EXPECT_EQ(CellsOf(Listed(), 0).at(4), "False") << "the file bears another name now, and the list knows";
  EXPECT_THAT(host->record.ArgumentsOf("PrintReportHeader"), ElementsAre("QDX Import"));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(DefinitionBrowserTest, LeavesTheListAsItIsWhereOneOfAllFails) {
  StoredDefinition renaming = ByHand("A.QDX");
  renaming.disp = 2;
  WriteQdx("A.QDX");
  WriteDefinition(1, renaming);
  folder.Write("BAD.QDX", "no exchange file at all");
  WriteDefinition(2, {.title = "Bad", .qdx_file = Path("BAD.QDX")});
  Press(kImportAll, 1);
  Browse();
  EXPECT_EQ(Sales(), 7);
  EXPECT_EQ(CellsOf(Listed(), 0).at(4), "True");
  EXPECT_THAT(Boxes(), Contains(HasSubstr("At least one set of QDX files")));
}

// --- Account numbers -------------------------------------------------------------------------------------------------

class LargeAccountNumbersTest : public DefinitionsFixture {
 protected:
  LargeAccountNumbersTest() : DefinitionsFixture(LargeBook()) {
    book().AddAccount(40'000, "BIG");
    book().AddAccount(50'000, "BIGGER");
  }
  static BookShape LargeBook() {
    BookShape shape;
    shape.max_accounts = 99'999;
    return shape;
  }
};

TEST_F(LargeAccountNumbersTest, AreLeftOutOfTheEditorWithOneLineInTheLog) {
  WhenListed([](MemoryEdtForm&, EdtFormEvents&) {
    EXPECT_EQ(TheForms().Editor.IfThere()->Combo5.ListCount(), 4);
    EXPECT_EQ(TheForms().Editor.IfThere()->Grids().ListOf(MatchPage::kAccounts).ListCount(), 4);
  });
  Browse();
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message,
            "Accounts left out of exchange definitions, as their numbers are above 32767: 2 - frmDataExc");
}

TEST_F(LargeAccountNumbersTest, AreToldWhereADefinitionAsksForOneAndOpenNoEditor) {
  WriteQdx("SOUTH.QDX");
  WriteDefinition(1, {.qdx_file = Path("SOUTH.QDX"), .accounts = {{"100", "BIG"}}});
  Edit(1);
  Browse();
  ASSERT_THAT(Boxes(), SizeIs(1));
  EXPECT_THAT(Boxes()[0], HasSubstr("40000"));
}

// --- Add -------------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, AddsADefinition) {
  WriteQdx("SOUTH.QDX");
  Add();
  ChooseFile("SOUTH.QDX");
  LookAtEditor([&](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Caption(), "Add QDX Import Layout Number: 0") << "of the record that the window named: meant";
    EXPECT_EQ(editor.Text1.Text(), "DataExchange #1");
    EXPECT_EQ(editor.Text2.Text(), Path("SOUTH.QDX"));
    EXPECT_EQ(editor.Combo1.SelectedText(), "Renamed (*.XDQ)");
    EXPECT_TRUE(editor.CancelEnabled());
    EXPECT_THAT(Keys(), ElementsAre("K1")) << "listed from now on";
    EXPECT_THAT(CellsOf(Listed(), 0), ElementsAre("DataExchange #1", "   1", "TBQDX1.NORTH", "", "False", "0"))
        << "before the file is on it";
    EXPECT_FALSE(folder.Has(FileOf(1)));
  });
  user().Type(kEditor, "Text1", "South  ");
  Accept(kEditor);
  Browse();
  EXPECT_EQ(folder.Read(FileOf(1)),
            (StoredDefinition{.title = "South", .qdx_file = Path("SOUTH.QDX"), .disp = 2}.Bytes()));
  EXPECT_THAT(Titles(), ElementsAre("South"));
  EXPECT_EQ(Listed().totals, "1 active of 999 maximum");
  EXPECT_EQ(folder.Read(CopyOf(1)), folder.Read("SOUTH.QDX"));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionBrowserTest, AsksForTheFileInItsOwnWordsOverTheList) {
  LimitBrowsing();
  Add();
  Look<frmImport>(kPrompt, [&](frmImport& prompt) {
    EXPECT_EQ(prompt.Caption(), "Open QDX File");
    EXPECT_EQ(prompt.Label1[0].Caption(), "Enter the name of the QDX File");
    EXPECT_EQ(prompt.Text1.Text(), "");
    EXPECT_EQ(prompt.FontName(), "Sans");
    EXPECT_FALSE(prompt.FullBrowsing());
  });
  Cancel(kPrompt);
  Browse();
  EXPECT_THAT(Keys(), IsEmpty());
  EXPECT_EQ(Listed().totals, "0 active of 999 maximum");
}

TEST_F(DefinitionBrowserTest, LeavesNothingOfAnAddThatIsCancelled) {
  WriteSouth();
  for (int time = 0; time < 2; ++time) {
    Add(1);
    ChooseFile("SOUTH.QDX");
    LookAtEditor([](DefinitionEditor& editor) {
      EXPECT_EQ(editor.Caption(), "Add QDX Import Layout Number: 1");
      EXPECT_EQ(editor.Text1.Text(), "DataExchange #2") << "the first free number stays free";
    });
    Cancel(kEditor);
    Answer({kOk});
  }
  Press(kRefresh, 1);
  Browse();
  EXPECT_FALSE(folder.Has(FileOf(2)));
  EXPECT_THAT(Titles(), ElementsAre("South"));
  EXPECT_THAT(Boxes(), Each("Ok to exit without saving changes?"));
}

TEST_F(DefinitionBrowserTest, LeavesTheTitleOfTheSelectedDefinitionAloneWhereAnotherIsAdded) {
  WriteSouth();
  Edit(1);
  Cancel(kEditor);
  Add(1);
  ChooseFile("SOUTH.QDX");
  Cancel(kEditor);
  Answer({kOk});
  Press(kRefresh, 1);
  Browse();
  EXPECT_THAT(Titles(), ElementsAre("South"));
}

TEST_F(DefinitionBrowserTest, StartsThePickerFromTheStoredNameOfTheSelectedDefinition) {
  WriteSouth();
  Edit(1);
  user().Type(kEditor, "Text2", "/typed/OTHER.QDX");
  Cancel(kEditor);
  Answer({kOk});
  Add(1);
  Look<frmImport>(kPrompt, [&](frmImport& prompt) { EXPECT_EQ(prompt.Text1.Text(), Path("SOUTH.QDX")); });
  Cancel(kPrompt);
  Browse();
}

TEST_F(DefinitionBrowserTest, LeavesTheNewRowWhereTheFileCannotBeRead) {
  folder.Write("BAD.QDX", "no exchange file at all");
  Add();
  ChooseFile("BAD.QDX");
  WhenListed([&](MemoryEdtForm& form, EdtFormEvents& events) {
    EXPECT_THAT(form->rows, SizeIs(1));
    EXPECT_EQ(form->totals, "0 active of 999 maximum");
    events.ActionButton(kRefresh, 1);
    EXPECT_THAT(form->rows, IsEmpty());
  });
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("File is NOT an QDX file."));
  EXPECT_FALSE(folder.Has(FileOf(1)));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(DefinitionBrowserTest, TellsThatTheStoreIsFullAndAddsNoRow) {
  WriteQdx("SOUTH.QDX");
  for (int number = 1; number <= 999; ++number) WriteDefinition(number, {.qdx_file = Path("SOUTH.QDX")});
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    Integer record = 1;
    events.AddRec(record);
    EXPECT_EQ(record, 1);
  });
  ChooseFile("SOUTH.QDX");
  Browse();
  EXPECT_THAT(Listed().rows, SizeIs(999));
  EXPECT_THAT(Boxes(), ElementsAre("There are 999 exchange definitions already, and there can be no more"));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(DefinitionBrowserTest, ListsWhatTheMenuSavedWhereAnAddIsCancelledAfterwards) {
  WriteQdx("SOUTH.QDX");
  Add();
  ChooseFile("SOUTH.QDX");
  Menu(DefinitionEditor::kMenuSave);
  Cancel(kEditor);
  Browse();
  EXPECT_TRUE(folder.Has(FileOf(1)));
  EXPECT_THAT(Keys(), ElementsAre("K1"));
  EXPECT_EQ(Listed().totals, "1 active of 999 maximum");
}

TEST_F(DefinitionBrowserTest, KeepsARowWhereADefinitionCannotBeWritten) {
  WriteQdx("SOUTH.QDX");
  Add();
  ChooseFile("SOUTH.QDX");
  user().Do([&] { platform.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull); });
  Accept(kEditor);
  Answer({kCancel});
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: " + Path(FileOf(1))));
  EXPECT_FALSE(folder.Has(CopyOf(1)));
  EXPECT_EQ(Listed().totals, "0 active of 999 maximum");
}

// --- Edit ------------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, EditsADefinition) {
  WriteSouth();
  Edit(1);
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_EQ(editor.Caption(), "Edit QDX Import Layout Number: 1"); });
  user().Type(kEditor, "Text1", "Southern").Choose(kEditor, "Combo1", "Deleted");
  Accept(kEditor);
  Browse();
  EXPECT_EQ(folder.Read(FileOf(1)),
            (StoredDefinition{.title = "Southern", .qdx_file = Path("SOUTH.QDX"), .disp = 1}.Bytes()));
  EXPECT_THAT(Titles(), ElementsAre("Southern"));
  EXPECT_EQ(folder.Read(CopyOf(1)), folder.Read("SOUTH.QDX"));
}

TEST_F(DefinitionBrowserTest, LeavesRowAndArchiveCopyAsTheyAreWhereAnEditedDefinitionCannotBeWritten) {
  WriteSouth();
  Edit(1);
  user().Type(kEditor, "Text1", "Southern");
  user().On(kEditor, [this](Form&) { platform.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull); });
  Accept(kEditor);
  Answer({kCancel});
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: " + Path(FileOf(1))));
  EXPECT_THAT(Titles(), ElementsAre("South"));
  EXPECT_FALSE(folder.Has(CopyOf(1)));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(DefinitionBrowserTest, LeavesADefinitionAsItIsWhereTheEditorIsCancelled) {
  WriteSouth();
  const std::string before = folder.Read(FileOf(1));
  Edit(1);
  user().Type(kEditor, "Text1", "Southern");
  Cancel(kEditor);
  Answer({kOk});
  Edit(1);
  user().Type(kEditor, "Text1", "Southern").Close(kEditor);
  Answer({kOk});
  Browse();
  EXPECT_EQ(folder.Read(FileOf(1)), before);
  EXPECT_THAT(Titles(), ElementsAre("South"));
  EXPECT_FALSE(folder.Has(CopyOf(1)));
}

TEST_F(DefinitionBrowserTest, RefusesToEditWithoutAFile) {
  WriteDefinition(1, {.qdx_file = Path("NONE.QDX")});
  WriteDefinition(2, {.qdx_file = Path("NONE*.QDX")});
  Edit(1);
  Edit(2);
  Browse();
  ExpectWarnings({kCannotEdit, kCannotEdit});
}

TEST_F(DefinitionBrowserTest, RefusesToEditWithAFileThatCannotBeRead) {
  folder.Write("BAD.QDX", "no exchange file at all");
  WriteDefinition(1, {.qdx_file = Path("BAD.QDX")});
  const std::string before = folder.Read(FileOf(1));
  Edit(1);
  Browse();
  EXPECT_EQ(folder.Read(FileOf(1)), before);
  EXPECT_THAT(Boxes(), ElementsAre("File is NOT an QDX file.", kCannotEdit));
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
}

TEST_F(DefinitionBrowserTest, EditsWithTheArchiveCopyWhereTheFileIsGone) {
  folder.Write(CopyOf(1), SouthShop().Bytes());
  WriteDefinition(1, {.qdx_file = Path("GONE.QDX"), .accounts = {{"200", "200"}}});
  Edit(1);
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_EQ(editor.QDXGrid.Cell(0, 1), "Archive Copy");
    EXPECT_EQ(editor.Grids().Match(MatchPage::kAccounts, 2), 102);
  });
  user().Type(kEditor, "Text1", "Renamed");
  Accept(kEditor);
  Browse();
  EXPECT_EQ(folder.Read(FileOf(1)),
            (StoredDefinition{.title = "Renamed", .qdx_file = Path("GONE.QDX"), .accounts = {{"200", "200"}}}.Bytes()));
  EXPECT_EQ(folder.Read(CopyOf(1)), SouthShop().Bytes());
}

// --- Delete ----------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, DeletesADefinitionAndLeavesItsExchangeFile) {
  WriteQdx("SOUTH.QDX");
  for (const int number : {1, 2, 3})
    WriteDefinition(number, {.title = "Title " + std::to_string(number), .qdx_file = Path("SOUTH.QDX")});
  Delete(2);
  Answer({kOk});
  Browse();
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{"Ok to Delete Exchange Definition # 2", kQuestionBox, "Tallybook", kOk}));
  EXPECT_THAT(host->record.ArgumentsOf("EdtForm.RemoveRow"), Contains("K2")) << "by the number before";
  EXPECT_FALSE(folder.Has(FileOf(2)));
  EXPECT_TRUE(folder.Has("SOUTH.QDX"));
  EXPECT_THAT(Titles(), ElementsAre("Title 1", "Title 3"));
  EXPECT_EQ(Listed().totals, "2 active of 999 maximum");
}

TEST_F(DefinitionBrowserTest, DeletesNothingWithoutAnOkAndNothingThatIsHeld) {
  WriteSouth();
  Delete(1);
  Answer({kCancel});
  WhenListed([&](MemoryEdtForm&, EdtFormEvents& events) {
    platform.files.FailNth(FileCall::kDelete, 1, FailureNumber::kPermissionDenied);
    platform.boxes.Answer({kOk});
    events.DeleteRec(1);
  });
  Browse();
  EXPECT_TRUE(folder.Has(FileOf(1)));
  EXPECT_THAT(Keys(), ElementsAre("K1"));
}

TEST_F(DefinitionBrowserTest, AddsBehindWhatIsLeftAfterADeletion) {
  WriteQdx("SOUTH.QDX");
  for (const int number : {1, 2, 3})
    WriteDefinition(number, {.title = "Title " + std::to_string(number), .qdx_file = Path("SOUTH.QDX")});
  Delete(1);
  Answer({kOk});
  Add(1);
  ChooseFile("SOUTH.QDX");
  Accept(kEditor);
  Edit(2);
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_EQ(editor.Text1.Text(), "Title 3"); });
  Cancel(kEditor);
  Browse();
  EXPECT_THAT(Titles(), ElementsAre("Title 2", "Title 3", "DataExchange #1"));
}

TEST_F(DefinitionBrowserTest, KeepsTheSelectedDefinitionSelectedOverADeletion) {
  WriteQdx("SOUTH.QDX");
  for (const int number : {1, 2, 3})
    WriteDefinition(number, {.qdx_file = Path("FILE" + std::to_string(number) + "*.QDX")});
  for (const int number : {1, 2, 3}) WriteQdx("FILE" + std::to_string(number) + ".QDX");
  Edit(3);
  Cancel(kEditor);
  Delete(1);
  Answer({kOk});
  Add(1);
  Look<frmImport>(kPrompt, [&](frmImport& prompt) { EXPECT_EQ(prompt.Text1.Text(), Path("FILE3*.QDX")); });
  Cancel(kPrompt);
  Browse();
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(DefinitionBrowserTest, ShowsNothingWhereTheDefinitionsCannotBeLoaded) {
  host->record.FailOn("NewFieldRecord", 1, Failure(FailureNumber::kDeviceError, "no", "Engine"));
  EXPECT_FALSE(gui.ImportQDX(owner, book(), 1, 0));
  EXPECT_EQ(Listed().shown, 0);
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Engine - CDataExchangeGUI:ImportQDX");
  EXPECT_FALSE(book().progress.open);
  EXPECT_EQ(TheForms().Editor.IfThere(), nullptr);
}

}  // namespace
}  // namespace tallybook::testing
