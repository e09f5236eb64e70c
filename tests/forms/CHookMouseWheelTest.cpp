#include <gmock/gmock.h>
#include <stdexcept>
#include <tuple>

#include "forms/CHookMouseWheel.h"
#include "forms/MHookXP.h"
#include "platform/Keyboard.h"
#include "platform/Platform.h"
#include "tests/support/ScriptedPlatform.h"

namespace tallybook::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Sent = ScriptedWheel::Sent;

class HookMouseWheelTest : public ::testing::Test {
 protected:
  // Window, delta, shift, buttons, column, row.
  using Heard = std::tuple<Long, Long, Long, Long, Long, Long>;

  HookMouseWheelTest() {
    hook_.MouseWheel.Connect([this](Long window, Long delta, Long shift, Long button, Long x, Long y, bool& cancel) {
      turned_.emplace_back(window, delta, shift, button, x, y);
      cancel = cancels_;
    });
    hook_.MouseHWheel.Connect([this](Long window, Long delta, Long shift, Long button, Long x, Long y, bool& cancel) {
      tilted_.emplace_back(window, delta, shift, button, x, y);
      cancel = cancels_;
    });
  }

  ScriptedPlatform platform_;
  ScriptedWheel& wheel_ = platform_.wheel;
  Long window_ = platform_.screen.AddHostWindow(0, {100, 100, 800, 600});
  CHookMouseWheel hook_;
  std::vector<Heard> turned_;
  std::vector<Heard> tilted_;
  bool cancels_ = false;
};

// --- The window ------------------------------------------------------------------------------------------------------

TEST_F(HookMouseWheelTest, ListensToOneWindowAtATime) {
  const Long other = platform_.screen.AddHostWindow();
  EXPECT_EQ(hook_.Hwnd(), 0);
  hook_.SetHwnd(window_);
  EXPECT_EQ(hook_.Hwnd(), window_);
  EXPECT_EQ(wheel_.HooksOf(window_), 1U);
  hook_.SetHwnd(other);
  EXPECT_EQ(hook_.Hwnd(), other);
  EXPECT_EQ(wheel_.HooksOf(window_), 0U);
  EXPECT_EQ(wheel_.HooksOf(other), 1U);
}

TEST_F(HookMouseWheelTest, WhatIsNoWindowEndsTheListeningToTheOneBefore) {
  hook_.SetHwnd(window_);
  hook_.SetHwnd(4711);
  EXPECT_EQ(hook_.Hwnd(), 0);
  EXPECT_EQ(wheel_.HooksOf(window_), 0U);
  hook_.SetHwnd(window_);
  hook_.SetHwnd(0);
  EXPECT_EQ(hook_.Hwnd(), 0);
  EXPECT_EQ(wheel_.HooksOf(window_), 0U);
}

TEST_F(HookMouseWheelTest, WithoutAWheelAndWhereTheHookIsRefusedItListensToNothing) {
  hook_.SetHwnd(window_);
  wheel_.RefuseHooks(true);
  hook_.SetHwnd(window_);
  EXPECT_EQ(hook_.Hwnd(), 0);
  wheel_.RefuseHooks(false);
  wheel_.SetPresent(false);
  hook_.SetHwnd(window_);
  EXPECT_EQ(hook_.Hwnd(), 0);
  EXPECT_EQ(wheel_.HooksOf(window_), 0U);
}

TEST_F(HookMouseWheelTest, TheEndOfTheListenerRemovesItsHook) {
  {
    CHookMouseWheel other;
    other.SetHwnd(window_);
    EXPECT_EQ(wheel_.HooksOf(window_), 1U);
  }
  EXPECT_EQ(wheel_.HooksOf(window_), 0U);
}

TEST_F(HookMouseWheelTest, AWindowThatGoesTakesTheHookWithItAndHearsOfItsEnd) {
  for (const bool enabled : {true, false}) {
    hook_.SetEnabled(enabled);
    hook_.SetHwnd(window_);
    EXPECT_EQ(wheel_.Send(window_, kWindowDestroyed, 1, 2), ScriptedWheel::kWindowsAnswer);
    EXPECT_EQ(hook_.Hwnd(), 0) << enabled;
    EXPECT_EQ(wheel_.HooksOf(window_), 0U) << enabled;
  }
  const Sent destroyed{window_, kWindowDestroyed, 1, 2};
  EXPECT_THAT(wheel_.Reached(), ElementsAre(destroyed, destroyed));
}

TEST_F(HookMouseWheelTest, TwoListenersOfOneWindowHearOneAfterTheOther) {
  CHookMouseWheel newer;
  int heard = 0;
  newer.MouseWheel.Connect([&](Long, Long, Long, Long, Long, Long, bool& cancel) { cancel = ++heard == 2; });
  hook_.SetHwnd(window_);
  newer.SetHwnd(window_);
  wheel_.Turn(window_, 120, 150, 150);
  EXPECT_THAT(turned_, SizeIs(1));
  wheel_.Turn(window_, 120, 150, 150);
  EXPECT_THAT(turned_, SizeIs(1));
  EXPECT_THAT(wheel_.Reached(), SizeIs(1));
}

// --- What the user has set -------------------------------------------------------------------------------------------

TEST_F(HookMouseWheelTest, TellsWhatTheUserHasSet) {
  wheel_.SetScrollLines(-1);
  wheel_.SetScrollCharacters(5);
  EXPECT_TRUE(CHookMouseWheel::Present());
  EXPECT_EQ(CHookMouseWheel::ScrollLines(), -1);
  EXPECT_EQ(CHookMouseWheel::ScrollChars(), 5);
  wheel_.SetPresent(false);
  wheel_.SetScrollCharacters(std::nullopt);
  EXPECT_FALSE(CHookMouseWheel::Present());
  EXPECT_EQ(CHookMouseWheel::ScrollChars(), 1);
}

TEST_F(HookMouseWheelTest, HalvesOfAValueAreSignedNumbers) {
  EXPECT_EQ(CHookMouseWheel::WordHi(0x00781234), 120);
  EXPECT_EQ(CHookMouseWheel::WordLo(0x00781234), 0x1234);
  EXPECT_EQ(CHookMouseWheel::WordHi(static_cast<Long>(0xFF88FFFE)), -120);
  EXPECT_EQ(CHookMouseWheel::WordLo(static_cast<Long>(0xFF88FFFE)), -2);
}

// --- Messages --------------------------------------------------------------------------------------------------------

TEST_F(HookMouseWheelTest, ATurnIsToldWithTheWindowUnderThePointer) {
  const Long over = platform_.screen.AddHostWindow(0, {200, 200, 50, 50});
  hook_.SetHwnd(window_);
  EXPECT_EQ(wheel_.Turn(window_, -120, 210, 220), 1);
  EXPECT_EQ(wheel_.Turn(window_, 240, 150, 160), 1);
  EXPECT_EQ(wheel_.Turn(window_, 120, -5, -6), 1);
  EXPECT_THAT(turned_, ElementsAre(Heard{over, -120, 0, 0, 210, 220}, Heard{window_, 240, 0, 0, 150, 160},
                                   Heard{0, 120, 0, 0, -5, -6}));
  EXPECT_THAT(tilted_, IsEmpty());
}

TEST_F(HookMouseWheelTest, ATiltIsToldByItsOwnEvent) {
  hook_.SetHwnd(window_);
  EXPECT_EQ(wheel_.Turn(window_, 120, 150, 160, kWheelTilted), 1);
  EXPECT_THAT(tilted_, ElementsAre(Heard{window_, 120, 0, 0, 150, 160}));
  EXPECT_THAT(turned_, IsEmpty());
}

TEST_F(HookMouseWheelTest, ShiftAndButtonsAreThoseThatAreHeldNow) {
  hook_.SetHwnd(window_);
  const Integer keys[] = {0x10, 0x11, 0x12, 1, 2, 4};
  for (const Integer key : keys) {
    platform_.keyboard.Hold(key);
    wheel_.Turn(window_, 120, 150, 160);
    platform_.keyboard.Release(key);
  }
  for (const Integer key : keys) platform_.keyboard.Hold(key);
  wheel_.Turn(window_, 120, 150, 160);
  const auto heard = [&](Long shift, Long button) { return Heard{window_, 120, shift, button, 150, 160}; };
  EXPECT_THAT(turned_,
              ElementsAre(heard(1, 0), heard(2, 0), heard(4, 0), heard(0, 1), heard(0, 2), heard(0, 4), heard(7, 7)));
}

TEST_F(HookMouseWheelTest, AMessageThatIsNotCancelledGoesOnToTheWindow) {
  hook_.SetHwnd(window_);
  wheel_.Turn(window_, 120, 150, 160);
  EXPECT_THAT(wheel_.Reached(), ElementsAre(Sent{window_, kWheelTurned, 120 << 16, (160 << 16) | 150}));
  cancels_ = true;
  EXPECT_EQ(wheel_.Turn(window_, 120, 150, 160), 1);
  EXPECT_THAT(turned_, SizeIs(2));
  EXPECT_THAT(wheel_.Reached(), SizeIs(1));
}

TEST_F(HookMouseWheelTest, WhileItIsOffMessagesPassUnseen) {
  hook_.SetHwnd(window_);
  hook_.SetEnabled(false);
  EXPECT_EQ(wheel_.Turn(window_, 120, 150, 160), ScriptedWheel::kWindowsAnswer);
  EXPECT_THAT(turned_, IsEmpty());
  EXPECT_THAT(wheel_.Reached(), SizeIs(1));
}

TEST_F(HookMouseWheelTest, OtherMessagesPassWithTheWindowsAnswer) {
  hook_.SetHwnd(window_);
  EXPECT_EQ(wheel_.Send(window_, 0x0F, 3, 4), ScriptedWheel::kWindowsAnswer);
  EXPECT_THAT(wheel_.Reached(), ElementsAre(Sent{window_, 0x0F, 3, 4}));
}

TEST_F(HookMouseWheelTest, AMessageOfTheWheelCountsAsHandledAndAnyOtherDoesNot) {
  hook_.SetHwnd(window_);
  bool handled = false;
  EXPECT_EQ(hook_.Message(window_, kWheelTurned, 0, 0, 0, handled), 1);
  EXPECT_TRUE(handled);
  EXPECT_EQ(hook_.Message(window_, 0x0F, 0, 0, 0, handled), ScriptedWheel::kWindowsAnswer);
  EXPECT_FALSE(handled);
}

TEST_F(HookMouseWheelTest, AListenerThatFailsIsPassedOver) {
  CHookMouseWheel failing;
  failing.MouseWheel.Connect([](Long, Long, Long, Long, Long, Long, bool&) { throw std::runtime_error("odd"); });
  failing.SetHwnd(window_);
  EXPECT_EQ(wheel_.Turn(window_, 120, 150, 160), 1);
  EXPECT_THAT(wheel_.Reached(), SizeIs(1));
  EXPECT_THAT(platform_.boxes.Shown(), IsEmpty());
}

// --- Without ---------------------------------------------------------------------------------------------------------

TEST_F(HookMouseWheelTest, APlatformWithoutAWheelHasNoneAndNothingFails) {
  ThePlatform().wheel = nullptr;
  EXPECT_FALSE(CHookMouseWheel::Present());
  EXPECT_EQ(CHookMouseWheel::ScrollLines(), 0);
  EXPECT_EQ(CHookMouseWheel::ScrollChars(), 1);
  hook_.SetHwnd(window_);
  EXPECT_EQ(hook_.Hwnd(), 0);
  EXPECT_FALSE(AddHook(window_, hook_));
  EXPECT_FALSE(RemoveHook(window_, hook_));
  EXPECT_EQ(CallNextHook(window_, kWheelTurned, 0, 0), 0);
}

TEST_F(HookMouseWheelTest, APlatformWithoutAKeyboardHoldsNoKeys) {
  ThePlatform().keyboard = nullptr;
  hook_.SetHwnd(window_);
  wheel_.Turn(window_, 120, 150, 160);
  EXPECT_THAT(turned_, ElementsAre(Heard{window_, 120, 0, 0, 150, 160}));
}

}  // namespace
}  // namespace tallybook::testing
