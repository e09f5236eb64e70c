// Raises a failure and lets the component name it.
#include <iostream>

#include "support/Failure.h"

int main() {
  try {
    throw tallybook::Failure(tallybook::FailureNumber::kRange, "position 27");
  } catch (...) {
    const tallybook::Failure failure = tallybook::CurrentFailure();
    std::cout << "failure " << failure.Code() << ": " << failure.Description() << '\n';
  }
}
