#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <vector>

#include "forms/HostControls.h"
#include "forms/ListControls.h"
#include "forms/OptionGroup.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "forms/modAllUI.h"
#include "tests/support/ScriptedPlatform.h"
#include "tests/support/ScriptedUser.h"

namespace tallybook::testing {
namespace {

// A dialog with a control of each kind, which hides when one of its save buttons is clicked.
struct Sample {
  explicit Sample(const Text& name = "dlgSample") : form(name) {
    list.AddItem("First", 1);
    list.AddItem("Second", 2);
    buttons.Click.Connect([this](Integer button) {
      pressed.push_back(button);
      HideLikeModal(form);
    });
    form.QueryClose.Connect([this](bool& refuse) {
      refuse = true;
      HideLikeModal(form);
    });
    form.KeyDown.Connect([this](Integer& key, Integer /*shift*/) { keys.push_back(key); });
  }

  Form form;
  TextBox box{form, "Text1"};
  ComboBox list{form, "Combo1"};
  CheckBox check{form, "Check1"};
  OptionGroup options{form, "optLength", 1, 3};
  Label label{form, "Label1"};
  SaveButtons buttons{form, "SaveButtons1"};
  std::vector<Integer> pressed;
  std::vector<Integer> keys;
};

class ScriptedUserTest : public ::testing::Test {
 protected:
  ScriptedPlatform platform_{FilesIn::kMemory};
  ScriptedUser& user_ = platform_.user;
  Sample sample_;
};

TEST_F(ScriptedUserTest, DoesEachStepThroughTheControlsOfTheDialogThatWaits) {
  user_.Type("dlgSample", "Text1", "typed")
      .Choose("dlgSample", "Combo1", "Second")
      .Click("dlgSample", "Check1")
      .Click("dlgSample", "optLength", 2)
      .Press("dlgSample", "Text1", 112)
      .Click("dlgSample", "SaveButtons1", SaveButtons::kMainButton);
  ShowLikeModal(sample_.form, 0);
  EXPECT_EQ(sample_.box.Text(), "typed");
  EXPECT_EQ(ComboItemTag(sample_.list), 2);
  EXPECT_TRUE(sample_.check.Checked());
  EXPECT_EQ(sample_.options.Selected(), 2);
  EXPECT_EQ(sample_.keys, std::vector<Integer>{112});
  EXPECT_EQ(sample_.pressed, std::vector<Integer>{SaveButtons::kMainButton});
  EXPECT_EQ(user_.StepsLeft(), 0U);
}

TEST_F(ScriptedUserTest, TypesKeyByKeyThroughTheFilterOfTheBox) {
  sample_.box.KeyPress.Connect([](Integer& key) { key = FilterKey(key, "09"); });
  user_.TypeKeys("dlgSample", "Text1", "1x2").Close("dlgSample");
  ShowLikeModal(sample_.form, 0);
  EXPECT_EQ(sample_.box.Text(), "12");
}

TEST_F(ScriptedUserTest, PressesKeysWhereverTheFocusIsBeforeTheNextStep) {
  user_.On("dlgSample", [&](Form& /*form*/) { sample_.box.SetFocus(); })
      .Keys("dlgSample", "ab{TAB}{DOWN 2}")
      .On("dlgSample", [&](Form& /*form*/) { EXPECT_EQ(sample_.list.SelectedText(), "Second"); })
      .Close("dlgSample");
  ShowLikeModal(sample_.form, 0);
  EXPECT_EQ(sample_.box.Text(), "ab");
}

TEST_F(ScriptedUserTest, ReachesWhatACaptionMarksAndSelectsTheTextOfABox) {
  sample_.box.SetCaption("&Title:");
  sample_.box.SetText("before");
  sample_.list.SetCaption("T&ype");
  sample_.buttons.SetCaption("&Save");
  user_.Keys("dlgSample", "%tafter%y{DOWN}")
      .On("dlgSample", [&](Form& /*form*/) { EXPECT_EQ(sample_.list.SelectedText(), "First"); })
      .Keys("dlgSample", "%q")
      .Keys("dlgSample", "%s");
  ShowLikeModal(sample_.form, 0);
  EXPECT_EQ(sample_.box.Text(), "after");
  ASSERT_EQ(sample_.pressed.size(), 1U);
  EXPECT_EQ(sample_.pressed[0], SaveButtons::kMainButton);
}

TEST_F(ScriptedUserTest, PressesTheButtonWithTheFocusByEnterOrABlank) {
  for (const char* key : {"{ENTER}", " "}) {
    user_.On("dlgSample", [&](Form& /*form*/) { sample_.buttons.SetFocus(); }).Keys("dlgSample", key);
    ShowLikeModal(sample_.form, 0);
  }
  EXPECT_EQ(sample_.pressed.size(), 2U);
}

TEST_F(ScriptedUserTest, DoesOneStepATurn) {
  std::vector<Double> slept;
  const auto look = [&](Form& /*form*/) { slept.push_back(platform_.clock.Slept()); };
  user_.On("dlgSample", look).On("dlgSample", look).Wait(2).On("dlgSample", look).Close("dlgSample");
  ShowLikeModal(sample_.form, 0);
  ASSERT_EQ(slept.size(), 3U);
  EXPECT_NEAR(slept[1] - slept[0], kModalSleep, 1e-6);
  EXPECT_NEAR(slept[2] - slept[1], 4 * kModalSleep, 1e-6);
}

TEST_F(ScriptedUserTest, FollowsTheDialogsThatItsStepsOpen) {
  Sample upper("dlgUpper");
  user_.On("dlgSample", [&](Form& /*form*/) { ShowLikeModal(upper.form, 0); })
      .Type("dlgUpper", "Text1", "above")
      .Close("dlgUpper")
      .Type("dlgSample", "Text1", "below")
      .Close("dlgSample");
  ShowLikeModal(sample_.form, 0);
  EXPECT_EQ(upper.box.Text(), "above");
  EXPECT_EQ(sample_.box.Text(), "below");
}

TEST_F(ScriptedUserTest, DoesNothingToADialogThatIsDisabledOrHidden) {
  user_.Type("dlgSample", "Text1", "typed");
  sample_.form.Show();
  sample_.form.SetEnabled(false);
  EXPECT_FALSE(user_.IsReady());
  sample_.form.SetEnabled(true);
  EXPECT_TRUE(user_.IsReady());
  sample_.form.Hide();
  EXPECT_FALSE(user_.IsReady());
  user_.Forget();
}

// The failures that the scripted user reports are caught here by gtest's own means, which want static objects.
ScriptedPlatform* the_platform = nullptr;
Sample* the_sample = nullptr;

class ScriptedUserFailureTest : public ScriptedUserTest {
 protected:
  ScriptedUserFailureTest() {
    the_platform = &platform_;
    the_sample = &sample_;
  }
};

TEST_F(ScriptedUserFailureTest, RunningDryNamesTheDialogThatWaitsAndHidesIt) {
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "The script has run dry while dlgSample waits");
  EXPECT_FALSE(sample_.form.Visible());
  EXPECT_EQ(ModalDepth(), 0);
}

TEST_F(ScriptedUserFailureTest, RunningDryNamesTheFormThatTheNextStepNeeds) {
  user_.Close("dlgOther");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "its next step needs dlgOther");
  EXPECT_NONFATAL_FAILURE(the_platform->user.ExpectDone(), "1 steps of the script were never done");
}

TEST_F(ScriptedUserFailureTest, AStepThatCannotBeDoneFailsWithTheReason) {
  user_.Click("dlgSample", "Command9").Close("dlgSample");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "dlgSample has no control Command9");
  sample_.check.SetEnabled(false);
  user_.Click("dlgSample", "Check1").Close("dlgSample");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0),
                          "cannot click Check1 of dlgSample: it is disabled or hidden");
  user_.Click("dlgSample", "Label1").Close("dlgSample");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "Label1 is nothing that can be clicked");
  user_.Choose("dlgSample", "Combo1", "Third").Close("dlgSample");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "Combo1 has no entry \"Third\"");
  user_.Type("dlgSample", "Combo1", "Third").Close("dlgSample");
  EXPECT_NONFATAL_FAILURE(ShowLikeModal(the_sample->form, 0), "Combo1 is of another kind");
}

}  // namespace
}  // namespace tallybook::testing
