// How an imported figure meets the one that stands. Every figure that an import stores passes here, so it is inline.
#pragma once

#include <cmath>

#include "base/Types.h"
#include "import/QDXImport.h"

namespace tallybook {

// Failure 6, with both figures.
[[noreturn]] void FailNoFigure(Double stored, Double value);

// A figure combined with the one that stands: added, subtracted, or for every other mode in its place. What is no
// number or beyond a number's range is failure 6.
[[nodiscard]] inline Double Combine(Integer math, Double stored, Double value) {
  Double figure = value;
  if (math == static_cast<Integer>(eMath::mAdd)) [[likely]] {
    figure = stored + value;
  } else if (math == static_cast<Integer>(eMath::mSubtract)) {
    figure = stored - value;
  }
  if (!std::isfinite(figure)) FailNoFigure(stored, value);
  return figure;
}

}  // namespace tallybook
