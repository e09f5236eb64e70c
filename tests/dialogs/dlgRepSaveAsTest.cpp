#include <string>

#include "base/CodePage.h"
#include "dialogs/dlgRepSaveAs.h"
#include "tests/dialogs/DialogsFixture.h"

namespace tallybook::testing {
namespace {

using ::testing::IsEmpty;
using ::testing::SizeIs;

const Text kForm = "dlgRepSaveAs";
constexpr Integer kEnter = 13;

class dlgRepSaveAsTest : public DialogsFixture {
 protected:
  bool Show() {
    ShowLikeModal(form, owner);
    return !form.Cancelled();
  }
  // Types the codes into a box that holds `text` with the cursor at its start, and gives what it holds then.
  Text Typed(const Text& text, std::initializer_list<Integer> codes) {
    form.Text1.SetText(text);
    form.Text1.SetSelection(0, 0);
    platform.boxes.ForgetShown();
    user().On(kForm, [this, codes](Form&) {
      std::string keys;
      for (const Integer code : codes) keys += static_cast<char>(code);
      EXPECT_TRUE(TheHands().TypeKeys(form.Text1, FromCodePage(keys)));
    });
    user().Click(kForm, "Command1", 0);
    EXPECT_FALSE(Show());
    return form.Text1.Text();
  }
  [[nodiscard]] std::size_t Beeps() const { return platform.boxes.Sounds().size(); }

  dlgRepSaveAs form;
};

TEST_F(dlgRepSaveAsTest, ShowsItsWords) {
  form.SetCaption("something else");
  Look<dlgRepSaveAs>(kForm, [](dlgRepSaveAs& shown) {
    EXPECT_EQ(shown.Caption(), "Save as New");
    EXPECT_EQ(shown.Label1[0].Caption(), "OK to Save this report under the new Title shown below?");
    EXPECT_EQ(shown.Label1[1].Caption(), "New Title:");
    EXPECT_EQ(shown.Command1[0].Caption(), "&Cancel");
    EXPECT_EQ(shown.Command1[1].Caption(), "&OK");
    EXPECT_TRUE(shown.Cancelled());
    shown.Picture1.Paint.Raise();
    EXPECT_EQ(shown.Picture1.StandardIcon(), 32514);
  });
  user().Click(kForm, "Command1", 1);
  EXPECT_TRUE(Show());
}

TEST_F(dlgRepSaveAsTest, CountsCancelAndCloseBoxAlike) {
  user().Click(kForm, "Command1", 0);
  EXPECT_FALSE(Show());
  user().Click(kForm, "Command1", 1);
  EXPECT_TRUE(Show());
  user().Close(kForm);
  EXPECT_FALSE(Show());
  EXPECT_TRUE(form.IsLoaded());
  EXPECT_FALSE(form.Visible());
}

TEST_F(dlgRepSaveAsTest, IsCancelledAnewEachTimeItIsShown) {
  user().Click(kForm, "Command1", 1);
  EXPECT_TRUE(Show());
  user().On(kForm, HideLikeModal);
  EXPECT_FALSE(Show()) << "nobody pressed a button";
}

TEST_F(dlgRepSaveAsTest, RefusesADoubleQuoteWithASound) {
  EXPECT_EQ(Typed("", {'a', '"', 'b'}), "ab");
  EXPECT_THAT(platform.boxes.Sounds(), SizeIs(1));
}

TEST_F(dlgRepSaveAsTest, TakesEveryPrintableCharacterButTheQuote) {
  for (int code = 32; code < 256; ++code) {
    const bool refused = code == '"' || (code >= 127 && code <= 160);
    EXPECT_EQ(Typed("", {static_cast<Integer>(code)}).empty(), refused) << code;
    EXPECT_EQ(Beeps(), refused ? 1U : 0U) << code;
  }
}

TEST_F(dlgRepSaveAsTest, PassesCopyPasteCutAndBackspace) {
  Integer heard = 0;
  form.Text1.KeyPress.Connect([&](Integer& key) { heard = key; });  // behind the dialog's own filter
  for (const Integer code : {Integer{3}, Integer{8}, Integer{22}, Integer{24}}) {
    Typed("title", {code});
    EXPECT_EQ(heard, code);
    EXPECT_EQ(Beeps(), 0U) << code;
  }
}

TEST_F(dlgRepSaveAsTest, RefusesTheOtherControlCodesWithASoundAndEnterWithout) {
  Integer heard = -1;
  form.Text1.KeyPress.Connect([&](Integer& key) { heard = key; });
  for (Integer code = 1; code < 25; ++code) {
    if (code == 1 || code == 3 || code == 8 || code == 22 || code == 24) continue;
    if (code == kEnter && TheStage() != nullptr) continue;  // which presses the main button of a real window
    EXPECT_EQ(Typed("title", {code}), "title");
    EXPECT_EQ(heard, 0) << code;
    EXPECT_EQ(Beeps(), code == kEnter ? 0U : 1U) << code;
  }
}

TEST_F(dlgRepSaveAsTest, SelectsAllOfATextWithControlAAndDropsTheKey) {
  Integer heard = -1;
  form.Text1.KeyPress.Connect([&](Integer& key) { heard = key; });
  EXPECT_EQ(Typed("title", {1}), "title");
  EXPECT_EQ(heard, 0);
  EXPECT_EQ(form.Text1.SelStart(), 0);
  EXPECT_EQ(form.Text1.SelLength(), 6);
  EXPECT_THAT(platform.boxes.Sounds(), IsEmpty());
}

TEST_F(dlgRepSaveAsTest, LeavesAnEmptyBoxAloneAtControlA) {
  Integer heard = -1;
  form.Text1.KeyPress.Connect([&](Integer& key) { heard = key; });
  EXPECT_EQ(Typed("", {1}), "");
  EXPECT_EQ(heard, 0);
  EXPECT_EQ(form.Text1.SelLength(), 0);
}

TEST_F(dlgRepSaveAsTest, ConsumesF1) {
  Look<dlgRepSaveAs>(kForm, [](dlgRepSaveAs& shown) { EXPECT_FALSE(shown.Text1.UserKeyDown(kF1Key)); });
  user().Click(kForm, "Command1", 0);
  EXPECT_FALSE(Show());
}

}  // namespace
}  // namespace tallybook::testing
