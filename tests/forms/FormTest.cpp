#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "forms/Form.h"
#include "forms/Grid.h"
#include "forms/PlainControls.h"
#include "forms/TextBox.h"
#include "tests/support/FailsWith.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class FormTest : public ::testing::Test {
 protected:
  FormTest() {
    form_.Loading.Connect([this] { told_.emplace_back("loading"); });
    form_.Unloading.Connect([this] { told_.emplace_back("unloading"); });
    form_.Activate.Connect([this] { told_.emplace_back("activate"); });
  }
  [[nodiscard]] const ScriptedScreen::Window* Window() { return platform_.screen.Find(form_.Hwnd()); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  Form form_{"frmTest"};
  std::vector<Text> told_;
};

TEST_F(FormTest, HasNoWindowBeforeItIsLoaded) {
  EXPECT_FALSE(form_.IsLoaded());
  EXPECT_EQ(form_.Hwnd(), 0);
  EXPECT_EQ(form_.WindowState(), kNormalWindow);
  form_.SetWindowState(kMinimisedWindow);
  EXPECT_EQ(form_.WindowState(), kNormalWindow);
  EXPECT_THAT(OpenForms(), IsEmpty());
}

TEST_F(FormTest, ShowingLoadsItOnce) {
  form_.Show();
  form_.Hide();
  form_.Show();
  EXPECT_THAT(told_, ElementsAre("loading", "activate", "activate"));
  EXPECT_THAT(OpenForms(), ElementsAre(&form_));
}

TEST_F(FormTest, HidingKeepsItLoaded) {
  TextBox box(form_, "Text1");
  form_.Show();
  box.SetText("kept");
  form_.Hide();
  EXPECT_TRUE(form_.IsLoaded());
  EXPECT_FALSE(form_.Visible());
  EXPECT_FALSE(Window()->visible);
  EXPECT_EQ(box.Text(), "kept");
}

TEST_F(FormTest, UnloadingTakesTheWindowAwayAndIsHarmlessTwice) {
  form_.Show();
  form_.Unload();
  form_.Unload();
  EXPECT_THAT(told_, ElementsAre("loading", "activate", "unloading"));
  EXPECT_FALSE(form_.IsLoaded());
  EXPECT_FALSE(form_.Visible());
  EXPECT_THAT(OpenForms(), IsEmpty());
  EXPECT_THAT(platform_.screen.Windows(), IsEmpty());
}

TEST_F(FormTest, UnloadingFromWithinItsUnloadingIsHarmless) {
  form_.Unloading.Connect([this] { form_.Unload(); });
  form_.Load();
  form_.Unload();
  EXPECT_THAT(told_, ElementsAre("loading", "unloading"));
  EXPECT_FALSE(form_.IsLoaded());
}

TEST_F(FormTest, AFailureWhileItUnloadsLeavesItLoaded) {
  bool fails = true;
  form_.Unloading.Connect([&] {
    if (std::exchange(fails, false)) throw Failure(FailureNumber::kDeviceError, "stuck");
  });
  form_.Load();
  EXPECT_THAT([this] { form_.Unload(); }, FailsWith(FailureNumber::kDeviceError));
  EXPECT_TRUE(form_.IsLoaded());
  form_.Unload();
  EXPECT_FALSE(form_.IsLoaded());
}

TEST_F(FormTest, CanBeLoadedAgain) {
  form_.Load();
  form_.Unload();
  form_.Load();
  EXPECT_THAT(told_, ElementsAre("loading", "unloading", "loading"));
  EXPECT_TRUE(form_.IsLoaded());
}

TEST_F(FormTest, OpenFormsAreInTheOrderOfTheirLoading) {
  Form second("frmSecond");
  second.Load();
  form_.Load();
  EXPECT_THAT(OpenForms(), ElementsAre(&second, &form_));
}

TEST_F(FormTest, AFormThatGoesTakesItsWindowAlongWithoutAWord) {
  {
    Form gone("frmGone");
    gone.Unloading.Connect([this] { told_.emplace_back("gone"); });
    gone.Show();
  }
  EXPECT_THAT(OpenForms(), IsEmpty());
  EXPECT_THAT(platform_.screen.Windows(), IsEmpty());
  EXPECT_THAT(told_, IsEmpty());
}

TEST(FormWithoutPlatformTest, AFormMayOutliveThePlatform) {
  std::optional<Form> form("frmTest");
  {
    const ScriptedPlatform platform(FilesIn::kMemory);
    form->Show();
  }
  ASSERT_FALSE(IsPlatformInstalled());
  form.reset();
  EXPECT_THAT(OpenForms(), IsEmpty());
}

TEST_F(FormTest, ItsLifeExpiresWithIt) {
  auto form = std::make_unique<Form>("frmShort");
  const std::weak_ptr<const void> life = form->Life();
  EXPECT_FALSE(life.expired());
  form.reset();
  EXPECT_TRUE(life.expired());
}

TEST_F(FormTest, ClosingAsksFirstAndUnloadsWhereNobodyRefuses) {
  bool refuses = true;
  form_.QueryClose.Connect([&](bool& refuse) { refuse = refuses; });
  form_.Show();
  EXPECT_FALSE(form_.UserClose());
  EXPECT_TRUE(form_.IsLoaded());
  refuses = false;
  EXPECT_TRUE(form_.UserClose());
  EXPECT_FALSE(form_.IsLoaded());
}

TEST_F(FormTest, AUserCannotCloseWhatIsHiddenOrDisabled) {
  int asked = 0;
  form_.QueryClose.Connect([&](bool& /*refuse*/) { ++asked; });
  form_.Load();
  EXPECT_FALSE(form_.UserClose());
  form_.Show();
  form_.SetEnabled(false);
  EXPECT_FALSE(form_.UserClose());
  EXPECT_EQ(asked, 0);
}

TEST_F(FormTest, TheCloseBoxCanRunAnActionAndCloseNothing) {
  int cancelled = 0;
  form_.OnCloseBox([&] { ++cancelled; });
  form_.Show();
  EXPECT_FALSE(form_.UserClose());
  EXPECT_TRUE(form_.IsLoaded());
  EXPECT_EQ(cancelled, 1);
}

TEST_F(FormTest, AnActionOfTheCloseBoxCanUnloadTheFormItself) {
  form_.OnCloseBox([&] { form_.Unload(); });
  form_.Show();
  EXPECT_FALSE(form_.UserClose());
  EXPECT_FALSE(form_.IsLoaded());
}

TEST_F(FormTest, F1RunsItsActionAndNoControlHearsOfIt) {
  TextBox box(form_, "Text1");
  std::vector<Integer> heard;
  int helped = 0;
  box.KeyDown.Connect([&](Integer& key, Integer) { heard.push_back(key); });
  form_.OnF1([&] { ++helped; });
  form_.Show();
  EXPECT_FALSE(box.UserKeyDown(kF1Key));
  EXPECT_TRUE(box.UserKeyDown(kF1Key + 1));
  EXPECT_EQ(helped, 1);
  EXPECT_THAT(heard, ElementsAre(Integer{kF1Key + 1}));
}

TEST_F(FormTest, TheTabKeyGoesFromStopToStopInTabOrderAndRoundTheEnds) {
  const Label label(form_, "Label1");
  const TextBox first(form_, "Text1");
  TextBox hidden(form_, "Text2");
  Grid no_stop(form_, "Grid1");
  const CommandButton last(form_, "Command1");
  hidden.SetVisible(false);
  no_stop.SetTabStop(false);
  EXPECT_FALSE(form_.UserTab()) << "it is not shown";
  form_.Show();
  std::vector<const Control*> reached;
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(form_.UserKey(kTabKey));
    reached.push_back(form_.ActiveControl());
  }
  EXPECT_TRUE(form_.UserKey(kTabKey, kShiftState));
  reached.push_back(form_.ActiveControl());
  EXPECT_THAT(reached, ElementsAre(&first, &last, &first, &last));
}

TEST_F(FormTest, TheTabKeyGoesOnFromAControlThatCannotBeReachedAnyMore) {
  TextBox first(form_, "Text1");
  Frame page(form_, "Page");
  TextBox second(form_, "Text2");
  const TextBox third(form_, "Text3");
  second.SetContainer(&page);
  form_.Show();
  second.SetFocus();
  page.SetVisible(false);
  EXPECT_TRUE(form_.UserTab());
  EXPECT_EQ(form_.ActiveControl(), &third);
}

TEST_F(FormTest, AKeyGoesToTheControlWithTheFocusWithItsCharacter) {
  TextBox first(form_, "Text1");
  TextBox second(form_, "Text2");
  form_.Show();
  EXPECT_FALSE(form_.UserKey('A', 0, 'a')) << "nobody has the focus";
  second.SetFocus();
  EXPECT_TRUE(form_.UserKey('A', 0, 'a'));
  second.KeyDown.Connect([](Integer& key, Integer) { key = 0; });
  EXPECT_FALSE(form_.UserKey('B', 0, 'b')) << "a key that is consumed gives no character";
  EXPECT_EQ(second.Text(), "a");
  EXPECT_EQ(first.Text(), "");
  form_.SetEnabled(false);
  EXPECT_FALSE(form_.UserKey(kTabKey));
  EXPECT_TRUE(second.HasFocus());
}

TEST_F(FormTest, ADisabledFormHasADisabledWindow) {
  form_.SetEnabled(false);
  form_.Load();
  EXPECT_FALSE(Window()->enabled);
  form_.SetEnabled(true);
  EXPECT_TRUE(Window()->enabled);
}

TEST_F(FormTest, WhatItShowsIsToldToTheRenderer) {
  int changes = 0;
  form_.Changed.Connect([&] { ++changes; });
  form_.SetCaption("Title");
  form_.SetCaption("Title");
  form_.SetEnabled(false);
  form_.SetEnabled(false);
  form_.SetFont("Host", 9);
  EXPECT_EQ(changes, 3);
  EXPECT_EQ(form_.Caption(), "Title");
}

TEST_F(FormTest, FindsAControlByNameAndIndex) {
  const TextBox box(form_, "Text1");
  const Label first(form_, "Label1", 1);
  const Label second(form_, "Label1", 2);
  EXPECT_EQ(form_.Find("Text1"), &box);
  EXPECT_EQ(form_.Find("Label1", 2), &second);
  EXPECT_EQ(form_.Find("Label1"), nullptr);
  EXPECT_EQ(form_.Find("Label1", 3), nullptr);
  EXPECT_EQ(form_.Controls().size(), 3U);
  EXPECT_EQ(form_.Controls().at(1), &first) << "in tab order";
}

TEST_F(FormTest, UnloadingForgetsTheFocus) {
  TextBox box(form_, "Text1");
  form_.Show();
  box.SetFocus();
  form_.Unload();
  EXPECT_EQ(form_.ActiveControl(), nullptr);
}

TEST_F(FormTest, TheUserBringsItToTheFront) {
  form_.Show();
  const Long other = platform_.screen.AddHostWindow();
  platform_.screen.UserActivates(form_.Hwnd());
  EXPECT_EQ(platform_.screen.ActiveWindow(), form_.Hwnd());
  EXPECT_NE(other, form_.Hwnd());
  EXPECT_THAT(told_, ElementsAre("loading", "activate", "activate"));
}

using TimerTest = FormTest;

TEST_F(TimerTest, TicksWhileItIsOnAndItsFormIsLoaded) {
  Timer timer(form_, "Timer1");
  timer.SetInterval(1000);
  int ticks = 0;
  timer.Tick.Connect([&] { ++ticks; });
  form_.Load();
  timer.Elapse();
  EXPECT_EQ(ticks, 0) << "it starts off";
  timer.SetEnabled(true);
  timer.Elapse();
  EXPECT_EQ(ticks, 1);
  form_.Unload();
  timer.Elapse();
  EXPECT_EQ(ticks, 1);
  EXPECT_THAT(form_.Timers(), ElementsAre(&timer));
  EXPECT_EQ(timer.Interval(), 1000);
}

TEST_F(TimerTest, ATimerThatGoesLeavesItsForm) {
  { const Timer timer(form_, "Timer1"); }
  EXPECT_THAT(form_.Timers(), IsEmpty());
}

}  // namespace
}  // namespace tallybook::testing
