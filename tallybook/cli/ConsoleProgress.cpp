#include "tallybook/cli/ConsoleProgress.h"

#include <algorithm>
#include <fmt/format.h>
#include <iostream>

#include "base/CodePage.h"
#include "base/Texts.h"
#include "tallybook/application/Shown.h"
#include "tallybook/cli/Terminal.h"

namespace tallybook::cli {

namespace {

constexpr auto kRedrawEvery = std::chrono::milliseconds(100);
constexpr Single kSmallestStep = 0.001F;  // below it not even the clock is asked
constexpr int kBarWidth = 20;
constexpr int kRoomForBar = kBarWidth + 10;  // brackets, percentage, blanks and the last column
constexpr const char* kEraseLine = "\r\x1b[K";

}  // namespace

ConsoleProgress::ConsoleProgress() : visible_(ErrorsAreShownOnTerminal()) {}

void ConsoleProgress::Begin(const tallybook::Text& title) {
  open_ = true;
  title_ = application::OnOneLine(title);
  fraction_ = 0;
  if (visible_) Draw();
}

void ConsoleProgress::Text(const tallybook::Text& text) {
  if (visible_) title_ = application::OnOneLine(text);
}

void ConsoleProgress::ShowFraction(Single fraction) {
  fraction = std::clamp(fraction, 0.0F, 1.0F);
  if (!open_ || (fraction - fraction_ < kSmallestStep && fraction >= fraction_)) return;
  fraction_ = fraction;
  if (std::chrono::steady_clock::now() - last_drawn_ >= kRedrawEvery) Draw();
}

void ConsoleProgress::Draw() {
  const int room = std::max(TerminalWidth() - kRoomForBar, 10);
  const auto title_width = static_cast<Long>(std::min<int>(room, CharacterCount(title_)));
  const int filled = static_cast<int>(static_cast<Single>(kBarWidth) * fraction_);
  std::cerr << kEraseLine
            << fmt::format("{} [{:<{}}] {:3}%", PadRight(title_, ' ', title_width),
                           std::string(static_cast<std::size_t>(filled), '#'), kBarWidth,
                           static_cast<int>(100.0F * fraction_))
            << std::flush;
  drawn_ = true;
  last_drawn_ = std::chrono::steady_clock::now();
}

void ConsoleProgress::Hide() {
  if (!drawn_) return;
  std::cerr << kEraseLine << std::flush;
  drawn_ = false;
}

bool ConsoleProgress::Cancelled() {
  if (!CancelKey::Pressed()) return false;
  cancel_seen_ = true;
  was_cancelled_ = true;
  return true;
}

void ConsoleProgress::End() {
  Hide();
  open_ = false;
  if (cancel_seen_) CancelKey::Forget();
  cancel_seen_ = false;
}

}  // namespace tallybook::cli
