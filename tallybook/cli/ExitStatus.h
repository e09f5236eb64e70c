// How the command `tallybook` ends, and the one exception by which a command says that it was used wrongly.
#pragma once

#include <stdexcept>

namespace tallybook::cli {

// Told to the shell; never renumber.
enum class ExitStatus : int {
  kDone = 0,
  kFailed = 1,     // the operation gave false, or met a failure; the reason stands on standard error
  kWrongUse = 2,   // the command line cannot be right, whatever the book holds
  kCancelled = 3,  // the user cancelled
};

// The command line asks for something that no book and no file could make right. Its text says what and what is wanted.
class WrongUse : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace tallybook::cli
