#include <string>
#include <utility>
#include <vector>

#include "dialogs/frmImport.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const Text kForm = "frmImport";

class frmImportTest : public DialogsFixture {
 protected:
  bool Import(Text& name, const Text& extension = "CSV") {
    return form.ImportFileName(owner, name, "Which file?", "Import CSV Data File - North", extension);
  }
  bool Export(Text& name, const Text& extension = "QDX") {
    return form.ExportFileName(owner, name, "Which file?", "Export Data to File", extension);
  }
  void Press(Integer button = SaveButtons::kMainButton) { user().Click(kForm, "SaveButtons1", button); }
  void TypeName(const Text& name) { user().Type(kForm, "Text1", name); }
  void Browse() { user().Click(kForm, "Command1"); }
  // What a name becomes when the user accepts it as it was proposed.
  Text Accepted(Text name, const Text& extension) {
    Press();
    EXPECT_TRUE(Export(name, extension));
    return name;
  }

  frmImport form;
};

TEST_F(frmImportTest, ShowsTheCallersWords) {
  Look<frmImport>(kForm, [](frmImport& shown) {
    EXPECT_EQ(shown.Caption(), "Import CSV Data File - North");
    EXPECT_EQ(shown.Label1[0].Caption(), "Which file?");
    EXPECT_EQ(shown.Label1[1].Caption(), "Import &Filename:");
    EXPECT_EQ(shown.SaveButtons1.Caption(), "&Import");
    EXPECT_EQ(shown.Command1.Hint(), "Browse for File");
    EXPECT_EQ(shown.Text1.Text(), "a b.csv");
    EXPECT_TRUE(shown.Text1.HasFocus());
    EXPECT_TRUE(shown.CancelEnabled());
  });
  Press(SaveButtons::kCancelButton);
  Text name = "a b.csv  ";
  form.SetCancelEnabled(false);
  EXPECT_FALSE(Import(name));
}

TEST_F(frmImportTest, BearsItsOwnCaptionsUntilACallerGivesOthers) {
  EXPECT_EQ(form.Caption(), "Import File");
  EXPECT_EQ(form.Label1[1].Caption(), "Import &Filename:");
  EXPECT_EQ(form.SaveButtons1.Caption(), "&Import");
  EXPECT_EQ(form.NumberBox1[0].Caption(), "Rows to skip");
  EXPECT_EQ(form.NumberBox1[1].Caption(), "Fields to Skip");
  EXPECT_EQ(form.chkClear.Caption(), "Clear existing records before importing");
}

TEST_F(frmImportTest, NamesButtonAndBoxByTheCaptionsFirstWord) {
  const std::vector<std::pair<Text, Text>> cases = {
      {"Open QDX File", "Open"}, {"Export Data to File", "Export"}, {"Load", "Load"}};
  for (const auto& [caption, word] : cases) {
    Look<frmImport>(kForm, [word = word](frmImport& shown) {
      EXPECT_EQ(shown.SaveButtons1.Caption(), "&" + word);
      EXPECT_EQ(shown.Label1[1].Caption(), word + " &Filename:");
    });
    Press(SaveButtons::kCancelButton);
    Text name;
    EXPECT_FALSE(form.ExportFileName(owner, name, "", caption, ""));
  }
}

TEST_F(frmImportTest, RefusesANameOfBlanksAndAsksAgain) {
  TypeName("   ");
  Press();
  TypeName("out.qdx ");
  Press();
  Text name;
  EXPECT_TRUE(Export(name));
  EXPECT_EQ(name, "out.qdx");
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{"Filename cannot be blank.", kExclamationIcon, ScriptedPlatform::kTitle, kOk}));
}

TEST_F(frmImportTest, AppendsTheExtensionWhereTheLastThreeCharactersDiffer) {
  EXPECT_EQ(Accepted("report.csv", "CSV"), "report.csv");
  EXPECT_EQ(Accepted("report.CsV", "csv"), "report.CsV");
  EXPECT_EQ(Accepted("report.txt", "CSV"), "report.txt.CSV");
  EXPECT_EQ(Accepted("report", "csv"), "report.CSV");
  EXPECT_EQ(Accepted("ab", "CSV"), "ab.CSV");
}

TEST_F(frmImportTest, LooksAtThreeLettersAndNotForAPoint) {
  EXPECT_EQ(Accepted("reportCSV", "CSV"), "reportCSV");
  EXPECT_EQ(Accepted("report.json", "JSON"), "report.json.JSON");
  EXPECT_EQ(Accepted("Caf\xC3\xA9", "CSV"), "Caf\xC3\xA9.CSV") << "characters, not bytes";
}

TEST_F(frmImportTest, ChangesNoNameWithoutAnExtension) {
  EXPECT_EQ(Accepted("report", ""), "report");
}

TEST_F(frmImportTest, LooksForTheFileOnceTheExtensionIsOnTheName) {
  folder.Write("figures.CSV", "x");
  Press();
  Text name = Path("figures");
  EXPECT_TRUE(Import(name));
  EXPECT_EQ(name, Path("figures.CSV"));
}

TEST_F(frmImportTest, TellsOfAFileThatIsNotThereAndAsksAgainWithItsName) {
  folder.Write("there.csv", "x");
  Press();
  Look<frmImport>(kForm, [this](frmImport& shown) { EXPECT_EQ(shown.Text1.Text(), Path("missing.CSV")); });
  TypeName(Path("there.csv"));
  Press();
  Text name = Path("missing");
  EXPECT_TRUE(Import(name));
  EXPECT_EQ(name, Path("there.csv"));
  EXPECT_THAT(platform.boxes.Shown(), ElementsAre(ShownBox{"File: " + Path("missing.CSV") + " does not exist.",
                                                           kInformationIcon, ScriptedPlatform::kTitle, kOk}));
}

TEST_F(frmImportTest, LeavesTheNameAfterACancelAlsoBehindOneThatWasRefused) {
  Press();
  Press(SaveButtons::kCancelButton);
  Text name = Path("missing");
  EXPECT_FALSE(Import(name));
  EXPECT_EQ(name, Path("missing"));
  EXPECT_TRUE(form.Cancelled());
}

TEST_F(frmImportTest, DoesNotLookForAFileToBeWritten) {
  EXPECT_EQ(Accepted(Path("new.qdx"), "QDX"), Path("new.qdx"));
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(frmImportTest, TakesTheCloseBoxForACancelAndStaysLoaded) {
  TypeName("typed.qdx");
  user().Close(kForm);
  Text name = "proposed.qdx";
  EXPECT_FALSE(Export(name));
  EXPECT_EQ(name, "proposed.qdx");
  EXPECT_TRUE(form.Cancelled());
  EXPECT_TRUE(form.IsLoaded());
  EXPECT_FALSE(form.Visible());
  EXPECT_EQ(form.Text1.Text(), "typed.qdx");
}

TEST_F(frmImportTest, BrowsesForAFileToBeRead) {
  folder.Write("chosen.csv", "x");
  platform.file_dialogs.Choose(Path("chosen.csv"));
  TypeName(Path("old.csv  "));
  Browse();
  Press();
  Text name;
  EXPECT_TRUE(Import(name));
  EXPECT_EQ(name, Path("chosen.csv"));
  const FileDialogRequest& request = FileRequest();
  EXPECT_FALSE(request.save);
  EXPECT_EQ(request.owner, form.Hwnd());
  EXPECT_EQ(request.title, "Import CSV Data File - North");
  EXPECT_EQ(request.initial_folder, folder.Path());
  EXPECT_EQ(request.file_name, "old.csv");
  EXPECT_EQ(request.filter, ConvertFilter("(CSV Files) *.CSV|*.CSV"));
  EXPECT_EQ(request.default_extension, "*.CSV");
  EXPECT_EQ(request.flags, kPlainFlags | kExplorerStyle);
  EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  EXPECT_EQ(platform.shell.current_folder, "/here/");
}

TEST_F(frmImportTest, BrowsesForAFileToBeWrittenWithoutAnExtension) {
  platform.file_dialogs.Choose("/out/any");
  Browse();
  Press();
  Text name = "plain";
  EXPECT_TRUE(Export(name, ""));
  EXPECT_EQ(name, "/out/any");
  EXPECT_TRUE(FileRequest().save);
  EXPECT_EQ(FileRequest().initial_folder, "");
  EXPECT_EQ(FileRequest().file_name, "plain");
  EXPECT_EQ(FileRequest().filter, ConvertFilter("(All Files) *.*|*.*"));
  EXPECT_EQ(FileRequest().default_extension, "*.*");
}

TEST_F(frmImportTest, OffersTheOldBrowserWhereBrowsingIsLimited) {
  form.SetFullBrowsing(false);
  platform.file_dialogs.Cancel();
  Browse();
  Press();
  Text name = "a.qdx";
  EXPECT_TRUE(Export(name));
  EXPECT_EQ(FileRequest().flags, kPlainFlags | kWithHook | kWithoutNetwork);
}

TEST_F(frmImportTest, KeepsTheNameWhereTheBrowserIsCancelledOrFails) {
  platform.file_dialogs.Cancel();
  platform.file_dialogs.Fail(FailureNumber::kDeviceError, "gone");
  Browse();
  Browse();
  Press();
  Text name = "a.qdx";
  EXPECT_TRUE(Export(name));
  EXPECT_EQ(name, "a.qdx");
}

TEST_F(frmImportTest, KeepsItsOptionsDisabledAndOutOfSight) {
  Look<frmImport>(kForm, [](frmImport& shown) {
    for (const Control* control :
         {static_cast<Control*>(&shown.NumberBox1[0]), static_cast<Control*>(&shown.NumberBox1[1]),
          static_cast<Control*>(&shown.chkClear)}) {
      EXPECT_FALSE(control->Visible()) << control->Name();
      EXPECT_FALSE(control->Enabled()) << control->Name();
    }
  });
  Press(SaveButtons::kCancelButton);
  Text name;
  EXPECT_FALSE(Export(name));
}

TEST_F(frmImportTest, OffersTheOptionsThatACallerAsksFor) {
  form.SetPromptforSkips(true);
  Look<frmImport>(kForm, [](frmImport& shown) {
    EXPECT_FALSE(shown.chkClear.Enabled());
    EXPECT_TRUE(shown.NumberBox1[0].UserSetValue(7));
    EXPECT_TRUE(shown.NumberBox1[1].UserSpin(1));
    EXPECT_TRUE(shown.NumberBox1[1].UserSetValue(140));
    shown.SetPromptforSkips(false);
    shown.SetPromptforOverwrite(true);
    EXPECT_FALSE(shown.NumberBox1[0].Enabled());
    EXPECT_TRUE(shown.NumberBox1[0].Visible());
    EXPECT_TRUE(TheHands().Click(shown.chkClear, kNoIndex));
  });
  Press();
  Text name = "a.qdx";
  EXPECT_TRUE(Export(name));
  EXPECT_EQ(form.RowstoSkip(), 7);
  EXPECT_EQ(form.FieldstoSkip(), 100);
  EXPECT_TRUE(form.OverwriteFile());
  EXPECT_FALSE(form.PromptforSkips());
  EXPECT_TRUE(form.PromptforOverwrite());
}

TEST_F(frmImportTest, ConsumesF1AndNoOtherKey) {
  Look<frmImport>(kForm, [](frmImport& shown) {
    EXPECT_FALSE(shown.Text1.UserKeyDown(kF1Key));
    EXPECT_TRUE(shown.Text1.UserKeyDown(kF1Key + 1));
  });
  Press(SaveButtons::kCancelButton);
  Text name;
  EXPECT_FALSE(Export(name));
}

}  // namespace
}  // namespace tallybook::testing
