// The editor of a definition, as the user meets it over the list.
#include <filesystem>

#include "dialogs/DefinitionEditor.h"
#include "tests/dialogs/DefinitionsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

constexpr Integer kGeneralTab = 1;
constexpr Integer kAccountsTab = 2;
constexpr Integer kFieldsTab = 3;
const Text kUnsaved = "Ok to exit without saving changes?";

std::vector<Text> Entries(const ListControl& list) {
  std::vector<Text> entries;
  for (Integer i = 0; i < list.ListCount(); ++i) entries.push_back(list.List(i));
  return entries;
}

class DefinitionEditorTest : public DefinitionsFixture {
 protected:
  DefinitionEditorTest() { WriteQdx("SOUTH.QDX"); }

  // Definition 1, of the file SOUTH.QDX unless it says otherwise.
  void Store(StoredDefinition definition) {
    if (definition.qdx_file.empty()) definition.qdx_file = Path("SOUTH.QDX");
    WriteDefinition(1, definition);
  }
  // What is on disk now.
  [[nodiscard]] std::string Stored(int number = 1) const { return folder.Read(FileOf(number)); }
  [[nodiscard]] std::string Bytes(StoredDefinition definition) const {
    if (definition.qdx_file.empty()) definition.qdx_file = Path("SOUTH.QDX");
    return definition.Bytes();
  }
  // Opens definition 1, runs the script, and closes the list.
  void Run() {
    Edit(1);
    Browse();
  }
  // Input is handled within a change of pages, so the next step waits until that is over.
  void ChooseTab(Integer tab) {
    LookAtEditor([tab](DefinitionEditor& editor) { EXPECT_TRUE(TheHands().ChooseTab(editor.TabStrip1, tab)); });
    user().Wait(3);
  }
  void PressKeys(MatchPage page, const Text& keys) {
    LookAtEditor([page, keys](DefinitionEditor& editor) { TheHands().TypeAt(editor.Grids().ListOf(page), keys); });
  }
  void ExpectUnchanged() {
    LookAtEditor([](DefinitionEditor& editor) { EXPECT_FALSE(editor.CancelEnabled()); });
  }
};

// --- Words and lists -------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, BearsItsWords) {
  Store({});
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Text1.Caption(), "&Title:");
    EXPECT_THAT(editor.TabStrip1.Tabs(), ElementsAre("&General", "&Accounts", "&Fields"));
    EXPECT_EQ(editor.Text2.Caption(), "QDX Filename: ");
    EXPECT_EQ(editor.Command2.Hint(), "Browse for File ...");
    EXPECT_EQ(editor.Combo1.Caption(), "When imported, the QDX file will be: ");
    EXPECT_EQ(editor.Combo2.Caption(), "Match Accounts: ");
    EXPECT_EQ(editor.Combo3.Caption(), "Match Datafields: ");
    EXPECT_EQ(editor.Combo5.Caption(), " Which Account:");
    EXPECT_EQ(editor.Command1.Caption(), "&Print");
    EXPECT_EQ(editor.SaveButtons1.Caption(), "&Save");
    const auto entry = [&](Integer index) { return editor.Find("mnuFile", index)->Caption(); };
    EXPECT_EQ(entry(0), "&Save changes");
    EXPECT_EQ(entry(1), "Save &As New");
    EXPECT_EQ(entry(4), "Print DataExchange &Layout");
    EXPECT_EQ(entry(10), "&Close");
    EXPECT_THAT(Entries(editor.Combo1), ElementsAre("Deleted", "Renamed (*.XDQ)", "Kept"));
    EXPECT_THAT(Entries(editor.Combo2), ElementsAre("Manually", "One-for-One", "All-to-One"));
    EXPECT_THAT(Entries(editor.Combo3), ElementsAre("Manually", "One-for-One"));
  });
  Cancel(kEditor);
  Run();
}

TEST_F(DefinitionEditorTest, OffersTheAccountsAndFieldsOfTheBook) {
  book().AddAccount(300, "050", "First by code");
  Store({});
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_THAT(Entries(editor.Combo5), ElementsAre(" (not defined)", "100 - Front of shop", "200 - Back of shop",
                                                    "300 - Yard", "050 - First by code"))
        << "in the order of the book's list";
    EXPECT_EQ(editor.Combo5.ItemData(4), 300);
    EXPECT_EQ(editor.Combo5.ItemData(0), 0);
    EXPECT_THAT(Entries(editor.Grids().ListOf(MatchPage::kAccounts)),
                ElementsAre(" (not to be sent)", "050", "100", "200", "300"));
    EXPECT_THAT(Entries(editor.Grids().ListOf(MatchPage::kFields)),
                ElementsAre(" (not to be sent)", "Customers", "Sales", "Weather"));
  });
  Cancel(kEditor);
  Run();
}

TEST_F(DefinitionEditorTest, ShowsTheDefinitionAndTheHeaderOfItsFile) {
  Store({.title = "South", .disp = 1, .fld_match = -1, .acct_match = -2, .acct_all = 205});
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Text1.Text(), "South");
    EXPECT_EQ(editor.Text2.Text(), Path("SOUTH.QDX"));
    EXPECT_EQ(editor.Combo1.SelectedText(), "Deleted");
    EXPECT_EQ(editor.Combo2.SelectedText(), "All-to-One");
    EXPECT_EQ(editor.Combo3.SelectedText(), "One-for-One");
    EXPECT_EQ(editor.Combo5.SelectedText(), "300 - Yard");
    EXPECT_EQ(editor.QDXGrid.Cell(0, 0), "Filename:");
    EXPECT_EQ(editor.QDXGrid.Cell(0, 1), Path("SOUTH.QDX"));
    EXPECT_EQ(editor.QDXGrid.Cell(1, 1), "South Shop");
    EXPECT_EQ(editor.QDXGrid.Cell(5, 1), "Day");
    EXPECT_EQ(editor.CurrentPage(), 0);
    EXPECT_FALSE(editor.CancelEnabled()) << "nothing differs yet";
    EXPECT_FALSE(editor.SaveButtons1.CancelEnabled());
    EXPECT_TRUE(editor.EditCancelled());
    EXPECT_FALSE(editor.Grids().Loading());
  });
  Cancel(kEditor);
  Run();
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionEditorTest, ShowsTheFileBehindAPattern) {
  Store({.qdx_file = Path("SOU*.QDX")});
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Text2.Text(), Path("SOU*.QDX"));
    EXPECT_EQ(editor.QDXGrid.Cell(0, 1), Path("SOUTH.QDX"));
    EXPECT_EQ(editor.Grids().GridOf(MatchPage::kAccounts).Rows(), 4);
  });
  Cancel(kEditor);
  Run();
}

TEST_F(DefinitionEditorTest, ShowsTheStoredMatches) {
  Store({.fields = {{8, 2}}, .accounts = {{"900", "300"}, {"100", "200"}}});
  LookAtEditor([](DefinitionEditor& editor) {
    const MatchGrids& grids = editor.Grids();
    EXPECT_EQ(grids.Match(MatchPage::kAccounts, 1), 102);
    EXPECT_EQ(grids.Match(MatchPage::kAccounts, 2), 0);
    EXPECT_EQ(grids.Match(MatchPage::kAccounts, 3), 205);
    EXPECT_EQ(grids.Match(MatchPage::kFields, 8), 2);
    const Grid& accounts = editor.Grids().GridOf(MatchPage::kAccounts);
    EXPECT_EQ(accounts.Cell(1, 2), "200");
    EXPECT_EQ(accounts.Cell(2, 3), "Not to be sent");
  });
  Cancel(kEditor);
  Run();
}

TEST_F(DefinitionEditorTest, StaysLoadingAfterALoadThatFailsUntilOneThatDoesNot) {
  folder.Write("BAD.QDX", "no exchange file at all");
  WriteDefinition(1, {.title = "Bad", .qdx_file = Path("BAD.QDX")});
  WriteDefinition(2, {.title = "Good", .qdx_file = Path("SOUTH.QDX")});
  Edit(1);
  WhenListed([](MemoryEdtForm&, EdtFormEvents&) {
    DefinitionEditor& editor = *TheForms().Editor.IfThere();
    EXPECT_TRUE(editor.Grids().Loading());
    EXPECT_EQ(editor.Text1.Text(), "Bad") << "the definition is the selected one, and partly shown";
    EXPECT_FALSE(editor.Visible());
  });
  Edit(2);
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_FALSE(editor.Grids().Loading());
    EXPECT_EQ(editor.Text1.Text(), "Good");
  });
  Cancel(kEditor);
  Browse();
}

// --- Changes ---------------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, TakesEveryControlForAChange) {
  Store({.acct_match = -2});
  const std::vector<std::function<void(DefinitionEditor&)>> acts = {
      [](DefinitionEditor& editor) { TheHands().Replace(editor.Text1, "Other"); },
      [](DefinitionEditor& editor) { TheHands().Replace(editor.Text2, "Other.QDX"); },
      [](DefinitionEditor& editor) { TheHands().Choose(editor.Combo1, 0); },
      [](DefinitionEditor& editor) { TheHands().Choose(editor.Combo2, 0); },
      [](DefinitionEditor& editor) { TheHands().Choose(editor.Combo3, 1); },
      [](DefinitionEditor& editor) { TheHands().Choose(editor.Combo5, 1); }};
  for (const auto& act : acts) {
    Edit(1);
    LookAtEditor([act](DefinitionEditor& editor) {
      EXPECT_FALSE(editor.CancelEnabled());
      act(editor);
      EXPECT_TRUE(editor.CancelEnabled());
    });
    Cancel(kEditor);
    Answer({kOk});
  }
  Browse();
  EXPECT_THAT(Boxes(), SizeIs(6));
}

TEST_F(DefinitionEditorTest, AsksForTheReceivingAccountOnlyWhereAllGoToOne) {
  Store({});
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_FALSE(editor.Combo5.Enabled());
    EXPECT_TRUE(editor.Combo5.Visible());
    TheHands().Choose(editor.Combo2, 2);
    EXPECT_TRUE(editor.Combo5.Enabled());
    TheHands().Choose(editor.Combo2, 1);
    EXPECT_FALSE(editor.Combo5.Enabled());
  });
  Cancel(kEditor);
  Answer({kOk});
  Run();
}

TEST_F(DefinitionEditorTest, TakesAChangeOnAPageOfMatchesForOne) {
  Store({});
  ChooseTab(kAccountsTab);
  ExpectUnchanged();
  PressKeys(MatchPage::kAccounts, "1");
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_TRUE(editor.CancelEnabled()); });
  Cancel(kEditor);
  Answer({kOk});
  Run();
  EXPECT_THAT(Boxes(), ElementsAre(kUnsaved));
}

TEST_F(DefinitionEditorTest, LeavesCancelAsItIsWhereOnlyThePageChanges) {
  Store({.accounts = {{"100", "100"}}});
  for (const Integer tab : {kAccountsTab, kFieldsTab, kGeneralTab}) {
    ChooseTab(tab);
    ExpectUnchanged();
  }
  Cancel(kEditor);
  Run();
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionEditorTest, RefusesThePageOfWhatIsNotMatchedByHandWithASound) {
  Store({.acct_match = -1});
  LookAtEditor([this](DefinitionEditor& editor) {
    TheHands().ChooseTab(editor.TabStrip1, kAccountsTab);
    EXPECT_EQ(editor.TabStrip1.Selected(), kGeneralTab);
    EXPECT_EQ(editor.CurrentPage(), 0);
    EXPECT_TRUE(editor.GeneralPage.Visible());
    EXPECT_THAT(platform.boxes.Sounds(), ElementsAre("SystemDefault"));
    TheHands().ChooseTab(editor.TabStrip1, kFieldsTab);
    EXPECT_EQ(editor.CurrentPage(), 2);
    EXPECT_FALSE(editor.GeneralPage.Visible());
    EXPECT_THAT(platform.boxes.Sounds(), SizeIs(1));
  });
  Cancel(kEditor);
  Run();
  EXPECT_THAT(Boxes(), IsEmpty());
}

// --- Saving ----------------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, StoresOnlyWhatIsSentInTheOrderOfTheFile) {
  Store({.fields = {{8, 1}, {1, 2}}, .accounts = {{"900", "100"}, {"100", "300"}}});
  ChooseTab(kAccountsTab);
  PressKeys(MatchPage::kAccounts, "0");
  ChooseTab(kGeneralTab);
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({.fields = {{1, 2}, {8, 1}}, .accounts = {{"900", "100"}}}));
}

TEST_F(DefinitionEditorTest, StoresNoRowsWhereNothingIsSent) {
  Store({.fields = {{1, 1}}, .accounts = {{"100", "100"}}});
  ChooseTab(kAccountsTab);
  PressKeys(MatchPage::kAccounts, "000");
  ChooseTab(kFieldsTab);
  PressKeys(MatchPage::kFields, "000");
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({}));
}

TEST_F(DefinitionEditorTest, CommitsNothingOnPagesThatWereNotEntered) {
  const StoredDefinition definition{.fields = {{1, 1}}, .accounts = {{"100", "100"}, {"200", "300"}}};
  Store(definition);
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes(definition));
}

TEST_F(DefinitionEditorTest, StoresTheCodesOfItsLists) {
  Store({});
  user().Choose(kEditor, "Combo1", "Deleted").Choose(kEditor, "Combo2", "All-to-One");
  user().Choose(kEditor, "Combo3", "One-for-One").Choose(kEditor, "Combo5", "200 - Back of shop");
  user().Type(kEditor, "Text1", "  Other  ").Type(kEditor, "Text2", Path("SOU*.QDX"));
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({.title = "  Other",
                             .qdx_file = Path("SOU*.QDX"),
                             .disp = 1,
                             .fld_match = -1,
                             .acct_match = -2,
                             .acct_all = 102}));
}

TEST_F(DefinitionEditorTest, ForgetsAReceivingAccountThatThereIsNoMore) {
  Store({.acct_match = -2, .acct_all = 999});
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_EQ(editor.Combo5.SelectedText(), " (not defined)"); });
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({.acct_match = -2, .acct_all = 0}));
}

TEST_F(DefinitionEditorTest, KeepsCodesThatItDoesNotKnow) {
  Store({.disp = 9, .fld_match = 3, .acct_match = -5});
  LookAtEditor([](DefinitionEditor& editor) {
    for (const ComboBox* list : {&editor.Combo1, &editor.Combo2, &editor.Combo3})
      EXPECT_EQ(list->ListIndex(), kNoEntry);
  });
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({.disp = 9, .fld_match = 3, .acct_match = -5}));
}

TEST_F(DefinitionEditorTest, AcceptsAnEmptyTitleWhichTakesTheDefinitionOffTheList) {
  Store({});
  user().Type(kEditor, "Text1", "");
  Accept(kEditor);
  Press(3, 1);
  Edit(1);
  Cancel(kEditor);
  Run();
  EXPECT_EQ(Stored(), Bytes({.title = ""}));
}

TEST_F(DefinitionEditorTest, LetsTwoDefinitionsBearOneTitle) {
  Store({.title = "South"});
  WriteDefinition(2, {.title = "North", .qdx_file = Path("SOUTH.QDX")});
  Edit(2);
  user().Type(kEditor, "Text1", "South");
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_FALSE(editor.TitleIsUnique(" south ", 2));
    EXPECT_TRUE(editor.TitleIsUnique("South", 1));
    EXPECT_TRUE(editor.TitleIsUnique("East", 2));
    EXPECT_THAT(Boxes(), ElementsAre("QDX Title is not unique"));
    EXPECT_EQ(platform.boxes.Shown()[0].style, kExclamationIcon);
  });
  Accept(kEditor);
  Browse();
  EXPECT_THAT(Titles(), ElementsAre("South", "South"));
}

// --- The menu --------------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, SavesFromTheMenuAndStaysOpen) {
  Store({});
  user().Type(kEditor, "Text1", "Saved");
  Menu(DefinitionEditor::kMenuSave);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_FALSE(editor.CancelEnabled());
    EXPECT_TRUE(editor.EditCancelled());
    EXPECT_EQ(Stored(), Bytes({.title = "Saved"}));
    EXPECT_THAT(Titles(), ElementsAre("Saved"));
    EXPECT_EQ(folder.Read(CopyOf(1)), folder.Read("SOUTH.QDX"));
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  });
  Cancel(kEditor);
  Run();
  EXPECT_THAT(Boxes(), IsEmpty()) << "nothing is lost by leaving now";
}

TEST_F(DefinitionEditorTest, StaysChangedWhereTheDefinitionCannotBeWritten) {
  Store({});
  user().Type(kEditor, "Text1", "Saved");
  user().On(kEditor, [this](Form&) { platform.files.FailNth(FileCall::kWrite, 1, FailureNumber::kDiskFull); });
  Menu(DefinitionEditor::kMenuSave);
  Answer({kCancel});
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_TRUE(editor.CancelEnabled());
    EXPECT_THAT(Titles(), ElementsAre("South"));
  });
  Cancel(kEditor);
  Answer({kOk});
  Run();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: " + Path(FileOf(1)), kUnsaved));
}

TEST_F(DefinitionEditorTest, TellsAFailureAndStaysWithAllItHolds) {
  Store({});
  user().Type(kEditor, "Text1", "Kept");
  user().On(kEditor, [this](Form&) {
    host->record.FailOn("EdtForm.RemoveRow", 1, Failure(FailureNumber::kDeviceError, "no such row today"));
  });
  Menu(DefinitionEditor::kMenuSave);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_TRUE(editor.Visible());
    EXPECT_EQ(editor.Text1.Text(), "Kept");
    EXPECT_TRUE(editor.CancelEnabled());
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  });
  Menu(DefinitionEditor::kMenuSave);
  Cancel(kEditor);
  Run();
  EXPECT_THAT(Boxes(), ElementsAre("no such row today"));
  EXPECT_EQ(platform.boxes.Shown()[0].caption, "Tallybook");
  EXPECT_EQ(Stored(), Bytes({.title = "Kept"}));
}

TEST_F(DefinitionEditorTest, AsksBeforeChangesAreLost) {
  Store({});
  user().Type(kEditor, "Text1", "Other");
  Cancel(kEditor);
  Answer({kCancel});
  user().Close(kEditor);
  Answer({kCancel});
  Menu(DefinitionEditor::kMenuClose);
  Answer({kCancel});
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_TRUE(editor.IsLoaded()); });
  Menu(DefinitionEditor::kMenuClose);
  Answer({kOk});
  Run();
  EXPECT_THAT(Boxes(), ElementsAre(kUnsaved, kUnsaved, kUnsaved, kUnsaved));
  EXPECT_EQ(platform.boxes.Shown()[0].style, kQuestionBox);
  EXPECT_EQ(Stored(), Bytes({}));
}

TEST_F(DefinitionEditorTest, LeavesAtOnceWhereNothingDiffersAndStaysLoaded) {
  Store({});
  Menu(DefinitionEditor::kMenuClose);
  Edit(1);
  user().Close(kEditor);
  WhenListed([](MemoryEdtForm&, EdtFormEvents&) { EXPECT_TRUE(TheForms().Editor.IfThere()->IsLoaded()); });
  Run();
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(DefinitionEditorTest, DoesNothingAtTheSeparatorsOfTheMenu) {
  Store({});
  LookAtEditor([](DefinitionEditor& editor) {
    for (const Integer index : std::initializer_list<Integer>{2, 3, 5, 9})
      EXPECT_EQ(editor.Find("mnuFile", index), nullptr);
  });
  Cancel(kEditor);
  Run();
}

TEST_F(DefinitionEditorTest, AsksForItsHelpAtF1AndConsumesTheKey) {
  Store({});
  LookAtEditor([](DefinitionEditor& editor) {
    editor.SetHelpContext(42);
    EXPECT_FALSE(editor.Text1.UserKeyDown(kF1Key));
  });
  Cancel(kEditor);
  Run();
  EXPECT_THAT(host->record.ArgumentsOf("App.HelpTopic"), ElementsAre("42"));
}

TEST_F(DefinitionEditorTest, HearsTheWheelOverItsWindowAndScrollsTheGridWithTheFocus) {
  ExchangeFile long_file = SouthShop();
  for (int account = 0; account < 100; ++account)
    long_file.accounts.push_back({"X" + std::to_string(account), "Extra"});
  WriteQdx("SOUTH.QDX", long_file);
  Store({});
  ChooseTab(kAccountsTab);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(platform.wheel.HooksOf(editor.Hwnd()), 1U);
    Grid& grid = editor.Grids().GridOf(MatchPage::kAccounts);
    const Place place = platform.screen.WindowPlace(editor.Hwnd());
    grid.SetHwnd(platform.screen.AddControlWindow(editor.Hwnd(), place));
    platform.wheel.Turn(editor.Hwnd(), -120, static_cast<Integer>(place.left + 5), static_cast<Integer>(place.top + 5));
    EXPECT_EQ(grid.TopRow(), 4) << "three lines on";
    EXPECT_THAT(platform.wheel.Reached(), SizeIs(1)) << "and the window hears of it: meant";
  });
  Cancel(kEditor);
  Answer({kOk});
  Run();
}

// --- Browsing --------------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, BrowsesFromTheStoredNameAndShowsTheChosenFile) {
  ExchangeFile other = SouthShop();
  other.accounts.resize(1);
  WriteQdx("OTHER.QDX", other);
  Store({});
  user().Type(kEditor, "Text2", "/typed.QDX").Click(kEditor, "Command2");
  Look<frmImport>(kPrompt, [this](frmImport& prompt) { EXPECT_EQ(prompt.Text1.Text(), Path("SOUTH.QDX")); });
  user().Type(kPrompt, "Text1", Path("OTHER.QDX"));
  Accept(kPrompt);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Text2.Text(), Path("OTHER.QDX"));
    EXPECT_EQ(editor.QDXGrid.Cell(0, 1), Path("OTHER.QDX"));
    EXPECT_TRUE(editor.CancelEnabled());
    EXPECT_EQ(editor.Grids().GridOf(MatchPage::kAccounts).Rows(), 4) << "as it was loaded: meant";
  });
  Cancel(kEditor);
  Answer({kOk});
  Run();
}

TEST_F(DefinitionEditorTest, KeepsTheFileWhereBrowsingIsCancelled) {
  Store({});
  user().Click(kEditor, "Command2");
  Cancel(kPrompt);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Text2.Text(), Path("SOUTH.QDX"));
    EXPECT_FALSE(editor.CancelEnabled());
  });
  Cancel(kEditor);
  Run();
}

// --- Save As New -----------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, SavesACopyUnderTheTitleOfTheEditorAndGoesOnWithIt) {
  Store({.accounts = {{"100", "100"}}});
  user().Type(kEditor, "Text1", "Edited");
  Menu(DefinitionEditor::kMenuSaveAsNew);
  Look<dlgRepSaveAs>(kSaveAs, [this](dlgRepSaveAs& question) {
    EXPECT_EQ(question.Text1.Text(), "Exchange Definition #2");
    EXPECT_EQ(platform.boxes.Sounds().back(), "SystemQuestion");
  });
  user().Type(kSaveAs, "Text1", "Not read back").Click(kSaveAs, "Command1", 1);
  LookAtEditor([this](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Caption(), "Edit QDX Import Layout Number: 2");
    EXPECT_EQ(editor.Text1.Text(), "Edited");
    EXPECT_FALSE(editor.CancelEnabled());
    EXPECT_EQ(editor.Grids().Match(MatchPage::kAccounts, 1), 101);
    EXPECT_THAT(Keys(), ElementsAre("K1", "K2"));
    EXPECT_EQ(Stored(2), Bytes({.title = "Edited", .accounts = {{"100", "100"}}}));
    EXPECT_EQ(Stored(1), Bytes({.accounts = {{"100", "100"}}}));
  });
  user().Type(kEditor, "Text1", "The copy");
  Accept(kEditor);
  Run();
  EXPECT_EQ(Stored(2), Bytes({.title = "The copy", .accounts = {{"100", "100"}}})) << "Save goes to the copy";
  EXPECT_EQ(Stored(1), Bytes({.accounts = {{"100", "100"}}}));
  EXPECT_THAT(Titles(), ElementsAre("South", "The copy"));
  EXPECT_EQ(Listed().totals, "2 active of 999 maximum");
}

TEST_F(DefinitionEditorTest, SavesNoCopyWhereThatIsCancelled) {
  Store({});
  for (const bool by_close_box : {true, false}) {
    Menu(DefinitionEditor::kMenuSaveAsNew);
    if (by_close_box)
      user().Close(kSaveAs);
    else
      user().Click(kSaveAs, "Command1", 0);
  }
  LookAtEditor([](DefinitionEditor& editor) { EXPECT_EQ(editor.Caption(), "Edit QDX Import Layout Number: 1"); });
  Cancel(kEditor);
  Run();
  EXPECT_FALSE(folder.Has(FileOf(2)));
  EXPECT_THAT(Keys(), ElementsAre("K1"));
}

TEST_F(DefinitionEditorTest, GoesOnWithPositionZeroWhereTheStoreIsFull) {
  for (int number = 1; number <= 999; ++number) WriteDefinition(number, {.qdx_file = Path("SOUTH.QDX")});
  Edit(1);
  user().Type(kEditor, "Text1", "Edited");
  Menu(DefinitionEditor::kMenuSaveAsNew);
  Look<dlgRepSaveAs>(kSaveAs,
                     [](dlgRepSaveAs& question) { EXPECT_EQ(question.Text1.Text(), "Exchange Definition #0"); });
  user().Click(kSaveAs, "Command1", 1);
  Answer({kCancel});
  LookAtEditor([](DefinitionEditor& editor) {
    EXPECT_EQ(editor.Caption(), "Edit QDX Import Layout Number: 0");
    EXPECT_EQ(editor.Text1.Text(), "Edited");
  });
  Cancel(kEditor);
  Browse();
  EXPECT_THAT(Boxes(), ElementsAre("Error creating file: "));
  EXPECT_THAT(Listed().rows, SizeIs(999));
}

TEST_F(DefinitionEditorTest, ClosesWhereTheCopyCannotBeShownAsItsFileIsGone) {
  std::filesystem::remove(Path("SOUTH.QDX"));
  folder.Write(CopyOf(1), SouthShop().Bytes());
  Store({.accounts = {{"100", "100"}}});
  Menu(DefinitionEditor::kMenuSaveAsNew);
  user().Click(kSaveAs, "Command1", 1);
  Run();
  EXPECT_EQ(Stored(2), Bytes({.accounts = {{"100", "100"}}})) << "the copy is whole";
  EXPECT_EQ(Stored(1), Stored(2));
  EXPECT_THAT(Boxes(), ElementsAre("Cannot edit the QDX Import Layout because the QDX File does not exist"));
  EXPECT_THAT(Keys(), ElementsAre("K1", "K2"));
}

TEST_F(DefinitionEditorTest, SavesTheRecordOfAnAddAlsoAfterACopyWasMade) {
  WhenListed([](MemoryEdtForm&, EdtFormEvents& events) {
    Integer record = 0;
    events.AddRec(record);
    EXPECT_EQ(record, 1);
  });
  user().Type(kPrompt, "Text1", Path("SOUTH.QDX"));
  Accept(kPrompt);
  Menu(DefinitionEditor::kMenuSaveAsNew);
  user().Click(kSaveAs, "Command1", 1);
  user().Type(kEditor, "Text1", "In the end");
  Accept(kEditor);
  Browse();
  EXPECT_EQ(Stored(1), Bytes({.title = "In the end", .disp = 2}));
  EXPECT_FALSE(folder.Has(FileOf(2)));
}

// --- Printing --------------------------------------------------------------------------------------------------------

TEST_F(DefinitionEditorTest, PrintsWhatItShowsWhetherItIsSavedOrNot) {
  Store({.fields = {{1, 1}}, .accounts = {{"100", "100"}, {"200", "100"}}});
  user().Type(kEditor, "Text2", "/typed.QDX");
  ChooseTab(kAccountsTab);
  PressKeys(MatchPage::kAccounts, "3");
  user().Click(kEditor, "Command1");
  Cancel(kEditor);
  Answer({kOk});
  Run();
  const PrintedReport& report = LastReport();
  EXPECT_EQ(report.title, "Tallybook QDX Import Layout");
  EXPECT_TRUE(report.ended);
  EXPECT_EQ(report.spacing, 4);
  EXPECT_EQ(report.row_style, 4);
  EXPECT_EQ(report.head_style, 1);
  EXPECT_EQ(report.column_mode, 1);
  EXPECT_THAT(report.layouts.front(), ElementsAre(60, 60)) << "none of an import's columns";
  EXPECT_THAT(host->record.ArgumentsOf("PrintReportHeader"), Contains("QDX Import Layout"));
  EXPECT_THAT(host->record.ArgumentsOf("PrintReportHeader"), Not(Contains("QDX Import")));
  const std::vector<Text> printed = report.Everything();
  EXPECT_THAT(printed, Contains("QDX Filename:  | " + Path("SOUTH.QDX"))) << "the file alone as it is stored: meant";
  EXPECT_THAT(printed, Contains("When imported, the QDX file will be:  | Kept"));
  EXPECT_THAT(printed, Contains("Match Accounts:  | Manually"));
  EXPECT_THAT(printed, Contains("Match Datafields:  | Manually"));
  EXPECT_THAT(printed, Contains("100 | Counter | 300 | Yard")) << "as it stands on the page";
  EXPECT_THAT(printed, Contains("100 | Front of shop | 200 | Store"));
  EXPECT_THAT(printed, Contains("1 | Sales | 1 | Sales"));
  EXPECT_THAT(printed, Not(Contains("900 | Cellar |  | Not to be sent"))) << "beyond the stored count: meant";
}

TEST_F(DefinitionEditorTest, PrintsNoListOfWhatIsNotMatchedByHand) {
  Store({.acct_match = -2});
  Menu(DefinitionEditor::kMenuPrint);
  Cancel(kEditor);
  Run();
  for (const Text& line : LastReport().Everything()) EXPECT_THAT(line, Not(HasSubstr("Account Matchups")));
  EXPECT_THAT(LastReport().Everything(), Contains("List of Field Matchups (sorted by From):"));
}

TEST_F(DefinitionEditorTest, PrintsNothingWhereTheUserDeclines) {
  Store({});
  host->record.GiveFalseOn("Printer.BeginReport", 1);
  Menu(DefinitionEditor::kMenuPrint);
  Cancel(kEditor);
  Run();
  EXPECT_THAT(LastReport().entries, IsEmpty());
  EXPECT_THAT(Boxes(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
