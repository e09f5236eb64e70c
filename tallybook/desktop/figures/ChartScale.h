// The axis of a chart in round numbers. Plain data.
#pragma once

#include <vector>

#include "base/Types.h"

namespace tallybook::desktop {

struct ChartScale {
  Double low = 0;
  Double high = 1;
  Double step = 1;  // between ticks: 1, 2 or 5 times a power of ten
  [[nodiscard]] std::vector<Double> Ticks() const;
  // 0 at `low`, 1 at `high`.
  [[nodiscard]] Double ShareOf(Double value) const { return (value - low) / (high - low); }
};

// The scale that shows all values from `least` to `most`, and zero, with no more than so many ticks (2 at least).
[[nodiscard]] ChartScale RoundScale(Double least, Double most, int most_ticks);

}  // namespace tallybook::desktop
