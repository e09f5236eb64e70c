// An act in a process of its own: as a user whom permissions bind, or killed on the way.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <grp.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook::testing {

// Does an act in a child and gives "done", or the number and the words of the failure it ended with, or "killed".
inline Text InChild(const std::function<void()>& act) {
  constexpr std::size_t kLongest = 4096;
  int ends[2];
  if (::pipe(ends) != 0) return "no pipe";
  std::fflush(stdout);  // the child would print what waits there once more
  const pid_t child = ::fork();
  if (child == 0) {
    Text answer = "done";
    try {
      act();
    } catch (...) {
      const Failure failure = CurrentFailure();
      answer = std::to_string(failure.Code()) + " " + failure.Description();
    }
    answer.resize(std::min(answer.size(), kLongest));
    if (::write(ends[1], answer.data(), answer.size()) < 0) ::_exit(1);
    ::_exit(0);
  }
  ::close(ends[1]);
  Text answer(kLongest, '\0');
  const ssize_t count = ::read(ends[0], answer.data(), answer.size());
  ::close(ends[0]);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (count <= 0) return WIFSIGNALED(status) ? "killed" : "no answer";
  answer.resize(static_cast<std::size_t>(count));
  return answer;
}

// True where the process may become another user, as a superuser may. Others are bound by permissions already.
inline bool IsSuperuser() {
  return ::geteuid() == 0;
}

// Becomes, for good, a user whom permissions bind. Failure 51 where that cannot be.
inline void BecomeNobody() {
  constexpr unsigned kNobody = 65534;
  if (!IsSuperuser()) return;
  if (::setgroups(0, nullptr) != 0 || ::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)
    throw Failure(FailureNumber::kInternal, "Cannot become another user");
}

// Leaves a test out where this user cannot do what it needs. Where the project is checked as a whole nothing may be
// left out.
#define NEEDS_ROOT()                                                                                \
  do {                                                                                              \
    if (geteuid() != 0) {                                                                           \
      if (std::getenv("CI") != nullptr) FAIL() << "files of another user can only be made by root"; \
      GTEST_SKIP() << "files of another user can only be made by root";                             \
    }                                                                                               \
  } while (false)

}  // namespace tallybook::testing
