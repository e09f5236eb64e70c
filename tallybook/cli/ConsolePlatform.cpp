#include "tallybook/cli/ConsolePlatform.h"

#include <charconv>
#include <cstdlib>
#include <fmt/format.h>
#include <string_view>

#include "base/Dates.h"
#include "tallybook/cli/ExitStatus.h"

namespace tallybook::cli {

namespace {

Date EpochDate(const char* text) {
  constexpr Double kSecondsPerDay = 86400;
  constexpr long long kEndOfYear9999 = 253'402'300'800;
  const std::string_view digits(text);
  long long seconds = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
  if (error != std::errc() || end != digits.data() + digits.size() || seconds < 0 || seconds >= kEndOfYear9999) {
    throw WrongUse(fmt::format(
        "SOURCE_DATE_EPOCH is '{}'; a whole number of seconds since 1970-01-01 is wanted, within the years to 9999",
        text));
  }
  return DateFromParts(1970, 1, 1) + static_cast<Double>(seconds) / kSecondsPerDay;
}

}  // namespace

ConsoleClock::ConsoleClock() {
  const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
  if (epoch != nullptr && *epoch != '\0') fixed_ = EpochDate(epoch);
}

Date ConsoleClock::Now() {
  return fixed_ ? *fixed_ : PosixClock::Now();
}

ConsolePlatform::ConsolePlatform(const AskOptions& options)
    : boxes_(options, progress_), file_dialogs_(boxes_, progress_) {
  InstallPlatform({.clock = &clock_,
                   .files = &whole_files_,
                   .message_boxes = &boxes_,
                   .input = &input_,
                   .screen = &screen_,
                   .file_dialogs = &file_dialogs_,
                   .shell = &shell_,
                   .application_title = "Tallybook"});
}

ConsolePlatform::~ConsolePlatform() {
  RemovePlatform();
}

}  // namespace tallybook::cli
