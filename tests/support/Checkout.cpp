#include "tests/support/Checkout.h"

namespace tallybook::testing {

// The one source that the checkout's own place is compiled into, so that all others are the same in every checkout.
std::filesystem::path InCheckout(const std::string& path) {
  return std::filesystem::path(TALLYBOOK_SOURCE_DIR) / path;
}

}  // namespace tallybook::testing
