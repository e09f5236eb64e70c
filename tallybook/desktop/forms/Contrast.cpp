#include "tallybook/desktop/forms/Contrast.h"

#include <algorithm>
#include <cmath>

namespace tallybook::desktop {

namespace {

// The brightness that is seen, 0 to 1 (WCAG 2.1, "relative luminance").
double LuminanceOf(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
}

QColor Between(const QColor& one, const QColor& other, double share) {
  const auto mix = [share](double a, double b) { return static_cast<float>(a * (1 - share) + b * share); };
  return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                          mix(one.blueF(), other.blueF()));
}

}  // namespace

double ContrastOf(const QColor& one, const QColor& other) {
  const double first = LuminanceOf(one) + 0.05;
  const double second = LuminanceOf(other) + 0.05;
  return std::max(first, second) / std::min(first, second);
}

QColor Readable(const QColor& colour, const QColor& ground, double least) {
  constexpr int kSteps = 20;
  const QColor farthest = ContrastOf(Qt::white, ground) > ContrastOf(Qt::black, ground) ? Qt::white : Qt::black;
  for (int step = 0; step < kSteps; ++step) {
    const QColor tried = Between(colour, farthest, static_cast<double>(step) / kSteps);
    if (ContrastOf(tried, ground) >= least) return tried;
  }
  return farthest;
}

}  // namespace tallybook::desktop
