#include <vector>

#include "dialogs/dlgQDXImp.h"
#include "exchange/CDataExchange.h"
#include "tests/dialogs/DialogsFixture.h"
#include "tests/support/FailsWith.h"

namespace tallybook::testing {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

const Text kForm = "dlgQDXImp";

class dlgQDXImpTest : public DialogsFixture {
 protected:
  dlgQDXImpTest() {
    exchange.SetOwner(&book());
    exchange.InitFile();
    exchange.SetDesc(kSelected, "Nightly");
    exchange.SetQdxFileName(kSelected, Path("NORTH.QDX"));
    const Date day = DateFromParts(2003, 1, 1);
    EXPECT_TRUE(exchange.WriteQDXFile(Path("NORTH.QDX"), day, day + 1, false, 1.0F));
  }
  [[nodiscard]] std::vector<Text> Header() const {
    std::vector<Text> cells;
    for (Long row = 0; row < form.QDXGrid.Rows(); ++row) cells.push_back(form.QDXGrid.Cell(row, 1));
    return cells;
  }

  CDataExchange exchange{host->factory};
  dlgQDXImp form;
};

TEST_F(dlgQDXImpTest, ShowsTheDefinitionAndItsFile) {
  exchange.SetDisp(2);
  exchange.SetAcctMatch(-2);
  exchange.SetFldMatch(-1);
  form.SetFields(exchange);
  EXPECT_EQ(form.Text1.Text(), "Nightly");
  EXPECT_EQ(form.Text2.Text(), Path("NORTH.QDX"));
  EXPECT_EQ(form.Combo1.SelectedText(), "Renamed (*.XDQ)");
  EXPECT_EQ(form.Combo2.SelectedText(), "All-to-One");
  EXPECT_EQ(form.Combo3.SelectedText(), "One-for-One");
  EXPECT_THAT(Header(), ElementsAre(Path("NORTH.QDX"), "North Shop", "Tuesday, February 3, 2004 14:05:09",
                                    "Wednesday, January 1, 2003", "Thursday, January 2, 2003", "Day"));
}

TEST_F(dlgQDXImpTest, BearsItsCaptions) {
  EXPECT_EQ(form.Caption(), "Import QDX File");
  EXPECT_EQ(form.Text1.Caption(), "Title:");
  EXPECT_EQ(form.Text2.Caption(), "QDX Filename: ");
  EXPECT_EQ(form.Combo1.Caption(), "When imported, the QDX file will be: ");
  EXPECT_EQ(form.Combo2.Caption(), "Match Accounts: ");
  EXPECT_EQ(form.Combo3.Caption(), "Match Datafields: ");
  EXPECT_EQ(form.Combo4.Caption(), "&Imported information will be: ");
  EXPECT_EQ(form.SaveButtons1.Caption(), "&Import");
}

TEST_F(dlgQDXImpTest, LetsNothingBeChangedButTheOperation) {
  form.SetFields(exchange);
  for (const TextBox* box : {&form.Text1, &form.Text2}) EXPECT_TRUE(box->Locked() && box->Shaded());
  for (const ComboBox* list : {&form.Combo1, &form.Combo2, &form.Combo3})
    EXPECT_TRUE(!list->Enabled() && list->Shaded());
  EXPECT_TRUE(form.Combo4.Enabled());
  std::vector<Text> entries;
  for (Integer i = 0; i < form.Combo4.ListCount(); ++i) entries.push_back(form.Combo4.List(i));
  EXPECT_THAT(entries, ElementsAre("Added", "Subtracted", "Replacing", "Zeroing Out"));
}

TEST_F(dlgQDXImpTest, ProposesReplacingWhateverWasChosenBefore) {
  form.SetFields(exchange);
  EXPECT_EQ(form.Math(), 3);
  form.SetMath(1);
  form.SetFields(exchange);
  EXPECT_EQ(form.Math(), 3);
}

TEST_F(dlgQDXImpTest, CountsTheOperationsFromOne) {
  form.SetFields(exchange);
  for (Integer math = 1; math <= 4; ++math) {
    form.SetMath(math);
    EXPECT_EQ(form.Math(), math);
  }
  EXPECT_EQ(form.Combo4.SelectedText(), "Zeroing Out");
  EXPECT_THAT([&] { form.SetMath(5); }, FailsWith(FailureNumber::kInvalidArgument));
}

TEST_F(dlgQDXImpTest, ShowsAnEmptyHeaderForANameWithWildcards) {
  form.SetFields(exchange);
  exchange.SetQdxFileName(kSelected, Path("N*.QDX"));
  form.SetFields(exchange);
  EXPECT_THAT(Header(), Each(""));
  EXPECT_EQ(form.Text2.Text(), Path("N*.QDX"));
}

TEST_F(dlgQDXImpTest, IsCancelledUntilTheMainButtonIsPressed) {
  form.SetFields(exchange);
  EXPECT_TRUE(form.Cancelled());
  user().Click(kForm, "SaveButtons1", SaveButtons::kCancelButton);
  ShowLikeModal(form, owner);
  EXPECT_TRUE(form.Cancelled());
  user().Choose(kForm, "Combo4", "Added").Click(kForm, "SaveButtons1", SaveButtons::kMainButton);
  ShowLikeModal(form, owner);
  EXPECT_FALSE(form.Cancelled());
  EXPECT_EQ(form.Math(), 1);
  form.SetFields(exchange);
  EXPECT_TRUE(form.Cancelled());
}

TEST_F(dlgQDXImpTest, TakesTheCloseBoxForACancelAndStaysLoaded) {
  form.SetFields(exchange);
  user().Close(kForm);
  ShowLikeModal(form, owner);
  EXPECT_TRUE(form.Cancelled());
  EXPECT_TRUE(form.IsLoaded());
}

TEST_F(dlgQDXImpTest, AsksForItsHelpTopicAtF1AndConsumesTheKey) {
  form.SetFields(exchange);
  form.SetHelpContext(4711);
  Look<dlgQDXImp>(kForm, [](dlgQDXImp& shown) { EXPECT_FALSE(shown.Combo4.UserKeyDown(kF1Key)); });
  user().Close(kForm);
  ShowLikeModal(form, owner);
  EXPECT_THAT(host->record.ArgumentsOf("App.HelpTopic"), ElementsAre("4711"));
}

TEST_F(dlgQDXImpTest, TellsOfAHelpDisplayThatFailsAndStaysAsItWas) {
  form.SetFields(exchange);
  host->record.FailOn("App.HelpTopic", 1, Failure(FailureNumber::kDeviceError, "torn", "App"));
  user().Choose(kForm, "Combo4", "Added").Press(kForm, "Combo4", kF1Key);
  user().Click(kForm, "SaveButtons1", SaveButtons::kMainButton);
  ShowLikeModal(form, owner);
  EXPECT_THAT(platform.boxes.Shown(),
              ElementsAre(ShownBox{"The help cannot be shown: torn", kExclamationIcon, host->app.title, kOk}));
  EXPECT_FALSE(form.Cancelled());
  EXPECT_EQ(form.Math(), 1);
}

TEST_F(dlgQDXImpTest, HasNoHelpBeforeItKnowsItsExchangeObject) {
  form.Show();
  EXPECT_FALSE(form.Combo4.UserKeyDown(kF1Key));
  EXPECT_THAT(host->record.ArgumentsOf("App.HelpTopic"), ::testing::IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
