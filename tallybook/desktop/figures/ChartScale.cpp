#include "tallybook/desktop/figures/ChartScale.h"

#include <algorithm>
#include <cmath>

namespace tallybook::desktop {

namespace {

// The least of 1, 2 and 5 times a power of ten that is not below `least`.
Double RoundStep(Double least) {
  const Double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const Double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= least * (1 - 1e-9)) return factor * power;
  }
  return 10 * power;
}

}  // namespace

std::vector<Double> ChartScale::Ticks() const {
  std::vector<Double> ticks;
  const auto first = std::llround(low / step);
  const auto last = std::llround(high / step);
  for (auto tick = first; tick <= last; ++tick) ticks.push_back(static_cast<Double>(tick) * step);
  return ticks;
}

ChartScale RoundScale(Double least, Double most, int most_ticks) {
  least = std::min(least, 0.0);
  most = std::max(most, 0.0);
  if (!(most - least > 0) || !std::isfinite(most - least)) return {0, 1, 1};
  // The rounding out to whole steps can take one more tick at each end.
  for (int ticks = std::max(most_ticks, 2);; --ticks) {
    const Double step = RoundStep((most - least) / std::max(ticks - 1, 1));
    const ChartScale scale{std::floor(least / step) * step, std::ceil(most / step) * step, step};
    if (ticks <= 2 || static_cast<int>(scale.Ticks().size()) <= most_ticks) return scale;
  }
}

}  // namespace tallybook::desktop
