#include "import/Combine.h"

#include <sstream>

#include "base/Failure.h"

namespace tallybook {

namespace {

// Six digits are enough to see why.
Text InShort(Double value) {
  std::ostringstream text;
  text << value;
  return text.str();
}

}  // namespace

void FailNoFigure(Double stored, Double value) {
  throw Failure(FailureNumber::kOverflow, "No figure comes of " + InShort(value) + " where " + InShort(stored) +
                                              " stands: it is beyond a number");
}

}  // namespace tallybook
