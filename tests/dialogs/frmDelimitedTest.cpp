#include <vector>

#include "dialogs/frmDelimited.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kForm = "frmDelimited";
const Text kSection = "Delimited";

class frmDelimitedTest : public DialogsFixture {
 protected:
  void Converse(bool allow_system_fields = false) {
    EXPECT_TRUE(gui.ImportDelimited(owner, book(), allow_system_fields));
  }
  void Press(Integer button = SaveButtons::kMainButton) { user().Click(kForm, "SaveButtons1", button); }
  void LookAt(std::function<void(frmDelimited&)> look) { Look<frmDelimited>(kForm, std::move(look)); }
  void Remember(const Text& key, const Text& value) { host->SetBookSetting(kSection, key, value); }
  [[nodiscard]] Text Remembered(const Text& key) const { return host->BookSetting(kSection, key); }
  // Runs an import of one figure: 5 for account 101, field 1.
  void PrepareFile() { folder.Write("Import.csv", "2,3,2004,100,1,5\r"); }
  [[nodiscard]] Double Figure() const { return book().Get(101, DateFromParts(2004, 2, 3), 1); }
  void ExpectMath(const Text& stored, const Text& shown) {
    Remember("Math", stored);
    LookAt([shown](frmDelimited& form) { EXPECT_EQ(form.cmbMath.SelectedText(), shown); });
    Press(SaveButtons::kCancelButton);
    Converse();
  }
};

TEST_F(frmDelimitedTest, BeginsWithItsDefaults) {
  LookAt([this](frmDelimited& form) {
    EXPECT_EQ(form.Caption(), "Import Delimited File");
    EXPECT_EQ(form.Text1.Caption(), "Filename:");
    EXPECT_EQ(form.Text1.Text(), Path("Import.csv"));
    EXPECT_EQ(form.Command1.Hint(), "Browse for File ...");
    EXPECT_EQ(form.cmbMath.Caption(), "Operation when data is imported:");
    EXPECT_EQ(form.cmbMath.SelectedText(), "Replace");
    EXPECT_EQ(form.chkDate.Caption(), "Date is one field");
    EXPECT_TRUE(form.chkDate.Checked());
    EXPECT_EQ(form.cmbDate.Caption(), "Order of Day, Month and Year");
    EXPECT_EQ(form.cmbDate.SelectedText(), "MDY");
    EXPECT_EQ(form.SaveButtons1.Caption(), "&Import");
    EXPECT_TRUE(form.SaveButtons1.CancelEnabled());
    EXPECT_TRUE(form.FullBrowsing());
    EXPECT_EQ(form.FontName(), "Sans");
    EXPECT_EQ(form.FontSize(), 8.25F);
    EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault);
  });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_EQ(platform.screen.Pointers().front(), Pointer::kBusy);
}

TEST_F(frmDelimitedTest, WritesNothingAfterACancel) {
  for (const bool by_close_box : {false, true}) {
    user().Type(kForm, "Text1", "/typed.csv");
    if (by_close_box)
      user().Close(kForm);
    else
      Press(SaveButtons::kCancelButton);
    Converse(true);
    EXPECT_THAT(Written(), IsEmpty());
    EXPECT_THAT(Boxes(), IsEmpty());
    EXPECT_THAT(host->app.log.audits, IsEmpty());
  }
}

TEST_F(frmDelimitedTest, ImportsAsTheUserSays) {
  folder.Write("days.txt", "3/2/2004,100,1,5\r");
  book().Set(101, DateFromParts(2004, 2, 3), 1, 7);
  user().Type(kForm, "Text1", Path("days.txt")).Choose(kForm, "cmbMath", "Subtract").Choose(kForm, "cmbDate", "DMY");
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_EQ(Figure(), 2.0);
  EXPECT_THAT(Boxes(), Contains("OK to Subtract data from the import file to the database?"));
  EXPECT_FALSE(folder.Has("days.txt")) << "the import renames its file";
  EXPECT_EQ(Remembered("FileName"), Path("days.txt"));
  EXPECT_EQ(Remembered("Math"), "2");
  EXPECT_EQ(Remembered("DateOrder"), "2");
  EXPECT_EQ(Remembered("DateFields"), "True");
  EXPECT_EQ(Logged(), std::vector<MemoryLog::Error>{});
}

TEST_F(frmDelimitedTest, ImportsDatesOfThreeFields) {
  PrepareFile();
  user().Click(kForm, "chkDate");
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_EQ(Figure(), 5.0);
  EXPECT_EQ(Remembered("DateFields"), "False");
}

TEST_F(frmDelimitedTest, ShowsWhatItRememberedTheNextTime) {
  for (const char* truth : {"False", "0"}) {
    Remember("FileName", "/last.txt");
    Remember("DateOrder", "3");
    Remember("DateFields", truth);
    Remember("Math", "1");
    LookAt([](frmDelimited& form) {
      EXPECT_EQ(form.Text1.Text(), "/last.txt");
      EXPECT_EQ(form.cmbDate.SelectedText(), "YMD");
      EXPECT_FALSE(form.chkDate.Checked());
      EXPECT_EQ(form.cmbMath.SelectedText(), "Add");
    });
    Press(SaveButtons::kCancelButton);
    Converse();
  }
}

TEST_F(frmDelimitedTest, SelectsTheFirstEntryForANumberThatNoneHasAndStoresThatOnes) {
  ExpectMath("9", "Replace");
  EXPECT_EQ(Remembered("Math"), "9");
  Press();
  Converse();
  EXPECT_EQ(Remembered("Math"), "3");
}

TEST_F(frmDelimitedTest, LogsASettingThatIsNoNumberAndSelectsTheFirstEntry) {
  ExpectMath("much", "Replace");
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Tallybook - ImportDelimited");
  ExpectMath("40000", "Replace");  // beyond 16 bits
  EXPECT_THAT(Logged(), SizeIs(2));
  EXPECT_NE(Logged()[0].line_number, 0);
}

TEST_F(frmDelimitedTest, LogsATruthThatIsNoneAndTakesItForFalse) {
  Remember("DateFields", "perhaps");
  LookAt([](frmDelimited& form) { EXPECT_FALSE(form.chkDate.Checked()); });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(Logged(), SizeIs(1));
}

TEST_F(frmDelimitedTest, KeepsTheAnswersOfAnImportThatFails) {
  user().Type(kForm, "Text1", Path("missing.txt")).Choose(kForm, "cmbMath", "Add");
  Press();
  Converse();
  EXPECT_THAT(Boxes(), ElementsAre(::testing::HasSubstr(Path("missing.txt"))));
  EXPECT_EQ(Remembered("FileName"), Path("missing.txt"));
  EXPECT_EQ(Remembered("Math"), "1");
  EXPECT_THAT(host->app.log.audits, IsEmpty());
}

TEST_F(frmDelimitedTest, WritesTheAnswersBeforeTheImportRuns) {
  PrepareFile();
  user().Click(kForm, "chkDate");
  Press();
  platform.boxes.Answer({kOk});
  host->record.calls.clear();
  Converse();
  const auto& calls = host->record.calls;
  const auto first = [&](const Text& start) {
    return std::ranges::find_if(calls, [&](const Text& call) { return call.starts_with(start); });
  };
  EXPECT_LT(first("Ini.WriteValue"), first("BeginProgress"));
  ASSERT_NE(first("BeginProgress"), calls.end());
  EXPECT_THAT(Written(), SizeIs(4));
}

TEST_F(frmDelimitedTest, AuditsAnImportOfSystemFieldsWhateverItAnswered) {
  user().Type(kForm, "Text1", Path("missing.txt"));
  Press();
  Converse(true);
  EXPECT_THAT(Boxes(), SizeIs(1));
  EXPECT_EQ(host->app.log.audits,
            (std::vector<MemoryLog::Audit>{{"Sales", "Import", "System Fields", {Path("missing.txt")}}}));
  EXPECT_EQ(Remembered("FileName"), Path("missing.txt"));
}

TEST_F(frmDelimitedTest, PassesOnWhetherSystemFieldsAreAllowed) {
  const Date day = DateFromParts(2004, 2, 3);
  folder.Write("Import.csv", "2,3,2004,100,7,5\r");
  user().Click(kForm, "chkDate");
  Press();
  platform.boxes.Answer({kOk});
  Converse(true);
  EXPECT_EQ(book().Get(101, day, 7), 5.0);
}

TEST_F(frmDelimitedTest, HandsAnEmptyNameToTheImportWhichTells) {
  user().Type(kForm, "Text1", "");
  Press();
  Converse();
  EXPECT_THAT(Boxes(), SizeIs(1));
  EXPECT_EQ(Remembered("FileName"), "");
  EXPECT_THAT(Written(), SizeIs(4));
}

TEST_F(frmDelimitedTest, GoesOnBehindEveryStepThatFails) {
  struct Case {
    Text operation;
    long long nth;
  };
  for (const Case& fault : {Case{"NewIniFile", 1}, Case{"Ini.SetFileName", 1}, Case{"Ini.SetSection", 1},
                            Case{"Ini.ReadValue", 1}, Case{"Ini.ReadValue", 4}, Case{"Ini.WriteValue", 1},
                            Case{"Ini.WriteValue", 4}, Case{"App.FontName", 1}, Case{"AccessRight", 1}}) {
    PrepareFile();
    book().Set(101, DateFromParts(2004, 2, 3), 1, 0);
    host->app.log.errors.clear();
    host->record.FailOn(fault.operation, fault.nth, Failure(FailureNumber::kDeviceError, "no", "Engine"));
    user().Type(kForm, "Text1", Path("Import.csv")).On(kForm, [](Form& form) {
      dynamic_cast<frmDelimited&>(form).chkDate.SetChecked(false);
    });
    Press();
    platform.boxes.Answer({kOk});
    Converse();
    EXPECT_EQ(Figure(), 5.0) << fault.operation;
    ASSERT_FALSE(Logged().empty()) << fault.operation;
    EXPECT_EQ(Logged()[0].message, "Engine - ImportDelimited") << fault.operation;
    EXPECT_TRUE(host->record.AllFaultsStruck()) << fault.operation;
  }
}

TEST_F(frmDelimitedTest, ImportsAlthoughTheInstallationsSettingIsNoTruthValue) {
  PrepareFile();
  host->SetInstallationSetting("Files", "WriteRollback", "perhaps");
  user().Click(kForm, "chkDate");
  Press();
  platform.boxes.Answer({kOk});
  Converse();
  EXPECT_EQ(Figure(), 5.0);
  ASSERT_THAT(Logged(), SizeIs(1));
}

TEST_F(frmDelimitedTest, BrowsesForTheFile) {
  platform.file_dialogs.Choose("/new/figures.txt");
  user().Type(kForm, "Text1", "/old/days.txt").Click(kForm, "Command1");
  LookAt([](frmDelimited& form) { EXPECT_EQ(form.Text1.Text(), "/new/figures.txt"); });
  Press(SaveButtons::kCancelButton);
  Converse();
  const FileDialogRequest& request = FileRequest();
  EXPECT_FALSE(request.save);
  EXPECT_EQ(request.title, "Production Import File");
  EXPECT_EQ(request.initial_folder, "/old/");
  EXPECT_EQ(request.file_name, "days.txt");
  EXPECT_EQ(request.filter, ConvertFilter("(All Files) *.*|*.*"));
  EXPECT_EQ(request.default_extension, "*.*");
  EXPECT_EQ(request.flags, kPlainFlags | kExplorerStyle);
}

TEST_F(frmDelimitedTest, BrowsesInTheHostsFolderWhereTheNameHasNone) {
  platform.file_dialogs.Cancel();
  user().Type(kForm, "Text1", "days.txt").Click(kForm, "Command1");
  LookAt([](frmDelimited& form) { EXPECT_EQ(form.Text1.Text(), "days.txt"); });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_EQ(FileRequest().initial_folder, "/data/");
  EXPECT_EQ(FileRequest().file_name, "days.txt");
}

TEST_F(frmDelimitedTest, OffersTheOldBrowserWhereBrowsingIsLimited) {
  LimitBrowsing();
  platform.file_dialogs.Cancel();
  user().Click(kForm, "Command1");
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_EQ(FileRequest().flags, kPlainFlags | kWithHook | kWithoutNetwork);
}

TEST_F(frmDelimitedTest, AsksForItsHelpTopicAtF1AndConsumesTheKey) {
  LookAt([](frmDelimited& form) {
    form.SetHelpContext(77);
    EXPECT_FALSE(form.Text1.UserKeyDown(kF1Key));
  });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(host->record.ArgumentsOf("App.HelpTopic"), ElementsAre("77"));
}

TEST_F(frmDelimitedTest, TellsOfAHelpDisplayThatIsMissingAndStaysAsItWas) {
  host->record.FailOn("App.HelpTopic", 1, Failure(FailureNumber::kFeatureUnavailable, "no display", "App"));
  user().Type(kForm, "Text1", "typed.csv").Press(kForm, "Text1", kF1Key);
  LookAt([this](frmDelimited& shown) {
    EXPECT_EQ(shown.Text1.Text(), "typed.csv");
    EXPECT_THAT(Boxes(), ElementsAre("The help cannot be shown: no display"));
  });
  Press(SaveButtons::kCancelButton);
  Converse();
  EXPECT_THAT(Logged(), IsEmpty());
}

TEST_F(frmDelimitedTest, OffersCancelEachTimeItIsOpened) {
  frmDelimited form(host->factory);
  form.SetCancelEnabled(false);
  EXPECT_FALSE(form.SaveButtons1.CancelEnabled());
  LookAt([](frmDelimited& shown) {
    EXPECT_TRUE(shown.CancelEnabled());
    EXPECT_TRUE(shown.SaveButtons1.CancelEnabled());
  });
  Press(SaveButtons::kCancelButton);
  form.ImportDelimited(owner, book(), false);
}

TEST_F(frmDelimitedTest, UnloadsItselfAfterTheConversation) {
  frmDelimited form(host->factory);
  Press(SaveButtons::kCancelButton);
  form.ImportDelimited(owner, book(), false);
  EXPECT_FALSE(form.IsLoaded());
  EXPECT_THAT(OpenForms(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
