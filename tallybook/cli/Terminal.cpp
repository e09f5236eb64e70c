#include "tallybook/cli/Terminal.h"

#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tallybook::cli {

namespace {

constexpr int kUsualWidth = 80;

volatile std::sig_atomic_t cancel_requested = 0;
int cancel_keys = 0;
struct sigaction action_before;

void RequestCancel(int /*signal*/) {
  cancel_requested = 1;
}

// One character of standard input. False at its end, at a failure, and when a cancel is requested meanwhile: a wait is
// never resumed behind a signal, while a read would be.
bool ReadCharacter(char& character) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  if (::poll(&input, 1, -1) <= 0 || CancelKey::Pressed()) return false;
  return ::read(STDIN_FILENO, &character, 1) == 1;
}

}  // namespace

bool CanAsk() {
  return ::isatty(STDIN_FILENO) == 1 && ErrorsAreShownOnTerminal();
}

bool ErrorsAreShownOnTerminal() {
  return ::isatty(STDERR_FILENO) == 1;
}

int TerminalWidth() {
  winsize size{};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return kUsualWidth;
  return size.ws_col;
}

std::optional<Text> ReadTypedLine() {
  Text line;
  char character = 0;
  while (ReadCharacter(character)) {
    if (character == '\n') return line;
    line += character;
  }
  return std::nullopt;
}

CancelKey::CancelKey() {
  if (cancel_keys++ > 0) return;
  cancel_requested = 0;
  struct sigaction action = {};
  action.sa_handler = RequestCancel;
  action.sa_flags = SA_RESTART;  // reads and writes of files know nothing of it
  ::sigaction(SIGINT, &action, &action_before);
}

CancelKey::~CancelKey() {
  if (--cancel_keys == 0) ::sigaction(SIGINT, &action_before, nullptr);
}

bool CancelKey::Pressed() {
  return cancel_requested != 0;
}

void CancelKey::Forget() {
  cancel_requested = 0;
}

}  // namespace tallybook::cli
