// How an operation meets failures. An operation runs as numbered statements under one of three policies:
//
//   leave    the failure is told once and the operation ends with false
//   go on    the failure is told and the next statement runs
//   ask      the user chooses: Retry repeats exactly the statement that failed and no other, Cancel ends the operation
//
// The statement's number is what logs and "Error:" boxes show. A statement holds as little as can be repeated without
// losing or doubling a value: one call of the host, one read of a file.
//
//   bool Thing::Do() {
//     Statements at(Policy::kLeave, [&](const Failure& failure) { Log(failure, "Do"); return false; });
//     return at.Run([&] {
//       at(10, [&] { host.Open(); });
//       const auto count = at(20, [&] { return host.Count(); });
//     });
//   }
#pragma once

#include <functional>
#include <type_traits>
#include <utility>

#include "base/Failure.h"
#include "base/Types.h"

namespace tallybook {

enum class Policy { kLeave, kGoOn, kAsk };

// Ends the operation from within, as Cancel does: thrown by Statements and by an operation's own Leave(), caught by
// Statements::Run and by nothing else. It is no failure, and nothing is told on its account.
struct LeaveOperation {};

class Statements {
 public:
  // Told of each failure, with the statement's number in it. The result matters under Policy::kAsk only: true repeats
  // the statement, false ends the operation.
  using Teller = std::function<bool(const Failure&)>;

  Statements(Policy policy, Teller tell) : policy_(policy), tell_(std::move(tell)) {}
  Statements(const Statements&) = delete;
  Statements& operator=(const Statements&) = delete;

  // Runs one statement and gives what it gives. Under Policy::kGoOn a statement that fails gives a default value.
  template <typename Body>
  std::invoke_result_t<Body&> operator()(Long number, Body&& body) {
    for (;;) {
      try {
        return body();
      } catch (const LeaveOperation&) {
        throw;
      } catch (...) {
        if (!Repeat(number, CurrentFailure())) break;
      }
    }
    return std::invoke_result_t<Body&>();
  }

  // The operation's boundary: true when `body` ran to its end, false when it was left. A failure outside every
  // statement is told with statement 0 and leaves.
  template <typename Body>
  [[nodiscard]] bool Run(Body&& body) {
    try {
      body();
      return true;
    } catch (const LeaveOperation&) {
      return false;
    } catch (...) {
      tell_(CurrentFailure());
      return false;
    }
  }

  // Ends the operation with false; what there was to tell has been told.
  [[noreturn]] static void Leave() { throw LeaveOperation{}; }

 private:
  // True: run the statement again. False: go on behind it. Otherwise the operation is left.
  bool Repeat(Long number, Failure failure) {
    failure.SetStatement(number);
    const bool wanted = tell_(failure);
    if (policy_ == Policy::kGoOn) return false;
    if (policy_ == Policy::kAsk && wanted) return true;
    throw LeaveOperation{};
  }

  Policy policy_;
  Teller tell_;
};

}  // namespace tallybook
