#include "tallybook/cli/Terminal.h"

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
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

// Waits for standard input to have something. False when a cancel is requested before or meanwhile: Ctrl-C is let in
// within the wait alone, so that none can slip in between the look at the request and the wait.
bool WaitForInput() {
  sigset_t interrupt;
  sigset_t before;
  ::sigemptyset(&interrupt);
  ::sigaddset(&interrupt, SIGINT);
  ::sigprocmask(SIG_BLOCK, &interrupt, &before);
  pollfd input{STDIN_FILENO, POLLIN, 0};
  const bool ready = !CancelKey::Pressed() && ::ppoll(&input, 1, nullptr, &before) > 0;
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  return ready && !CancelKey::Pressed();
}

// One character of standard input. False at its end, at a failure, and when a cancel is requested.
bool ReadCharacter(char& character) {
  return WaitForInput() && ::read(STDIN_FILENO, &character, 1) == 1;
}

}  // namespace

bool CanAsk() {
  return ::isatty(STDIN_FILENO) == 1 && ErrorsAreShownOnTerminal();
}

bool ResultsAreShownOnTerminal() {
  return ::isatty(STDOUT_FILENO) == 1;
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

std::optional<int> RunProgram(const Text& program, const std::vector<Text>& arguments) {
  constexpr int kSignalled = 128;
  std::vector<Text> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  pointers.reserve(words.size() + 1);
  for (Text& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  pid_t process = 0;
  if (::posix_spawnp(&process, program.c_str(), nullptr, nullptr, pointers.data(), environ) != 0) return std::nullopt;
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
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
