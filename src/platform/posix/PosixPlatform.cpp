#include "platform/posix/PosixPlatform.h"

#include <chrono>
#include <ctime>
#include <thread>

#include "base/Dates.h"
#include "platform/posix/PosixFileSystem.h"

namespace tallybook {

namespace {

constexpr Double kSecondsPerDay = 86400;
constexpr Double kNanosecondsPerDay = kSecondsPerDay * 1e9;

std::timespec MomentNow() {
  std::timespec moment{};
  std::timespec_get(&moment, TIME_UTC);
  return moment;
}

}  // namespace

Date PosixClock::Now() {
  return LocalDate(MomentNow());
}

Date PosixClock::UniversalNow() {
  return UniversalDate(MomentNow());
}

long long PosixClock::Ticks() {
  const auto running = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(running).count();
}

void PosixClock::Sleep(Single seconds) {
  std::this_thread::sleep_for(std::chrono::duration<Single>(seconds));
}

Text PosixClock::LongDate(Date date) {
  return LongDateText(date);
}

Integer RefusingMessageBoxes::Show(const Text& /*text*/, Long style, const Text& /*caption*/) {
  return RefusingButton(style);
}

void RefusingMessageBoxes::PlaySound(const Text& /*name*/) {}

bool EmptyInputQueue::HasPending(Long /*mask*/) {
  return false;
}
void EmptyInputQueue::RunOnce() {}

Date LocalDate(const std::timespec& moment) {
  constexpr int kFirstYear = 1900;  // std::tm counts years from here, and months from 0
  std::tm local{};
  ::localtime_r(&moment.tv_sec, &local);
  return DateFromParts(local.tm_year + kFirstYear, local.tm_mon + 1, local.tm_mday) +
         TimeFromParts(local.tm_hour, local.tm_min, local.tm_sec) +
         static_cast<Double>(moment.tv_nsec) / kNanosecondsPerDay;
}

Date UniversalDate(const std::timespec& moment) {
  return DateFromParts(1970, 1, 1) + static_cast<Double>(moment.tv_sec) / kSecondsPerDay +
         static_cast<Double>(moment.tv_nsec) / kNanosecondsPerDay;
}

Platform PosixPlatform(const Text& application_title) {
  static PosixClock clock;
  static PosixFileSystem files;
  static RefusingMessageBoxes message_boxes;
  static EmptyInputQueue input;
  static NoScreen screen;
  return {.clock = &clock,
          .files = &files,
          .message_boxes = &message_boxes,
          .input = &input,
          .screen = &screen,
          .application_title = application_title};
}

}  // namespace tallybook
