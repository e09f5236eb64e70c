#include <functional>
#include <utility>
#include <vector>

#include "dialogs/CDataExchangeGUI.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

class CDataExchangeGUITest : public DialogsFixture {
 protected:
  struct Entry {
    Text name;
    Text first_form;
    std::function<bool()> call;
  };
  [[nodiscard]] std::vector<Entry> Entries() {
    return {{"ExportQDX", "dlgRepPrint", [this] { return gui.ExportQDX(owner, book(), true, date); }},
            {"ImportCSV", "frmImport", [this] { return gui.ImportCSV(owner, book(), true); }},
            {"ImportDelimited", "frmDelimited", [this] { return gui.ImportDelimited(owner, book(), false); }}};
  }
  Date date = DateFromParts(2004, 2, 3);
};

TEST_F(CDataExchangeGUITest, GivesTrueAfterACancelAndLeavesNothingBehind) {
  for (const Entry& entry : Entries()) {
    user().Close(entry.first_form);
    EXPECT_TRUE(entry.call()) << entry.name;
    EXPECT_THAT(OpenForms(), IsEmpty()) << entry.name;
    EXPECT_EQ(TheForms().DataExc.IfThere(), nullptr) << entry.name;
    EXPECT_EQ(TheForms().Import.IfThere(), nullptr) << entry.name;
    EXPECT_EQ(TheForms().RepPrint.IfThere(), nullptr) << entry.name;
    EXPECT_EQ(TheForms().Delimited.IfThere(), nullptr) << entry.name;
  }
  EXPECT_THAT(Written(), IsEmpty());
}

TEST_F(CDataExchangeGUITest, SetsTheBusyPointerAndLetsPendingInputRunFirst) {
  for (const Entry& entry : Entries()) {
    bool was_busy = false;
    platform.input.SetPending(1);
    platform.input.OnRun([&] { was_busy |= platform.screen.Pointers().back() == Pointer::kBusy; });
    user().Close(entry.first_form);
    EXPECT_TRUE(entry.call());
    EXPECT_TRUE(was_busy) << entry.name;
    platform.input.OnRun(nullptr);
  }
}

TEST_F(CDataExchangeGUITest, TakesOverTheHostsHelpFile) {
  for (const Entry& entry : Entries()) {
    TheForms().HelpFile.clear();
    user().Close(entry.first_form);
    EXPECT_TRUE(entry.call());
    EXPECT_EQ(TheForms().HelpFile, "/installation/tallybook.hlp") << entry.name;
  }
}

TEST_F(CDataExchangeGUITest, MakesTheEditorOfDefinitionsForTheirListAlone) {
  for (const Entry& entry : Entries()) {
    user().On(entry.first_form, [&](Form&) { EXPECT_EQ(TheForms().Editor.IfThere(), nullptr) << entry.name; });
    user().Close(entry.first_form);
    EXPECT_TRUE(entry.call());
  }
  host->factory.prepare_form = [](MemoryEdtForm& form) {
    form.acts = {[](MemoryEdtForm&, EdtFormEvents&) { EXPECT_NE(TheForms().Editor.IfThere(), nullptr); }};
  };
  EXPECT_TRUE(gui.ImportQDX(owner, book(), 1, 0));
  EXPECT_EQ(TheForms().Editor.IfThere(), nullptr);
  EXPECT_THAT(OpenForms(), IsEmpty());
}

TEST_F(CDataExchangeGUITest, ShowsTheSameListOfDefinitionsForEveryIndex) {
  for (const Integer index : {Integer{-1}, Integer{0}, Integer{7}}) EXPECT_TRUE(gui.ImportQDX(owner, book(), 1, index));
  for (const auto& window : host->factory.windows) {
    EXPECT_EQ(window->title, "QDX Import Layouts - North Shop Tallybook");
    EXPECT_EQ(window->shown, 1);
    EXPECT_EQ(window->owner, owner);
    EXPECT_EQ(window->help_file, "/installation/tallybook.hlp");
  }
  EXPECT_THAT(host->factory.windows, SizeIs(3));
  EXPECT_EQ(TheForms().HelpFile, "/installation/tallybook.hlp");
}

TEST_F(CDataExchangeGUITest, SetsTheNormalPointerWhereTheListOfDefinitionsIsShown) {
  bool was_busy = false;
  platform.input.SetPending(1);
  platform.input.OnRun([&] { was_busy |= platform.screen.Pointers().back() == Pointer::kBusy; });
  host->factory.prepare_form = [this](MemoryEdtForm& form) {
    form.acts = {
        [this](MemoryEdtForm&, EdtFormEvents&) { EXPECT_EQ(platform.screen.Pointers().back(), Pointer::kDefault); }};
  };
  EXPECT_TRUE(gui.ImportQDX(owner, book(), 1, 0));
  EXPECT_TRUE(was_busy);
}

TEST_F(CDataExchangeGUITest, PutsTheHostsTitleOverBoxesThatAreGivenNone) {
  host->app.title = "North Office";
  user().Type("frmImport", "Text1", " ").Click("frmImport", "SaveButtons1", SaveButtons::kMainButton);
  user().Close("frmImport");
  EXPECT_TRUE(gui.ImportCSV(owner, book(), true));
  ASSERT_THAT(platform.boxes.Shown(), SizeIs(1));
  EXPECT_EQ(platform.boxes.Shown()[0].text, "Filename cannot be blank.");
  EXPECT_EQ(platform.boxes.Shown()[0].caption, "North Office");
  EXPECT_EQ(ThePlatform().application_title, ScriptedPlatform::kTitle) << "as it was, once the conversation has ended";
}

TEST_F(CDataExchangeGUITest, ShowsItsDialogsOverTheOwner) {
  for (const Entry& entry : Entries()) {
    user().On(entry.first_form, [this](Form& form) {
      const auto* const window = platform.screen.Find(form.Hwnd());
      ASSERT_NE(window, nullptr);
      EXPECT_EQ(window->parent, owner) << form.Name();
    });
    user().Close(entry.first_form);
    EXPECT_TRUE(entry.call());
  }
}

TEST_F(CDataExchangeGUITest, StartsEveryConversationAfresh) {
  LimitBrowsing();
  user().Type("frmImport", "Text1", "/typed.csv").Close("frmImport");
  EXPECT_TRUE(gui.ImportCSV(owner, book(), true));
  host->book.rights = {"A"};
  Look<frmImport>("frmImport", [this](frmImport& shown) {
    EXPECT_TRUE(shown.FullBrowsing());
    EXPECT_EQ(shown.Text1.Text(), Path("Import.CSV"));
  });
  user().Close("frmImport");
  EXPECT_TRUE(gui.ImportCSV(owner, book(), true));
}

TEST_F(CDataExchangeGUITest, EndsAsCancelledWhereThePlatformHasNoWindows) {
  ScreenWithoutWindows no_windows;
  Platform without = ThePlatform();
  without.screen = &no_windows;
  InstallPlatform(without);
  for (const Entry& entry : Entries()) EXPECT_TRUE(entry.call()) << entry.name;
  EXPECT_THAT(Written(), IsEmpty());
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(OpenForms(), IsEmpty());
}

TEST_F(CDataExchangeGUITest, LogsWhatFailsBeforeTheFirstWindow) {
  for (const Entry& entry : Entries()) {
    host->app.log.errors.clear();
    host->record.FailOn("App.HelpFile", 1, Failure(FailureNumber::kDeviceError, "no", "Engine"));
    EXPECT_FALSE(entry.call());
    ASSERT_THAT(Logged(), SizeIs(1)) << entry.name;
    EXPECT_EQ(Logged()[0].message, "Engine - CDataExchangeGUI:" + entry.name);
  }
  host->app.log.errors.clear();
  host->record.FailOn("NewEdtForm", 1, Failure(FailureNumber::kFeatureUnavailable, "no windows", "Factory"));
  EXPECT_FALSE(gui.ImportQDX(owner, book(), 1, 0));
  ASSERT_THAT(Logged(), SizeIs(1));
  EXPECT_EQ(Logged()[0].message, "Factory - CDataExchangeGUI:ImportQDX");
  EXPECT_THAT(Boxes(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
