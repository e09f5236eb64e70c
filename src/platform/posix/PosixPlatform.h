// The platform of a POSIX system without a screen: its files and its clock; whatever is asked is refused, there is no
// input and no pointer. Applications with a terminal or a window take the files and the clock from here and bring the
// rest.
#pragma once

#include <ctime>

#include "platform/Clock.h"
#include "platform/InputQueue.h"
#include "platform/MessageBoxes.h"
#include "platform/Platform.h"
#include "platform/Screen.h"

namespace tallybook {

// The system's clock in the process's time zone.
class PosixClock : public Clock {
 public:
  [[nodiscard]] Date Now() override;
  [[nodiscard]] Date UniversalNow() override;
  [[nodiscard]] long long Ticks() override;
  void Sleep(Single seconds) override;
  [[nodiscard]] Text LongDate(Date date) override;
};

// Answers every box with the button that refuses, without a sound.
class RefusingMessageBoxes : public MessageBoxes {
 public:
  [[nodiscard]] Integer Show(const Text& text, Long style, const Text& caption) override;
  void PlaySound(const Text& name) override;
};

class EmptyInputQueue : public InputQueue {
 public:
  [[nodiscard]] bool HasPending(Long mask) override;
  void RunOnce() override;
};

class NoScreen : public ScreenWithoutWindows {};

// A moment of the system's clock as a date in local time and in universal time.
[[nodiscard]] Date LocalDate(const std::timespec& moment);
[[nodiscard]] Date UniversalDate(const std::timespec& moment);

// All of the above in one record, over objects that live as long as the process:
//   InstallPlatform(PosixPlatform("Tallybook"));
[[nodiscard]] Platform PosixPlatform(const Text& application_title);

}  // namespace tallybook
