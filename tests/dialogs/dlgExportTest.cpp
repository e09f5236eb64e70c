#include <string>
#include <utility>
#include <vector>

#include "dialogs/dlgExport.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;

const Text kForm = "dlgExport";

class dlgExportTest : public DialogsFixture {
 protected:
  bool AskFile() { return form.GetFileName(owner, library, type, file, kind); }
  bool AskFolder() { return form.GetFolder(owner, library, type, extension, file, "Extra line", "A caption", flag); }
  void Press(Integer button = SaveButtons::kMainButton) { user().Click(kForm, "SaveButtons1", button); }
  void Browse() { user().Click(kForm, "Command2"); }
  void LookAt(std::function<void(dlgExport&)> look) { Look<dlgExport>(kForm, std::move(look)); }
  // The name that the dialog shows for a proposed one.
  Text Shown(const Text& proposed) {
    file = proposed;
    Text shown;
    LookAt([&](dlgExport& dialog) { shown = dialog.Text1.Text(); });
    Press(SaveButtons::kCancelButton);
    EXPECT_FALSE(AskFile());
    return shown;
  }
  // The name after the user has typed one and chosen a type.
  Text AfterChoice(const Text& typed, const Text& entry) {
    file = "x.csv";
    user().Type(kForm, "Text1", typed).Choose(kForm, "Combo1", entry);
    Press();
    EXPECT_TRUE(AskFile());
    return file;
  }
  [[nodiscard]] std::vector<Text> Entries() const {
    std::vector<Text> entries;
    for (Integer i = 0; i < form.Combo1.ListCount(); ++i) entries.push_back(form.Combo1.List(i));
    return entries;
  }

  dlgExport form;
  std::shared_ptr<MemoryExportObject> library = std::make_shared<MemoryExportObject>(host->record);
  Text type = "CSV";
  Text file = "/out/Export.CSV";
  Long kind = -7;
  Text extension;
  bool flag = false;
};

TEST_F(dlgExportTest, ShowsItsWordsAndTheLibrarysTypes) {
  LookAt([this](dlgExport& shown) {
    EXPECT_EQ(shown.Caption(), "Export Options");
    EXPECT_EQ(shown.Combo1.Caption(), "&Type of Export:");
    EXPECT_EQ(shown.Text1.Caption(), "&File Name:");
    EXPECT_EQ(shown.Command2.Hint(), "Browse for File");
    EXPECT_EQ(shown.chkNonZero.Caption(), "Do not output records with zero values. ");
    EXPECT_FALSE(shown.chkNonZero.Visible());
    EXPECT_EQ(shown.SaveButtons1.Caption(), "&Export");
    EXPECT_EQ(shown.Combo1.SelectedText(), "Comma-separated text (csv)");
    EXPECT_EQ(shown.Export(), library) << "held while the call runs";
  });
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_THAT(Entries(), ElementsAre("Comma-separated text (csv)", "Workbook (xlsx)", "Database table (dbf)",
                                     "Fixed-width text (txt)", "SQL database (db)"));
  EXPECT_EQ(form.Export(), nullptr);
}

TEST_F(dlgExportTest, GivesTypeNameAndKind) {
  library->formats[2].kind = 3;
  user().Choose(kForm, "Combo1", "Database table (dbf)");
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_EQ(type, "DBF");
  EXPECT_EQ(file, "/out/Export.dbf");
  EXPECT_EQ(kind, 3);
}

TEST_F(dlgExportTest, LeavesEverythingAfterACancel) {
  for (const bool by_close_box : {false, true}) {
    user().Choose(kForm, "Combo1", "Database table (dbf)");
    if (by_close_box)
      user().Close(kForm);
    else
      Press(SaveButtons::kCancelButton);
    EXPECT_FALSE(AskFile());
    EXPECT_EQ(type, "CSV");
    EXPECT_EQ(file, "/out/Export.CSV");
    EXPECT_EQ(kind, -7);
    EXPECT_TRUE(form.Cancelled());
    EXPECT_TRUE(form.IsLoaded());
    EXPECT_EQ(form.Export(), nullptr);
  }
}

TEST_F(dlgExportTest, KeepsKindsOneAndTwoOutAndOffersAllOthers) {
  library->formats = {{"a", "a", "A", 0, 0}, {"b", "b", "B", 0, 1},  {"c", "c", "C", 0, 2},
                      {"d", "d", "D", 0, 3}, {"e", "e", "E", 0, -1}, {"f", "f", "F", 0, 40'000}};
  user().Choose(kForm, "Combo1", "f (f)");
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_THAT(Entries(), ElementsAre("a (a)", "d (d)", "e (e)", "f (f)"));
  EXPECT_EQ(type, "F");
  EXPECT_EQ(kind, 40'000);
}

TEST_F(dlgExportTest, CutsWhatTheLibraryGivesAtAZeroCharacter) {
  library->formats = {{std::string("Base\0   ", 8), std::string("db\0 ", 4), std::string("SQ\0  ", 5), 0, 0}};
  type = "SQ";
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_THAT(Entries(), ElementsAre("Base (db)"));
  EXPECT_EQ(type, "SQ");
  EXPECT_EQ(file, "/out/Export.db");
}

TEST_F(dlgExportTest, TakesTheWorkbookWhereNoTypeIsAskedFor) {
  type.clear();
  Press(SaveButtons::kCancelButton);
  EXPECT_FALSE(AskFile());
  EXPECT_EQ(type, "XLSX");
  EXPECT_EQ(form.Combo1.SelectedText(), "Workbook (xlsx)");
}

TEST_F(dlgExportTest, SelectsTheFirstEntryForATypeThatIsNotOffered) {
  for (const char* code : {"NONE", "csv", "XLS"}) {
    type = code;
    Press();
    EXPECT_TRUE(AskFile());
    EXPECT_EQ(type, "CSV") << code;
  }
}

TEST_F(dlgExportTest, LandsOnAnEarlierEntryThatBeginsAlike) {
  library->formats = {{"Table", "csv) old", "OLD", 0, 0}, {"TABLE", "csv", "NEW", 0, 0}};
  library->formats[0].name = "Table (csv) of old";
  type = "NEW";
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_EQ(type, "OLD");
}

TEST_F(dlgExportTest, HasNothingSelectedWithoutAnyType) {
  library->formats = {{"b", "b", "B", 0, 1}};
  type = "B";
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_EQ(form.Combo1.ListIndex(), kNoEntry);
  EXPECT_EQ(form.Combo1.ListCount(), 0);
  EXPECT_EQ(type, "B");
  EXPECT_EQ(kind, -7);
}

TEST_F(dlgExportTest, PutsTheTypesExtensionInPlaceOfTheNamesOwn) {
  EXPECT_EQ(Shown("/out/Export.CSV"), "/out/Export.csv");
  EXPECT_EQ(Shown("/out/a.b.xlsx"), "/out/a.b.csv");
  EXPECT_EQ(Shown("report."), "report.csv");
}

TEST_F(dlgExportTest, PutsNoPointInFrontOfTheExtensionOfANameWithout) {
  EXPECT_EQ(Shown("report"), "reportcsv");
}

TEST_F(dlgExportTest, CutsAtTheLastPointOfTheWholePath) {
  EXPECT_EQ(Shown("/out.d/report"), "/out.csv");
}

TEST_F(dlgExportTest, LowersTheTypesExtension) {
  library->formats[0].extension = "CSV";
  EXPECT_EQ(Shown("a.txt"), "a.csv");
}

TEST_F(dlgExportTest, ChangesTheExtensionWithTheType) {
  EXPECT_EQ(AfterChoice("/out/report.csv", "Workbook (xlsx)"), "/out/report.xlsx");
  EXPECT_EQ(AfterChoice("report.", "Database table (dbf)"), "report.dbf");
}

TEST_F(dlgExportTest, DropsTheLastCharacterOfANameWithoutAPointWithTheType) {
  EXPECT_EQ(AfterChoice("report", "Comma-separated text (csv)"), "repor.csv");
  EXPECT_EQ(AfterChoice("caf\xC3\xA9", "Workbook (xlsx)"), "caf.xlsx") << "a character, not a byte";
}

TEST_F(dlgExportTest, LeavesAnEmptyNameEmptyWithTheType) {
  EXPECT_EQ(AfterChoice("", "Workbook (xlsx)"), "");
}

TEST_F(dlgExportTest, BrowsesForAFileToBeWritten) {
  platform.file_dialogs.Choose("/new/place.csv");
  Browse();
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_EQ(file, "/new/place.csv");
  const FileDialogRequest& request = FileRequest();
  EXPECT_TRUE(request.save);
  EXPECT_EQ(request.owner, form.Hwnd());
  EXPECT_EQ(request.title, "Name an Output File");
  EXPECT_EQ(request.initial_folder, "/out/");
  EXPECT_EQ(request.file_name, "Export.csv");
  EXPECT_EQ(request.filter, ConvertFilter("Comma-separated text (*.csv)|*.csv|All Files (*.*)|*.*"));
  EXPECT_EQ(request.default_extension, "csv");
  EXPECT_EQ(request.flags, kPlainFlags | kPromptToCreate | kExplorerStyle);
}

TEST_F(dlgExportTest, StartsInTheNamesFolderOrTheOneInForce) {
  const std::vector<std::pair<Text, Text>> cases = {{"C:\\a.csv", "C:\\"},  // a drive's root keeps its backslash
                                                    {"C:a.csv", "C:"},      // and a drive alone gets none
                                                    {"C:\\dir\\a.csv", "C:\\dir\\"},
                                                    {"/a.csv", "/"},
                                                    {"a.csv", "/here/"},
                                                    {"", "/here/"}};
  for (std::size_t i = 0; i < cases.size(); ++i) {
    platform.file_dialogs.Cancel();
    user().Type(kForm, "Text1", cases[i].first);
    Browse();
    Press(SaveButtons::kCancelButton);
    EXPECT_FALSE(AskFile());
    EXPECT_EQ(FileRequest(i).initial_folder, cases[i].second) << cases[i].first;
  }
}

TEST_F(dlgExportTest, StaysOpenWhereTheBrowserIsCancelledOrFails) {
  platform.file_dialogs.Cancel();
  platform.file_dialogs.Fail(FailureNumber::kDeviceError, "gone");
  Browse();
  LookAt([](dlgExport& shown) { EXPECT_TRUE(shown.Cancelled()); });
  Browse();
  Press();
  EXPECT_TRUE(AskFile()) << "the button sets the flag anew";
  EXPECT_EQ(file, "/out/Export.csv");
}

TEST_F(dlgExportTest, KeepsTheNameWhereTheBrowserGivesNone) {
  platform.file_dialogs.Answer([](FileDialogRequest& request) {
    request.file_name = "";
    request.file_title = "";
    return 1;
  });
  Browse();
  LookAt([](dlgExport& shown) {
    EXPECT_EQ(shown.Text1.Text(), "/out/Export.csv");
    EXPECT_FALSE(shown.Cancelled());
  });
  Press(SaveButtons::kCancelButton);
  EXPECT_FALSE(AskFile());
  EXPECT_EQ(Boxes().size(), 1U) << "the file dialog has told";
}

TEST_F(dlgExportTest, OffersTheOldBrowserWhereBrowsingIsLimited) {
  form.SetFullBrowsing(false);
  platform.file_dialogs.Cancel();
  Browse();
  Press(SaveButtons::kCancelButton);
  EXPECT_FALSE(AskFile());
  EXPECT_EQ(FileRequest().flags, kPlainFlags | kPromptToCreate | kWithHook | kWithoutNetwork);
}

TEST_F(dlgExportTest, AsksForAFolder) {
  file = "/old/folder";
  platform.file_dialogs.Choose("/new/folder");
  LookAt([](dlgExport& shown) {
    EXPECT_EQ(shown.Caption(), "A caption");
    EXPECT_EQ(shown.Text1.Caption(), "&Folder:");
    EXPECT_EQ(shown.Label2.Caption(), "Extra line");
    EXPECT_EQ(shown.Text1.Text(), "/old/folder");
    EXPECT_FALSE(TheHands().Replace(shown.Text1, "typed"));
  });
  Browse();
  user().Choose(kForm, "Combo1", "Workbook (xlsx)");
  Press();
  EXPECT_TRUE(AskFolder());
  EXPECT_EQ(file, "/new/folder") << "a choice of type leaves a folder as it is";
  EXPECT_EQ(type, "XLSX");
  EXPECT_EQ(extension, "xlsx");
  EXPECT_TRUE(flag);
  ASSERT_EQ(platform.file_dialogs.FolderRequests().size(), 1U);
  EXPECT_EQ(platform.file_dialogs.FolderRequests()[0].title, "Folder for Export File");
  EXPECT_EQ(platform.file_dialogs.FolderRequests()[0].owner, owner);
}

TEST_F(dlgExportTest, TakesATypedFileNameAgainAfterAFolder) {
  Press(SaveButtons::kCancelButton);
  EXPECT_FALSE(AskFolder());
  LookAt([](dlgExport& shown) { EXPECT_EQ(shown.Text1.Caption(), "&File Name:"); });
  user().Type(kForm, "Text1", "/out/typed.csv");
  Press();
  EXPECT_TRUE(AskFile());
  EXPECT_EQ(file, "/out/typed.csv");
}

TEST_F(dlgExportTest, TellsAFolderTypeWithoutCapabilitiesByItsFlag) {
  type = "TXT";
  flag = true;
  platform.file_dialogs.Cancel();
  Browse();
  Press();
  EXPECT_TRUE(AskFolder());
  EXPECT_FALSE(flag);
  EXPECT_EQ(file, "/out/Export.CSV");
  Press(SaveButtons::kCancelButton);
  type = "CSV";
  EXPECT_FALSE(AskFolder());
  EXPECT_FALSE(flag);
}

TEST_F(dlgExportTest, ConsumesF1) {
  LookAt([](dlgExport& shown) { EXPECT_FALSE(shown.Text1.UserKeyDown(kF1Key)); });
  Press(SaveButtons::kCancelButton);
  EXPECT_FALSE(AskFile());
}

}  // namespace
}  // namespace tallybook::testing
