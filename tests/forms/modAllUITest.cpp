#include <gmock/gmock.h>
#include <memory>
#include <optional>
#include <vector>

#include "base/Failure.h"
#include "forms/modAllUI.h"
#include "tests/support/FailsWith.h"
#include "tests/support/MemoryHost.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr Long kOffScreen = -32'000;

struct Dialog {
  explicit Dialog(const Text& name) : form(name) {}
  Form form;
  TextBox box{form, "Text1"};
  CommandButton button{form, "Command1"};
};

class ModalTest : public ::testing::Test {
 protected:
  void Show(Dialog& dialog) { ShowLikeModal(dialog.form, 0); }
  [[nodiscard]] Place PlaceOf(const Dialog& dialog) { return platform_.screen.WindowPlace(dialog.form.Hwnd()); }

  ScriptedPlatform platform_{FilesIn::kMemory};
  ScriptedScreen& screen_ = platform_.screen;
  ScriptedUser& user_ = platform_.user;
  Dialog lower_{"dlgLower"};
  Dialog upper_{"dlgUpper"};
};

// --- One dialog ------------------------------------------------------------------------------------------------------

TEST_F(ModalTest, ReturnsWhenTheDialogIsHiddenAndLeavesItLoaded) {
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(ModalDepth(), 1);
    EXPECT_EQ(TopModalDialog(), &form);
    HideLikeModal(form);
  });
  Show(lower_);
  EXPECT_FALSE(lower_.form.Visible());
  EXPECT_TRUE(lower_.form.IsLoaded());
  EXPECT_EQ(ModalDepth(), 0);
  EXPECT_EQ(TopModalDialog(), nullptr);
}

TEST_F(ModalTest, ReturnsWhenTheDialogIsUnloaded) {
  user_.Close("dlgLower");
  Show(lower_);
  EXPECT_FALSE(lower_.form.IsLoaded());
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(ModalTest, CanBeShownAgain) {
  for (int time = 0; time < 3; ++time) {
    user_.On("dlgLower", HideLikeModal);
    Show(lower_);
  }
  EXPECT_EQ(user_.StepsLeft(), 0U);
}

TEST_F(ModalTest, SetsTheDefaultPointerBeforeItShows) {
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_THAT(screen_.Pointers(), ElementsAre(Pointer::kDefault));
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, HandlesInputAndSleepsAMillisecondEachTurn) {
  user_.Wait(9).On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_NEAR(platform_.clock.Slept(), 11 * 0.001, 1e-6);
}

TEST_F(ModalTest, TimersTickWhileNobodyPressesAKey) {
  Timer timer(lower_.form, "Timer1");
  timer.SetInterval(15'000);
  timer.SetEnabled(true);
  int ticks = 0;
  timer.Tick.Connect([&] {
    if (++ticks == 2) HideLikeModal(lower_.form);
  });
  user_.Do([&] { platform_.clock.Advance(14); })
      .Do([&] {
        EXPECT_EQ(ticks, 0);
        platform_.clock.Advance(1);
      })
      .Wait(2)
      .Do([&] {
        EXPECT_EQ(ticks, 1);
        platform_.clock.Advance(15);
      });
  Show(lower_);
  EXPECT_EQ(ticks, 2);
}

TEST_F(ModalTest, LetsTheInterfaceRunEachTurnThoughNothingIsPending) {
  int runs = 0;
  platform_.input.SetUser(nullptr);
  platform_.clock.SetUser(nullptr);
  platform_.input.OnRun([&] {
    if (++runs == 7) HideLikeModal(lower_.form);
  });
  Show(lower_);
  EXPECT_EQ(runs, 7);
}

TEST_F(ModalTest, OnAScreenWithoutWindowsItReturnsAtOnce) {
  ScreenWithoutWindows none;
  ThePlatform().screen = &none;
  Show(lower_);
  EXPECT_FALSE(lower_.form.Visible());
  EXPECT_EQ(ModalDepth(), 0);
  lower_.form.Unload();
  ThePlatform().screen = &screen_;
}

// --- Owner -----------------------------------------------------------------------------------------------------------

TEST_F(ModalTest, TheActiveWindowOwnsTheDialogAndGetsTheInputBack) {
  const Long list = screen_.AddHostWindow();
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(screen_.Find(form.Hwnd())->parent, list);
    EXPECT_EQ(screen_.ActiveWindow(), form.Hwnd());
    HideLikeModal(form);
  });
  Show(lower_);
  EXPECT_EQ(screen_.Find(lower_.form.Hwnd())->parent, 0);
  EXPECT_EQ(screen_.ActiveWindow(), list);
}

TEST_F(ModalTest, TheOwnerGetsTheInputBackFromAWindowThatCameMeanwhile) {
  const Long list = screen_.AddHostWindow();
  user_.On("dlgLower", [&](Form& form) {
    screen_.AddHostWindow();
    HideLikeModal(form);
  });
  Show(lower_);
  EXPECT_EQ(screen_.ActiveWindow(), list);
}

TEST_F(ModalTest, TheWindowThatTheCallerNamesOwnsItWhereNoneIsActive) {
  const Long list = screen_.AddHostWindow(7001);
  screen_.LeaveProgram();
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(screen_.Find(form.Hwnd())->parent, list);
    HideLikeModal(form);
  });
  ShowLikeModal(lower_.form, list);
}

TEST_F(ModalTest, AWindowThatDoesNotExistOwnsNothing) {
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(screen_.Find(form.Hwnd())->parent, 0);
    EXPECT_EQ(PlaceOf(lower_), ScriptedScreen::kFormPlace);
    HideLikeModal(form);
  });
  ShowLikeModal(lower_.form, 4711);
}

TEST_F(ModalTest, ThePreviousParentIsSetBack) {
  const Long first = screen_.AddHostWindow();
  lower_.form.Load();
  screen_.SetParent(lower_.form.Hwnd(), first);
  screen_.AddHostWindow();
  user_.On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_EQ(screen_.Find(lower_.form.Hwnd())->parent, first);
}

TEST_F(ModalTest, TheDialogIsPlacedIntoTheMiddleOfAVisibleOwner) {
  screen_.AddHostWindow(0, {100, 100, 800, 600});
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(PlaceOf(lower_), (Place{300, 250, 400, 300}));
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, TheDialogStaysWithinTheWorkArea) {
  screen_.AddHostWindow(0, {1500, -250, 800, 300});
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(PlaceOf(lower_), (Place{1200, 0, 400, 300}));
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, AnOwnerThatIsActivatedBringsItsDialogToTheFront) {
  const Long list = screen_.AddHostWindow();
  user_.Do([&] { screen_.UserActivates(list); }).On("dlgLower", [&](Form& form) {
    EXPECT_EQ(screen_.ActiveWindow(), form.Hwnd());
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, ActivatingTheLowestOwnerBringsTheTopmostDialogToTheFront) {
  const Long list = screen_.AddHostWindow();
  user_.On("dlgLower", [&](Form& /*form*/) { Show(upper_); })
      .Do([&] { screen_.UserActivates(list); })
      .On("dlgUpper",
          [&](Form& form) {
            EXPECT_EQ(screen_.ActiveWindow(), form.Hwnd());
            HideLikeModal(form);
          })
      .On("dlgLower", HideLikeModal);
  Show(lower_);
}

TEST_F(ModalTest, TheDialogFollowsTheWindowStateOfAnOwnerFormOfOurs) {
  Form owner("frmOwner");
  owner.SetTag(kStaysEnabledTag);
  owner.Show();
  const auto expect_state = [&](Integer state) {
    user_.Do([&owner, state] { owner.SetWindowState(state); }).On("dlgLower", [state](Form& form) {
      EXPECT_EQ(form.WindowState(), state);
    });
  };
  expect_state(kMinimisedWindow);
  expect_state(kNormalWindow);
  expect_state(kMaximisedWindow);
  user_.On("dlgLower", HideLikeModal);
  Show(lower_);
}

TEST_F(ModalTest, TheDialogDoesNotFollowTheWindowStateOfAHostsWindow) {
  const Long list = screen_.AddHostWindow();
  user_.Do([&] { screen_.SetWindowState(list, kMinimisedWindow); }).On("dlgLower", [](Form& form) {
    EXPECT_EQ(form.WindowState(), kNormalWindow);
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, TheDialogIsOffTheScreenWhileItsOwnerIsHidden) {
  const Long list = screen_.AddHostWindow();
  const Place over_owner{300, 250, 400, 300};
  user_.Do([&] { screen_.HideWindow(list); })
      .On("dlgLower",
          [&](Form& /*form*/) {
            EXPECT_EQ(PlaceOf(lower_), (Place{kOffScreen, kOffScreen, 400, 300}));
          })
      .Wait(2)
      .Do([&] { screen_.ShowWindow(list); })
      .On("dlgLower", [&](Form& form) {
        EXPECT_EQ(PlaceOf(lower_), over_owner);
        HideLikeModal(form);
      });
  Show(lower_);
  EXPECT_EQ(PlaceOf(lower_), over_owner);
}

TEST_F(ModalTest, ADialogWhoseOwnerIsHiddenIsNotTakenForClosed) {
  const Long list = screen_.AddHostWindow();
  user_.Do([&] { screen_.HideWindow(list); }).Wait(3).On("dlgLower", [&](Form& form) {
    EXPECT_TRUE(screen_.IsVisible(form.Hwnd())) << "the window itself is shown";
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, ADialogWhoseWindowTheHostHidesIsClosed) {
  user_.On("dlgLower", [&](Form& form) { screen_.HideWindow(form.Hwnd()); });
  Show(lower_);
  EXPECT_FALSE(lower_.form.Visible());
}

TEST_F(ModalTest, OnceItsOwnerIsBackTheUserMovesTheDialogFreely) {
  const Long list = screen_.AddHostWindow();
  const Place moved{10, 20, 400, 300};
  user_.Do([&] { screen_.HideWindow(list); })
      .Wait(2)
      .Do([&] { screen_.ShowWindow(list); })
      .Wait(2)
      .On("dlgLower", [&](Form& form) { screen_.SetWindowPlace(form.Hwnd(), moved); })
      .Wait(2)
      .On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_EQ(PlaceOf(lower_), moved);
}

TEST_F(ModalTest, AMinimisedOwnerDoesNotPlaceTheDialog) {
  const Long list = screen_.AddHostWindow(0, {100, 100, 800, 600});
  screen_.SetWindowState(list, kMinimisedWindow);
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_EQ(PlaceOf(lower_), ScriptedScreen::kFormPlace);
    HideLikeModal(form);
  });
  Show(lower_);
}

TEST_F(ModalTest, ADialogThatEndsOffTheScreenIsBackForTheNextTime) {
  const Long list = screen_.AddHostWindow();
  user_.Do([&] { screen_.HideWindow(list); }).Wait(1).On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_EQ(PlaceOf(lower_), (Place{300, 250, 400, 300}));
}

TEST_F(ModalTest, AnOwnerThatIsTakenAwayLeavesTheDialogWhereItCanBeSeen) {
  const Long list = screen_.AddHostWindow();
  user_.Do([&] { screen_.HideWindow(list); })
      .Wait(1)
      .Do([&] { screen_.DestroyWindow(list); })
      .On("dlgLower", [&](Form& form) {
        EXPECT_EQ(PlaceOf(lower_), (Place{300, 250, 400, 300}));
        HideLikeModal(form);
      });
  Show(lower_);
}

// --- The other forms -------------------------------------------------------------------------------------------------

TEST_F(ModalTest, OtherFormsAreDisabledWithTheirControlsAndRestoredExactly) {
  Dialog other("frmOther");
  Dialog disabled("frmDisabled");
  other.form.Show();
  other.button.SetEnabled(false);
  disabled.form.Load();
  disabled.form.SetEnabled(false);
  user_.On("dlgLower", [&](Form& form) {
    EXPECT_FALSE(other.form.Enabled());
    EXPECT_FALSE(other.box.Enabled());
    EXPECT_FALSE(other.button.Enabled());
    EXPECT_FALSE(disabled.form.Enabled());
    EXPECT_TRUE(form.Enabled());
    EXPECT_TRUE(lower_.box.Enabled());
    HideLikeModal(form);
  });
  Show(lower_);
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_TRUE(other.box.Enabled());
  EXPECT_FALSE(other.button.Enabled());
  EXPECT_FALSE(disabled.form.Enabled());
  EXPECT_TRUE(disabled.box.Enabled());
}

TEST_F(ModalTest, AFormTaggedOneStaysUsable) {
  Dialog other("frmOther");
  other.form.SetTag("1");
  other.form.Show();
  int clicks = 0;
  other.button.Click.Connect([&] { ++clicks; });
  user_.Click("frmOther", "Command1").On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_EQ(clicks, 1);
}

TEST_F(ModalTest, AFormThatWasUnloadedMeanwhileIsRestoredToo) {
  Dialog other("frmOther");
  other.form.Show();
  user_.Do([&] { other.form.Unload(); }).On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_TRUE(other.box.Enabled());
}

TEST_F(ModalTest, AFormOrAControlThatIsGoneMeanwhileIsPassedOver) {
  auto gone = std::make_unique<Dialog>("frmGone");
  gone->form.Show();
  Dialog other("frmOther");
  auto extra = std::make_unique<TextBox>(other.form, "Text2");
  other.form.Show();
  user_
      .Do([&] {
        gone.reset();
        extra.reset();
      })
      .On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

// --- Nesting ---------------------------------------------------------------------------------------------------------

TEST_F(ModalTest, ADialogShownFromWithinADialogNests) {
  user_
      .On("dlgLower",
          [&](Form& /*form*/) {
            Show(upper_);
            EXPECT_TRUE(lower_.form.Enabled());
            EXPECT_TRUE(lower_.form.Visible());
          })
      .On("dlgUpper",
          [&](Form& form) {
            EXPECT_EQ(ModalDepth(), 2);
            EXPECT_EQ(TopModalDialog(), &form);
            EXPECT_FALSE(lower_.form.Enabled());
            EXPECT_FALSE(lower_.box.IsReachable());
            EXPECT_EQ(screen_.Find(form.Hwnd())->parent, lower_.form.Hwnd());
            HideLikeModal(form);
          })
      .On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_EQ(ModalDepth(), 0);
}

TEST_F(ModalTest, WhatTheLowerDialogDisabledStaysDisabledWhenTheUpperOneEnds) {
  Dialog other("frmOther");
  other.form.Show();
  user_
      .On("dlgLower",
          [&](Form& /*form*/) {
            Show(upper_);
            EXPECT_FALSE(other.form.Enabled());
            EXPECT_FALSE(other.box.Enabled());
          })
      .On("dlgUpper", HideLikeModal)
      .On("dlgLower", HideLikeModal);
  Show(lower_);
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_TRUE(other.box.Enabled());
}

TEST_F(ModalTest, HidingTheLowerDialogHidesTheUpperOneFirst) {
  std::vector<Text> hidden;
  const auto watch = [&](Dialog& dialog) {
    dialog.form.Changed.Connect([&hidden, &dialog] {
      if (!dialog.form.Visible() && !std::ranges::count(hidden, dialog.form.Name()))
        hidden.push_back(dialog.form.Name());
    });
  };
  Dialog middle("dlgMiddle");
  // Watched from the time that all of them are shown.
  user_.On("dlgLower", [&](Form& /*form*/) { Show(middle); })
      .On("dlgMiddle", [&](Form& /*form*/) { Show(upper_); })
      .Do([&] {
        for (Dialog* const dialog : {&lower_, &middle, &upper_}) watch(*dialog);
        HideLikeModal(lower_.form);
      });
  Show(lower_);
  EXPECT_THAT(hidden, ElementsAre("dlgUpper", "dlgMiddle", "dlgLower"));
  EXPECT_EQ(ModalDepth(), 0);
  EXPECT_TRUE(middle.form.Enabled());
}

TEST_F(ModalTest, HidingTheUpperDialogLeavesTheLowerOne) {
  user_.On("dlgLower", [&](Form& /*form*/) { Show(upper_); })
      .On("dlgUpper", HideLikeModal)
      .On("dlgLower", [&](Form& form) {
        EXPECT_TRUE(form.Visible());
        EXPECT_EQ(ModalDepth(), 1);
        HideLikeModal(form);
      });
  Show(lower_);
}

TEST_F(ModalTest, HidingAMinimisedDialogMakesItNormalFirst) {
  user_.On("dlgLower", [](Form& form) {
    form.SetWindowState(kMinimisedWindow);
    HideLikeModal(form);
  });
  Show(lower_);
  EXPECT_EQ(lower_.form.WindowState(), kNormalWindow);
}

TEST_F(ModalTest, HidingHandlesPendingInput) {
  platform_.input.SetPending(1);
  HideLikeModal(lower_.form);
  EXPECT_EQ(platform_.input.Runs(), 1);
}

TEST_F(ModalTest, EventsOfTheHostArriveInsideAConversation) {
  int rows = 0;
  user_.Do([&] { ++rows; }).On("dlgLower", [&](Form& form) {
    EXPECT_EQ(rows, 1);
    HideLikeModal(form);
  });
  Show(lower_);
}

// --- Failures --------------------------------------------------------------------------------------------------------

TEST_F(ModalTest, AFailureInsideIsToldAndUnwinds) {
  Dialog other("frmOther");
  other.form.Show();
  const Long list = screen_.AddHostWindow();
  user_.On("dlgLower", [](Form& /*form*/) { throw Failure(FailureNumber::kDeviceError, "no paper"); });
  Show(lower_);
  EXPECT_THAT(platform_.boxes.Shown(),
              ElementsAre(ShownBox{"Error in ShowLikeModal, no paper", kExclamationIcon | kOkOnly,
                                   ScriptedPlatform::kTitle, kOk}));
  EXPECT_EQ(ModalDepth(), 0);
  EXPECT_FALSE(lower_.form.Visible());
  EXPECT_EQ(screen_.Find(lower_.form.Hwnd())->parent, 0);
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_TRUE(other.box.Enabled());
  EXPECT_EQ(screen_.ActiveWindow(), list);
}

TEST_F(ModalTest, AFailureOfTheUpperDialogLeavesTheLowerOneAsItWas) {
  user_.On("dlgLower", [&](Form& /*form*/) { Show(upper_); })
      .On("dlgUpper", [](Form& /*form*/) { throw std::runtime_error("odd"); })
      .On("dlgLower", [&](Form& form) {
        EXPECT_EQ(ModalDepth(), 1);
        EXPECT_TRUE(lower_.box.IsReachable());
        HideLikeModal(form);
      });
  Show(lower_);
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("Error in ShowLikeModal, odd"));
}

TEST_F(ModalTest, AFailureWhileTheDialogLoadsIsToldAndRestoresTheOthers) {
  Dialog other("frmOther");
  other.form.Show();
  lower_.form.Loading.Connect([] { throw Failure(FailureNumber::kObjectNotSet, "no report"); });
  Show(lower_);
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("Error in ShowLikeModal, no report"));
  EXPECT_TRUE(other.form.Enabled());
  EXPECT_EQ(ModalDepth(), 0);
}

// --- Forms -----------------------------------------------------------------------------------------------------------

TEST_F(ModalTest, CenterInWorkAreaPutsAFormIntoTheMiddleOfTheDesktop) {
  lower_.form.Load();
  CenterInWorkArea(lower_.form);
  EXPECT_EQ(PlaceOf(lower_), (Place{600, 430, 400, 300}));
}

TEST_F(ModalTest, CenterInWorkAreaLeavesAMinimisedFormWhereItIs) {
  lower_.form.Load();
  lower_.form.SetWindowState(kMinimisedWindow);
  CenterInWorkArea(lower_.form);
  EXPECT_EQ(PlaceOf(lower_), ScriptedScreen::kFormPlace);
}

TEST_F(ModalTest, ApplyHostFontPutsTheFontOntoTheFormAndTheControlsThatShowIt) {
  lower_.form.SetFont("Old", 8);
  lower_.box.SetFont("Old", 10);
  ApplyHostFont(lower_.form, "Host", 9);
  EXPECT_EQ(lower_.form.FontName(), "Host");
  EXPECT_EQ(lower_.form.FontSize(), 9);
  EXPECT_EQ(lower_.box.FontName(), "Host");
  EXPECT_EQ(lower_.box.FontSize(), 9);
  EXPECT_EQ(lower_.button.FontName(), "Host") << "a control without a font of its own shows the form's";
}

TEST_F(ModalTest, ApplyHostFontLeavesAControlThatHasAFontOfItsOwn) {
  lower_.form.SetFont("Old", 8);
  lower_.box.SetFont("Fixed", 10);
  ApplyHostFont(lower_.form, "Host", 9);
  EXPECT_EQ(lower_.box.FontName(), "Fixed");
  EXPECT_EQ(lower_.box.FontSize(), 10);
}

TEST_F(ModalTest, ApplyHostFontWithoutANameOrASizeChangesNothing) {
  lower_.form.SetFont("Old", 8);
  ApplyHostFont(lower_.form, "", 9);
  ApplyHostFont(lower_.form, "Host", 0);
  EXPECT_EQ(lower_.form.FontName(), "Old");
  EXPECT_EQ(lower_.form.FontSize(), 8);
  EXPECT_EQ(lower_.box.FontName(), "");
}

TEST_F(ModalTest, UnloadAllFormsUnloadsEachButTheOneThatCloses) {
  lower_.form.Show();
  upper_.form.Load();
  UnloadAllForms(&lower_.form);
  EXPECT_TRUE(lower_.form.IsLoaded());
  EXPECT_FALSE(upper_.form.IsLoaded());
  UnloadAllForms(nullptr);
  EXPECT_THAT(OpenForms(), IsEmpty());
}

TEST_F(ModalTest, UnloadAllFormsTellsAFailureAndGoesOn) {
  lower_.form.Unloading.Connect([] { throw Failure(FailureNumber::kDeviceError, "stuck", "TBPrint"); });
  lower_.form.Load();
  upper_.form.Load();
  UnloadAllForms(nullptr);
  EXPECT_THAT(platform_.boxes.Texts(),
              ElementsAre("Error: 57 - stuck\r\nin module: TBPrint - UnloadAllForms\r\nin line: 10"));
  EXPECT_FALSE(upper_.form.IsLoaded());
}

TEST_F(ModalTest, UnloadAllFormsPassesOverAFormThatAnotherUnloaded) {
  int unloaded = 0;
  upper_.form.Unloading.Connect([&] { ++unloaded; });
  lower_.form.Unloading.Connect([&] { upper_.form.Unload(); });
  lower_.form.Load();
  upper_.form.Load();
  UnloadAllForms(nullptr);
  EXPECT_EQ(unloaded, 1);
}

TEST_F(ModalTest, UnloadAllFormsPassesOverAFormThatIsGoneMeanwhile) {
  auto other = std::make_unique<Dialog>("frmOther");
  lower_.form.Unloading.Connect([&] { other.reset(); });
  lower_.form.Load();
  other->form.Load();
  upper_.form.Load();
  UnloadAllForms(nullptr);
  EXPECT_EQ(other, nullptr);
  EXPECT_FALSE(upper_.form.IsLoaded());
}

TEST_F(ModalTest, WindowStateIsThatOfTheWindowAndBothBitsAre3) {
  const Long list = screen_.AddHostWindow();
  for (const Integer state : std::vector<Integer>{0, 1, 2, 3}) {
    screen_.SetWindowState(list, state);
    EXPECT_EQ(WindowState(list), state);
  }
}

TEST(TitleWithSystemTest, PutsTheSystemsNameBehindTheText) {
  BookShape shape;
  shape.system_name = "North Shop  ";
  auto host = SmallBook(shape);
  EXPECT_EQ(TitleWithSystem("Export", host->book), "Export - North Shop Tallybook");
}

TEST(TitleWithSystemTest, ASystemWithoutANameGivesTheTextAlone) {
  BookShape shape;
  shape.system_name = "   ";
  auto host = SmallBook(shape);
  EXPECT_EQ(TitleWithSystem("Export", host->book), "Export");
}

// --- Controls --------------------------------------------------------------------------------------------------------

class ListHelpersTest : public ModalTest {
 protected:
  ListHelpersTest() {
    list_.Click.Connect([this] { chosen_.push_back(list_.ListIndex()); });
  }
  void Fill() {
    list_.AddItem("March", 3);
    list_.AddItem("May", 5);
    list_.AddItem("May again", 5);
  }

  ComboBox list_{lower_.form, "cmbYear"};
  std::vector<Integer> chosen_;
};

TEST_F(ListHelpersTest, SelectsTheFirstEntryOfATag) {
  Fill();
  SelectComboItem(list_, 5);
  EXPECT_THAT(chosen_, ElementsAre(1));
  EXPECT_EQ(ComboItemTag(list_), 5);
}

TEST_F(ListHelpersTest, SelectingTheSelectedEntryTellsTheChoiceAgain) {
  Fill();
  SelectComboItem(list_, 5);
  SelectComboItem(list_, 5);
  EXPECT_THAT(chosen_, ElementsAre(1, 1));
}

TEST_F(ListHelpersTest, ATagThatNoEntryHasSelectsTheFirstEntry) {
  Fill();
  SelectComboItem(list_, 4);
  EXPECT_THAT(chosen_, ElementsAre(0));
}

TEST_F(ListHelpersTest, AnEmptyListStaysAsItIsInSilence) {
  SelectComboItem(list_, 5);
  EXPECT_EQ(list_.ListIndex(), kNoEntry);
  EXPECT_THAT(chosen_, IsEmpty());
  EXPECT_EQ(ComboItemTag(list_), 0);
}

TEST_F(ListHelpersTest, SearchesByPrefixAndExactlyFromTheStartWithoutRegardToCase) {
  Fill();
  EXPECT_EQ(FindInList(list_, "ma"), 0);
  EXPECT_EQ(FindInList(list_, "MAY"), 1);
  EXPECT_EQ(FindInList(list_, "ay"), kNoEntry);
  EXPECT_EQ(FindExactInList(list_, "may AGAIN"), 2);
  EXPECT_EQ(FindExactInList(list_, "ma"), kNoEntry);
}

TEST_F(ModalTest, SelectAllTextSelectsOneMoreThanTheText) {
  lower_.box.SetText("M\xC3\xBCller");
  SelectAllText(lower_.box);
  EXPECT_EQ(lower_.box.SelStart(), 0);
  EXPECT_EQ(lower_.box.SelLength(), 7);
}

TEST_F(ModalTest, SelectAllTextLeavesAnEmptyBoxAlone) {
  lower_.box.SetSelection(2, 3);
  SelectAllText(lower_.box);
  EXPECT_EQ(lower_.box.SelStart(), 2);
  EXPECT_EQ(lower_.box.SelLength(), 3);
}

TEST_F(ModalTest, FitGridColumnsGivesTheLastColumnTheRoomThatIsLeft) {
  Grid grid(lower_.form, "Grid1");
  FitGridColumns(grid, 500);  // without a column there is nothing to do
  grid.SetSize(2, 3);
  grid.SetColumnWidth(0, 100);
  grid.SetColumnWidth(1, 150);
  FitGridColumns(grid, 500);
  EXPECT_EQ(grid.ColumnWidth(2), 500 - 100 - 150 - ScriptedScreen::kScrollBarWidth);
  FitGridColumns(grid, 200);
  EXPECT_EQ(grid.ColumnWidth(2), 233) << "where there is no room it stays";
}

TEST_F(ModalTest, DrawStandardIconPutsTheIconIntoThePicture) {
  Picture picture(lower_.form, "Picture1");
  DrawStandardIcon(picture, 32514);
  EXPECT_EQ(picture.StandardIcon(), 32514);
}

// --- FilterKey -------------------------------------------------------------------------------------------------------

class FilterKeyTest : public ModalTest {};

TEST_F(FilterKeyTest, AnEmptyListOfRangesLetsEveryKeyThrough) {
  for (Integer key = 0; key < 256; ++key) EXPECT_EQ(FilterKey(key, ""), key);
  EXPECT_THAT(platform_.boxes.Sounds(), IsEmpty());
}

TEST_F(FilterKeyTest, FiveControlCodesPassWhateverTheRanges) {
  for (const Integer key : std::vector<Integer>{1, 3, 8, 22, 24}) EXPECT_EQ(FilterKey(key, "09"), key);
  EXPECT_THAT(platform_.boxes.Sounds(), IsEmpty());
}

TEST_F(FilterKeyTest, EnterAndAllOtherControlCodesAreHeldToTheRanges) {
  for (const Integer key : std::vector<Integer>{0, 2, 7, 9, 10, 13, 21, 23, 25, 27})
    EXPECT_EQ(FilterKey(key, "09"), 0) << key;
  EXPECT_EQ(FilterKey(13, "\r\r"), 13);
}

TEST_F(FilterKeyTest, BothEndsOfARangeBelongToIt) {
  for (const Integer key : std::vector<Integer>{'0', '5', '9', 'a', 'f'}) EXPECT_EQ(FilterKey(key, "09af"), key);
  for (const Integer key : std::vector<Integer>{'/', ':', '`', 'g'}) EXPECT_EQ(FilterKey(key, "09af"), 0);
}

TEST_F(FilterKeyTest, ARefusedKeySounds) {
  EXPECT_EQ(FilterKey('x', "09"), 0);
  EXPECT_THAT(platform_.boxes.Sounds(), ElementsAre("SystemDefault"));
}

TEST_F(FilterKeyTest, RangesCountInTheCodePageOfFiles) {
  const Text ranges = " !#&'~\xC2\xA1\xC3\xBF";
  for (Integer key = 32; key < 256; ++key) {
    const bool refused = key == '"' || (key >= 127 && key <= 160);
    EXPECT_EQ(FilterKey(key, ranges), refused ? Integer{0} : key);
  }
}

TEST_F(FilterKeyTest, ALastCharacterWithoutAPartnerIsNoRange) {
  EXPECT_EQ(FilterKey('a', "09a"), 0);
  EXPECT_EQ(FilterKey('5', "09a"), '5');
}

// --- The desktop -----------------------------------------------------------------------------------------------------

class DesktopTest : public ModalTest {
 protected:
  MemoryHost host_;
};

TEST_F(DesktopTest, OpensAFileWithItsApplicationUnderTheBusyPointer) {
  platform_.input.SetPending(1);
  OpenWithAssociated(host_.app, "/out/a.csv");
  EXPECT_THAT(platform_.shell.Opened(), ElementsAre("/out/a.csv"));
  EXPECT_THAT(platform_.shell.OpenedStates(), ElementsAre(kMaximisedWindow));
  EXPECT_THAT(screen_.Pointers(), ElementsAre(Pointer::kBusy, Pointer::kDefault));
  EXPECT_EQ(platform_.input.Runs(), 1);
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
  EXPECT_THAT(platform_.shell.Runs(), IsEmpty());
}

TEST_F(DesktopTest, WithoutAnApplicationItSaysSoAndOffersTheSystemsChoice) {
  platform_.shell.AnswerOpen({kNoAssociation});
  OpenWithAssociated(host_.app, "/out/a.xyz");
  EXPECT_THAT(platform_.boxes.Texts(), ElementsAre("No application has been associated with this output file type.  "
                                                   "Choose an application from the next dialog."));
  EXPECT_THAT(platform_.shell.Runs(),
              ElementsAre(ScriptedShell::Started{"C:\\WINDOWS\\system32\\RUNDLL32.EXE",
                                                 "shell32.dll,OpenAs_RunDLL /out/a.xyz", "C:\\WINDOWS\\"}));
  EXPECT_EQ(screen_.Pointers().back(), Pointer::kDefault);
}

TEST_F(DesktopTest, AnyOtherAnswerOfTheShellIsLeftToTheShell) {
  platform_.shell.AnswerOpen({2});
  OpenWithAssociated(host_.app, "/out/a.csv");
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

TEST_F(DesktopTest, FoldersEndInTheSeparator) {
  EXPECT_EQ(SystemFolder(), "C:\\WINDOWS\\system32\\");
  EXPECT_EQ(WindowsFolder(), "C:\\WINDOWS\\");
  platform_.shell.windows_folder = "";
  EXPECT_EQ(WindowsFolder(), "C:\\");
}

TEST_F(DesktopTest, TheFolderInForceIsTheShells) {
  SetCurrentFolder("/elsewhere/");
  EXPECT_EQ(CurrentFolder(), "/elsewhere/");
}

TEST_F(DesktopTest, PlatformId2IsTheNTLine) {
  EXPECT_TRUE(IsWindowsNT());
  platform_.shell.platform_id = 1;
  EXPECT_FALSE(IsWindowsNT());
}

TEST_F(DesktopTest, WithoutAShellEachOfThemFailsAndThePointerIsBack) {
  ThePlatform().shell = nullptr;
  EXPECT_THAT([&] { OpenWithAssociated(host_.app, "/out/a.csv"); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_EQ(screen_.Pointers().back(), Pointer::kDefault);
  EXPECT_THAT([] { (void)SystemFolder(); }, FailsWith(FailureNumber::kFeatureUnavailable));
  EXPECT_THAT([] { (void)CurrentFolder(); }, FailsWith(FailureNumber::kFeatureUnavailable));
}

}  // namespace
}  // namespace tallybook::testing
