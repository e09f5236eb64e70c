// Another process that has a file open, by a mode of OpenFileEx, from its making to the end of its life. It ends
// without closing.
#pragma once

#include <array>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

#include "support/Utility.h"

namespace tallybook::testing {

class OtherProcess {
 public:
  OtherProcess(const Text& mode, Text path) {
    if (::pipe(ready_.data()) != 0 || ::pipe(end_.data()) != 0) return;
    child_ = ::fork();
    if (child_ == 0) Run(mode, std::move(path));
    ::close(ready_[1]);
    ::close(end_[0]);
    char answer = 'n';
    holds_ = ::read(ready_[0], &answer, 1) == 1 && answer == 'y';
  }
  ~OtherProcess() {
    ::close(end_[1]);
    ::close(ready_[0]);
    if (child_ > 0) ::waitpid(child_, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  [[nodiscard]] bool Holds() const { return holds_; }

 private:
  [[noreturn]] void Run(const Text& mode, Text path) {
    ::close(end_[1]);
    Integer number = 0;
    char answer = OpenFileEx(mode, number, path) ? 'y' : 'n';
    if (::write(ready_[1], &answer, 1) != 1) ::_exit(1);
    (void)!::read(end_[0], &answer, 1);  // comes back when the test lets go of the other end
    ::_exit(0);
  }

  std::array<int, 2> ready_{-1, -1};
  std::array<int, 2> end_{-1, -1};
  pid_t child_ = -1;
  bool holds_ = false;
};

}  // namespace tallybook::testing
