// What another process, or another user, makes of a book: each act gives a small number, or ends in a failure's.
#pragma once

#include <array>
#include <cstdlib>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Failure.h"
#include "tests/support/InChild.h"

namespace tallybook::testing {

constexpr int kNoRights = 97;
// A user and a group that no system gives away.
constexpr unsigned kAnotherUser = 54321;

inline int CodeOf(const std::function<int()>& act) {
  try {
    return act();
  } catch (const Failure& failure) {
    return failure.Code();
  } catch (...) {
    return 98;
  }
}

inline int EndOf(pid_t child) {
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Runs `act` in a process of its own, which ends without closing anything that is open by then.
inline int InAnotherProcess(const std::function<int()>& act) {
  const pid_t child = fork();
  if (child == 0) _exit(CodeOf(act));
  return EndOf(child);
}

// The rights of files do not bind root, so a child of root gives that up.
inline bool GiveUpRoot() {
  if (geteuid() != 0) return true;
  return setgroups(0, nullptr) == 0 && setgid(kAnotherUser) == 0 && setuid(kAnotherUser) == 0;
}

// The same as somebody whom the rights of files bind.
inline int WithoutRoot(const std::function<int()>& act) {
  return InAnotherProcess([&] { return GiveUpRoot() ? act() : kNoRights; });
}

// A process that starts before the test opens a book, so that it shares nothing with it, and acts when it is told.
class SecondProcess {
 public:
  explicit SecondProcess(const std::function<int()>& act) {
    EXPECT_EQ(pipe(go_.data()), 0);
    EXPECT_EQ(pipe(done_.data()), 0);
    child_ = fork();
    if (child_ != 0) return;
    char told = 0;
    int code = 96;
    if (read(go_[0], &told, 1) == 1) code = CodeOf(act);
    (void)!write(done_[1], "d", 1);
    (void)!read(go_[0], &told, 1);  // what the act left open stays so until the test lets go
    _exit(code);
  }
  ~SecondProcess() {
    if (child_ > 0) End();
  }
  SecondProcess(const SecondProcess&) = delete;
  SecondProcess& operator=(const SecondProcess&) = delete;

  // Lets it act, and comes back when it has.
  void Act() {
    Start();
    char done = 0;
    EXPECT_EQ(read(done_[0], &done, 1), 1);
  }
  // Lets it act while the test goes on.
  void Start() { EXPECT_EQ(write(go_[1], "g", 1), 1); }
  // The number that its act gave. It is gone then, without having closed anything.
  int End() {
    (void)!write(go_[1], "e", 1);
    const int code = EndOf(child_);
    child_ = -1;
    for (const int end : {go_[0], go_[1], done_[0], done_[1]}) close(end);
    return code;
  }

 private:
  std::array<int, 2> go_{};
  std::array<int, 2> done_{};
  pid_t child_ = -1;
};

}  // namespace tallybook::testing
