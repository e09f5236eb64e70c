// Colours that can be read on their ground. Contrast is meant as the standards have it (WCAG 2.1, "contrast ratio"):
// from 1, none, to 21, black on white.
#pragma once

#include <QColor>

namespace tallybook::desktop {

inline constexpr double kLeastContrastOfText = 4.5;

[[nodiscard]] double ContrastOf(const QColor& one, const QColor& other);

// The colour itself where it has that contrast on `ground`; else one lighter, on a dark ground, or darker that has it.
[[nodiscard]] QColor Readable(const QColor& colour, const QColor& ground, double least = kLeastContrastOfText);

}  // namespace tallybook::desktop
