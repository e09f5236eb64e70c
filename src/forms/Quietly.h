// For what is not worth a message: the wheel.
#pragma once

namespace tallybook {

// What an operation gives; the empty value where it fails.
template <typename Operation>
auto Quietly(Operation operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    return decltype(operation())();
  }
}

}  // namespace tallybook
