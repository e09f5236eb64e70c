#include "tests/support/ScriptedPlatform.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

#include "base/Dates.h"
#include "forms/modAllUI.h"
#include "platform/Clock.h"
#include "support/Utility.h"
#include "tests/support/Hands.h"

namespace tallybook::testing {

namespace {

constexpr Double kSecondsPerDay = 86400;

std::vector<Integer> ButtonsOf(Long style) {
  switch (style & kButtonsMask) {
    case kOkOnly:
      return {kOk};
    case kOkCancel:
      return {kOk, kCancel};
    case kYesNo:
      return {kYes, kNo};
    case kRetryCancel:
      return {kRetry, kCancel};
    default:
      return {};
  }
}

bool HasButton(Long style, Integer button) {
  const auto buttons = ButtonsOf(style);
  return std::find(buttons.begin(), buttons.end(), button) != buttons.end();
}

Platform InstalledOrNone() {
  return IsPlatformInstalled() ? ThePlatform() : Platform{};
}

}  // namespace

ScriptedClock::ScriptedClock() : now_(DateFromParts(2004, 2, 3) + TimeFromParts(14, 5, 9)) {}

void ScriptedClock::Advance(Double seconds) {
  now_ += seconds / kSecondsPerDay;
  run_ += seconds;
}

Date ScriptedClock::Now() {
  const Date now = now_;
  Advance(step_);
  return now;
}

Date ScriptedClock::UniversalNow() {
  return Now() - hours_ahead_ / 24;
}

long long ScriptedClock::Ticks() {
  constexpr long long kFirstTick = 5'000'000'000;  // beyond 32 bits, as on a machine that runs for two months
  return kFirstTick + std::llround(run_ * 1000);
}

void ScriptedClock::Sleep(Single seconds) {
  slept_ += seconds;
  Advance(seconds);
  // Other sleeps are waits within an operation, in which the user's script may well have nothing to do.
  if (user_ != nullptr && seconds == kModalSleep) user_->EndTurn();
}

Text ScriptedClock::LongDate(Date date) {
  return LongDateText(date);
}

std::vector<Text> ScriptedMessageBoxes::Texts() const {
  std::vector<Text> texts;
  for (const ShownBox& box : shown_) texts.push_back(box.text);
  return texts;
}

void ScriptedMessageBoxes::ForgetShown() {
  shown_.clear();
  sounds_.clear();
}

Integer ScriptedMessageBoxes::Show(const Text& text, Long style, const Text& caption) {
  Integer answer = RefusingButton(style);
  if ((style & kButtonsMask) != kOkOnly) {
    if (answers_.empty()) {
      ADD_FAILURE() << "No answer is left for the message box \"" << text << "\" (style " << style << ")";
    } else {
      answer = answers_.front();
      answers_.pop_front();
    }
  }
  if (!HasButton(style, answer))
    ADD_FAILURE() << answer << " is no button of the message box \"" << text << "\" (style " << style << ")";
  shown_.push_back({text, style, caption, answer});
  return answer;
}

void ScriptedMessageBoxes::PlaySound(const Text& name) {
  sounds_.push_back(name);
}

void ScriptedInput::SetPending(int looks, Long mask) {
  pending_ = looks;
  pending_mask_ = mask;
}

bool ScriptedInput::HasPending(Long mask) {
  ++looks_;
  last_mask_ = mask;
  if (user_ != nullptr && user_->IsReady()) return true;
  if (keyboard_ != nullptr && keyboard_->HasWaiting()) return true;
  if (pending_ == 0 || (mask & pending_mask_) == 0) return false;
  --pending_;
  return true;
}

void ScriptedInput::RunOnce() {
  ++runs_;
  if (on_run_) on_run_();
  if (TheStage() != nullptr) TheStage()->Run();
  TickTimers();
  if (keyboard_ != nullptr) keyboard_->TypeWaiting();
  if (user_ != nullptr) user_->DoNext();
}

void ScriptedInput::TickTimers() {
  if (clock_ == nullptr) return;
  const Date now = clock_->Standing();
  std::map<const Timer*, Date> running;
  std::vector<const Timer*> due;
  for (const Form* const form : OpenForms()) {
    for (const Timer* const timer : form->Timers()) {
      if (!timer->Enabled()) continue;
      const auto before = ticked_.find(timer);
      const Date since = before == ticked_.end() ? now : before->second;
      const bool passed = (now - since) * kSecondsPerDay * 1000 >= timer->Interval();
      if (passed) due.push_back(timer);
      running[timer] = passed ? now : since;
    }
  }
  ticked_ = std::move(running);
  for (const Timer* const timer : due) timer->Elapse();
}

ScriptedPlatform::ScriptedPlatform(FilesIn where)
    : files(where == FilesIn::kMemory ? static_cast<FileSystem&>(memory) : machine), before_(InstalledOrNone()) {
  clock.SetUser(&user);
  input.SetUser(&user);
  input.SetKeyboard(&keyboard);
  input.SetClock(&clock);
  InstallPlatform({.clock = &clock,
                   .files = &files,
                   .message_boxes = &boxes,
                   .input = &input,
                   .screen = TheStage() == nullptr ? &screen : &TheStage()->Enter(screen),
                   .file_dialogs = &file_dialogs,
                   .shell = &shell,
                   .keyboard = &keyboard,
                   .wheel = &wheel,
                   .registry = &registry,
                   .application_title = kTitle});
}

ScriptedPlatform::~ScriptedPlatform() {
  user.ExpectDone();
  if (TheStage() != nullptr) TheStage()->Leave();
  ResetModalStack();
  ResetOpenFiles();
  if (before_.clock == nullptr)
    RemovePlatform();
  else
    InstallPlatform(before_);
}

}  // namespace tallybook::testing
