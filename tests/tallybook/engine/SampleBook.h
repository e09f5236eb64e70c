// The books of every version of the format that lie in samples/.
#pragma once

#include "tests/support/Checkout.h"

namespace tallybook::testing {

inline std::filesystem::path SampleBook(const std::string& name) {
  return InCheckout("tests/tallybook/engine/samples") / name;
}

}  // namespace tallybook::testing
